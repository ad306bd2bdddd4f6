// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

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

// The count nameLookupFor asks the name index for, stopping at cap.
QString nameIndexCountSql(const QString& filterText, int cap);

// The orders the search window lists, newest first: number, year (series) and the values the shop
// recognises an order by, then its document type, so that the chosen row names exactly one order.
// A filter text matches the number exactly or a part of the customer's name. The orders are the documents
// the order counters of orderKind (the module's tipomovimento) hand out, as the change of state takes them.
QString orderSearchSql(const QString& orderKind, const QString& filterText, int limit,
                       NameLookup lookup = NameLookup::WalkOrders);

// The orders in a state (any state for an empty one) with the order-header view's columns, newest first,
// at most limit of them; a filter text matches as in the search window. What the windows that choose
// orders in bulk read a page at a time, instead of the whole view.
QString orderChoiceSql(const QString& orderKind, const QString& state, const QString& filterText, int limit,
                       NameLookup lookup = NameLookup::WalkOrders);

// Positions of the search window's columns in the chosen row.
enum SearchColumn { Search_numero = 0, Search_serie = 1, Search_documento = 9 };

} // namespace xv::orders
