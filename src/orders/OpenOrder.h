// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"
#include "orders/OrderLoad.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace xv::host {
class IHost;
}

namespace xv::orders {

// The rows that make one order. Numbers restart every year and other documents (the suppliers'
// delivery notes) share them, so a number alone names several documents: reading, rewriting and
// deleting an order go by all three values and touch no row of another order or document type.
struct OrderKey
{
    QString documento;
    QString numero;
    QString serie;
};

// The order open on the form, as one value: what was loaded or proposed, and what a save writes back.
struct OpenOrder
{
    qint32 key = 0;          // rowid of the first line: 0 for an order never saved
    qint32 idnumeratore = 0; // the counter that proposed the number of a new order
    QString tipogestione;
    QString tipomovimento;
    QString documento;
    QString numero;
    QString serie;
    QDateTime datadocumento;
    QString tipoEvento;     // attrib04
    QString dataEvento;     // attrib05
    QString soggettiEvento; // attrib06
    QString datadal;
    QString dataal;
    QString riferimenti;
    // The state of the first line, "EMESSO" until the order is collected.
    QString statoRiga = QStringLiteral("EMESSO");
    // The accessories: attrib00 the card format, attrib01 the amulet option, attrib02 and attrib03 the
    // quantities of sugared almonds and of almonds.
    QString biglietti;
    QString amuleto;
    QString confetti;
    QString mandorla;
    common::Money acconto;
    common::Money totale;
    // Its Rowid_Pagamento is the order's payment terms.
    Customer customer;
    // The 61 grid cells of every line, in the order of their row keys.
    QVector<QStringList> lines;

    OrderKey orderKey() const { return {documento, numero, serie}; }
};

// The condition that picks the rows of one order and of nothing else: its document type, number and series.
QString orderKeyCondition(const OrderKey& key);

// The orders, of an order document type, with this number in the year or the year before.
QString ordersByNumberSql(const QString& number, int year);
// The rows of one order, by their row keys, so that both engines give the lines in the same order.
QString orderLinesSql(const OrderKey& key);
// The deposit (TotaleAcconto) and the total (TotaleCommissione) of one order, from its own rows.
QString orderSumsSql(const OrderKey& key);

// The order a typed number opens: this year's with that number, else last year's.
std::optional<OrderKey> findOrderByNumber(host::IHost& host, const QString& number, int year);

// The whole order with this key; an empty order (no lines, key 0) when it has no rows. Throws on a
// value that cannot be read.
OpenOrder loadOrder(host::IHost& host, const OrderKey& key);
// The order a typed number opens in this year (see findOrderByNumber); empty when there is none.
OpenOrder loadOrder(host::IHost& host, const QString& number, int year);

// How the accessory columns read on screen: the card format attrib00 names (0 small, 1 large, 2 other),
// or -1 when the order wants no cards; the amulet option attrib01 names (0 with, 1 without), or -1 when
// none has been chosen. Anything but the plain decimal index names none.
int cardFormat(const QString& biglietti);
int amuletOption(const QString& amuleto);

} // namespace xv::orders
