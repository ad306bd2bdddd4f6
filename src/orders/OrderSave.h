// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"
#include "orders/OpenOrder.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

namespace xv::data {
class Database;
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

// The header values every line repeats, as the form holds them when the order is saved.
struct HeaderValues
{
    Customer customer;
    QString dataRitiro1;
    QString dataRitiro2;
    QString tipoEvento;
    QString dataEvento;
    QString soggettiEvento;
    QString riferimenti;
    QString statoRiga; // empty for an order never saved
};

// Writes the header into every line: customer, the moment of writing, pick-up and ceremony dates as dates,
// references and the order's state ("EMESSO" for a new order).
void copyHeader(QVector<QStringList>& lines, const HeaderValues& header, const QDateTime& now);

// What a write needs besides the lines.
struct OrderWrite
{
    GridRows grid;
    OrderKey key;            // documento, numero and serie of the order
    qint32 idnumeratore = 0; // the counter a new order's number came from
    common::Money acconto;
    common::Money totale;
};

struct WriteResult
{
    // False only when a delete was not confirmed: everything was rolled back.
    bool done = false;
    // The number the order was written under. It differs from the one proposed when another workstation
    // saved an order under that number first.
    QString numero;
    bool renumbered = false;
};

// The statements of a write, each with its values quoted.
QString advanceCounterSql(qint32 idnumeratore);
QString counterNumberSql(qint32 idnumeratore);
QString removeOrderSql(const OrderKey& key);
QString orderExistsSql(const OrderKey& key);

// Writes or deletes the order in one transaction on the connection: on any error everything is undone
// (rows, counter, stock) and the error goes on to the caller. The grid's lines are changed as they are
// written: the first line carries deposit and total, every other line 0, and a renumbered order's lines
// carry the number it got. confirmDelete is asked, inside the transaction, before a delete is made final.
WriteResult writeOrder(data::Database& db, WriteMode mode, OrderWrite& order,
                       const std::function<bool()>& confirmDelete,
                       const QDateTime& now = QDateTime::currentDateTime());

// The order key a grid's first line carries: its row key, 0 when it has never been saved.
qint32 gridOrderKey(const GridRows& grid);

} // namespace xv::orders
