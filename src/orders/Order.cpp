// SPDX-License-Identifier: MIT
#include "Order.h"

#include "common/Conversions.h"
#include "common/RuntimeError.h"
#include "data/Recordset.h"
#include "data/SqlText.h"
#include "host/HostInterface.h"

#include <QUuid>

namespace xv::orders {

using common::RuntimeError;
using data::Recordset;
using data::sqlEscape;

namespace {

common::Money requiredMoney(const Recordset& rs, const QString& field)
{
    if (rs.isNull(field))
        invalidUseOfNull(field);
    return rs.money(field);
}

// The header as the first row holds it; a null where a value must be is an error, as on every line.
void readHeader(const Recordset& rs, Order& order)
{
    order.key = common::toInt32(common::numericValue(requiredText(rs, QStringLiteral("rowid"))));
    for (const HeaderText& text : headerTexts()) {
        const QString name = QString::fromLatin1(data::kMovimentiColumns[text.col].name);
        order.*text.field = text.nullable ? rs.text(name) : requiredText(rs, name);
    }
    if (rs.isNull(QStringLiteral("datadocumento")))
        invalidUseOfNull(QStringLiteral("datadocumento"));
    order.datadocumento = rs.dateTime(QStringLiteral("datadocumento"));
    order.dataEvento = dateText(rs.value(QStringLiteral("attrib05")));
    order.datadal = dateText(rs.value(QStringLiteral("Datadal")));
    order.dataal = dateText(rs.value(QStringLiteral("Dataal")));
    order.customer = readOrderCustomer(rs);
    order.customer.rowidPagamento = requiredText(rs, QStringLiteral("Rowid_Pagamento"));
}

int indexIn(const QString& text, int count)
{
    for (int i = 0; i < count; ++i) {
        if (text == QString::number(i))
            return i;
    }
    return -1;
}

} // namespace

std::span<const HeaderText> headerTexts()
{
    using namespace lines;
    static const HeaderText texts[] = {
        {Col_Tipogestione, &Order::tipogestione, false, false},
        {Col_Tipomovimento, &Order::tipomovimento, false, false},
        {Col_documento, &Order::documento, false, false},
        {Col_numero, &Order::numero, false, false},
        {Col_serie, &Order::serie, false, false},
        {Col_attrib04, &Order::tipoEvento, false, true},
        {Col_attrib06, &Order::soggettiEvento, false, true},
        {Col_riferimenti, &Order::riferimenti, false, true},
        {Col_StatoRiga, &Order::statoRiga, false, false},
        {Col_attrib00, &Order::biglietti, false, false},
        {Col_attrib01, &Order::amuleto, false, false},
        {Col_attrib02, &Order::confetti, false, false},
        {Col_attrib03, &Order::mandorla, false, false},
        {Col_attrib07, &Order::noteBiglietti, true, true},
        {Col_attrib08, &Order::frase, true, true},
    };
    return texts;
}

LineColumns lineColumns(host::IHost& host)
{
    LineColumns columns;
    for (Recordset rs = host.OpenSchema(4, QStringLiteral("movimenti")); !rs.eof(); rs.moveNext()) {
        columns.names << rs.text(QStringLiteral("Column"));
        columns.typeCodes << common::toInt32(common::numericValue(rs.text(QStringLiteral("Type"))));
    }
    return columns;
}

QString Order::newSaveId()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

OrderLock orderLock(const OrderKey& key)
{
    return {QStringLiteral("Commissioni ") + key.documento + QLatin1Char(' ') + key.serie,
            common::toInt32(common::numericValue(key.numero))};
}

QString orderKeyCondition(const OrderKey& key)
{
    return QStringLiteral("documento='") + sqlEscape(key.documento) + QStringLiteral("' and numero='") +
           sqlEscape(key.numero) + QStringLiteral("' and serie='") + sqlEscape(key.serie) + QLatin1Char('\'');
}

QString ordersByNumberSql(const QString& number, int year)
{
    return QStringLiteral("select commissione, serie, documento from mov_co where commissione='") +
           sqlEscape(number) + QStringLiteral("' and val(serie) in (") + QString::number(year - 1) +
           QLatin1Char(',') + QString::number(year) + QStringLiteral(") order by documento");
}

QString orderLinesSql(const OrderKey& key)
{
    return QStringLiteral("select * from movimenti where ") + orderKeyCondition(key) +
           QStringLiteral(" order by rowid");
}

QString orderSumsSql(const OrderKey& key)
{
    return QStringLiteral("select sum(prezzo2) as TotaleAcconto, sum(totale) as TotaleCommissione "
                          "from movimenti where ") +
           orderKeyCondition(key);
}

std::optional<OrderKey> findOrderByNumber(host::IHost& host, const QString& number, int year)
{
    std::optional<OrderKey> lastYears;
    for (Recordset rs = host.OpenRecordset(ordersByNumberSql(number, year)); !rs.eof(); rs.moveNext()) {
        const OrderKey key{rs.text(QStringLiteral("documento")), rs.text(QStringLiteral("commissione")),
                           rs.text(QStringLiteral("serie"))};
        if (common::numericValue(key.serie) == year)
            return key;
        if (!lastYears)
            lastYears = key;
    }
    return lastYears;
}

Order loadOrder(host::IHost& host, const OrderKey& key)
{
    Order order;
    Recordset rows = host.OpenRecordset(orderLinesSql(key));
    if (rows.eof())
        return order;
    const Recordset sums = host.OpenRecordset(orderSumsSql(key));
    order.acconto = requiredMoney(sums, QStringLiteral("TotaleAcconto"));
    order.totale = requiredMoney(sums, QStringLiteral("TotaleCommissione"));
    readHeader(rows, order);
    const QVector<int> types = lineColumns(host).typeCodes;
    order.lines.reserve(rows.recordCount());
    for (; !rows.eof(); rows.moveNext())
        order.lines << gridCells(rows, types);
    return order;
}

Order loadOrder(host::IHost& host, const QString& number, int year)
{
    const std::optional<OrderKey> key = findOrderByNumber(host, number, year);
    return key ? loadOrder(host, *key) : Order();
}

int cardFormat(const QString& biglietti)
{
    return indexIn(biglietti, 3);
}

int amuletOption(const QString& amuleto)
{
    return indexIn(amuleto, 2);
}

} // namespace xv::orders
