// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"
#include "orders/OrderLoad.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

namespace xv::host {
class IHost;
}

namespace xv::orders {

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
    // The 61 grid cells of every line, as read.
    QVector<QStringList> lines;
};

// The order with this number in the year, loaded whole; an empty order (no lines, key 0) when there is
// none. Throws on a value that cannot be read.
OpenOrder loadOrder(host::IHost& host, const QString& number, const QString& year);

} // namespace xv::orders
