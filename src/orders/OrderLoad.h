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

// The texts that find and read one order. Numbers are looked up as text, quotes doubled.
QString existenceSql(const QString& number, int lastYear, const QString& year);
QString linesSql(const QString& number, const QString& year);
QString depositSql(const QString& number);
QString totalSql(const QString& number);
QString customerSql(qint32 key);

// The order's header as its first row holds it.
struct OrderHeader
{
    QString key; // rowid of the first line: empty or "0" for an order never saved
    QString tipogestione;
    QString tipomovimento;
    QDateTime datadocumento;
    QString documento;
    QString serie;
    QString tipoEvento;
    QString dataEvento;
    QString soggettiEvento;
    QString datadal;
    QString dataal;
    QString rowidPagamento;
    QString riferimenti;
    QString statoRiga;
    QString biglietti; // attrib00
    QString amuleto;   // attrib01
    QString confetti;  // attrib02
    QString mandorla;  // attrib03
};

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

// Read from the current row of the lines query; a null where a date is read is an error.
OrderHeader readHeader(const data::Recordset& rs);
Customer readOrderCustomer(const data::Recordset& rs);
// The customer of controparti's current row (nulls read as empty).
Customer readCounterpart(const data::Recordset& rs);

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
