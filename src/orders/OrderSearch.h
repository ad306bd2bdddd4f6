// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace xv::orders {

// The orders the search window lists, newest first: number, year (series) and the values the shop
// recognises an order by, then its document type, so that the chosen row names exactly one order.
// A filter text matches the number exactly or a part of the customer's name. The orders are the documents
// the order counters of orderKind (the module's tipomovimento) hand out, as the change of state takes them.
QString orderSearchSql(const QString& orderKind, const QString& filterText, int limit);

// The orders in a state (any state for an empty one) with the order-header view's columns, newest first,
// at most limit of them; a filter text matches as in the search window. What the windows that choose
// orders in bulk read a page at a time, instead of the whole view.
QString orderChoiceSql(const QString& orderKind, const QString& state, const QString& filterText, int limit);

// Positions of the search window's columns in the chosen row.
enum SearchColumn { Search_numero = 0, Search_serie = 1, Search_documento = 9 };

} // namespace xv::orders
