// SPDX-License-Identifier: MIT
#pragma once

#include "orders/Order.h"

#include <QString>
#include <QVariantList>

#include <optional>

namespace xv::data {
class Database;
}

namespace xv::orders {

// How a filter text is sought among the orders: walking the index of orders from the newest, which is
// quick when the text is common and a page fills at once, or, on SQLite, through the full-text index of the
// names and ceremonies, quick when few rows carry it. Both find the same orders.
enum class NameLookup { WalkOrders, NameIndex };

// Below this many rows carrying a text, the name index is the quicker way.
inline constexpr int kFewNameRows = 20000;

// The way to seek this text in this database: the name index when the engine has one and fewer than fewRows
// rows carry the text (texts of fewer than three letters and numbers always walk).
NameLookup nameLookupFor(data::Database& db, const QString& filterText, int fewRows = kFewNameRows);

// Whether the name index can serve the text at all: three letters or more, not a number. Only then does
// nameLookupFor ask the index how many rows carry it.
bool nameIndexCanServe(const QString& filterText);

// The count nameLookupFor asks the name index for, stopping at cap.
QString nameIndexCountSql(const QString& filterText, int cap);

// The orders the search window lists, newest first: number, year (series) and the values the shop
// recognises an order by, then its document type, so that the chosen row names exactly one order.
// A filter text matches the number exactly or a part of the customer's name. The orders are the documents
// the order counters of orderKind (the module's tipomovimento) hand out, as the change of state takes them.
// With after, the orders that follow that one in the list: the next page, read without the ones before it.
QString orderSearchSql(const QString& orderKind, const QString& filterText, int limit,
                       NameLookup lookup = NameLookup::WalkOrders, const std::optional<OrderKey>& after = {});

// The orders in a state (any state for an empty one) with the order-header view's columns, newest first,
// at most limit of them; a filter text matches as in the search window. What the windows that choose
// orders in bulk read a page at a time, instead of the whole view.
QString orderChoiceSql(const QString& orderKind, const QString& state, const QString& filterText, int limit,
                       NameLookup lookup = NameLookup::WalkOrders, const std::optional<OrderKey>& after = {});

// Positions of the search window's columns in the chosen row.
enum SearchColumn { Search_numero = 0, Search_serie = 1, Search_documento = 9 };

// The order a row of the search window's list, or of the list that chooses orders in bulk, names (its values
// as read); nothing for a row too short to be one.
std::optional<OrderKey> searchRowKey(const QVariantList& row);
std::optional<OrderKey> choiceRowKey(const QVariantList& row);

} // namespace xv::orders
