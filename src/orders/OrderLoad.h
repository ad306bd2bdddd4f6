// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"
#include "orders/OrderCells.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace xv::host {
class IHost;
}
namespace xv::data {
class Recordset;
}

namespace xv::orders {

// The customer with this key in controparti.
QString customerSql(qint32 key);
// The known customers whose name starts with the typed one, for the operator to pick from.
QString customersNamedSql(const QString& typedName);

// The customer fields of an order or of a new order.
struct Customer
{
    qint32 key = 0;
    QString nominativo;
    QString codenominativo;
    QString indirizzo;
    QString cap;
    QString comune;
    QString spedizione;
    QString provincia;
    QString strada;
    QString telefono;
    QString cellulare;
    QString email;
    QString rowidPagamento;

    // "Via Roma 1 - CAP: 80100 - Napoli(NA)": no blank before the bracket, kept as it is.
    QString addressTip() const;
};

// The customer of an order's row; a null where none may be is an error.
Customer readOrderCustomer(const data::Recordset& rs);
// The customer of controparti's current row (nulls read as empty).
Customer readCounterpart(const data::Recordset& rs);
// The known customer with this key; nothing when there is none.
std::optional<Customer> findCustomer(host::IHost& host, qint32 key);
// Writes the customer into a line's cells (rowid_controparti to Email), as every line of an order repeats it.
void putCustomer(QStringList& cells, const Customer& customer);
// The customer a line's cells carry (rowid_controparti to Email).
Customer customerOfCells(const QStringList& cells);

// The number a new order is proposed, from the counter of its document type and year.
struct NumberProposal
{
    qint32 counterKey = 0;
    QString numero;
    QString serie;
    QString documento;
};
// Unset when there is no counter (its key is less than 1).
std::optional<NumberProposal> proposeNumber(host::IHost& host, const QString& tipomovimento, int year);

} // namespace xv::orders
