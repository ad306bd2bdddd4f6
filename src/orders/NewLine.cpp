// SPDX-License-Identifier: MIT
#include "NewLine.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "common/Money.h"
#include "lines/GridColumns.h"
#include "lines/Totals.h"
#include "orders/OrderSave.h"

namespace xv::orders {

namespace {

using common::Money;

QString numericText(const QString& text)
{
    return decimalText(common::numericValue(text));
}

// A date typed some other way is written as typed rather than lost.
QString shortDateText(const QString& text)
{
    const auto date = common::parseShortDate(text);
    return date ? common::shortDate(*date) : text;
}

} // namespace

QString decimalText(double value)
{
    return QString::number(value, 'g', 15);
}

QStringList newLineCells(const LineEntry& entry, const Order& order, const ModuleSettings& settings,
                         const LineContext& context)
{
    using namespace lines;
    const QString zero = QStringLiteral("0");
    const QString vat = QString::number(context.vatDefault);
    const QString time = context.now.time().toString(QStringLiteral("HH:mm:ss"));
    const Customer& c = order.customer;

    QStringList cells(ColCount);
    cells[Col_rowid] = QString::number(context.rowid);
    cells[Col_Tipogestione] = settings.tipogestione;
    cells[Col_Tipomovimento] = settings.tipomovimento;
    cells[Col_rowid_utente] = zero;
    cells[Col_Riga] = QString::number(context.gridRow - FirstDataRow);
    cells[Col_rowid_testata] = zero;
    cells[Col_rowid_deposito] = zero;
    cells[Col_numero] = order.numero;
    cells[Col_documento] = order.documento;
    cells[Col_serie] = order.serie;
    cells[Col_datadocumento] = common::shortDateTime(order.datadocumento);
    cells[Col_datareg] = common::shortDate(context.now.date());
    cells[Col_Datadal] = entry.dataRitiro1;
    cells[Col_oradal] = time;
    cells[Col_Dataal] = entry.dataRitiro2;
    cells[Col_oraal] = time;
    cells[Col_codice_med] = entry.codice;
    cells[Col_rowid_med] = entry.rowidArticolo;
    cells[Col_Descrizione1] = entry.descrizione;
    putCustomer(cells, c);
    cells[Col_qta] = entry.qta;
    cells[Col_prezzo] = Money::parse(entry.prezzo).toCurrencyText();
    cells[Col_prezzo2] = Money::parse(entry.acconto).toCurrencyText();
    cells[Col_sconto1] = zero;
    cells[Col_sconto2] = zero;
    cells[Col_codice_iva] = vat;
    cells[Col_percentuale] = vat;

    const LineAmounts amounts =
        newLineAmounts(entry.totaleRiga, cells[Col_sconto1], cells[Col_sconto2], cells[Col_percentuale]);
    cells[Col_imponibile] = amounts.imponibile;
    cells[Col_imposta] = amounts.imposta;
    cells[Col_totale] = amounts.totale;

    cells[Col_attrib00] = bigliettiCell(entry.bigliettiTag);
    cells[Col_attrib01] = numericText(entry.amuletoTag);
    cells[Col_attrib02] = numericText(entry.confetti);
    cells[Col_attrib03] = numericText(entry.mandorla);
    cells[Col_attrib04] = entry.tipoEvento;
    cells[Col_attrib05] = shortDateText(entry.dataEvento);
    cells[Col_attrib06] = entry.soggettiEvento;
    cells[Col_attrib09] = numericText(entry.cioccolato);
    cells[Col_StatoRiga] = order.statoRiga.isEmpty() ? QStringLiteral("EMESSO") : order.statoRiga;
    cells[Col_Tipo] = context.tipo;
    cells[Col_note] = entry.dataRitiro;
    cells[Col_Rowid_Pagamento] = QString::number(context.defaultPayment);
    cells[Col_pagamento] = QStringLiteral("CONTANTI");
    cells[Col_riferimenti] = entry.riferimenti;
    return cells;
}

} // namespace xv::orders
