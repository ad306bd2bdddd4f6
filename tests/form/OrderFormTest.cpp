// SPDX-License-Identifier: MIT
// What the real form shows of the order it opens, and that nothing of one order is left over in the next,
// offscreen on a real temporary SQLite database; which rows make the order is OrderTest's, on both engines.
#include "FormFixture.h"
#include "ScriptedDialogs.h"
#include "ScriptedLists.h"
#include "TestOrders.h"

#include "common/Dates.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QRadioButton>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;
using form::frm_Commissioni;

class OrderFormTest : public test::FormTest
{
};

TEST_P(OrderFormTest, NewOrderWithoutACounterSaysSoAndProposesNoNumber)
{
    test::addCounter(db(), m_year - 1, 7); // last year's counter does not serve this year
    test::ScriptedDialogs dialogs;
    dialogs.expectMessage("Attenzione!! Creare il numeratore per il tipo documento [CO]");
    frm_Commissioni& form = openForm();
    form.tbComandiDocumento_ButtonClick(documentButton(1));
    ASSERT_EQ(dialogs.messages().size(), 1);
    EXPECT_EQ(text("txt_numeroCommissione"), "");
}

// Which rows make the order is OrderTest's; here, what the form shows of them.
TEST_P(OrderFormTest, ATypedNumberShowsTheOrderInItsFieldsAndLinesAndAnUnknownOneClearsThem)
{
    const int first = test::addOrderLine(db(), "12", QDate(m_year, 2, 10),
                                         {{"Nominativo", "D'Angelo Carla"},
                                          {"telefono", "081 555 0101"},
                                          {"Cellulare", QVariant()},
                                          {"Email", "carla@example.it"},
                                          {"attrib05", QDate(m_year, 6, 20).startOfDay()},
                                          {"attrib06", "Marco e Giulia"},
                                          {"Datadal", QDate(m_year, 6, 18).startOfDay()},
                                          {"riferimenti", "Sala Aurora"},
                                          {"qta", 1.5},
                                          {"prezzo2", 50},
                                          {"imponibile", 120},
                                          {"totale", 120}});
    test::addOrderLine(db(), "12", QDate(m_year, 2, 10),
                       {{"Nominativo", "D'Angelo Carla"},
                        {"codice_med", "CNF002"},
                        {"qta", 1.5},
                        {"StatoRiga", "RITIRATO"},
                        {"imponibile", 30.5},
                        {"totale", 30.5}});
    db().executeBound("update movimenti set codice_med='BOM009' where rowid=?", {first});

    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    typeNumberAndEnter("12");
    const std::pair<const char*, QString> shown[] = {
        {"txt_ragsoc", "D'Angelo Carla"},
        {"txt_cellulare", ""},
        {"txt_email", "carla@example.it"},
        {"txt_tipoEvento", "Matrimonio"},
        {"txt_dataEvento", common::shortDate(QDate(m_year, 6, 20))},
        {"txt_soggettiEvento", "Marco e Giulia"},
        {"txt_dataRitiro1", common::shortDate(QDate(m_year, 6, 18))},
        {"txt_Riferimenti", "Sala Aurora"},
        {"txt_dataReg", common::shortDate(QDate(m_year, 2, 10))},
        {"txt_Acconto", Money::fromInteger(50).toCurrencyText()},
        {"txt_Totale", Money::fromRaw(1505000).toCurrencyText()},
    };
    for (const auto& [name, value] : shown)
        EXPECT_EQ(text(name), value) << name;
    EXPECT_EQ(column(lines::Col_codice_med), QStringList({"BOM009", "CNF002"}));
    // Colours by status, and the quantities' total (TotalsTest's rule).
    EXPECT_EQ(grid()->rowForeground(2), host::toQColor(m_host->GetIssuedColor()));
    EXPECT_EQ(grid()->rowForeground(3), host::toQColor(m_host->GetCollectedColor()));
    EXPECT_EQ(grid()->rowBackground(2), host::toQColor(m_host->GetLockedColor()));
    EXPECT_EQ(form.statusPanelText(6), "Tot.Q.tà: 4");
    EXPECT_EQ(form.statusPanelText(7), "Tot.Righe: 2");
    EXPECT_EQ(form.order().key, first);

    typeNumberAndEnter("999");
    EXPECT_EQ(text("txt_ragsoc"), "");
    EXPECT_EQ(text("txt_numeroCommissione"), "");
    EXPECT_EQ(form.LineCount(), 0);
    EXPECT_TRUE(noBoxes.messages().isEmpty());
}

TEST_P(OrderFormTest, TheSearchWindowOpensExactlyTheChosenOrderOfAnyYear)
{
    test::addOrderLine(db(), "14", QDate(m_year, 3, 3));
    test::addOrderLine(db(), "14", QDate(m_year - 2, 5, 5),
                       {{"Nominativo", "Greco Lucia"}, {"Email", QVariant()}});
    test::ScriptedDialogs noBoxes;
    test::ScriptedLists lists;
    const QString twoYearsAgo = QString::number(m_year - 2);
    lists.expectList("Trova Commissioni", [&twoYearsAgo](const hostui::ListRequest&, const Recordset& rows) {
        hostui::ListAnswer answer{true, {}, std::nullopt};
        Recordset r = rows;
        for (int i = 0; !r.eof(); r.moveNext(), ++i) {
            if (r.text("numero") == "14" && r.text("serie") == twoYearsAgo)
                answer.rows = {i};
        }
        return answer;
    });
    frm_Commissioni& form = openForm();
    form.tbComandiDocumento_ButtonClick(documentButton(5));
    EXPECT_EQ(text("txt_ragsoc"), "Greco Lucia");
    EXPECT_EQ(text("txt_email"), "") << "a null e-mail loads as empty";
    EXPECT_EQ(form.order().serie, twoYearsAgo);
    EXPECT_EQ(form.order().numero, "14");
}

TEST_P(OrderFormTest, AnOrderThatCannotBeReadIsReportedAndLeavesNothingOfTheLastOne)
{
    test::addOrderLine(db(), "12", QDate(m_year, 2, 10), {{"Nominativo", "Greco Lucia"}, {"attrib00", "1"}});
    test::addOrderLine(db(), "13", QDate(m_year, 2, 11), {{"Descrizione2", QVariant()}});
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openForm();
    typeNumberAndEnter("12");
    ASSERT_EQ(form.order().numero, "12");
    ASSERT_TRUE(form.findChild<QCheckBox*>("chk_Biglietti")->isChecked());

    dialogs.expectMessage("Errore durante la lettura del documento!");
    dialogs.expectMessage(
        QString("ATTENZIONE!!\nCOMMISSIONE N.13/%1 NON E' PRESENTE IN ARCHIVIO!").arg(m_year));
    typeNumberAndEnter("13");
    ASSERT_EQ(dialogs.messages().size(), 2);
    EXPECT_TRUE(dialogs.messages()[0].text.contains("Origine: Flex_CaricaDocumento"));
    EXPECT_EQ(text("txt_ragsoc"), "");
    EXPECT_EQ(form.LineCount(), 0);
    EXPECT_EQ(form.order().numero, "") << "the order before is not left open behind a cleared form";
    EXPECT_FALSE(form.findChild<QCheckBox*>("chk_Biglietti")->isChecked());
}

TEST_P(OrderFormTest, AccessoryClicksEnableTheirFieldsAndReachTheTagsAndTheOpenOrder)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openNewOrder(0);
    EXPECT_TRUE(form.opt_Amuleto(0)->isChecked()) << "a new order gets the first amulet option";
    QCheckBox* cards = form.findChild<QCheckBox*>("chk_Biglietti");
    cards->click();
    EXPECT_TRUE(form.opt_Biglietti(1)->isChecked());
    EXPECT_EQ(form.order().biglietti, "1");
    EXPECT_TRUE(field("txt_frase")->isEnabled());
    form.opt_Biglietti(0)->click();
    EXPECT_EQ(form.order().biglietti, "0");
    cards->click();
    EXPECT_FALSE(form.opt_Biglietti(0)->isChecked());
    EXPECT_FALSE(form.opt_Biglietti(0)->isEnabled());
    EXPECT_FALSE(field("txt_frase")->isEnabled());
    EXPECT_EQ(form::tagOf(cards), "0") << "the Tag keeps the last format chosen";
    EXPECT_EQ(form.order().biglietti, "") << "no cards, whatever format the Tag remembers";
    cards->click();
    EXPECT_EQ(form.order().biglietti, "1");

    form.opt_Amuleto(1)->click();
    EXPECT_EQ(form.order().amuleto, "1");
    EXPECT_FALSE(form.opt_Amuleto(0)->isChecked()) << "one amulet option at a time";

    QCheckBox* mandorla = form.chk_Confetti(1);
    mandorla->click();
    EXPECT_TRUE(field("txt_mandorla")->isEnabled());
    QTest::keyClicks(field("txt_mandorla"), "4");
    EXPECT_EQ(form.order().mandorla, "4");
    mandorla->click();
    EXPECT_FALSE(field("txt_mandorla")->isEnabled());
    EXPECT_EQ(form.order().mandorla, "");
    EXPECT_EQ(field("txt_mandorla")->palette().color(QPalette::Base),
              host::toQColor(m_host->GetLockedColor()));
}

TEST_P(OrderFormTest, ResetTuttoClearsTextsAndOptionsButKeepsCheckBoxes)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openNewOrder(1);
    QCheckBox* cards = form.findChild<QCheckBox*>("chk_Biglietti");
    cards->click();
    form.chk_Confetti(0)->click();
    field("txt_ragsoc")->setText("Rossi Maria");
    ASSERT_TRUE(form.opt_Biglietti(1)->isChecked());
    form.ResetTutto();
    EXPECT_TRUE(cards->isChecked());
    EXPECT_TRUE(form.chk_Confetti(0)->isChecked());
    EXPECT_FALSE(form.opt_Biglietti(1)->isChecked());
    EXPECT_EQ(text("txt_ragsoc"), "");
    EXPECT_EQ(grid()->rows(), 2);
}

TEST_P(OrderFormTest, LineAreaOpensOnlyWhenTheSixHeaderFieldsAreFilled)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openNewOrder(5);
    form.AbilitaRighe();
    EXPECT_FALSE(widget("fra_Righe")->isEnabled());
    EXPECT_EQ(field("txt_codice")->palette().color(QPalette::Base),
              host::toQColor(m_host->GetDisabledColor()));
    field("txt_ragsoc")->setText("Rossi Maria");
    field("txt_dataEvento")->setText("01/06/2027");
    field("txt_soggettiEvento")->setText(" "); // blanks count as filled
    form.AbilitaRighe();
    EXPECT_TRUE(widget("fra_Righe")->isEnabled());
    EXPECT_EQ(field("txt_codice")->palette().color(QPalette::Base), QColor(Qt::white));
    EXPECT_EQ(grid()->backColor(), host::toQColor(m_host->GetLockedColor()));
}

TEST_P(OrderFormTest, ACustomerIsKeptAsTypedOrPickedFromTheKnownOnesWhenTheCheckIsOn)
{
    test::addCounter(db(), m_year, 1);
    db().execute(
        "insert into controparti (tipocontroparte, Code, ragsoc, Indirizzo, Cap, comune, provincia, "
        "telefono, Cellulare, Email) values ('C', 'C00042', 'D''Angelo Carla', 'Via Roma 1', '80100', "
        "'Napoli', 'NA', '081 111', NULL, 'carla@example.it')");
    db().execute(
        "insert into controparti (tipocontroparte, Code, ragsoc) values ('C', 'C00043', 'D''Angelo Luca')");
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    form.tbComandiDocumento_ButtonClick(documentButton(1));
    // The check is off: no list appears, a walk-in customer keeps what was typed.
    field("txt_ragsoc")->setText("D'Ang");
    field("txt_telefono")->setText("333 1234567");
    form.SetTextBoxControparte();
    EXPECT_EQ(text("txt_ragsoc"), "D'Ang");
    EXPECT_EQ(form.order().customer.codenominativo, "00000000000");

    m_host->SaveSetting("comm", "checkControparti", "1", "DOCS");
    test::ScriptedLists lists;
    lists.expectList("Clienti", [](const hostui::ListRequest& request, const Recordset& rows) {
        EXPECT_TRUE(request.sql.contains("like 'D''Ang%'")) << request.sql.toStdString();
        EXPECT_EQ(rows.recordCount(), 2);
        return hostui::ListAnswer{true, {0}, std::nullopt};
    });
    form.tbComandiDocumento_ButtonClick(documentButton(1)); // cancel
    form.tbComandiDocumento_ButtonClick(documentButton(1)); // a new order reads the settings again
    field("txt_ragsoc")->setText("D'Ang");
    form.SetTextBoxControparte();
    EXPECT_EQ(text("txt_ragsoc"), "D'Angelo Carla");
    EXPECT_EQ(text("txt_telefono"), "081 111");
    EXPECT_EQ(form.order().customer.codenominativo, "C00042");
    EXPECT_EQ(field("txt_ragsoc")->toolTip(), "Via Roma 1 - CAP: 80100 - Napoli(NA)");
}

TEST_P(OrderFormTest, CancellingWhenTheLockCannotBeReleasedWarnsAndStillReturnsToBrowse)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openNewOrder(1);
    db().execute("drop table blocchi_record"); // the release now fails in the database
    dialogs.expectMessage("Errori rilevati durante l'eliminazione del record bloccato!");
    form.tbComandiDocumento_ButtonClick(documentButton(1));
    ASSERT_EQ(dialogs.messages().size(), 1);
    EXPECT_EQ(form.ModeTag1() + form.ModeTag2(), "NM");
}

TEST_P(OrderFormTest, TheGridTakesItsColumnsFromTheTableAndShowsSeven)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    form.Flex_Init();
    EXPECT_EQ(grid()->cols(), lines::ColCount);
    EXPECT_EQ(grid()->textMatrix(0, lines::Col_StatoRiga).toLower(), "statoriga");
    EXPECT_EQ(grid()->textMatrix(1, lines::Col_prezzo), "6"); // the type code the save converts by
    int visible = 0;
    for (int c = 0; c < grid()->cols(); ++c)
        visible += grid()->colWidth(c) > 0 ? 1 : 0;
    EXPECT_EQ(visible, 7);
}

TEST_P(OrderFormTest, RightClickOnTheGridOpensThePhasesMenu)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    emit grid()->rightButtonDown(grid()->mapToGlobal(QPoint(5, 5)));
    EXPECT_TRUE(form.mFasi()->isVisible());
    form.mFasi()->hide();
}

XV_INSTANTIATE_ON_SQLITE(OrderFormTest);

} // namespace
