// SPDX-License-Identifier: MIT
#include "orders/SaveChecks.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using xv::host::Icon;
using xv::orders::checkBeforeSaving;
using xv::orders::SaveFields;

SaveFields completeOrder()
{
    SaveFields f;
    f.dataRitiro1 = "10/06/2027";
    f.dataRitiro2 = "12/06/2027";
    f.ragsoc = "Rossi Maria";
    f.telefono = "0831 123456";
    f.cellulare = "333 1234567";
    f.rowidUtente = "mario";
    f.dataReg = "23/11/2026";
    f.tipoEvento = "Matrimonio";
    f.dataEvento = "20/06/2027";
    f.soggettiEvento = "Marco e Giulia";
    f.bigliettiTicked = true;
    f.frase = "Oggi sposi";
    f.lineCount = 2;
    f.amuletoTag = "0";
    f.totale = "80,00\u00a0€"; // the blank Money writes before the symbol
    f.acconto = "10,00 €";
    return f;
}

struct Case
{
    const char* name;
    std::function<void(SaveFields&)> change;
    int step; // 0: passes
    const char* message;
    Icon icon;
    const char* focus;
};

class SaveChecksTable : public ::testing::TestWithParam<Case>
{
};

TEST_P(SaveChecksTable, StopsAtTheFirstFailureWithItsMessageIconAndField)
{
    const Case& c = GetParam();
    SaveFields f = completeOrder();
    c.change(f);
    const auto check = checkBeforeSaving(f, [] { return QStringLiteral("operatore"); });
    EXPECT_EQ(check.step, c.step);
    EXPECT_EQ(check.passed(), c.step == 0);
    EXPECT_EQ(check.message, QString::fromUtf8(c.message));
    EXPECT_EQ(check.icon, c.icon);
    EXPECT_EQ(check.focus, QString::fromLatin1(c.focus));
}

const char* const kPickUp = "Attenzione uno di questi campi 'Data Ritiro 1-2' non può essere vuoto!";
const char* const kName = "Attenzione questo campo non può essere vuoto!";
const char* const kPhone = "Attenzione uno di questi campi 'Telefono 1-2' non può essere vuoto!";
const char* const kDateReg =
    "Attenzione la Data di Registrazione non può essere vuota oppure non è corretta!";

INSTANTIATE_TEST_SUITE_P(
    Steps, SaveChecksTable,
    ::testing::Values(
        Case{"Complete", [](SaveFields&) {}, 0, "", Icon::None, ""},
        Case{"NoPickUpDate", [](SaveFields& f) { f.dataRitiro1.clear(), f.dataRitiro2.clear(); }, 1, kPickUp,
             Icon::Information, "txt_dataRitiro1"},
        Case{"OnlySecondPickUp", [](SaveFields& f) { f.dataRitiro1.clear(); }, 0, "", Icon::None, ""},
        Case{"NoName", [](SaveFields& f) { f.ragsoc.clear(); }, 2, kName, Icon::Information, "txt_ragsoc"},
        Case{"NoNameNoPhoneShowsTheNameOnly",
             [](SaveFields& f) { f.ragsoc.clear(), f.telefono.clear(), f.cellulare.clear(); }, 2, kName,
             Icon::Information, "txt_ragsoc"},
        Case{"NoPhone", [](SaveFields& f) { f.telefono.clear(), f.cellulare.clear(); }, 3, kPhone,
             Icon::Information, "txt_telefono"},
        Case{"OnlyMobile", [](SaveFields& f) { f.telefono.clear(); }, 0, "", Icon::None, ""},
        Case{"NoUserIsNoFailure", [](SaveFields& f) { f.rowidUtente.clear(); }, 0, "", Icon::None, ""},
        Case{"NoDateReg", [](SaveFields& f) { f.dataReg.clear(); }, 5, kDateReg, Icon::Information,
             "txt_dataReg"},
        Case{"DateRegNotOfTheCalendar", [](SaveFields& f) { f.dataReg = "31/02/2026"; }, 5, kDateReg,
             Icon::Information, "txt_dataReg"},
        Case{"NoCeremony", [](SaveFields& f) { f.tipoEvento.clear(); }, 6,
             "Attenzione il campo 'Cerimonia' non può essere vuoto!", Icon::Information, "txt_tipoEvento"},
        Case{"NoCeremonyDate", [](SaveFields& f) { f.dataEvento.clear(); }, 7,
             "Attenzione il campo 'Data cerimonia' non può essere vuoto!", Icon::Information,
             "txt_dataEvento"},
        Case{"NoPersons", [](SaveFields& f) { f.soggettiEvento.clear(); }, 8,
             "Attenzione il campo 'Soggetti Evento' non essere vuoto!", Icon::Information,
             "txt_soggettiEvento"},
        Case{"CardsWithoutPhrase", [](SaveFields& f) { f.frase.clear(); }, 9,
             "Attenzione il campo 'Frase Biglietti' non può essere vuoto!", Icon::Exclamation, "txt_frase"},
        Case{"NoCardsNoPhrase", [](SaveFields& f) { f.bigliettiTicked = false, f.frase.clear(); }, 0, "",
             Icon::None, ""},
        Case{"NoLines", [](SaveFields& f) { f.lineCount = 0; }, 10, "Attenzione nessuna riga presente!",
             Icon::Exclamation, "txt_codice"},
        Case{"NoAmulet", [](SaveFields& f) { f.amuletoTag.clear(); }, 11,
             "Attenzione selezionare se è presente l'amuleto!", Icon::Information, ""},
        Case{"ZeroTotal", [](SaveFields& f) { f.totale = "0,00 €"; }, 12,
             "Attenzione il totale commissione non può essere uguale a Zero", Icon::Information, ""},
        Case{"EmptyTotal", [](SaveFields& f) { f.totale.clear(); }, 12,
             "Attenzione il totale commissione non può essere uguale a Zero", Icon::Information, ""},
        Case{"DepositOverTotal", [](SaveFields& f) { f.acconto = "100"; }, 13,
             "L'importo dell'acconto supera l'importo totale della Commissione (-20,00\u00a0€)",
             Icon::Exclamation, "txt_Acconto"},
        Case{"DepositEqualToTotal", [](SaveFields& f) { f.acconto = "80,00 €"; }, 0, "", Icon::None, ""},
        Case{"NoDeposit", [](SaveFields& f) { f.acconto.clear(); }, 0, "", Icon::None, ""},
        Case{"DepositNoAmount", [](SaveFields& f) { f.acconto = "dieci"; }, 13,
             "Attenzione l'importo dell'acconto non è corretto!", Icon::Exclamation, "txt_Acconto"}),
    [](const ::testing::TestParamInfo<Case>& param) { return std::string(param.param.name); });

TEST(SaveChecks, FillTheUserAndTheDepositAndAskTheNameOnlyForAnEmptyUser)
{
    int asked = 0;
    const auto name = [&asked] { return ++asked, QStringLiteral("operatore"); };
    SaveFields f = completeOrder();
    f.rowidUtente.clear();
    f.acconto.clear();
    auto check = checkBeforeSaving(f, name);
    EXPECT_TRUE(check.passed());
    EXPECT_EQ(check.fields.rowidUtente, "operatore");
    EXPECT_EQ(check.fields.acconto, "0,00\u00a0€");
    EXPECT_EQ(asked, 1);

    // Filled before a later check fails, so the operator sees them filled; none filled before step 4.
    f.soggettiEvento.clear();
    check = checkBeforeSaving(f, name);
    EXPECT_EQ(check.step, 8);
    EXPECT_EQ(check.fields.rowidUtente, "operatore");
    EXPECT_EQ(check.fields.acconto, "");
    f.ragsoc.clear();
    EXPECT_EQ(checkBeforeSaving(f, name).fields.rowidUtente, "");

    f = completeOrder();
    f.acconto = "100";
    check = checkBeforeSaving(f, name);
    EXPECT_EQ(check.step, 13);
    EXPECT_EQ(check.fields.acconto, "100,00\u00a0€");
    EXPECT_EQ(check.fields.rowidUtente, "mario");
    EXPECT_EQ(asked, 2);
}

} // namespace
