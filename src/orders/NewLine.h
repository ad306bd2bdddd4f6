// SPDX-License-Identifier: MIT
#pragma once

#include "orders/ModuleSettings.h"
#include "orders/Order.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace xv::orders {

// The form's fields a new line is made of, as they read on screen when the line is written.
struct LineEntry
{
    // The line entry fields.
    QString codice;
    QString rowidArticolo;
    QString descrizione;
    QString qta;
    QString prezzo;
    // The line amount shown beside the price, which the line's taxable amount is taken from.
    QString totaleRiga;
    QString dataRitiro;
    // The header fields every line repeats.
    QString dataRitiro1;
    QString dataRitiro2;
    QString acconto;
    QString riferimenti;
    QString tipoEvento;
    QString dataEvento;
    QString soggettiEvento;
    // The accessories: the card format (empty when no cards are wanted), the Tag of the amulet options,
    // and the three quantities.
    QString bigliettiTag;
    QString amuletoTag;
    QString confetti;
    QString mandorla;
    QString cioccolato;
};

// What else a new line takes from the form and the host at the moment it is written.
struct LineContext
{
    int gridRow = 0;  // the grid row written; the line is numbered from it until the lines are renumbered
    qint32 rowid = 0; // 0, or the rowid_med of the line of the same article that the new one replaces
    QString tipo;     // the kind of line the form holds
    qint16 defaultPayment = 0;
    qint16 vatDefault = 0;
    QDateTime now;
};

// The 61 cells of a new line, with its amounts: taxable amount and total equal to the line amount, the
// tax beside them. Throws when the price, the deposit or the line amount is not an amount.
QStringList newLineCells(const LineEntry& entry, const Order& order, const ModuleSettings& settings,
                         const LineContext& context);

// A number as a cell holds it: plain decimal text with a '.' point, as the numeric reading takes it back.
QString decimalText(double value);

} // namespace xv::orders
