// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"
#include "orders/Order.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

namespace xv::data {
class Database;
}
namespace xv::host {
class IHost;
}

namespace xv::orders {

// How an order is written: a new one, one already saved (its rows are removed and written again, so they
// get new row keys), or removed altogether. The letters are those the form passes.
enum class WriteMode : char {
    Save = 'S',
    Update = 'A',
    Delete = 'E',
};
std::optional<WriteMode> writeModeFromLetter(const QString& letter);

// The lines grid as it is written: the field names (grid row 0), their type codes (grid row 1) and one
// list of cells per line (grid rows 2 onwards), in the grid's column order.
struct GridRows
{
    QStringList names;
    QVector<int> typeCodes;
    QVector<QStringList> lines;
};

// Writes the order's header into every line: customer, the moment of writing, pick-up and ceremony dates as
// dates, references, the cards and the order's state ("EMESSO" for a new order).
void copyHeader(QVector<QStringList>& lines, const Order& order, const QDateTime& now);
// The cards' cell of a line: the format's index as a number, and empty for an order without cards, which
// a 0 (the small format) would turn into an order with cards when it is read back.
QString bigliettiCell(const QString& format);

// What a write needs besides the lines.
struct OrderWrite
{
    GridRows grid;
    OrderKey key;            // documento, numero and serie of the order
    qint32 idnumeratore = 0; // the counter a new order's number came from
    common::Money acconto;
    common::Money totale;
    // The identity of this save, kept with the order it writes: a save repeated with the same identity
    // after a commit whose outcome was lost finds its earlier write instead of storing the order again.
    QString saveId;
};

struct WriteResult
{
    // False only when a delete was not confirmed: everything was rolled back.
    bool done = false;
    // The number the order was written under. It differs from the one proposed when another workstation
    // saved an order under that number first.
    QString numero;
    bool renumbered = false;
    // The save had already been stored by an earlier attempt whose commit was not confirmed: the order
    // that attempt stored was written again, under its number and without changing the stock again.
    bool repeated = false;
};

// The statements of a write, each with its values quoted.
QString advanceCounterSql(qint32 idnumeratore);
QString counterNumberSql(qint32 idnumeratore);
QString removeOrderSql(const OrderKey& key);
QString orderExistsSql(const OrderKey& key);
// The articles among these keys that exist in the catalogue.
QString existingArticlesSql(const QList<qint32>& keys);

// Writes or deletes the order in one transaction on the connection: on any error everything is undone
// (rows, counter, stock) and the error goes on to the caller. The mode alone says whether the order is new
// (Save): it takes a number from the counter and its collected lines take stock out, where an order saved
// before (Update) gives its collected lines back. The grid's lines are changed as they are written: the
// first line carries deposit and total, every other line 0, and a renumbered order's lines carry the number
// it got. confirmDelete is asked, inside the transaction, before a delete is made final.
WriteResult writeOrder(data::Database& db, WriteMode mode, OrderWrite& order,
                       const std::function<bool()>& confirmDelete,
                       const QDateTime& now = QDateTime::currentDateTime());
// The same on the host's connection.
WriteResult writeOrder(host::IHost& host, WriteMode mode, OrderWrite& order,
                       const std::function<bool()>& confirmDelete);

} // namespace xv::orders
