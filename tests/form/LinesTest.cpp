// SPDX-License-Identifier: MIT
// Adding, changing and removing the lines of an order through the real form offscreen on a real temporary
// SQLite database.
#include "FormFixture.h"
#include "ScriptedDialogs.h"

#include "common/Money.h"
#include "data/Database.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QLabel>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using namespace xv::lines;
using common::Money;
using form::frm_Commissioni;

QString currency(qint64 raw)
{
    return Money::fromRaw(raw).toCurrencyText();
}

class LinesTest : public test::FormTest
{
protected:
    void addComponent(const QString& assembled, const QString& component, double perUnit)
    {
        db().executeBound("insert into Produzione (Tipo, Codice_A, Codice_P, Qta_P) values ('P', ?, ?, ?)",
                          {assembled, component, perUnit});
    }
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
    EXPECT_EQ(dialogs.messages()[0].icon, host::Icon::Information);
    EXPECT_EQ(form.LineCount(), 0);
    EXPECT_EQ(text("txt_rowidArticolo"), "");
    EXPECT_EQ(text("txt_Acconto"), ""); // the later steps of the check did not run
    EXPECT_EQ(focusName(), "txt_codice");
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
        fillLine("BOM001", "2");
        field(name)->clear();
        dialogs.expectMessage(QString::fromUtf8(message));
        form.tbComandiRighe_ButtonClick(linesButton(1));
        EXPECT_EQ(form.LineCount(), 0);
        EXPECT_EQ(focusName(), name);
        field("txt_dataRitiro")->setText("20/05/2026");
    }
}

TEST_P(LinesTest, AnAddedLineTakesTheEntryFieldsAndTheOrderAndAnEmptyDepositOrTotalBecomesZero)
{
    addArticle("BOM001", "Bomboniera in porcellana", 99000);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    field("txt_dataRitiro")->setText("20/05/2026");
    field("txt_Acconto")->clear();
    field("txt_Totale")->clear();
    fillLine("BOM001", "3");
    field("txt_prezzo")->setText("2,5");
    form.tbComandiRighe_ButtonClick(linesButton(1));

    ASSERT_EQ(form.LineCount(), 1);
    // Where each cell comes from is NewLineTest's; here, that the entry fields and the header reach it.
    const std::pair<int, QString> cells[] = {{Col_codice_med, "BOM001"},
                                             {Col_prezzo, currency(25000)},
                                             {Col_note, "20/05/2026"},
                                             {Col_numero, "8"},
                                             {Col_Nominativo, "Rossi Maria"}};
    for (const auto& [col, cell] : cells)
        EXPECT_EQ(grid()->textMatrix(FirstDataRow, col), cell) << col;
    EXPECT_EQ(text("txt_Acconto"), Money().toCurrencyText());
    EXPECT_EQ(text("txt_Totale"), currency(75000));
    EXPECT_EQ(form.statusPanelText(7), "Tot.Righe: 1");
    EXPECT_EQ(focusName(), "txt_codice");
}

TEST_P(LinesTest, RemovingTheOnlyLineEmptiesTheGridAndAMiddleLineLeavesTheOthersRenumbered)
{
    for (const char* code : {"A1", "B2", "C3"})
        addArticle(code, QStringLiteral("Articolo %1").arg(code), 10000);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    addLine("A1", "1");
    ASSERT_EQ(form.LineCount(), 1);
    form.tbComandiRighe_ButtonClick(linesButton(2));
    EXPECT_EQ(form.LineCount(), 0);
    EXPECT_EQ(grid()->cols(), ColCount); // laid out again, not left without columns
    EXPECT_EQ(text("txt_Totale"), Money().toCurrencyText());

    for (const char* code : {"A1", "B2", "C3"})
        addLine(code, "1");
    ASSERT_EQ(column(Col_codice_med), QStringList({"A1", "B2", "C3"}));
    grid()->setRow(FirstDataRow + 1);
    form.tbComandiRighe_ButtonClick(linesButton(2));
    EXPECT_EQ(column(Col_codice_med), QStringList({"A1", "C3"}));
    EXPECT_EQ(column(Col_Riga), QStringList({"1", "2"}));
    EXPECT_EQ(form.statusPanelText(7), "Tot.Righe: 2");
}

TEST_P(LinesTest, AComposedArticleAddsOneLinePerComponentWithTheQuantitiesMultipliedButNotByF6)
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
    startOrder();

    addLine("KIT01", "4");
    EXPECT_EQ(column(Col_codice_med), QStringList({"KIT01", "CNF01", "NAS01", "BIG01"}));
    EXPECT_EQ(column(Col_qta), QStringList({"4", "10", "12", "4"}));
    EXPECT_EQ(column(Col_Descrizione1), QStringList({"Kit bomboniera", "Confetti", "Nastro", "Bigliettino"}));
    EXPECT_EQ(grid()->textMatrix(FirstDataRow + 2, Col_imponibile), currency(12000));

    // F6 adds the line alone, without its components.
    fillLine("KIT01", "2");
    QTest::keyClick(field("txt_qta"), Qt::Key_F6);
    EXPECT_EQ(column(Col_codice_med), QStringList({"KIT01", "CNF01", "NAS01", "BIG01", "KIT01"}));
    EXPECT_EQ(column(Col_Riga), QStringList({"1", "2", "3", "4", "5"}));
}

TEST_P(LinesTest, AClickedLineComesBackIntoTheFieldsAndTheClickedColumnDecidesTheFocus)
{
    addArticle("A1", "Primo", 10000);
    addArticle("B2", "Secondo", 20000);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    addLine("A1", "1");
    field("txt_dataRitiro")->setText("23/11/2026");
    addLine("B2", "5");
    field("txt_codice")->setText("A1");

    clickCell(FirstDataRow + 1, Col_prezzo);
    EXPECT_EQ(focusName(), "txt_prezzo");
    EXPECT_EQ(text("txt_codice"), "B2");
    EXPECT_EQ(text("txt_descrizione"), "Secondo");
    EXPECT_EQ(text("txt_qta"), "5");
    EXPECT_EQ(text("txt_totaleRiga"), Money::fromInteger(10).toCurrencyText());
    EXPECT_EQ(form.findChild<QLabel*>("lbl_Riga")->text(), "2");
    EXPECT_EQ(field("txt_dataRitiro")->toolTip(),
              "La data del ritiro di questo articolo è lunedì, 23 novembre 2026");

    const std::pair<int, const char*> focusing[] = {
        {Col_codice_med, "txt_codice"}, {Col_qta, "txt_qta"}, {Col_note, "txt_dataRitiro"}};
    for (const auto& [col, name] : focusing) {
        clickCell(FirstDataRow, col);
        EXPECT_EQ(focusName(), name);
    }
    clickCell(FirstDataRow, Col_Descrizione1);
    EXPECT_EQ(focusName(), "flx_Movimenti"); // where the click itself put it
    EXPECT_EQ(text("txt_codice"), "A1");
}

TEST_P(LinesTest, EditAppendsUnlessTheDuplicateCheckFindsTheArticle)
{
    addArticle("A1", "Primo", 10000);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    addLine("A1", "1");
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
    // How the line is found is ArticleInfoTest's; the form keeps the answer for the line it writes.
    form.CheckPreInserimentoArticolo();
    EXPECT_EQ(form.existingRow(), FirstDataRow);
    EXPECT_EQ(QString::number(form.rowidMed()), articleKey);
    form.tbComandiRighe_ButtonClick(linesButton(3));
    EXPECT_EQ(column(Col_qta), QStringList({"9", "6"}));
    EXPECT_EQ(grid()->textMatrix(FirstDataRow, Col_rowid), articleKey); // the replaced line's rowid_med
    EXPECT_EQ(text("txt_Totale"), Money::fromInteger(15).toCurrencyText());
}

XV_INSTANTIATE_ON_SQLITE(LinesTest);

} // namespace
