// SPDX-License-Identifier: MIT
// The article panel and the text fields, typed into the real form offscreen on a real temporary SQLite
// database; the rules behind them are the units' (tests/lines, tests/common).
#include "FormFixture.h"
#include "ScriptedDialogs.h"
#include "TestOrders.h"

#include "common/Dates.h"
#include "lines/ArticleInfo.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <tuple>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;
using form::frm_Commissioni;

const QColor kRed(255, 0, 0);
const QColor kGreen(0, 255, 0);

class ArticlePanelTest : public test::FormTest
{
protected:
    QLabel* label(const char* name) const { return m_form->findChild<QLabel*>(QString::fromLatin1(name)); }
    static QColor background(QWidget* w) { return w->palette().color(QPalette::Window); }
};

TEST_P(ArticlePanelTest, AnUnknownCodeSaysSoEmptiesTheLineAndKeepsTheFocus)
{
    test::ScriptedDialogs noBoxes;
    addArticle("BOM001", "Cuore d'argento", 125000, 40, 35);
    startOrder();
    typeAndEnter("txt_codice", "BOM001");
    ASSERT_EQ(text("txt_descrizione"), "Cuore d'argento");
    ASSERT_FALSE(label("lbl_quantita_reale")->text().isEmpty());

    typeAndEnter("txt_codice", "XYZ");
    EXPECT_TRUE(label("lbl_MsgCodice")->isVisible());
    EXPECT_EQ(label("lbl_MsgCodice")->text(), "Codice articolo inesistente");
    for (const char* emptied : {"txt_descrizione", "txt_prezzo", "txt_rowidArticolo"})
        EXPECT_EQ(text(emptied), "") << emptied;
    EXPECT_EQ(label("lbl_quantita_reale")->text(), "");
    EXPECT_EQ(focusName(), "txt_codice");
    // Leaving by the mouse is refused too.
    QTest::mouseClick(field("txt_prezzo"), Qt::LeftButton);
    EXPECT_EQ(focusName(), "txt_codice");

    typeAndEnter("txt_codice", "BOM001");
    EXPECT_FALSE(label("lbl_MsgCodice")->isVisible());
    EXPECT_EQ(text("txt_prezzo"), Money::fromRaw(125000).toCurrencyText());
    EXPECT_EQ(focusName(), "txt_qta");
}

TEST_P(ArticlePanelTest, AShopsAgentQueryThatFailsIsReportedAndTheArticleStaysShown)
{
    test::ScriptedDialogs noBoxes;
    m_host->keepErrors = true;
    addArticle("BOM001", "Cuore d'argento", 125000, 40, 35);
    m_host->SaveSetting("COMM", "SQL_Informazioni_MED", "select ragsoc from tabella_che_non_esiste where 1=1",
                        "DOCS");
    startOrder();
    typeAndEnter("txt_codice", "BOM001");
    EXPECT_EQ(m_host->reported, QStringList{"Informazioni_MED|Codice: BOM001"});
    EXPECT_EQ(text("txt_descrizione"), "Cuore d'argento");
    EXPECT_FALSE(label("lbl_MsgCodice")->isVisible());
    EXPECT_EQ(focusName(), "txt_qta") << "the article is known: the operator goes on";
}

// Which quantities are red is ArticleInfoTest's; here, that the panel shows the stock, its warning, the last
// load and the supplier's agent, and that clearing the code clears them.
TEST_P(ArticlePanelTest, ThePanelShowsTheStockItsWarningTheLastLoadAndTheAgent)
{
    test::ScriptedDialogs noBoxes;
    m_host->SaveSetting("PREDEFINITI", "SogliaScorta", "0", "eKELA");
    addArticle("A0", "Senza scorta", 10000, 0, 3);
    db().execute("insert into controparti (tipocontroparte, ragsoc, Email) values "
                 "('A', 'Bianchi Luca', 'luca@esempio.it')");
    addSupplierOf("A0", "Bianchi Luca", 120, QDate(m_year - 1, 3, 12));
    startOrder();
    typeAndEnter("txt_codice", "A0");
    EXPECT_EQ(background(m_form->lblInfo(10)), kRed);
    EXPECT_TRUE(m_form->lblInfo(29)->isVisible());
    EXPECT_EQ(label("lbl_quantita_disponibile")->text(), "3");
    EXPECT_EQ(background(m_form->lblInfo(11)), kGreen);
    EXPECT_EQ(m_form->lblInfoArt(0)->text(), "120 del " + common::shortDate(QDate(m_year - 1, 3, 12)));
    EXPECT_EQ(m_form->lblInfo(22)->text(), "Bianchi Luca");
    EXPECT_EQ(form::tagOf(m_form->lblInfo(22)), "luca@esempio.it");

    typeAndEnter("txt_codice", "");
    EXPECT_EQ(label("lbl_quantita_reale")->text(), "");
    EXPECT_EQ(m_form->lblInfo(22)->text(), "");
}

TEST_P(ArticlePanelTest, DatesAreReadAsTypedAndShownInFull)
{
    test::ScriptedDialogs dialogs;
    startOrder();
    // How typed dates read is DatesTest's.
    typeAndEnter("txt_dataEvento", "23112026");
    EXPECT_EQ(text("txt_dataEvento"), "23/11/2026");
    EXPECT_EQ(focusName(), "txt_soggettiEvento");
    // Bad text is refused with a message and left as it was typed, by Enter or by the mouse.
    dialogs.expectMessage("non è una data valida");
    typeAndEnter("txt_dataRitiro1", "31/02/26");
    EXPECT_EQ(focusName(), "txt_dataRitiro1");
    dialogs.expectMessage("non è una data valida");
    QTest::mouseClick(field("txt_soggettiEvento"), Qt::LeftButton);
    EXPECT_EQ(focusName(), "txt_dataRitiro1");
    EXPECT_EQ(text("txt_dataRitiro1"), "31/02/26");
    EXPECT_EQ(field("txt_dataRitiro1")->selectedText(), "31/02/26") << "ready to be typed over";
    ASSERT_EQ(dialogs.messages().size(), 2);
    typeAndEnter("txt_dataRitiro1", "");
    EXPECT_EQ(focusName(), "txt_dataRitiro2");
}

TEST_P(ArticlePanelTest, WhereLinesCannotBeEnteredYetEnterGoesToTheHeaderFieldThatKeepsThemClosed)
{
    test::ScriptedDialogs noBoxes;
    startOrder();
    field("txt_dataReg")->setFocus(Qt::TabFocusReason);
    pressEnter("txt_dataReg");
    EXPECT_EQ(focusName(), "txt_ragsoc");
    field("txt_soggettiEvento")->clear();
    m_form->AbilitaRighe();
    field("txt_dataRitiro2")->setFocus(Qt::TabFocusReason);
    pressEnter("txt_dataRitiro2");
    EXPECT_EQ(focusName(), "txt_soggettiEvento");
}

TEST_P(ArticlePanelTest, TheFieldBeingTypedInTakesTheActiveColourAndGivesItBack)
{
    test::ScriptedDialogs noBoxes;
    m_host->SaveSetting("COLORI", "Attivo", "&H80FFFF", "eKELA");
    const QColor active = host::toQColor(0x80FFFF);
    startOrder();
    QLineEdit* box = field("txt_telefono");
    const QColor before = box->palette().color(QPalette::Base);
    box->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(box->hasFocus());
    EXPECT_EQ(box->palette().color(QPalette::Base), active);
    // Every key refreshes the commands, which paint some fields: the one typed in stays active.
    for (const Qt::Key key : {Qt::Key_End, Qt::Key_X, Qt::Key_Backspace})
        QTest::keyClick(box, key);
    EXPECT_EQ(box->palette().color(QPalette::Base), active);
    field("txt_email")->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(box->palette().color(QPalette::Base), before);
}

TEST_P(ArticlePanelTest, ArticleMenusListTheirFamilyAsStoredAndAPickLoadsTheArticle)
{
    test::ScriptedDialogs noBoxes;
    const char* const articles[][3] = {
        {"BOM001", "Cuore d'argento", "BOMBONIERE"}, {"AST001", "Astuccio in raso", "ASTUCCI"},
        {"BOM002", "Cuore di vetro", "BOMBONIERE"},  {"FAZ001", "Fazzoletto in lino", "FAZZOLETTI"},
        {"bom009", "Altra famiglia", "bomboniere"},  {"CNF001", "Confetti", "CONFETTI"}};
    for (const auto& [code, description, category] : articles)
        addArticle(code, description, 9000, 20, 20, category);
    frm_Commissioni& form = startOrder();
    ASSERT_EQ(form.tBomboniere().count(), 2) << "the family as stored, another case is another family";
    const std::tuple<form::MenuItemArray*, const char*, const char*, const char*> menus[] = {
        {&form.tBomboniere(), "img_Bomboniere", "BOM001", "Cuore d'argento"},
        {&form.tAstucci(), "img_Astucci", "AST001", "Astuccio in raso"},
        {&form.tFazzoletti(), "img_Fazzoletti", "FAZ001", "Fazzoletto in lino"},
    };
    for (const auto& [items, button, code, description] : menus) {
        SCOPED_TRACE(code);
        field("txt_codice")->setFocus(Qt::TabFocusReason);
        QTest::mouseClick(form.findChild<QToolButton*>(button), Qt::LeftButton);
        ASSERT_TRUE(items->menu()->isVisible());
        items->menu()->hide();
        items->item(0)->trigger();
        EXPECT_EQ(text("txt_codice"), code);
        EXPECT_EQ(text("txt_descrizione"), description);
        EXPECT_EQ(focusName(), "txt_qta");
    }
}

// The amounts are TotalsTest's; here, that Enter alone leads from field to field and adds each line.
TEST_P(ArticlePanelTest, AnOrderIsEnteredFromTheKeyboardAlone)
{
    test::ScriptedDialogs noBoxes;
    struct Line
    {
        const char* code;
        const char* quantity;
        const char* price; // empty: the article's own price is kept
        qint64 amountRaw;
    };
    const Line lines[] = {{"BOM010", "4", "", 500000}, {"FAZ050", "8", "7,75", 620000}};
    addArticle("BOM010", "Cuore in porcellana", 125000, 40);
    addArticle("FAZ050", "Fazzoletto ricamato", 69000, 90);
    test::addCounter(db(), m_year, 7);
    openForm();
    activate();

    QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : m_form.get(), Qt::Key_F2);
    ASSERT_EQ(m_form->ModeTag2(), "S");
    ASSERT_EQ(focusName(), "txt_ragsoc") << "a new order is typed from its customer on";
    const char* const header[][2] = {{"txt_ragsoc", "Esposito Anna"}, {"txt_telefono", "081 5551234"},
                                     {"txt_cellulare", ""},           {"txt_email", ""},
                                     {"txt_tipoEvento", "Comunione"}, {"txt_dataEvento", "10/05/27"},
                                     {"txt_soggettiEvento", "Luca"},  {"txt_dataRitiro1", ""},
                                     {"txt_dataRitiro2", ""}};
    auto typeHere = [](const QString& what) {
        QWidget* here = QApplication::focusWidget();
        ASSERT_NE(here, nullptr);
        QTest::keyClicks(here, what);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    };
    for (const auto& [name, value] : header) {
        ASSERT_EQ(focusName(), name);
        typeHere(QString::fromUtf8(value));
    }
    for (const Line& line : lines) {
        SCOPED_TRACE(line.code);
        ASSERT_EQ(focusName(), "txt_codice");
        typeHere(QString::fromLatin1(line.code));
        ASSERT_EQ(focusName(), "txt_qta");
        typeHere(QString::fromLatin1(line.quantity));
        ASSERT_EQ(focusName(), "txt_prezzo");
        typeHere(QString::fromLatin1(line.price));
        ASSERT_EQ(focusName(), "txt_dataRitiro");
        // Leaving quantity and price showed the price and the line's amount as currency.
        const qint64 priceRaw = line.amountRaw / QString::fromLatin1(line.quantity).toInt();
        EXPECT_EQ(text("txt_prezzo"), Money::fromRaw(priceRaw).toCurrencyText());
        EXPECT_EQ(text("txt_totaleRiga"), Money::fromRaw(line.amountRaw).toCurrencyText());
        typeHere(QString());
    }
    EXPECT_TRUE(m_host->reported.isEmpty()) << m_host->reported.join('\n').toStdString();
    EXPECT_EQ(column(lines::Col_codice_med), QStringList({"BOM010", "FAZ050"}));
    EXPECT_EQ(column(lines::Col_qta), QStringList({"4", "8"}));
    EXPECT_EQ(column(lines::Col_attrib05), QStringList(2, "10/05/2027")) << "the header typed first";
    EXPECT_EQ(text("txt_Totale"), Money::fromRaw(500000 + 620000).toCurrencyText());
}

XV_INSTANTIATE_ON_SQLITE(ArticlePanelTest);

} // namespace
