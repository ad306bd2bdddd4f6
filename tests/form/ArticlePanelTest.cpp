// SPDX-License-Identifier: MIT
// The article panel, the stock check and the text fields, typed into the real form offscreen on a real
// temporary database of each engine.
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
    // An agent, a supplier of theirs and a delivery note of the article from that supplier.
    void addSupplierOf(const QString& code, int quantity, const QDate& day)
    {
        db().execute("insert into controparti (tipocontroparte, ragsoc, Email) values "
                     "('A', 'Bianchi Luca', 'luca@esempio.it')");
        const int agentId =
            Recordset::open(db(), "select max(rowid) as id from controparti").value("id").toInt();
        db().executeBound(
            "insert into controparti (tipocontroparte, ragsoc, codagente) values ('F', 'Fornitore', ?)",
            {agentId});
        const int supplierId =
            Recordset::open(db(), "select max(rowid) as id from controparti").value("id").toInt();
        test::addOrderLine(db(), "3", day,
                           {{"Tipomovimento", "CF"},
                            {"documento", "DDTF"},
                            {"rowid_controparti", supplierId},
                            {"codice_med", code},
                            {"qta", quantity}});
    }
    void typeAndEnter(const char* name, const QString& text)
    {
        type(name, text);
        pressEnter(name);
    }
    QLabel* label(const char* name) const { return m_form->findChild<QLabel*>(QString::fromLatin1(name)); }
    static QColor background(QWidget* w) { return w->palette().color(QPalette::Window); }
    QPushButton* mailButton() const { return m_form->findChild<QPushButton*>("btn_SendMail"); }
};

TEST_P(ArticlePanelTest, AnUnknownCodeSaysSoEmptiesTheLineAndKeepsTheFocus)
{
    test::ScriptedDialogs noBoxes;
    addArticle("BOM001", "Cuore d'argento", 125000, 40, 35);
    startOrder();
    typeAndEnter("txt_codice", "BOM001");
    ASSERT_EQ(text("txt_descrizione"), "Cuore d'argento");
    ASSERT_FALSE(label("lbl_quantita_reale")->text().isEmpty());

    // A quote in the code finds nothing rather than breaking the query.
    for (const char* unknown : {"XYZ", "BOM'1"}) {
        SCOPED_TRACE(unknown);
        typeAndEnter("txt_codice", unknown);
        EXPECT_TRUE(label("lbl_MsgCodice")->isVisible());
        EXPECT_EQ(label("lbl_MsgCodice")->text(), "Codice articolo inesistente");
        for (const char* emptied : {"txt_descrizione", "txt_prezzo", "txt_rowidArticolo"})
            EXPECT_EQ(text(emptied), "") << emptied;
        EXPECT_EQ(label("lbl_quantita_reale")->text(), "");
        EXPECT_EQ(focusName(), "txt_codice");
        // Leaving by the mouse is refused too.
        QTest::mouseClick(field("txt_prezzo"), Qt::LeftButton);
        EXPECT_EQ(focusName(), "txt_codice");
    }
    EXPECT_TRUE(m_host->reported.isEmpty()) << m_host->reported.join('\n').toStdString();

    typeAndEnter("txt_codice", "BOM001");
    EXPECT_FALSE(label("lbl_MsgCodice")->isVisible());
    EXPECT_EQ(text("txt_prezzo"), Money::fromRaw(125000).toCurrencyText());
    EXPECT_EQ(text("txt_qta"), "1");
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

TEST_P(ArticlePanelTest, StockAtOrBelowTheThresholdIsRedWithAWarning)
{
    test::ScriptedDialogs noBoxes;
    m_host->SaveSetting("PREDEFINITI", "SogliaScorta", "0", "eKELA");
    addArticle("A0", "Senza scorta", 10000, 0, 3);
    addArticle("A1", "Un pezzo", 10000, 1, QVariant());
    addSupplierOf("A1", 120, QDate(m_year - 1, 3, 12));
    startOrder();
    struct Case
    {
        const char* code;
        QColor real;
        bool warning;
        const char* available;
        QColor availableColour;
    };
    const Case cases[] = {{"A0", kRed, true, "3", kGreen}, {"A1", kGreen, false, "0", kRed}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.code);
        typeAndEnter("txt_codice", c.code);
        EXPECT_EQ(background(m_form->lblInfo(10)), c.real);
        EXPECT_EQ(m_form->lblInfo(10)->isVisible(), c.warning);
        EXPECT_EQ(m_form->lblInfo(29)->isVisible(), c.warning);
        EXPECT_EQ(label("lbl_quantita_disponibile")->text(), c.available);
        EXPECT_EQ(background(m_form->lblInfo(11)), c.availableColour);
    }
    // The last delivery note and its supplier's agent.
    EXPECT_EQ(m_form->lblInfoArt(0)->text(), "120 del " + common::shortDate(QDate(m_year - 1, 3, 12)));
    EXPECT_EQ(background(m_form->lblInfo(0)), kGreen);
    EXPECT_EQ(m_form->lblInfoArt(1)->text(), "");
    EXPECT_EQ(background(m_form->lblInfo(1)), kRed);
    EXPECT_EQ(m_form->lblInfo(22)->text(), "Bianchi Luca");
    EXPECT_EQ(form::tagOf(m_form->lblInfo(22)), "luca@esempio.it");

    // Clearing the code clears the panel.
    typeAndEnter("txt_codice", "");
    EXPECT_EQ(label("lbl_quantita_reale")->text(), "");
    EXPECT_EQ(m_form->lblInfo(22)->text(), "");
    EXPECT_EQ(text("txt_rowidArticolo"), "");
}

TEST_P(ArticlePanelTest, TheStockCheckOffersTheReorderOnlyWhenSwitchedOnAndShort)
{
    test::ScriptedDialogs dialogs;
    addArticle("A5", "Cinque in magazzino", 25000, 5, 5);
    addSupplierOf("A5", 50, QDate(m_year - 1, 1, 10));
    startOrder();
    field("txt_dataRitiro1")->setText("20/06/2026");
    struct Case
    {
        const char* setting;
        const char* asked;
        bool enabled;
        bool question;
    };
    const Case cases[] = {
        {"1", "8", true, true}, {"1", "5", true, false}, {"1", "4", false, false}, {"2", "8", false, false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "CheckQtaMED " << c.setting << ", asked " << c.asked);
        m_host->SaveSetting("COMM", "CheckQtaMED", c.setting, "docs");
        const qsizetype before = dialogs.messages().size();
        if (c.question) {
            dialogs.expectMessage("- QUANTITA' DA ORDINARE    : 3", host::Answer::Yes);
            // No mail server is set up here: the mail stays in the outbox.
            dialogs.expectMessage("Server di posta non configurato: la mail NON è stata inviata.");
        }
        typeAndEnter("txt_codice", "A5");
        typeAndEnter("txt_qta", c.asked);
        EXPECT_EQ(mailButton()->isEnabled(), c.enabled);
        EXPECT_EQ(focusName(), "txt_prezzo");
        EXPECT_EQ(text("txt_totaleRiga"), Money::fromRaw(25000 * QString(c.asked).toInt()).toCurrencyText());
        ASSERT_EQ(dialogs.messages().size(), before + (c.question ? 2 : 0));
        if (!c.question)
            continue;
        const host::MessageRequest& asked = dialogs.messages()[before];
        EXPECT_EQ(asked.text, lines::reorderQuestion("5", "8", 3, "Bianchi Luca", "luca@esempio.it"));
        EXPECT_EQ(asked.buttons, host::Buttons::YesNo);
        EXPECT_EQ(asked.icon, host::Icon::Question);
        EXPECT_EQ(asked.title, m_host->GetAppTitle());
        EXPECT_EQ(dialogs.messages()[before + 1].icon, host::Icon::Information);
        EXPECT_EQ(m_form->missingQuantity(), 3.0f);
    }
    // No to the question sends nothing and says nothing more.
    m_host->SaveSetting("COMM", "CheckQtaMED", "1", "docs");
    const qsizetype before = dialogs.messages().size();
    dialogs.expectMessage("Inviare una Mail per la fornitura ?", host::Answer::No);
    typeAndEnter("txt_qta", "9");
    EXPECT_EQ(dialogs.messages().size(), before + 1);
    EXPECT_TRUE(mailButton()->isEnabled());
    // A code that finds nothing withdraws the offer as another article's would.
    typeAndEnter("txt_codice", "XYZ");
    EXPECT_FALSE(mailButton()->isEnabled());
}

TEST_P(ArticlePanelTest, TheDuplicateLineCheckFindsAPaddedCodeButNotAnotherCase)
{
    const std::tuple<int, const char*, int> stored[] = {{1, "B2", 12}, {2, "A1  ", 31}};
    for (const auto& [riga, code, article] : stored)
        test::addOrderLine(db(), "21", QDate(m_year, 4, 4),
                           {{"Riga", riga}, {"codice_med", code}, {"rowid_med", article}});
    struct Case
    {
        const char* setting;
        const char* typed;
        int row;
        qint32 rowidMed;
    };
    const Case cases[] = {{"1", "A1", 3, 31}, {"1", "a1", 0, 0}, {"1", "B2", 2, 12}, {"0", "A1", 0, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "checkAddRigaFlex " << c.setting << ", typed " << c.typed);
        test::ScriptedDialogs noBoxes;
        m_host->SaveSetting("comm", "checkAddRigaFlex", c.setting, "DOCS");
        frm_Commissioni& form = openForm();
        typeNumberAndEnter("21");
        ASSERT_EQ(form.LineCount(), 2);
        field("txt_codice")->setText(c.typed);
        form.CheckPreInserimentoArticolo();
        EXPECT_EQ(form.existingRow(), c.row);
        EXPECT_EQ(form.rowidMed(), c.rowidMed);
    }
}

TEST_P(ArticlePanelTest, DatesAreReadAsTypedAndShownInFull)
{
    test::ScriptedDialogs dialogs;
    startOrder();
    const std::pair<const char*, const char*> typed[] = {{"23/11/26", "23/11/2026"},
                                                         {"23112026", "23/11/2026"},
                                                         {"23/11/2026", "23/11/2026"},
                                                         {"5-6-27", "05/06/2027"}};
    for (const auto& [entered, shown] : typed) {
        SCOPED_TRACE(entered);
        typeAndEnter("txt_dataEvento", entered);
        EXPECT_EQ(text("txt_dataEvento"), shown);
        EXPECT_EQ(focusName(), "txt_soggettiEvento");
    }
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
    EXPECT_EQ(dialogs.messages()[0].icon, host::Icon::Exclamation);
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
    for (const char* name : {"txt_telefono", "txt_ragsoc", "txt_codice"}) {
        SCOPED_TRACE(name);
        QLineEdit* box = field(name);
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
    ASSERT_EQ(form.tBomboniere().count(), 2);
    EXPECT_EQ(form.tBomboniere().item(1)->text(), "BOM002");
    EXPECT_EQ(form.tAstucci().count(), 1);
    EXPECT_EQ(form.tFazzoletti().count(), 1);
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
        EXPECT_EQ(text("txt_qta"), "1");
        EXPECT_EQ(focusName(), "txt_qta");
    }
}

TEST_P(ArticlePanelTest, AFiveLineOrderIsEnteredFromTheKeyboardAlone)
{
    test::ScriptedDialogs noBoxes;
    struct Line
    {
        const char* code;
        const char* quantity;
        const char* price; // empty: the article's own price is kept
        qint64 amountRaw;
    };
    const Line lines[] = {{"BOM010", "4", "", 500000},
                          {"AST020", "10", "", 320000},
                          {"CNF030", "2", "28", 560000},
                          {"BIG040", "100", "", 1050000},
                          {"FAZ050", "8", "7,75", 620000}};
    addArticle("BOM010", "Cuore in porcellana", 125000, 40);
    addArticle("AST020", "Astuccio in raso", 32000, 400);
    addArticle("CNF030", "Confetti alla mandorla 1kg", 265000, 30);
    addArticle("BIG040", "Bigliettino con nastro", 10500, 900);
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
    ASSERT_EQ(m_form->LineCount(), 5);
    qint64 total = 0;
    for (int i = 0; i < 5; ++i) {
        const int row = lines::FirstDataRow + i;
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_Riga), QString::number(i + 1));
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_codice_med), QLatin1String(lines[i].code));
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_qta), QLatin1String(lines[i].quantity));
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_imponibile),
                  Money::fromRaw(lines[i].amountRaw).toCurrencyText());
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_Nominativo), "Esposito Anna");
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_attrib05), "10/05/2027");
        total += lines[i].amountRaw;
    }
    EXPECT_EQ(text("txt_Totale"), Money::fromRaw(total).toCurrencyText());
    EXPECT_EQ(m_form->statusPanelText(7), "Tot.Righe: 5");
}

XV_INSTANTIATE_FOR_ENGINES(ArticlePanelTest);

} // namespace
