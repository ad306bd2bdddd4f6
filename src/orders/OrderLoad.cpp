// SPDX-License-Identifier: MIT
#include "OrderLoad.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "host/IHost.h"
#include "data/Recordset.h"
#include "data/SqlText.h"
#include "data/TypeCodes.h"
#include "lines/GridColumns.h"


namespace xv::orders {

using common::RuntimeError;
using data::Recordset;
using data::sqlEscape;

QString existenceSql(const QString& number, int lastYear, const QString& year)
{
    return QStringLiteral("select commissione from mov_co where commissione='") + sqlEscape(number) +
           QStringLiteral("' and year([Data Commissione]) IN ( ") + QString::number(lastYear) + QStringLiteral(" , ") +
           sqlEscape(year) + QStringLiteral(" )");
}

QString linesSql(const QString& number, const QString& year)
{
    const double previous = common::numericValue(year) - 1;
    return QStringLiteral("select * from movimenti where numero='") + sqlEscape(number) +
           QStringLiteral("' and val(serie) in (") + QString::number(previous, 'g', 15) + QLatin1Char(',') +
           sqlEscape(year) + QLatin1Char(')');
}

QString depositSql(const QString& number)
{
    return QStringLiteral("select sum(m1.prezzo2) as totaleacconto from movimenti AS m1 where m1.numero='") +
           sqlEscape(number) + QLatin1Char('\'');
}

QString totalSql(const QString& number)
{
    return QStringLiteral("select sum(m1.totale) as TotaleCommissione from movimenti AS m1 where m1.numero='") +
           sqlEscape(number) + QLatin1Char('\'');
}

QString customerSql(qint32 key)
{
    return QStringLiteral("Select * from controparti where rowid=") + QString::number(key);
}

namespace {

[[noreturn]] void invalidUseOfNull(const QString& field)
{
    throw RuntimeError(common::ErrorNumber::InvalidUseOfNull, QStringLiteral("Uso non valido di Null: %1").arg(field));
}

QString textOrEmpty(const Recordset& rs, const QString& field)
{
    return rs.text(field);
}

QString requiredText(const Recordset& rs, const QString& field)
{
    if (rs.isNull(field))
        invalidUseOfNull(field);
    return rs.text(field);
}

} // namespace

QString Customer::addressTip() const
{
    return indirizzo + QStringLiteral(" - CAP: ") + cap + QStringLiteral(" - ") + comune + QLatin1Char('(') +
           provincia + QLatin1Char(')');
}

OrderHeader readHeader(const Recordset& rs)
{
    OrderHeader h;
    h.key = requiredText(rs, QStringLiteral("rowid"));
    h.tipogestione = requiredText(rs, QStringLiteral("Tipogestione"));
    h.tipomovimento = requiredText(rs, QStringLiteral("Tipomovimento"));
    if (rs.isNull(QStringLiteral("datadocumento")))
        invalidUseOfNull(QStringLiteral("datadocumento"));
    h.datadocumento = rs.dateTime(QStringLiteral("datadocumento"));
    h.documento = requiredText(rs, QStringLiteral("documento"));
    h.serie = requiredText(rs, QStringLiteral("serie"));
    h.tipoEvento = requiredText(rs, QStringLiteral("attrib04"));
    h.dataEvento = dateText(rs.value(QStringLiteral("attrib05")));
    h.soggettiEvento = requiredText(rs, QStringLiteral("attrib06"));
    h.datadal = dateText(rs.value(QStringLiteral("Datadal")));
    h.dataal = dateText(rs.value(QStringLiteral("Dataal")));
    h.rowidPagamento = requiredText(rs, QStringLiteral("Rowid_Pagamento"));
    h.riferimenti = requiredText(rs, QStringLiteral("riferimenti"));
    h.statoRiga = requiredText(rs, QStringLiteral("StatoRiga"));
    h.biglietti = requiredText(rs, QStringLiteral("attrib00"));
    h.amuleto = requiredText(rs, QStringLiteral("attrib01"));
    h.confetti = requiredText(rs, QStringLiteral("attrib02"));
    h.mandorla = requiredText(rs, QStringLiteral("attrib03"));
    return h;
}

Customer readOrderCustomer(const Recordset& rs)
{
    Customer c;
    c.key = common::toInt32(common::numericValue(requiredText(rs, QStringLiteral("rowid_controparti"))));
    c.nominativo = requiredText(rs, QStringLiteral("Nominativo"));
    c.codenominativo = requiredText(rs, QStringLiteral("codenominativo"));
    c.indirizzo = requiredText(rs, QStringLiteral("Indirizzo"));
    c.cap = requiredText(rs, QStringLiteral("Cap"));
    c.comune = requiredText(rs, QStringLiteral("comune"));
    c.spedizione = requiredText(rs, QStringLiteral("Spedizione"));
    c.provincia = requiredText(rs, QStringLiteral("provincia"));
    c.strada = textOrEmpty(rs, QStringLiteral("Strada"));
    c.telefono = requiredText(rs, QStringLiteral("telefono"));
    c.cellulare = textOrEmpty(rs, QStringLiteral("Cellulare"));
    c.email = textOrEmpty(rs, QStringLiteral("Email"));
    return c;
}

Customer readCounterpart(const Recordset& rs)
{
    Customer c;
    c.key = common::toInt32(rs.number(QStringLiteral("rowid")));
    c.nominativo = rs.text(QStringLiteral("ragsoc"));
    c.email = rs.text(QStringLiteral("Email"));
    c.codenominativo = rs.text(QStringLiteral("Code"));
    c.indirizzo = rs.text(QStringLiteral("Indirizzo"));
    c.cap = rs.text(QStringLiteral("Cap"));
    c.comune = rs.text(QStringLiteral("comune"));
    c.provincia = rs.text(QStringLiteral("provincia"));
    c.rowidPagamento = rs.text(QStringLiteral("Rowid_Pagamento"));
    c.telefono = rs.text(QStringLiteral("telefono"));
    c.cellulare = rs.text(QStringLiteral("Cellulare"));
    return c;
}

std::optional<NumberProposal> proposeNumber(host::IHost& host, const QString& tipomovimento, int year)
{
    const QString key = host.LookupByTwoKeys(QStringLiteral("numeratori"), QStringLiteral("codtipodoc"),
                                             QStringLiteral("serie"), tipomovimento, QString::number(year),
                                             QStringLiteral("idnumeratore"));
    const qint32 counterKey = common::toInt32(common::numericValue(key));
    if (counterKey < 1)
        return std::nullopt;
    const Recordset counter = host.OpenRecordset(
        QStringLiteral("select numero, serie, tipodocumento from numeratori where idnumeratore=") +
        QString::number(counterKey));
    if (counter.eof())
        return std::nullopt;
    NumberProposal p;
    p.counterKey = counterKey;
    p.numero = QString::number(common::numericValue(counter.text(QStringLiteral("numero"))) + 1, 'g', 15);
    p.serie = counter.text(QStringLiteral("serie"));
    p.documento = counter.text(QStringLiteral("tipodocumento"));
    return p;
}

} // namespace xv::orders
