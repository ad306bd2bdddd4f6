// SPDX-License-Identifier: MIT
#include "OrderSelections.h"

#include "common/Dates.h"
#include "data/Database.h"
#include "data/Recordset.h"
#include "data/SqlText.h"
#include "host/HostInterface.h"

namespace xv::orders {

using data::sqlEscape;

namespace {

const QString kCollected = QStringLiteral("RITIRATO");

const QString kSlipSelect = QStringLiteral(
    "SELECT numero,datadocumento,Codice_med,Descrizione1,qta as quantita,note as DataRitiro,"
    "datadal as DataRitiro1,dataal as DataRitiro2, rowid_controparti,Nominativo,codenominativo, "
    "rowid_med & '.bmp' as fotoart FROM movimenti ");

void appendQuoted(QString& list, const QString& value)
{
    if (!list.isEmpty())
        list += QLatin1Char(',');
    list += QLatin1Char('\'') + sqlEscape(value) + QLatin1Char('\'');
}

} // namespace

QString ordersOfKind(const QString& orderKind)
{
    return QStringLiteral("documento in (select tipodocumento from numeratori where codtipodoc='") +
           sqlEscape(orderKind) + QStringLiteral("')");
}

void ChosenOrders::clear()
{
    numbers.clear();
    series.clear();
}

ChosenOrders chosenOrders(data::Recordset& rows)
{
    ChosenOrders chosen;
    if (rows.fieldCount() < 2)
        return chosen;
    for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
        appendQuoted(chosen.numbers, data::variantText(rows.value(0)));
        appendQuoted(chosen.series, data::variantText(rows.value(1)));
    }
    return chosen;
}

bool isOrderHeaderView(const QString& source)
{
    return source.trimmed().compare(QLatin1String("Doc_Commissioni_testate"), Qt::CaseInsensitive) == 0;
}

QString statusChoiceSql(const QString& source, const QString& fromState)
{
    return QStringLiteral("SELECT * FROM ") + source + QStringLiteral(" WHERE [STATO COMMISSIONE]='") +
           sqlEscape(fromState) + QLatin1Char('\'');
}

QString statusChangeSql(const QString& fromState, const QString& toState, const ChosenOrders& chosen,
                        const QString& orderKind)
{
    const QString kind = toState == kCollected
                             ? QStringLiteral("tipogestione='EVENTO',tipomovimento='ENTRATA',")
                             : QStringLiteral("tipogestione='0',tipomovimento='CO',");
    return QStringLiteral("update movimenti set ") + kind + QStringLiteral(" StatoRiga='") +
           sqlEscape(toState) + QStringLiteral("' where StatoRiga='") + sqlEscape(fromState) +
           QStringLiteral("' AND numero in (") + chosen.numbers + QStringLiteral(") and serie in (") +
           chosen.series +
           QStringLiteral(") and ") + ordersOfKind(orderKind);
}

void changeState(host::IHost& host, const QString& fromState, const QString& toState,
                 const ChosenOrders& chosen, const QString& orderKind)
{
    host.GetConnection().execute(statusChangeSql(fromState, toState, chosen, orderKind));
}

QString collectedStatusSql(const QString& documento, int year, const QString& number)
{
    return QStringLiteral("update movimenti set statoriga='RITIRATO' where serie='") +
           sqlEscape(QString::number(year)) + QStringLiteral("' and numero='") + sqlEscape(number) +
           QStringLiteral("' and documento='") + sqlEscape(documento) + QLatin1Char('\'');
}

void markOrderCollected(host::IHost& host, const QString& documento, int year, const QString& number)
{
    host.GetConnection().execute(collectedStatusSql(documento, year, number));
}

QString slipSqlForOrder(const OrderKey& key)
{
    return kSlipSelect + QStringLiteral("where ") + orderKeyCondition(key);
}

QString slipSqlForChosen(const ChosenOrders& chosen, const QString& orderKind)
{
    return kSlipSelect + QStringLiteral("where numero in (") + chosen.numbers +
           QStringLiteral(") and serie in (") + chosen.series + QStringLiteral(") and ") +
           ordersOfKind(orderKind) + QStringLiteral(" ORDER BY numero asc");
}

QString slipSqlForLine(qint64 rowid, const OrderKey& key)
{
    return kSlipSelect + QStringLiteral("where rowid=") + QString::number(rowid) + QStringLiteral(" and ") +
           orderKeyCondition(key);
}

QString cardsListSql(const QDate& day)
{
    return QStringLiteral(
               "SELECT Nominativo as Cliente,DataRitiro,DataRitiro2,Cerimonia,DataCerimonia,"
               "NomeFesteggiato,Note,Dicitura FROM Doc_Commissioni_testate where Biglietti<>'' and "
               "DataComm=DateValue('") +
           common::shortDate(day) + QStringLiteral("')");
}

} // namespace xv::orders
