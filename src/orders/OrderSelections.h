// SPDX-License-Identifier: MIT
#pragma once

#include "orders/Order.h"

#include <QDate>
#include <QString>

namespace xv::data {
class Recordset;
}

namespace xv::host {
class IHost;
}

namespace xv::orders {

// The orders the operator chose in a list window, as the SQL lists that select them: numbers and series
// each quoted and joined by commas ('12','15' and '2025','2026'), one entry per chosen row, in the order
// of the choice. The two lists are matched independently, not as pairs: a number chosen in one series
// also selects that number in any other series chosen. The shop has always worked this way; it is kept.
struct ChosenOrders
{
    QString numbers;
    QString series;

    bool isEmpty() const { return numbers.isEmpty(); }
    void clear();
};

// The condition on a row's document type that keeps the documents the order counters of this kind (the
// module's tipomovimento, "CO") hand out, and no delivery note that shares their numbers.
QString ordersOfKind(const QString& orderKind);

// Reads every row from the first: the number is the first column, the series the second.
ChosenOrders chosenOrders(data::Recordset& rows);

// Whether the orders to choose come from the program's own order-header view, which the windows choosing
// orders then read a page at a time, newest first, instead of grouping every order of the archive before
// the first is shown. A source the shop named itself is read whole, as it stands.
bool isOrderHeaderView(const QString& source);

// The change of state of the chosen orders between "EMESSO" and "RITIRATO": the orders of the source in
// the state they leave.
QString statusChoiceSql(const QString& source, const QString& fromState);
// One statement for all rows: collected orders become entries of the event kind, orders moved back
// become orders ("CO") again, which is how the program tells its own rows. Only rows of the document type
// that the order counters (codtipodoc orderKind) hand out change: a delivery note sharing a chosen number
// and series is another document and keeps its state and kind.
QString statusChangeSql(const QString& fromState, const QString& toState, const ChosenOrders& chosen,
                        const QString& orderKind);
void changeState(host::IHost& host, const QString& fromState, const QString& toState,
                 const ChosenOrders& chosen, const QString& orderKind);

// Once its statement is printed, every line of the order is collected, whatever its state was: the rows of
// the order's number in the series of its year, and no other series. Only rows of the order's own document
// type: a delivery note that shares the number and the series is another document and keeps its state.
QString collectedStatusSql(const QString& documento, int year, const QString& number);
void markOrderCollected(host::IHost& host, const QString& documento, int year, const QString& number);

// The rows the control slips print: every line of one order, the lines of the chosen orders (of the
// document type the order counters of orderKind hand out), one line of one order. A delivery note that
// shares a number and a series is another document: the workshop gets no slip for it.
QString slipSqlForOrder(const OrderKey& key);
QString slipSqlForChosen(const ChosenOrders& chosen, const QString& orderKind);
QString slipSqlForLine(qint64 rowid, const OrderKey& key);

// The cards to prepare for one day: the orders of that date that ask for cards.
QString cardsListSql(const QDate& day);

} // namespace xv::orders
