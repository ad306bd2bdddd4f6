// SPDX-License-Identifier: MIT
#include "../common/ErrorNumberOf.h"

#include "common/Money.h"
#include "common/RuntimeError.h"
#include "lines/GridColumns.h"
#include "orders/NewLine.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace xv;
using namespace xv::lines;
using common::Money;
using orders::LineContext;
using orders::LineEntry;
using orders::newLineCells;

QString currency(qint64 raw)
{
    return Money::fromRaw(raw).toCurrencyText();
}

struct NewLineFixture
{
    LineEntry entry;
    orders::Order order;
    orders::ModuleSettings settings;
    LineContext context;

    NewLineFixture()
    {
        entry.codice = QStringLiteral("BOM001");
        entry.rowidArticolo = QStringLiteral("41");
        entry.descrizione = QStringLiteral("Bomboniera in porcellana");
        entry.qta = QStringLiteral("3");
        entry.prezzo = QStringLiteral("2,50");
        entry.totaleRiga = QStringLiteral("7,50 €");
        entry.dataRitiro = QStringLiteral("20/05/2026");
        entry.dataRitiro1 = QStringLiteral("18/05/2026");
        entry.dataRitiro2 = QStringLiteral("19/05/2026");
        entry.acconto = QStringLiteral("100");
        entry.riferimenti = QStringLiteral("Rif. sposi");
        entry.tipoEvento = QStringLiteral("Matrimonio");
        entry.dataEvento = QStringLiteral("23/5/26");
        entry.soggettiEvento = QStringLiteral("Marco e Giulia");
        entry.bigliettiTag = QStringLiteral("2");
        entry.amuletoTag = QString();
        entry.confetti = QStringLiteral("3.5 kg");
        entry.mandorla = QStringLiteral("dieci");
        entry.cioccolato = QStringLiteral("12");

        order.numero = QStringLiteral("77");
        order.documento = QStringLiteral("COMM");
        order.serie = QStringLiteral("2026");
        order.datadocumento = QDateTime(QDate(2026, 4, 4), QTime(0, 0));
        order.statoRiga = QStringLiteral("RITIRATO");
        orders::Customer& c = order.customer;
        c.key = 12;
        c.nominativo = QStringLiteral("Rossi Maria");
        c.codenominativo = QStringLiteral("C0012");
        c.indirizzo = QStringLiteral("Via Roma 1");
        c.cap = QStringLiteral("80100");
        c.comune = QStringLiteral("Napoli");
        c.spedizione = QStringLiteral("Corriere");
        c.provincia = QStringLiteral("NA");
        c.strada = QStringLiteral("SS7");
        c.telefono = QStringLiteral("081 123");
        c.cellulare = QStringLiteral("333 456");
        c.email = QStringLiteral("rossi@example.com");
        c.rowidPagamento = QStringLiteral("9");

        settings.tipogestione = QStringLiteral("0");
        settings.tipomovimento = QStringLiteral("CO");

        context.gridRow = 4;
        context.rowid = 1234;
        context.tipo = QStringLiteral("A");
        context.defaultPayment = 3;
        context.vatDefault = 22;
        context.now = QDateTime(QDate(2026, 4, 9), QTime(17, 45, 12));
    }
};

TEST(NewLineTest, EveryCellOfANewLineTakesItsOwnSource)
{
    const NewLineFixture f;
    const QStringList cells = newLineCells(f.entry, f.order, f.settings, f.context);
    ASSERT_EQ(cells.size(), ColCount);

    const std::pair<int, QString> expected[] = {
        {Col_rowid, "1234"},
        {Col_Tipogestione, "0"},
        {Col_Tipomovimento, "CO"},
        {Col_rowid_utente, "0"},
        {Col_Riga, "2"}, // grid row 4 is the third line; the lines are renumbered from 1 afterwards
        {Col_rowid_testata, "0"},
        {Col_rowid_deposito, "0"},
        {Col_numero, "77"},
        {Col_documento, "COMM"},
        {Col_serie, "2026"},
        {Col_datadocumento, "04/04/2026"},
        {Col_datareg, "09/04/2026"},
        {Col_Datadal, "18/05/2026"},
        {Col_oradal, "17:45:12"},
        {Col_Dataal, "19/05/2026"},
        {Col_oraal, "17:45:12"},
        {Col_codice_med, "BOM001"},
        {Col_rowid_med, "41"},
        {Col_Descrizione1, "Bomboniera in porcellana"},
        {Col_Descrizione2, ""},
        {Col_rowid_controparti, "12"},
        {Col_Nominativo, "Rossi Maria"},
        {Col_codenominativo, "C0012"},
        {Col_Indirizzo, "Via Roma 1"},
        {Col_Cap, "80100"},
        {Col_comune, "Napoli"},
        {Col_Spedizione, "Corriere"},
        {Col_provincia, "NA"},
        {Col_Strada, "SS7"},
        {Col_telefono, "081 123"},
        {Col_Cellulare, "333 456"},
        {Col_Email, "rossi@example.com"},
        {Col_qta, "3"},
        {Col_quantita, ""},
        {Col_prezzo, currency(25000)},
        {Col_prezzo2, currency(1000000)},
        {Col_sconto1, "0"},
        {Col_sconto2, "0"},
        {Col_codice_iva, "22"},
        {Col_percentuale, "22"},
        {Col_imponibile, currency(75000)},
        {Col_imposta, "1,65"},         // plain decimal text of the tax, without the currency symbol
        {Col_totale, currency(75000)}, // the tax is not added
        {Col_attrib00, "2"},
        {Col_attrib01, "0"}, // no amulet chosen reads as 0
        {Col_attrib02, "3.5"},
        {Col_attrib03, "0"},
        {Col_attrib04, "Matrimonio"},
        {Col_attrib05, "23/05/2026"},
        {Col_attrib06, "Marco e Giulia"},
        {Col_attrib07, ""},
        {Col_attrib08, ""},
        {Col_attrib09, "12"},
        {Col_attrib10, ""},
        {Col_StatoRiga, "RITIRATO"},
        {Col_Tipo, "A"},
        {Col_note, "20/05/2026"},
        {Col_Rowid_Pagamento, "3"}, // the host's default, not the customer's terms
        {Col_pagamento, "CONTANTI"},
        {Col_referente, ""},
        {Col_riferimenti, "Rif. sposi"},
    };
    std::set<int> checked;
    for (const auto& [col, text] : expected) {
        SCOPED_TRACE(col);
        EXPECT_EQ(cells[col], text);
        EXPECT_TRUE(checked.insert(col).second) << "column listed twice";
    }
    EXPECT_EQ(checked.size(), static_cast<size_t>(ColCount));
}

TEST(NewLineTest, WhatTheFormHoldsDecidesTheStatusAndTheDates)
{
    NewLineFixture f;
    f.order.statoRiga.clear();
    f.order.datadocumento = QDateTime(QDate(2026, 4, 4), QTime(9, 30));
    f.entry.dataEvento = QStringLiteral("a maggio");
    f.context.gridRow = FirstDataRow;
    const QStringList cells = newLineCells(f.entry, f.order, f.settings, f.context);
    EXPECT_EQ(cells[Col_StatoRiga], "EMESSO");
    EXPECT_EQ(cells[Col_datadocumento], "04/04/2026 09:30:00");
    EXPECT_EQ(cells[Col_attrib05], "a maggio"); // written as typed rather than lost
    EXPECT_EQ(cells[Col_Riga], "0");
}

TEST(NewLineTest, AnAmountThatIsNoAmountWritesNoLine)
{
    const std::pair<const char*, void (*)(LineEntry&)> cases[] = {
        {"price", [](LineEntry& e) { e.prezzo = QStringLiteral("due euro"); }},
        {"empty price", [](LineEntry& e) { e.prezzo.clear(); }},
        {"deposit", [](LineEntry& e) { e.acconto = QStringLiteral("boh"); }},
        {"line amount", [](LineEntry& e) { e.totaleRiga = QStringLiteral("?"); }},
    };
    for (const auto& [name, spoil] : cases) {
        SCOPED_TRACE(name);
        NewLineFixture f;
        spoil(f.entry);
        EXPECT_EQ(
            common::test::errorNumberOf([&f] { newLineCells(f.entry, f.order, f.settings, f.context); }),
            common::test::TypeMismatch);
    }
}

} // namespace
