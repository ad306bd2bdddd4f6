// SPDX-License-Identifier: MIT
// Adding, changing and removing the lines of an order, and the line keys, through the real form offscreen
// on a real temporary database of each engine.
#include "FormFixture.h"
#include "ScriptedDialogs.h"
#include "ScriptedLists.h"
#include "TestDatabase.h"

#include "common/Money.h"
#include "data/Database.h"
#include "form/frm_Commissioni.h"
#include "host/Host.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolBar>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using namespace xv::lines;
using common::Money;
using form::frm_Commissioni;

// The real host with a key filter that drops an 'x' and types a capital Q for a 'q'.
class FilteringHost : public host::Host
{
public:
    using Host::Host;
    void FilterKeyPress(int& keyCode) override
    {
        if (keyCode == 'x')
            keyCode = 0;
        else if (keyCode == 'q')
            keyCode = 'Q';
    }
};

class LinesTest : public test::FormTest
{
protected:
    std::unique_ptr<host::Host> makeHost(const host::HostOptions& options) override
    {
        return std::make_unique<FilteringHost>(options);
    }

    void addArticle(const QString& code, const QString& description, qint64 priceRaw)
    {
        db().executeBound(
            QStringLiteral("insert into med (codice, descrizione, prezzo_vendita, quantita_reale, "
                           "quantita_disponibile) values (?, ?, ?, 100, 90)"),
            {code, description, Money::fromRaw(priceRaw).toDecimalText()});
    }
    void addComponent(const QString& assembled, const QString& component, double perUnit)
    {
        db().executeBound(
            QStringLiteral("insert into Produzione (Tipo, Codice_A, Codice_P, Qta_P) values ('P', ?, ?, ?)"),
            {assembled, component, perUnit});
    }

    // A new order with its header filled, so that lines can be entered, and the window active.
    frm_Commissioni& startOrder()
    {
        frm_Commissioni& form = openNewOrder(7);
        field("txt_ragsoc")->setText("Rossi Maria");
        field("txt_dataEvento")->setText("23/05/2026");
        field("txt_soggettiEvento")->setText("Marco e Giulia");
        form.AbilitaRighe();
        form.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&form));
        // The operator moves on to the lines, leaving the header as it was typed.
        field("txt_codice")->setFocus(Qt::TabFocusReason);
        return form;
    }
    // The entry fields as the operator leaves them for an article: its code loaded, a quantity typed.
    void enter(const QString& code, const QString& quantity)
    {
        field("txt_codice")->setText(code);
        m_form->Informazioni_MED();
        field("txt_qta")->setText(quantity);
    }
    void add(const QString& code, const QString& quantity)
    {
        enter(code, quantity);
        m_form->tbComandiRighe_ButtonClick(linesButton(1));
    }
    QStringList column(int col) const
    {
        QStringList cells;
        for (int r = FirstDataRow; r < grid()->rows(); ++r)
            cells << grid()->textMatrix(r, col);
        return cells;
    }
    void clickCell(int row, int col)
    {
        const QRect cell = grid()->visualRect(grid()->model()->index(row, col));
        QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {}, cell.center());
    }
    QWidget* focused() const { return m_form->focusWidget(); }
};

TEST_P(LinesTest, AddingWithAnEmptyCodeSaysOnlyThatAndWritesNothing)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = startOrder();
    field("txt_rowidArticolo")->setText("41");
    field("txt_qta")->clear();
    field("txt_descrizione")->clear();
    field("txt_Acconto")->clear();
    field("txt_qta")->setFocus();

    dialogs.expectMessage("Il codice articolo è obbligatorio!!");
    form.tbComandiRighe_ButtonClick(linesButton(1));

    ASSERT_EQ(dialogs.messages().size(), 1);
    EXPECT_EQ(dialogs.messages()[0].text, "Il codice articolo è obbligatorio!!");
    EXPECT_EQ(dialogs.messages()[0].icon, host::Icon::Information);
    EXPECT_EQ(dialogs.messages()[0].title, m_host->GetAppTitle());
    EXPECT_EQ(form.LineCount(), 0);
    EXPECT_EQ(text("txt_rowidArticolo"), "");
    EXPECT_EQ(text("txt_Acconto"), ""); // the later steps of the check did not run
    EXPECT_EQ(focused(), field("txt_codice"));
}

TEST_P(LinesTest, EachMissingEntryFieldIsNamedInTurn)
{
    addArticle("BOM001", "Bomboniera", 25000);
    const std::pair<const char*, const char*> cases[] = {
        {"txt_qta", "La quantità dell'articolo è obbligatoria!!"},
        {"txt_descrizione", "La descrizione dell'articolo è obbligatoria!!"},
        {"txt_dataRitiro", "La data del ritiro dell'articolo è obbligatoria!!"},
    };
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = startOrder();
    for (const auto& [name, message] : cases) {
        SCOPED_TRACE(name);
        enter("BOM001", "2");
        field(name)->clear();
        dialogs.expectMessage(QString::fromUtf8(message));
        form.tbComandiRighe_ButtonClick(linesButton(1));
        EXPECT_EQ(form.LineCount(), 0);
        EXPECT_EQ(focused(), field(name));
        field("txt_dataRitiro")->setText("20/05/2026");
    }
}

TEST_P(LinesTest, AnEmptyDepositAndTotalBecomeZeroAsCurrency)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    field("txt_codice")->setText("BOM001");
    field("txt_qta")->setText("2");
    field("txt_descrizione")->setText("Bomboniera");
    field("txt_prezzo")->setText("2,5");
    field("txt_Acconto")->clear();
    field("txt_Totale")->clear();
    bool allowed = false;
    form.CheckPreInserimentoRiga(allowed);
    EXPECT_TRUE(allowed);
    EXPECT_EQ(text("txt_Acconto"), Money().toCurrencyText());
    EXPECT_EQ(text("txt_Totale"), Money().toCurrencyText());
    EXPECT_EQ(text("txt_prezzo"), Money::fromRaw(25000).toCurrencyText());
}

TEST_P(LinesTest, AnAddedLineCarriesTheEntryAndTheOrderAndUpdatesTheTotals)
{
    addArticle("BOM001", "Bomboniera in porcellana", 25000);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    field("txt_dataRitiro")->setText("20/05/2026");
    add("BOM001", "3");

    ASSERT_EQ(form.LineCount(), 1);
    const int r = FirstDataRow;
    EXPECT_EQ(grid()->textMatrix(r, Col_Riga), "1");
    EXPECT_EQ(grid()->textMatrix(r, Col_codice_med), "BOM001");
    EXPECT_EQ(grid()->textMatrix(r, Col_Descrizione1), "Bomboniera in porcellana");
    EXPECT_EQ(grid()->textMatrix(r, Col_qta), "3");
    EXPECT_EQ(grid()->textMatrix(r, Col_prezzo), Money::fromRaw(25000).toCurrencyText());
    EXPECT_EQ(grid()->textMatrix(r, Col_imponibile), Money::fromRaw(75000).toCurrencyText());
    EXPECT_EQ(grid()->textMatrix(r, Col_note), "20/05/2026");
    EXPECT_EQ(grid()->textMatrix(r, Col_numero), "8");
    EXPECT_EQ(grid()->textMatrix(r, Col_StatoRiga), "EMESSO");
    EXPECT_EQ(grid()->textMatrix(r, Col_Nominativo), form.order().customer.nominativo);
    EXPECT_EQ(text("txt_totaleRiga"), Money::fromRaw(75000).toCurrencyText());
    EXPECT_EQ(text("txt_Totale"), Money::fromRaw(75000).toCurrencyText());
    EXPECT_EQ(form.statusPanelText(6), "Tot.Q.tà: 3");
    EXPECT_EQ(form.statusPanelText(7), "Tot.Righe: 1");
    EXPECT_EQ(documentButton(2)->text(), "Salva[F3]");
    EXPECT_EQ(focused(), field("txt_codice"));
}

TEST_P(LinesTest, RemovingTheOnlyLineEmptiesTheGridAndAMiddleLineLeavesTheOthersRenumbered)
{
    for (const char* code : {"A1", "B2", "C3"})
        addArticle(code, QStringLiteral("Articolo %1").arg(code), 10000);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    add("A1", "1");
    ASSERT_EQ(form.LineCount(), 1);
    form.tbComandiRighe_ButtonClick(linesButton(2));
    EXPECT_EQ(form.LineCount(), 0);
    EXPECT_EQ(grid()->cols(), ColCount); // laid out again, not left without columns
    EXPECT_EQ(text("txt_Totale"), Money().toCurrencyText());

    for (const char* code : {"A1", "B2", "C3"})
        add(code, "1");
    ASSERT_EQ(column(Col_codice_med), QStringList({"A1", "B2", "C3"}));
    grid()->setRow(FirstDataRow + 1);
    form.tbComandiRighe_ButtonClick(linesButton(2));
    EXPECT_EQ(column(Col_codice_med), QStringList({"A1", "C3"}));
    EXPECT_EQ(column(Col_Riga), QStringList({"1", "2"}));
    EXPECT_EQ(form.statusPanelText(7), "Tot.Righe: 2");
}

TEST_P(LinesTest, AComposedArticleAddsOneLinePerComponentWithTheQuantitiesMultiplied)
{
    addArticle("KIT01", "Kit bomboniera", 100000);
    addArticle("CNF01", "Confetti", 5000);
    addArticle("NAS01", "Nastro", 1000);
    addArticle("BIG01", "Bigliettino", 500);
    addComponent("KIT01", "CNF01", 2.5);
    addComponent("KIT01", "NAS01", 3);
    addComponent("KIT01", "BIG01", 1);
    addComponent("ALTRO", "NAS01", 7); // another article's bill of materials
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();

    qint16 count = -1;
    form.CheckComposizione("KIT01", count);
    EXPECT_EQ(count, 3);
    ASSERT_EQ(form.components().size(), 3);
    EXPECT_EQ(form.components()[2], QStringList({"BIG01", "1", "0"}));

    add("KIT01", "4");
    EXPECT_EQ(column(Col_codice_med), QStringList({"KIT01", "CNF01", "NAS01", "BIG01"}));
    EXPECT_EQ(column(Col_qta), QStringList({"4", "10", "12", "4"}));
    EXPECT_EQ(column(Col_Descrizione1), QStringList({"Kit bomboniera", "Confetti", "Nastro", "Bigliettino"}));
    EXPECT_EQ(grid()->textMatrix(FirstDataRow + 2, Col_imponibile), Money::fromRaw(12000).toCurrencyText());

    form.CheckComposizione("NAS01", count);
    EXPECT_EQ(count, 0);
}

TEST_P(LinesTest, F6AddsTheLineWithoutItsComponents)
{
    addArticle("KIT01", "Kit bomboniera", 100000);
    addArticle("CNF01", "Confetti", 5000);
    addComponent("KIT01", "CNF01", 2);
    test::ScriptedDialogs noBoxes;
    startOrder();
    enter("KIT01", "2");
    QTest::keyClick(field("txt_qta"), Qt::Key_F6);
    EXPECT_EQ(column(Col_codice_med), QStringList({"KIT01"}));
    EXPECT_EQ(column(Col_Riga), QStringList({"1"}));
    EXPECT_EQ(text("txt_Totale"), Money::fromInteger(20).toCurrencyText());
}

TEST_P(LinesTest, AClickedLineComesBackIntoTheFieldsAndTheClickedColumnDecidesTheFocus)
{
    addArticle("A1", "Primo", 10000);
    addArticle("B2", "Secondo", 20000);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    add("A1", "1");
    field("txt_dataRitiro")->setText("23/11/2026");
    add("B2", "5");
    field("txt_codice")->setText("A1");

    clickCell(FirstDataRow + 1, Col_prezzo);
    EXPECT_EQ(focused(), field("txt_prezzo"));
    EXPECT_EQ(text("txt_codice"), "B2");
    EXPECT_EQ(text("txt_descrizione"), "Secondo");
    EXPECT_EQ(text("txt_qta"), "5");
    EXPECT_EQ(text("txt_prezzo"), Money::fromInteger(2).toCurrencyText());
    EXPECT_EQ(text("txt_totaleRiga"), Money::fromInteger(10).toCurrencyText());
    EXPECT_EQ(form.findChild<QLabel*>("lbl_Riga")->text(), "2");
    EXPECT_EQ(field("txt_dataRitiro")->toolTip(),
              "La data del ritiro di questo articolo è lunedì, 23 novembre 2026");

    const std::pair<int, const char*> focusing[] = {
        {Col_codice_med, "txt_codice"}, {Col_qta, "txt_qta"}, {Col_note, "txt_dataRitiro"}};
    for (const auto& [col, name] : focusing) {
        SCOPED_TRACE(name);
        clickCell(FirstDataRow, col);
        EXPECT_EQ(focused(), field(name));
    }
    clickCell(FirstDataRow, Col_Descrizione1);
    EXPECT_EQ(focused(), grid()); // where the click itself put it
    EXPECT_EQ(text("txt_codice"), "A1");
}

TEST_P(LinesTest, F7AndF8StayCrossedAndAKeyWhoseButtonIsDisabledDoesNothing)
{
    addArticle("A1", "Primo", 10000);
    addArticle("B2", "Secondo", 20000);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    add("A1", "1");
    enter("B2", "2");

    QTest::keyClick(&form, Qt::Key_F8); // adds
    EXPECT_EQ(column(Col_codice_med), QStringList({"A1", "B2"}));
    grid()->setRow(FirstDataRow);
    QTest::keyClick(&form, Qt::Key_F7); // removes
    EXPECT_EQ(column(Col_codice_med), QStringList({"B2"}));
    EXPECT_EQ(column(Col_Riga), QStringList({"1"}));

    linesButton(2)->setEnabled(false); // REMOVE: F8 no longer adds
    QTest::keyClick(&form, Qt::Key_F8);
    EXPECT_EQ(form.LineCount(), 1);
    linesButton(2)->setEnabled(true);
    linesButton(3)->setEnabled(false); // EDIT: F7 no longer removes
    QTest::keyClick(&form, Qt::Key_F7);
    EXPECT_EQ(form.LineCount(), 1);
    linesButton(1)->setEnabled(false); // ADD: F6 no longer adds
    QTest::keyClick(&form, Qt::Key_F6);
    EXPECT_EQ(form.LineCount(), 1);
}

TEST_P(LinesTest, F5WithATextBoxFocusedRunsNoSearchOnlyTheRecalculation)
{
    test::ScriptedDialogs noBoxes;
    test::ScriptedLists lists;
    frm_Commissioni& form = openForm();
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    QLineEdit* number = field("txt_numeroCommissione");
    number->setFocus();
    ASSERT_EQ(QApplication::focusWidget(), number);
    QTest::keyClick(number, Qt::Key_F5);
    EXPECT_TRUE(lists.requests().isEmpty());
    EXPECT_EQ(form.statusPanelText(6), "Tot.Q.tà: 0");

    // From a toolbar button the same key searches.
    QWidget* tool = static_cast<QToolBar*>(widget("tbComandiDocumento"))->widgetForAction(documentButton(1));
    ASSERT_NE(tool, nullptr);
    tool->setFocus();
    lists.expectCancel("Trova Commissioni");
    QTest::keyClick(tool, Qt::Key_F5);
    EXPECT_EQ(lists.requests().size(), 1);
}

TEST_P(LinesTest, EditAppendsUnlessTheDuplicateCheckFindsTheArticle)
{
    addArticle("A1", "Primo", 10000);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    add("A1", "1");
    clickCell(FirstDataRow, Col_qta);
    field("txt_qta")->setText("6");
    form.tbComandiRighe_ButtonClick(linesButton(3));
    EXPECT_EQ(column(Col_qta), QStringList({"1", "6"}));

    m_host->SaveSetting("comm", "checkAddRigaFlex", "1", "DOCS");
    form.GET_Impostazioni();
    const QString articleKey = grid()->textMatrix(FirstDataRow, Col_rowid_med);
    clickCell(FirstDataRow, Col_qta);
    field("txt_codice")->setText("  A1 ");
    field("txt_qta")->setText("9");
    form.tbComandiRighe_ButtonClick(linesButton(3));
    EXPECT_EQ(column(Col_qta), QStringList({"9", "6"}));
    EXPECT_EQ(grid()->textMatrix(FirstDataRow, Col_rowid), articleKey); // the replaced line's rowid_med
    EXPECT_EQ(text("txt_Totale"), Money::fromInteger(15).toCurrencyText());
}

TEST_P(LinesTest, TheHostsKeyFilterDecidesWhatIsTyped)
{
    test::ScriptedDialogs noBoxes;
    startOrder();
    QLineEdit* persons = field("txt_soggettiEvento");
    persons->clear();
    QTest::keyClicks(persons, "quxa");
    EXPECT_EQ(persons->text(), "Qua");
}

TEST_P(LinesTest, NoToTheClosingQuestionKeepsEveryLine)
{
    for (const char* code : {"A1", "B2", "C3"})
        addArticle(code, QStringLiteral("Articolo %1").arg(code), 10000);
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = startOrder();
    for (const char* code : {"A1", "B2", "C3"})
        add(code, "2");
    dialogs.expectMessage("Si desidera uscire?", host::Answer::No);
    QTest::keyClick(field("txt_qta"), Qt::Key_Escape);
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(column(Col_codice_med), QStringList({"A1", "B2", "C3"}));
    EXPECT_EQ(text("txt_Totale"), Money::fromInteger(6).toCurrencyText());
}

TEST_P(LinesTest, TheMainFrameStaysNearTheMiddleOfAWideWindow)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    form.resize(1920, 1000);
    QApplication::processEvents();
    QWidget* frame = widget("fra_Main");
    const int frameMiddle = frame->mapTo(&form, QPoint(frame->width() / 2, 0)).x();
    EXPECT_LT(frameMiddle, form.width() / 2);
    EXPECT_GT(frameMiddle, form.width() / 2 - 12);
    QWidget* number = widget("txt_numeroCommissione");
    EXPECT_GT(number->mapTo(&form, QPoint()).x(), frame->mapTo(&form, QPoint()).x());
}

XV_INSTANTIATE_FOR_ENGINES(LinesTest);

} // namespace
