// SPDX-License-Identifier: MIT
#include "OrderLoad.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "data/Recordset.h"
#include "data/SqlText.h"
#include "data/TypeCodes.h"
#include "host/IHost.h"
#include "lines/GridColumns.h"

namespace xv::orders {

using common::RuntimeError;
using data::Recordset;

QString customerSql(qint32 key)
{
    return QStringLiteral("Select * from controparti where rowid=") + QString::number(key);
}

namespace {

QString textOrEmpty(const Recordset& rs, const QString& field)
{
    return rs.text(field);
}

} // namespace

void putCustomer(QStringList& cells, const Customer& c)
{
    using namespace lines;
    cells[Col_rowid_controparti] = QString::number(c.key);
    cells[Col_Nominativo] = c.nominativo;
    cells[Col_codenominativo] = c.codenominativo;
    cells[Col_Indirizzo] = c.indirizzo;
    cells[Col_Cap] = c.cap;
    cells[Col_comune] = c.comune;
    cells[Col_Spedizione] = c.spedizione;
    cells[Col_provincia] = c.provincia;
    cells[Col_Strada] = c.strada;
    cells[Col_telefono] = c.telefono;
    cells[Col_Cellulare] = c.cellulare;
    cells[Col_Email] = c.email;
}

QString Customer::addressTip() const
{
    return indirizzo + QStringLiteral(" - CAP: ") + cap + QStringLiteral(" - ") + comune + QLatin1Char('(') +
           provincia + QLatin1Char(')');
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
