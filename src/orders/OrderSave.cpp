// SPDX-License-Identifier: MIT
#include "OrderSave.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Recordset.h"
#include "data/SqlText.h"
#include "data/TypeCodes.h"
#include "host/HostInterface.h"
#include "lines/GridColumns.h"
#include "orders/OrderCells.h"

#include <QSet>
#include <QSqlQuery>

#include <algorithm>

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

bool isCollected(const GridRows& grid, const QStringList& cells)
{
    static const QString state = QStringLiteral("StatoRiga");
    return cells.value(columnNamed(grid, state)).toUpper() == QLatin1String("RITIRATO");
}

qint32 articleOf(const GridRows& grid, const QStringList& cells)
{
    return common::toInt32(common::numericValue(cells.value(columnNamed(grid, QStringLiteral("rowid_med")))));
}

// A collected line whose article has left the catalogue would change no stock, silently: the save stops
// before anything is written, naming the article, as a look-up of the article would have.
void requireArticles(data::Database& db, const GridRows& grid)
{
    QSet<qint32> wanted;
    for (const QStringList& cells : grid.lines) {
        if (isCollected(grid, cells))
            wanted.insert(articleOf(grid, cells));
    }
    if (wanted.isEmpty())
        return;
    QList<qint32> keys(wanted.cbegin(), wanted.cend());
    std::sort(keys.begin(), keys.end());
    QSqlQuery query = db.execute(existingArticlesSql(keys));
    while (query.next())
        wanted.remove(common::toInt32(query.value(0).toDouble()));
    if (!wanted.isEmpty())
        throw RuntimeError(
            ErrorNumber::NoCurrentRecord,
            QStringLiteral("Articolo inesistente (rowid %1): impossibile aggiornare la giacenza")
                .arg(*std::min_element(wanted.cbegin(), wanted.cend())));
}

// Only collected lines move stock: a new order takes what it collects out of both stock columns, an order
// saved again puts its lines back in, on every save.
void adjustStock(data::Database& db, const GridRows& grid, const QStringList& cells, bool newOrder)
{
    if (!isCollected(grid, cells))
        return;
    double quantity = common::numericValue(cells.value(columnNamed(grid, QStringLiteral("qta"))));
    if (!newOrder)
        quantity = static_cast<float>(quantity); // the quantity as the row just stored keeps it
    const double change = newOrder ? -quantity : quantity;
    db.executeReused(QStringLiteral("update med set quantita_reale=quantita_reale+?, "
                                    "quantita_disponibile=quantita_disponibile+? where rowid=?"),
                     {change, change, articleOf(grid, cells)});
}

const QString kFindSave = QStringLiteral("select documento, numero, serie from salvataggi where id = ?");
const QString kKeepSave =
    QStringLiteral("insert into salvataggi (id, documento, numero, serie, dal) values (?, ?, ?, ?, ?)");

// The order an earlier attempt of this save stored, when its commit went through after all.
std::optional<OrderKey> earlierSave(data::Database& db, const QString& saveId)
{
    if (saveId.isEmpty())
        return std::nullopt;
    QSqlQuery query = db.executeBound(kFindSave, {saveId});
    if (!query.next())
        return std::nullopt;
    return OrderKey{query.value(0).toString(), query.value(1).toString(), query.value(2).toString()};
}

} // namespace

QString bigliettiCell(const QString& format)
{
    return format.isEmpty() ? QString() : QString::number(common::numericValue(format), 'g', 15);
}

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

void copyHeader(QVector<QStringList>& lines, const Order& header, const QDateTime& now)
{
    const Customer& c = header.customer;
    const QString written = common::shortDateTime(now);
    const QString time = now.time().toString(QStringLiteral("HH:mm:ss"));
    const QString state =
        header.isNew() || header.statoRiga.isEmpty() ? QStringLiteral("EMESSO") : header.statoRiga;
    // The same for every line: read once, not once a line.
    const QString dataRitiro1 = asDate(header.datadal);
    const QString dataRitiro2 = asDate(header.dataal);
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
        for (const HeaderText& text : headerTexts()) {
            if (text.writtenOnSave)
                cells[text.col] = header.*text.field;
        }
        cells[Col_attrib05] = dataEvento;
        cells[Col_StatoRiga] = state;
        cells[Col_attrib00] = bigliettiCell(header.biglietti);
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

QString existingArticlesSql(const QList<qint32>& keys)
{
    QStringList numbers;
    for (qint32 key : keys)
        numbers << QString::number(key);
    return QStringLiteral("select rowid from med where rowid in (") + numbers.join(QLatin1Char(',')) +
           QLatin1Char(')');
}

WriteResult writeOrder(data::Database& db, WriteMode mode, OrderWrite& order,
                       const std::function<bool()>& confirmDelete, const QDateTime& now)
{
    WriteResult result;
    result.numero = order.key.numero;
    data::Transaction transaction(db);
    if (mode != WriteMode::Delete) {
        // This save was stored by an attempt whose commit was not confirmed: the order is that one. It
        // is written again as it stands now, so that nothing changed since is lost, but it takes no
        // second number and moves no stock a second time.
        if (const std::optional<OrderKey> stored = earlierSave(db, order.saveId)) {
            result.repeated = true;
            result.numero = stored->numero;
            result.renumbered = stored->numero != order.key.numero;
            order.key = *stored;
        }
        requireArticles(db, order.grid);
    }
    const bool newOrder = mode == WriteMode::Save && !result.repeated;
    data::Recordset movimenti = data::Recordset::openTable(db, QStringLiteral("movimenti"));
    // The lines go to the table many to a statement: a server then answers ten times for a thousand lines,
    // not a thousand. Nothing here reads their keys back; the order is read again once it is stored.
    movimenti.gatherAddedRecords();

    if (newOrder)
        db.execute(advanceCounterSql(order.idnumeratore));

    // A new order has no rows of its own yet: rows under its number belong to an order another
    // workstation saved first, and are never removed from here. An update or a delete replaces the
    // order's own rows, also when its first line was added since it was loaded.
    if (!order.key.numero.isEmpty()) {
        if (!newOrder)
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
        if (!result.repeated)
            adjustStock(db, order.grid, cells, newOrder);
    }

    movimenti.writeAddedRecords();

    if (mode == WriteMode::Delete) {
        if (!confirmDelete || !confirmDelete())
            return result; // the transaction rolls back: the rows removed above come back
        db.execute(removeOrderSql(order.key));
    } else if (!order.saveId.isEmpty() && !result.repeated) {
        db.executeBound(kKeepSave, {order.saveId, order.key.documento, result.numero, order.key.serie,
                                    db.toStorage(now, data::TypeCode::Date)});
    }
    transaction.commit();
    if (result.renumbered)
        order.key.numero = result.numero;
    result.done = true;
    return result;
}

WriteResult writeOrder(host::IHost& host, WriteMode mode, OrderWrite& order,
                       const std::function<bool()>& confirmDelete)
{
    return writeOrder(host.GetConnection(), mode, order, confirmDelete);
}

} // namespace xv::orders
