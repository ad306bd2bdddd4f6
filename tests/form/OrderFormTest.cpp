// SPDX-License-Identifier: MIT
// The real order form, offscreen, on a real temporary database of each engine.
#include "ScriptedDialogs.h"
#include "ScriptedLists.h"
#include "FormFixture.h"
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/Dates.h"
#include "form/frm_Commissioni.h"
#include "host/Host.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QRadioButton>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::Money;
using form::frm_Commissioni;
using data::Recordset;

class OrderFormTest : public test::FormTest
{
};

TEST_P(OrderFormTest, NewOrderProposesTheNextNumberAndCancelReturnsToBrowse)
{
    test::addCounter(db(), m_year, 41);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    EXPECT_EQ(form.ModeTag1(), "N");
    EXPECT_EQ(form.ModeTag2(), "M");

    QTest::keyClick(&form, Qt::Key_F2);
    EXPECT_EQ(text("txt_numeroCommissione"), "42");
    EXPECT_EQ(form.ModeTag1(), "X");
    EXPECT_EQ(form.ModeTag2(), "S");
    EXPECT_EQ(text("txt_dataReg"), common::shortDate(QDate::currentDate()));
    EXPECT_EQ(text("txt_dataRitiro1"), text("txt_dataReg"));
    EXPECT_EQ(form.order().numero, "42");
    EXPECT_EQ(form.order().serie, QString::number(m_year));
    EXPECT_EQ(form.order().documento, "COMM");
    EXPECT_TRUE(widget("fra_Main")->isEnabled());
    EXPECT_FALSE(field("txt_numeroCommissione")->isEnabled());
    EXPECT_EQ(form.statusPanelText(8), "EMESSO");
    // The toolbar's NEW reads the same mode, and the counter is advanced only when saving.
    form.tbComandiDocumento_ButtonClick(documentButton(1));
    EXPECT_EQ(form.ModeTag1(), "N");
    EXPECT_EQ(form.ModeTag2(), "M");
    EXPECT_EQ(text("txt_numeroCommissione"), "");
    EXPECT_EQ(documentButton(1)->text(), "Nuovo[F2]");
    form.tbComandiDocumento_ButtonClick(documentButton(1));
    EXPECT_EQ(text("txt_numeroCommissione"), "42");
    EXPECT_EQ(documentButton(1)->text(), "Annulla[F2]");
    EXPECT_EQ(documentButton(2)->text(), "Salva[F3]");
}

TEST_P(OrderFormTest, NewOrderWithoutACounterSaysSoAndProposesNoNumber)
{
    test::addCounter(db(), m_year - 1, 7); // last year's counter does not serve this year
    test::ScriptedDialogs dialogs;
    dialogs.expectMessage("Attenzione!! Creare il numeratore per il tipo documento [CO]");
    frm_Commissioni& form = openForm();
    form.tbComandiDocumento_ButtonClick(documentButton(1));
    ASSERT_EQ(dialogs.messages().size(), 1);
    EXPECT_EQ(dialogs.messages()[0].icon, host::Icon::Critical);
    EXPECT_EQ(text("txt_numeroCommissione"), "");
    EXPECT_EQ(form.ModeTag1(), "X");
}

TEST_P(OrderFormTest, TypedNumberLoadsThisYearsAndLastYearsOrders)
{
    const QDate thisYear(m_year, 2, 10);
    const QDate lastYear(m_year - 1, 6, 1);
    test::addOrderLine(db(), "12", thisYear, [](Recordset& t) {
        t.setValue("Nominativo", "D'Angelo Carla");
        t.setValue("telefono", "081 555 0101");
        t.setValue("Email", "carla@example.it");
        t.setValue("attrib06", "Marco e Giulia");
        t.setValue("riferimenti", "Sala Aurora");
        t.setValue("codice_med", "BOM001");
        t.setValue("qta", 1.5);
        t.setMoney("prezzo2", Money::fromInteger(50));
        t.setMoney("imponibile", Money::fromInteger(120));
        t.setMoney("totale", Money::fromInteger(120));
    });
    test::addOrderLine(db(), "12", thisYear, [](Recordset& t) {
        t.setValue("codice_med", "CNF002");
        t.setValue("qta", 1.5);
        t.setValue("StatoRiga", "RITIRATO");
        t.setMoney("imponibile", Money::fromRaw(305000));
        t.setMoney("totale", Money::fromRaw(305000));
    });
    test::addOrderLine(db(), "13", lastYear, [](Recordset& t) { t.setValue("Nominativo", "Esposito Gennaro"); });

    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    typeNumberAndEnter("12");
    EXPECT_EQ(text("txt_numeroCommissione"), "12");
    EXPECT_EQ(text("txt_ragsoc"), "D'Angelo Carla");
    EXPECT_EQ(text("txt_telefono"), "081 555 0101");
    EXPECT_EQ(text("txt_email"), "carla@example.it");
    EXPECT_EQ(text("txt_tipoEvento"), "Matrimonio");
    EXPECT_EQ(text("txt_soggettiEvento"), "Marco e Giulia");
    EXPECT_EQ(text("txt_Riferimenti"), "Sala Aurora");
    EXPECT_EQ(text("txt_dataReg"), common::shortDate(thisYear));
    EXPECT_EQ(text("txt_Acconto"), Money::fromInteger(50).toCurrencyText());
    EXPECT_EQ(form.LineCount(), 2);
    EXPECT_EQ(grid()->textMatrix(2, lines::Col_codice_med), "BOM001");
    EXPECT_EQ(grid()->textMatrix(3, lines::Col_codice_med), "CNF002");
    EXPECT_EQ(grid()->textMatrix(2, lines::Col_Riga), "1");
    EXPECT_EQ(grid()->textMatrix(3, lines::Col_Riga), "2");
    // Colours by status, the order total of the shown lines and the quantities rounded halves to even.
    EXPECT_EQ(grid()->rowForeground(2), host::toQColor(m_host->GetIssuedColor()));
    EXPECT_EQ(grid()->rowForeground(3), host::toQColor(m_host->GetCollectedColor()));
    EXPECT_EQ(grid()->rowBackground(2), host::toQColor(m_host->GetLockedColor()));
    EXPECT_EQ(text("txt_Totale"), Money::fromRaw(1505000).toCurrencyText());
    EXPECT_EQ(form.statusPanelText(6), "Tot.Q.tà: 4");
    EXPECT_EQ(form.statusPanelText(7), "Tot.Righe: 2");
    EXPECT_EQ(form.statusPanelText(8), "EMESSO");
    EXPECT_TRUE(documentButton(2)->isEnabled());
    EXPECT_TRUE(documentButton(3)->isEnabled());
    EXPECT_TRUE(documentButton(7)->isEnabled());
    EXPECT_EQ(form.order().serie, QString::number(m_year));

    typeNumberAndEnter("13");
    EXPECT_EQ(text("txt_ragsoc"), "Esposito Gennaro");
    EXPECT_EQ(form.LineCount(), 1);
    EXPECT_EQ(form.order().serie, QString::number(m_year - 1));
    EXPECT_TRUE(form.currentLinesQuery().contains(
        QString("documento='COMM' and numero='13' and serie='%1'").arg(m_year - 1)));
}

TEST_P(OrderFormTest, AnOrderOfTwoYearsAgoOrAnUnknownNumberClearsTheFormWithoutAMessage)
{
    test::addOrderLine(db(), "14", QDate(m_year - 2, 5, 5));
    test::addOrderLine(db(), "15", QDate(m_year, 1, 3), [](Recordset& t) { t.setValue("Nominativo", "Bianchi Anna"); });
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    typeNumberAndEnter("15");
    ASSERT_EQ(text("txt_ragsoc"), "Bianchi Anna");
    typeNumberAndEnter("14");
    EXPECT_EQ(text("txt_ragsoc"), "");
    EXPECT_EQ(text("txt_numeroCommissione"), "");
    EXPECT_EQ(form.LineCount(), 0);
    typeNumberAndEnter("999");
    EXPECT_EQ(form.LineCount(), 0);
    EXPECT_TRUE(noBoxes.messages().isEmpty());
}

TEST_P(OrderFormTest, TheSearchWindowReachesOldOrdersWithTheirOwnYear)
{
    test::addOrderLine(db(), "14", QDate(m_year - 2, 5, 5), [](Recordset& t) {
        t.setValue("Nominativo", "Greco Lucia");
        t.setValue("Email", QVariant());
    });
    test::addOrderLine(db(), "3", QDate(m_year, 5, 5));
    test::ScriptedDialogs noBoxes;
    test::ScriptedLists lists;
    lists.expectList("Trova Commissioni", [](const hostui::ListRequest&, const Recordset& rows) {
        hostui::ListAnswer answer;
        answer.confirmed = true;
        Recordset r = rows;
        for (int i = 0; !r.eof(); r.moveNext(), ++i) {
            if (r.text("numero") == "14")
                answer.rows = {i};
        }
        return answer;
    });
    frm_Commissioni& form = openForm();
    form.tbComandiDocumento_ButtonClick(documentButton(5));
    EXPECT_EQ(text("txt_ragsoc"), "Greco Lucia");
    EXPECT_EQ(text("txt_email"), "") << "a null e-mail loads as empty";
    EXPECT_EQ(form.LineCount(), 1);
    EXPECT_EQ(form.order().serie, QString::number(m_year - 2));
}

TEST_P(OrderFormTest, CommandsFollowTheModeInEveryStateAndInAnOddPair)
{
    test::addOrderLine(db(), "21", QDate(m_year, 4, 4), [](Recordset& t) { t.setValue("attrib06", "Sofia"); });
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    // Browse, empty grid.
    EXPECT_FALSE(documentButton(2)->isEnabled());
    EXPECT_FALSE(documentButton(3)->isEnabled());
    EXPECT_FALSE(documentButton(7)->isEnabled());
    EXPECT_FALSE(linesButton(5)->isEnabled());
    EXPECT_TRUE(documentButton(5)->isEnabled());
    EXPECT_EQ(form.statusPanelText(7), "Tot.Righe: 0");
    EXPECT_FALSE(widget("fra_Main")->isEnabled());
    EXPECT_TRUE(field("txt_numeroCommissione")->isEnabled());

    // Browse with an order shown, then F3 switches to modify.
    typeNumberAndEnter("21");
    ASSERT_EQ(form.LineCount(), 1);
    EXPECT_EQ(documentButton(2)->text(), "Modifica[F3]");
    QTest::keyClick(field("txt_numeroCommissione"), Qt::Key_F3);
    EXPECT_EQ(form.ModeTag1(), "X");
    EXPECT_EQ(form.ModeTag2(), "A");
    EXPECT_EQ(documentButton(1)->text(), "Annulla[F2]");
    EXPECT_EQ(documentButton(2)->text(), "Aggiorna[F3]");
    EXPECT_FALSE(field("txt_dataReg")->isEnabled()) << "an existing order keeps its registration date";
    EXPECT_FALSE(documentButton(3)->isEnabled());
    EXPECT_FALSE(documentButton(5)->isEnabled());
    EXPECT_TRUE(grid()->isEnabled());
    EXPECT_TRUE(widget("fra_Main")->isEnabled());
    EXPECT_FALSE(field("txt_numeroCommissione")->isEnabled());

    // An odd pair: the second caption stays as it was, the frames follow the first Tag.
    form::setTag(documentButton(2), "M");
    form.StateOfButtons();
    EXPECT_EQ(documentButton(2)->text(), "Aggiorna[F3]");
    EXPECT_TRUE(widget("fra_Evento")->isEnabled());
    EXPECT_FALSE(documentButton(5)->isEnabled());
}

TEST_P(OrderFormTest, TheGridIsLaidOutFromTheTableWithSevenVisibleColumns)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    form.Flex_Init();
    EXPECT_EQ(grid()->rows(), 2);
    EXPECT_EQ(grid()->cols(), 61);
    EXPECT_EQ(grid()->rowHeight(0), 0);
    EXPECT_EQ(grid()->rowHeight(1), 0);
    EXPECT_EQ(grid()->textMatrix(0, lines::Col_StatoRiga).toLower(), "statoriga");
    EXPECT_EQ(grid()->textMatrix(1, lines::Col_prezzo), "6");
    int visible = 0;
    for (int c = 0; c < grid()->cols(); ++c)
        visible += grid()->colWidth(c);
    EXPECT_EQ(visible, 600 + 2560 + 6900 + 1100 + 2000 + 2100 + 1500);
    EXPECT_EQ(form.statusPanelText(2), "Utente: tester");
}

TEST_P(OrderFormTest, AccessoriesEnableTheirFieldsAndKeepTheirChoicesInTags)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openNewOrder(0);
    ASSERT_EQ(form.ModeTag1(), "X");

    QCheckBox* mandorla = form.chk_Confetti(1);
    field("txt_mandorla")->setText("3");
    mandorla->click(); // on
    mandorla->click(); // off
    EXPECT_FALSE(field("txt_mandorla")->isEnabled());
    EXPECT_EQ(text("txt_mandorla"), "");
    EXPECT_EQ(field("txt_mandorla")->palette().color(QPalette::Base), host::toQColor(m_host->GetLockedColor()));
    mandorla->click();
    EXPECT_TRUE(field("txt_mandorla")->isEnabled());

    QCheckBox* cards = form.findChild<QCheckBox*>("chk_Biglietti");
    cards->click();
    EXPECT_TRUE(form.opt_Biglietti(1)->isChecked());
    EXPECT_EQ(form::tagOf(cards), "1");
    EXPECT_TRUE(field("txt_frase")->isEnabled());
    form.opt_Biglietti(2)->click();
    EXPECT_EQ(form::tagOf(cards), "2");
    cards->click();
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(form.opt_Biglietti(i)->isChecked());
        EXPECT_FALSE(form.opt_Biglietti(i)->isEnabled());
    }
    EXPECT_EQ(form::tagOf(cards), "2") << "the Tag keeps the last format chosen";
    EXPECT_FALSE(field("txt_frase")->isEnabled());

    // A new order with no amulet choice gets the first option when the line area is refreshed.
    form::setTag(form.lblInfo(6), QString());
    form.opt_Amuleto(0)->setChecked(false);
    form.AbilitaRighe();
    EXPECT_TRUE(form.opt_Amuleto(0)->isChecked());
    EXPECT_EQ(form::tagOf(form.lblInfo(6)), "0");
    form.opt_Amuleto(1)->click();
    EXPECT_EQ(form::tagOf(form.lblInfo(6)), "1");
}

TEST_P(OrderFormTest, LineAreaOpensOnlyWhenTheSixHeaderFieldsAreFilled)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openNewOrder(5);
    form.AbilitaRighe();
    EXPECT_FALSE(widget("fra_Righe")->isEnabled());
    EXPECT_EQ(field("txt_codice")->palette().color(QPalette::Base), host::toQColor(m_host->GetDisabledColor()));
    field("txt_ragsoc")->setText("Rossi Maria");
    field("txt_dataEvento")->setText("01/06/2027");
    field("txt_soggettiEvento")->setText(" "); // blanks count as filled
    form.AbilitaRighe();
    EXPECT_TRUE(widget("fra_Righe")->isEnabled());
    EXPECT_TRUE(widget("fra_Totali")->isEnabled());
    EXPECT_EQ(field("txt_codice")->palette().color(QPalette::Base), QColor(Qt::white));
    EXPECT_EQ(field("txt_qta")->palette().color(QPalette::Base), QColor(Qt::white));
    EXPECT_EQ(grid()->backColor(), host::toQColor(m_host->GetLockedColor()));
}

TEST_P(OrderFormTest, CategoryMenusTakeTheCodesOfTheirFamilyInOrder)
{
    for (const auto& [code, category] : std::initializer_list<std::pair<const char*, const char*>>{
             {"BOM001", "BOMBONIERE"}, {"AST001", "ASTUCCI"}, {"BOM002", "BOMBONIERE"}, {"FAZ001", "FAZZOLETTI"},
             {"BOM003", "BOMBONIERE"}, {"bom009", "bomboniere"}, {"CNF001", "CONFETTI"}})
        db().executeBound("insert into med (codice, categoria) values (?, ?)", {QString(code), QString(category)});
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    ASSERT_EQ(form.tBomboniere().count(), 3);
    EXPECT_EQ(form.tBomboniere().item(0)->text(), "BOM001");
    EXPECT_EQ(form.tBomboniere().item(1)->text(), "BOM002");
    EXPECT_EQ(form.tBomboniere().item(2)->text(), "BOM003");
    EXPECT_EQ(form.tAstucci().count(), 1);
    EXPECT_EQ(form.tAstucci().item(0)->text(), "AST001");
    EXPECT_EQ(form.tFazzoletti().item(0)->text(), "FAZ001");
}

TEST_P(OrderFormTest, RightClickOnTheGridOpensThePhasesMenu)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    emit grid()->rightButtonDown(grid()->mapToGlobal(QPoint(5, 5)));
    EXPECT_TRUE(form.mFasi()->isVisible());
    form.mFasi()->hide();
}

XV_INSTANTIATE_FOR_ENGINES(OrderFormTest);

} // namespace

namespace {

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
    EXPECT_TRUE(cards->isChecked()) << "check boxes keep their state";
    EXPECT_TRUE(form.chk_Confetti(0)->isChecked());
    EXPECT_FALSE(form.opt_Biglietti(1)->isChecked());
    EXPECT_FALSE(form.opt_Amuleto(0)->isChecked());
    EXPECT_EQ(text("txt_ragsoc"), "");
    EXPECT_EQ(text("txt_numeroCommissione"), "");
    EXPECT_EQ(grid()->rows(), 2);
}

TEST_P(OrderFormTest, LeavingTheCustomerWithTheCheckOnPicksAKnownCustomer)
{
    test::addCounter(db(), m_year, 1);
    db().execute("insert into controparti (tipocontroparte, Code, ragsoc, Indirizzo, Cap, comune, provincia, "
                 "telefono, Cellulare, Email) values ('C', 'C00042', 'D''Angelo Carla', 'Via Roma 1', '80100', "
                 "'Napoli', 'NA', '081 111', NULL, 'carla@example.it')");
    db().execute("insert into controparti (tipocontroparte, Code, ragsoc) values ('C', 'C00043', 'D''Angelo Luca')");
    m_host->SaveSetting("comm", "checkControparti", "1", "DOCS");
    test::ScriptedDialogs noBoxes;
    test::ScriptedLists lists;
    lists.expectList("Clienti", [](const hostui::ListRequest& request, const Recordset& rows) {
        EXPECT_TRUE(request.sql.contains("like 'D''Ang%'")) << request.sql.toStdString();
        EXPECT_EQ(rows.recordCount(), 2);
        hostui::ListAnswer answer;
        answer.confirmed = true;
        answer.rows = {0};
        return answer;
    });
    frm_Commissioni& form = openForm();
    form.tbComandiDocumento_ButtonClick(documentButton(1)); // reads the settings again
    field("txt_ragsoc")->setText("D'Ang");
    form.SetTextBoxControparte();
    EXPECT_EQ(text("txt_ragsoc"), "D'Angelo Carla");
    EXPECT_EQ(text("txt_telefono"), "081 111");
    EXPECT_EQ(text("txt_cellulare"), "");
    EXPECT_EQ(text("txt_email"), "carla@example.it");
    EXPECT_EQ(form.order().customer.codenominativo, "C00042");
    EXPECT_EQ(field("txt_ragsoc")->toolTip(), "Via Roma 1 - CAP: 80100 - Napoli(NA)");
}

TEST_P(OrderFormTest, AWalkInCustomerKeepsWhatWasTyped)
{
    test::addCounter(db(), m_year, 1);
    test::ScriptedDialogs noBoxes; // the check is off: no list appears
    frm_Commissioni& form = openForm();
    form.tbComandiDocumento_ButtonClick(documentButton(1));
    field("txt_ragsoc")->setText("Cliente di passaggio");
    field("txt_telefono")->setText("333 1234567");
    form.SetTextBoxControparte();
    EXPECT_EQ(text("txt_ragsoc"), "Cliente di passaggio");
    EXPECT_EQ(form.order().customer.key, 0);
    EXPECT_EQ(form.order().customer.codenominativo, "00000000000");
    EXPECT_EQ(form.order().customer.telefono, "333 1234567");
}

TEST_P(OrderFormTest, CancellingWhenTheLockCannotBeReleasedWarnsAndStillReturnsToBrowse)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openNewOrder(1);
    ASSERT_EQ(form.ModeTag1(), "X");
    db().execute("drop table blocchi_record"); // the release now fails in the database
    dialogs.expectMessage("Errori rilevati durante l'eliminazione del record bloccato!");
    form.tbComandiDocumento_ButtonClick(documentButton(1));
    EXPECT_EQ(dialogs.messages().size(), 1);
    EXPECT_EQ(dialogs.messages().value(0).icon, host::Icon::Exclamation);
    EXPECT_EQ(form.ModeTag1(), "N");
    EXPECT_EQ(form.ModeTag2(), "M");
    EXPECT_EQ(form.StatoCommissione(), "EMESSO");
}

TEST_P(OrderFormTest, LeavingQuantityOrPriceShowsTheLineAmount)
{
    test::addCounter(db(), m_year, 1);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    form.CalcolaTotaleRiga(3, Money::fromRaw(25000));
    EXPECT_EQ(text("txt_totaleRiga"), Money::fromRaw(75000).toCurrencyText());
    form.CalcolaTotaleRiga(0.5, Money::fromRaw(33333));
    EXPECT_EQ(text("txt_totaleRiga"), Money::fromRaw(16700).toCurrencyText());
}

} // namespace
