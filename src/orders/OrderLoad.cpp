// SPDX-License-Identifier: MIT
#include "OrderLoad.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "data/Recordset.h"
#include "data/SqlText.h"
#include "data/TypeCodes.h"
#include "host/HostInterface.h"
#include "lines/GridColumns.h"

namespace xv::orders {

using common::RuntimeError;
using data::Recordset;

QString customerSql(qint32 key)
{
    return QStringLiteral("Select * from controparti where rowid=") + QString::number(key);
}

QString customersNamedSql(const QString& typedName)
{
    return QStringLiteral(
               "select rowid, ragsoc, comune, telefono, email from controparti where ragsoc like '") +
           data::sqlEscape(typedName) + QStringLiteral("%' order by ragsoc");
}

std::optional<Customer> findCustomer(host::IHost& host, qint32 key)
{
    const Recordset known = host.OpenRecordset(customerSql(key));
    if (known.eof())
        return std::nullopt;
    return readCounterpart(known);
}

namespace {

// The customer's columns in an order's rows, and the fields that hold them: every mapping of the customer
// between rows, lines and the order reads this one list. A null reads back as empty only where a stored
// order may leave the column empty.
struct CustomerColumn
{
    lines::Col col;
    QString Customer::*field;
    bool nullable;
};

const CustomerColumn kCustomerColumns[] = {
    {lines::Col_Nominativo, &Customer::nominativo, false},
    {lines::Col_codenominativo, &Customer::codenominativo, false},
    {lines::Col_Indirizzo, &Customer::indirizzo, false},
    {lines::Col_Cap, &Customer::cap, false},
    {lines::Col_comune, &Customer::comune, false},
    {lines::Col_Spedizione, &Customer::spedizione, false},
    {lines::Col_provincia, &Customer::provincia, false},
    {lines::Col_Strada, &Customer::strada, true},
    {lines::Col_telefono, &Customer::telefono, false},
    {lines::Col_Cellulare, &Customer::cellulare, true},
    {lines::Col_Email, &Customer::email, true},
};

QString columnName(lines::Col col)
{
    return QString::fromLatin1(data::kMovimentiColumns[col].name);
}

} // namespace

void putCustomer(QStringList& cells, const Customer& c)
{
    cells[lines::Col_rowid_controparti] = QString::number(c.key);
    for (const CustomerColumn& column : kCustomerColumns)
        cells[column.col] = c.*column.field;
}

Customer customerOfCells(const QStringList& cells)
{
    Customer c;
    c.key = common::toInt32(common::numericValue(cells.value(lines::Col_rowid_controparti)));
    for (const CustomerColumn& column : kCustomerColumns)
        c.*column.field = cells.value(column.col);
    return c;
}

QString Customer::addressTip() const
{
    return indirizzo + QStringLiteral(" - CAP: ") + cap + QStringLiteral(" - ") + comune + QLatin1Char('(') +
           provincia + QLatin1Char(')');
}

Customer readOrderCustomer(const Recordset& rs)
{
    Customer c;
    c.key = common::toInt32(common::numericValue(requiredText(rs, columnName(lines::Col_rowid_controparti))));
    for (const CustomerColumn& column : kCustomerColumns) {
        const QString name = columnName(column.col);
        c.*column.field = column.nullable ? rs.text(name) : requiredText(rs, name);
    }
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
