// SPDX-License-Identifier: MIT
#include "OrderSave.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Recordset.h"
#include "data/SqlText.h"
#include "lines/GridColumns.h"
#include "orders/OrderCells.h"

#include <QSqlQuery>

namespace xv::orders {

using common::ErrorNumber;
using common::RuntimeError;
using namespace lines;

namespace {

// A date the header holds, as a date cell: a date shown the short way, anything else as it stands (an
// empty one stays empty, and the write rule makes it the moment of writing).
QString asDate(const QString& text)
{
    if (const auto when = common::parseDateAndTime(text))
        return common::shortDate(when->date);
    return text;
}

int columnNamed(const GridRows& grid, const QString& name)
{
    const qsizetype index = grid.names.indexOf(name, 0);
    if (index >= 0)
        return static_cast<int>(index);
    for (int c = 0; c < grid.names.size(); ++c) {
        if (grid.names[c].compare(name, Qt::CaseInsensitive) == 0)
            return c;
    }
    throw RuntimeError(ErrorNumber::FieldNotFound,
                       QStringLiteral("Elemento non trovato nell'insieme: colonna '%1'").arg(name));
}

bool orderExists(data::Database& db, const OrderKey& key)
{
    QSqlQuery query = db.execute(orderExistsSql(key));
    return query.next();
}

qint64 counterNumber(data::Database& db, qint32 idnumeratore)
{
    QSqlQuery query = db.execute(counterNumberSql(idnumeratore));
    if (!query.next())
        throw RuntimeError(ErrorNumber::NoCurrentRecord,
                           QStringLiteral("Numeratore %1 inesistente: impossibile assegnare un nuovo numero")
                               .arg(idnumeratore));
    return query.value(0).toLongLong();
}

// Another workstation may have saved an order under the number this one was proposed. Its rows stay; this
// order takes the counter's next free number instead, in the same transaction, so both orders are kept.
QString freeNumber(data::Database& db, const OrderWrite& order)
{
    OrderKey candidate = order.key;
    // The counter has already been advanced once for this order: its number is the first to try.
    candidate.numero = QString::number(counterNumber(db, order.idnumeratore));
    while (orderExists(db, candidate)) {
        const qint64 before = candidate.numero.toLongLong();
        db.execute(advanceCounterSql(order.idnumeratore));
        const qint64 after = counterNumber(db, order.idnumeratore);
        if (after <= before)
            throw RuntimeError(
                ErrorNumber::DatabaseError,
                QStringLiteral("Il numeratore %1 non avanza: impossibile assegnare un nuovo numero")
                    .arg(order.idnumeratore));
        candidate.numero = QString::number(after);
    }
    return candidate.numero;
}

// Only collected lines move stock: a new order takes what it collects out of both stock columns, an order
// saved again puts its lines back in, on every save.
void adjustStock(data::Database& db, const GridRows& grid, const QStringList& cells, qint32 orderKey)
{
    const auto cell = [&](const QString& name) { return cells.value(columnNamed(grid, name)); };
    if (cell(QStringLiteral("StatoRiga")).toUpper() != QLatin1String("RITIRATO"))
        return;
    const qint32 article = common::toInt32(common::numericValue(cell(QStringLiteral("rowid_med"))));
    double quantity = common::numericValue(cell(QStringLiteral("qta")));
    if (orderKey != 0)
        quantity = static_cast<float>(quantity); // the quantity as the row just stored keeps it
    const double change = orderKey == 0 ? -quantity : quantity;
    db.executeReused(QStringLiteral("update med set quantita_reale=quantita_reale+?, "
                                    "quantita_disponibile=quantita_disponibile+? where rowid=?"),
                     {change, change, article});
}

} // namespace

std::optional<WriteMode> writeModeFromLetter(const QString& letter)
{
    if (letter == QLatin1String("S"))
        return WriteMode::Save;
    if (letter == QLatin1String("A"))
        return WriteMode::Update;
    if (letter == QLatin1String("E"))
        return WriteMode::Delete;
    return std::nullopt;
}

void copyHeader(QVector<QStringList>& lines, const HeaderValues& header, const QDateTime& now)
{
    const Customer& c = header.customer;
    const QString written = common::shortDateTime(now);
    const QString time = now.time().toString(QStringLiteral("HH:mm:ss"));
    const QString state = header.statoRiga.isEmpty() ? QStringLiteral("EMESSO") : header.statoRiga;
    // The same for every line: read once, not once a line.
    const QString dataRitiro1 = asDate(header.dataRitiro1);
    const QString dataRitiro2 = asDate(header.dataRitiro2);
    const QString dataEvento = asDate(header.dataEvento);
    for (QStringList& cells : lines) {
        while (cells.size() < ColCount)
            cells << QString();
        putCustomer(cells, c);
        cells[Col_datareg] = written;
        cells[Col_Datadal] = dataRitiro1;
        cells[Col_oradal] = time;
        cells[Col_Dataal] = dataRitiro2;
        cells[Col_oraal] = time;
        cells[Col_attrib04] = header.tipoEvento;
        cells[Col_attrib05] = dataEvento;
        cells[Col_attrib06] = header.soggettiEvento;
        cells[Col_riferimenti] = header.riferimenti;
        cells[Col_StatoRiga] = state;
    }
}

QString advanceCounterSql(qint32 idnumeratore)
{
    return QStringLiteral("update numeratori set dataultdoc=now,numero=numero+1 where idnumeratore=") +
           QString::number(idnumeratore);
}

QString counterNumberSql(qint32 idnumeratore)
{
    return QStringLiteral("select numero from numeratori where idnumeratore=") +
           QString::number(idnumeratore);
}

QString removeOrderSql(const OrderKey& key)
{
    return QStringLiteral("delete from movimenti where ") + orderKeyCondition(key);
}

QString orderExistsSql(const OrderKey& key)
{
    return QStringLiteral("select rowid from movimenti where ") + orderKeyCondition(key);
}

qint32 gridOrderKey(const GridRows& grid)
{
    if (grid.lines.isEmpty())
        return 0;
    return common::toInt32(common::numericValue(grid.lines.first().value(Col_rowid)));
}

WriteResult writeOrder(data::Database& db, WriteMode mode, OrderWrite& order,
                       const std::function<bool()>& confirmDelete, const QDateTime& now)
{
    WriteResult result;
    result.numero = order.key.numero;
    data::Transaction transaction(db);
    const qint32 orderKey = gridOrderKey(order.grid);
    data::Recordset movimenti = data::Recordset::openTable(db, QStringLiteral("movimenti"));

    if (orderKey == 0)
        db.execute(advanceCounterSql(order.idnumeratore));

    // A new order has no rows of its own yet: rows under its number belong to an order another
    // workstation saved first, and are never removed from here. An update or a delete replaces the
    // order's own rows, also when its first line was added since it was loaded.
    if (!order.key.numero.isEmpty()) {
        if (mode != WriteMode::Save)
            db.execute(removeOrderSql(order.key));
        else if (orderExists(db, order.key)) {
            result.numero = freeNumber(db, order);
            result.renumbered = true;
        }
    }

    const int numberColumn = columnNamed(order.grid, QStringLiteral("numero"));
    const QString deposit = order.acconto.toCurrencyText();
    const QString total = order.totale.toCurrencyText();
    const QString zero = QStringLiteral("0");
    const QVector<int> fields = fieldIndexes(movimenti, order.grid.names);
    for (qsizetype r = 0; r < order.grid.lines.size(); ++r) {
        QStringList& cells = order.grid.lines[r];
        while (cells.size() < order.grid.names.size())
            cells << QString();
        cells[Col_prezzo2] = r == 0 ? deposit : zero;
        cells[Col_imposta] = r == 0 ? total : zero;
        if (result.renumbered)
            cells[numberColumn] = result.numero;
        if (mode == WriteMode::Delete)
            continue;
        movimenti.addNew();
        writeCells(movimenti, order.grid.names, fields, order.grid.typeCodes, cells, now);
        movimenti.update();
        adjustStock(db, order.grid, cells, orderKey);
    }

    if (mode == WriteMode::Delete) {
        if (!confirmDelete || !confirmDelete())
            return result; // the transaction rolls back: the rows removed above come back
        db.execute(removeOrderSql(order.key));
    }
    transaction.commit();
    if (result.renumbered)
        order.key.numero = result.numero;
    result.done = true;
    return result;
}

} // namespace xv::orders
