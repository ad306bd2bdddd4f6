// SPDX-License-Identifier: MIT
#include "OpenOrder.h"

#include "common/Conversions.h"
#include "common/RuntimeError.h"
#include "data/Recordset.h"
#include "host/IHost.h"

namespace xv::orders {

using common::RuntimeError;
using data::Recordset;

namespace {

[[noreturn]] void invalidUseOfNull(const QString& field)
{
    throw RuntimeError(common::ErrorNumber::InvalidUseOfNull,
                       QStringLiteral("Uso non valido di Null: %1").arg(field));
}

QString requiredText(const Recordset& rs, const QString& field)
{
    if (rs.isNull(field))
        invalidUseOfNull(field);
    return rs.text(field);
}

common::Money requiredMoney(const Recordset& rs, const QString& field)
{
    if (rs.isNull(field))
        invalidUseOfNull(field);
    return rs.money(field);
}

// The header as the first row holds it; a null where a value must be is an error, as on every line.
void readHeader(const Recordset& rs, OpenOrder& order)
{
    order.key = common::toInt32(common::numericValue(requiredText(rs, QStringLiteral("rowid"))));
    order.tipogestione = requiredText(rs, QStringLiteral("Tipogestione"));
    order.tipomovimento = requiredText(rs, QStringLiteral("Tipomovimento"));
    if (rs.isNull(QStringLiteral("datadocumento")))
        invalidUseOfNull(QStringLiteral("datadocumento"));
    order.datadocumento = rs.dateTime(QStringLiteral("datadocumento"));
    order.documento = requiredText(rs, QStringLiteral("documento"));
    order.numero = requiredText(rs, QStringLiteral("numero"));
    order.serie = requiredText(rs, QStringLiteral("serie"));
    order.tipoEvento = requiredText(rs, QStringLiteral("attrib04"));
    order.dataEvento = dateText(rs.value(QStringLiteral("attrib05")));
    order.soggettiEvento = requiredText(rs, QStringLiteral("attrib06"));
    order.datadal = dateText(rs.value(QStringLiteral("Datadal")));
    order.dataal = dateText(rs.value(QStringLiteral("Dataal")));
    order.riferimenti = requiredText(rs, QStringLiteral("riferimenti"));
    order.statoRiga = requiredText(rs, QStringLiteral("StatoRiga"));
    order.biglietti = requiredText(rs, QStringLiteral("attrib00"));
    order.amuleto = requiredText(rs, QStringLiteral("attrib01"));
    order.confetti = requiredText(rs, QStringLiteral("attrib02"));
    order.mandorla = requiredText(rs, QStringLiteral("attrib03"));
    order.customer = readOrderCustomer(rs);
    order.customer.rowidPagamento = requiredText(rs, QStringLiteral("Rowid_Pagamento"));
}

QVector<int> movimentiTypes(host::IHost& host)
{
    QVector<int> types;
    for (Recordset rs = host.OpenSchema(4, QStringLiteral("movimenti")); !rs.eof(); rs.moveNext())
        types << common::toInt32(common::numericValue(rs.text(QStringLiteral("Type"))));
    return types;
}

} // namespace

OpenOrder loadOrder(host::IHost& host, const QString& number, const QString& year)
{
    OpenOrder order;
    // The year before is taken from today, not from the year asked for: kept on purpose.
    QString found = number;
    const Recordset exists = host.OpenRecordset(existenceSql(number, QDate::currentDate().year() - 1, year));
    if (!exists.eof()) {
        found = exists.text(QStringLiteral("commissione"));
        order.acconto = requiredMoney(host.OpenRecordset(depositSql(found)), QStringLiteral("TotaleAcconto"));
        order.totale =
            requiredMoney(host.OpenRecordset(totalSql(found)), QStringLiteral("TotaleCommissione"));
    }
    Recordset rows = host.OpenRecordset(linesSql(found, year));
    if (rows.eof())
        return order;
    readHeader(rows, order);
    order.numero = found;
    const QVector<int> types = movimentiTypes(host);
    order.lines.reserve(rows.recordCount());
    for (; !rows.eof(); rows.moveNext())
        order.lines << gridCells(rows, types);
    return order;
}

} // namespace xv::orders
