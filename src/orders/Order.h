// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"
#include "lines/GridColumns.h"
#include "orders/OrderLoad.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>
#include <span>

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
// Whether it is new is its own to say, set when it is loaded or started and never read back from its
// lines: a line added to a new order can carry an article's key where a saved line carries its own.
struct Order
{
    qint32 key = 0;          // rowid of the first line when it was loaded: 0 for an order never saved
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
    // The wording printed on the cards and the notes for them (attrib08 and attrib07), which the cards
    // list prints.
    QString frase;
    QString noteBiglietti;
    common::Money acconto;
    common::Money totale;
    // Its Rowid_Pagamento is the order's payment terms.
    Customer customer;
    // The 61 grid cells of every line, in the order of their row keys.
    QVector<QStringList> lines;

    // The identity of the next save of this order: a new one for every order loaded or started, kept
    // through a save that failed, so that saving again after a lost commit finds what was stored.
    QString saveId = newSaveId();

    bool isNew() const { return key == 0; }
    OrderKey orderKey() const { return {documento, numero, serie}; }
    static QString newSaveId();
};

// The header texts an order's rows repeat, and the fields of the order that hold them: reading an order and
// writing its header into the lines both go by this list. Those the save writes into every line are the ones
// the operator types; the order's identity, its kind, state and accessories keep what the line was given.
// A null reads back as empty only where a stored order may leave the column empty.
struct HeaderText
{
    lines::Col col;
    QString Order::*field;
    bool nullable;
    bool writtenOnSave;
};
std::span<const HeaderText> headerTexts();

// The record lock of one order: its number, within its document type and series, so that the same number
// of another year or of a delivery note is another lock.
struct OrderLock
{
    QString table;
    qint32 record = 0;
};
OrderLock orderLock(const OrderKey& key);

// The columns of the order lines as the database describes them, in the table's order: their names and the
// type codes the grid's hidden rows carry.
struct LineColumns
{
    QStringList names;
    QVector<int> typeCodes;
};
LineColumns lineColumns(host::IHost& host);

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
Order loadOrder(host::IHost& host, const OrderKey& key);
// The order a typed number opens in this year (see findOrderByNumber); empty when there is none.
Order loadOrder(host::IHost& host, const QString& number, int year);

// How the accessory columns read on screen: the card format attrib00 names (0 small, 1 large, 2 other),
// or -1 when the order wants no cards; the amulet option attrib01 names (0 with, 1 without), or -1 when
// none has been chosen. Anything but the plain decimal index names none.
int cardFormat(const QString& biglietti);
int amuletOption(const QString& amuleto);

} // namespace xv::orders
