// SPDX-License-Identifier: MIT
// The article panel, the stock check and the text fields, typed into the real form offscreen on a real
// temporary database of each engine.
#include "FormFixture.h"
#include "ScriptedDialogs.h"
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/Dates.h"
#include "form/frm_Commissioni.h"
#include "host/Host.h"
#include "host/Services.h"
#include "lines/ArticleInfo.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;
using form::frm_Commissioni;

const QColor kRed(255, 0, 0);
const QColor kGreen(0, 255, 0);

// The real host, keeping the errors reported to it instead of showing them.
class RecordingHost : public host::Host
{
public:
    using Host::Host;
    void ReportError(const QString& source, const QString& text, bool) override
    {
        reported << source + QLatin1Char('|') + text;
    }
    QStringList reported;
};

class ArticlePanelTest : public test::FormTest
{
protected:
    std::unique_ptr<host::Host> makeHost(const host::HostOptions& options) override
    {
        auto h = std::make_unique<RecordingHost>(options);
        m_recording = h.get();
        return h;
    }

    void addArticle(const QString& code, const QString& description, qint64 priceRaw, const QVariant& real,
                    const QVariant& available = 0, const QString& category = QString())
    {
        db().executeBound(
            "insert into med (codice, descrizione, prezzo_vendita, quantita_reale, "
            "quantita_disponibile, categoria) values (?, ?, ?, ?, ?, ?)",
            {code, description, Money::fromRaw(priceRaw).toDecimalText(), real, available, category});
    }

    // An agent, a supplier of theirs and a delivery note of the article from that supplier.
    void addSupplierOf(const QString& code, const QString& agent, const QString& email, int quantity,
                       const QDate& day)
    {
        db().executeBound("insert into controparti (tipocontroparte, ragsoc, Email) values ('A', ?, ?)",
                          {agent, email});
        const int agentId =
            Recordset::open(db(), "select max(rowid) as id from controparti").value("id").toInt();
        db().executeBound("insert into controparti (tipocontroparte, ragsoc, codagente) values ('F', ?, ?)",
                          {QStringLiteral("Fornitore di ") + agent, agentId});
        const int supplierId =
            Recordset::open(db(), "select max(rowid) as id from controparti").value("id").toInt();
        test::addOrderLine(db(), "3", day, [&](Recordset& t) {
            t.setValue("Tipomovimento", "CF");
            t.setValue("documento", "DDTF");
            t.setValue("rowid_controparti", supplierId);
            t.setValue("codice_med", code);
            t.setValue("qta", quantity);
        });
    }

    // A new order whose header is filled, so that lines can be entered, with the window active so that the
    // focus moves as it does on screen.
    frm_Commissioni& openOrderForLines()
    {
        openNewOrder(7);
        field("txt_ragsoc")->setText("Rossi Maria");
        field("txt_dataEvento")->setText("20/06/2027");
        field("txt_soggettiEvento")->setText("Marco e Giulia");
        m_form->AbilitaRighe();
        activate();
        return *m_form;
    }

    void activate()
    {
        m_form->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_form.get()));
    }

    // Types into a field as the operator does: the field takes the focus, the text is replaced.
    void type(const char* name, const QString& text)
    {
        QLineEdit* box = field(name);
        box->setFocus(Qt::TabFocusReason);
        ASSERT_TRUE(box->hasFocus()) << name;
        box->selectAll();
        if (text.isEmpty())
            QTest::keyClick(box, Qt::Key_Delete);
        else
            QTest::keyClicks(box, text);
    }

    void enter(const char* name) { QTest::keyClick(field(name), Qt::Key_Return); }

    QLabel* label(const char* name) const { return m_form->findChild<QLabel*>(QString::fromLatin1(name)); }
    QColor background(QWidget* w) const { return w->palette().color(QPalette::Window); }
    QString focusName() const
    {
        QWidget* w = QApplication::focusWidget();
        return w ? w->objectName() : QString();
    }
    QPushButton* mailButton() const { return m_form->findChild<QPushButton*>("btn_SendMail"); }

    RecordingHost* m_recording = nullptr;
};

TEST_P(ArticlePanelTest, AnUnknownCodeSaysSoEmptiesTheLineAndKeepsTheFocus)
{
    test::ScriptedDialogs noBoxes;
    addArticle("BOM001", "Cuore d'argento", 125000, 40, 35);
    openOrderForLines();
    type("txt_codice", "BOM001");
    enter("txt_codice");
    ASSERT_EQ(text("txt_descrizione"), "Cuore d'argento");
    ASSERT_FALSE(label("lbl_quantita_reale")->text().isEmpty());

    // A quote in the code finds nothing rather than breaking the query.
    for (const char* unknown : {"XYZ", "BOM'1"}) {
        SCOPED_TRACE(unknown);
        type("txt_codice", unknown);
        enter("txt_codice");
        EXPECT_TRUE(label("lbl_MsgCodice")->isVisible());
        EXPECT_EQ(label("lbl_MsgCodice")->text(), "Codice articolo inesistente");
        EXPECT_EQ(text("txt_descrizione"), "");
        EXPECT_EQ(text("txt_prezzo"), "");
        EXPECT_EQ(text("txt_rowidArticolo"), "");
        EXPECT_EQ(label("lbl_quantita_reale")->text(), "");
        EXPECT_EQ(focusName(), "txt_codice");
        // Leaving by the mouse is refused too.
        QTest::mouseClick(field("txt_prezzo"), Qt::LeftButton);
        EXPECT_EQ(focusName(), "txt_codice");
    }
    EXPECT_TRUE(m_recording->reported.isEmpty()) << m_recording->reported.join('\n').toStdString();

    type("txt_codice", "BOM001");
    enter("txt_codice");
    EXPECT_FALSE(label("lbl_MsgCodice")->isVisible());
    EXPECT_EQ(text("txt_descrizione"), "Cuore d'argento");
    EXPECT_EQ(text("txt_prezzo"), Money::fromRaw(125000).toCurrencyText());
    EXPECT_EQ(text("txt_qta"), "1");
    EXPECT_EQ(focusName(), "txt_qta");
}

TEST_P(ArticlePanelTest, AShopsAgentQueryThatFailsIsReportedAndTheArticleStaysShown)
{
    test::ScriptedDialogs noBoxes;
    addArticle("BOM001", "Cuore d'argento", 125000, 40, 35);
    m_host->SaveSetting("COMM", "SQL_Informazioni_MED", "select ragsoc from tabella_che_non_esiste where 1=1",
                        "DOCS");
    openOrderForLines();
    type("txt_codice", "BOM001");
    enter("txt_codice");
    EXPECT_EQ(m_recording->reported, QStringList{"Informazioni_MED|Codice: BOM001"});
    EXPECT_EQ(text("txt_descrizione"), "Cuore d'argento");
    EXPECT_EQ(text("txt_prezzo"), Money::fromRaw(125000).toCurrencyText());
    EXPECT_FALSE(label("lbl_MsgCodice")->isVisible());
    EXPECT_EQ(focusName(), "txt_qta") << "the article is known: the operator goes on";
}

TEST_P(ArticlePanelTest, StockAtOrBelowTheThresholdIsRedWithAWarning)
{
    test::ScriptedDialogs noBoxes;
    m_host->SaveSetting("PREDEFINITI", "SogliaScorta", "0", "eKELA");
    addArticle("A0", "Senza scorta", 10000, 0, 3);
    addArticle("A1", "Un pezzo", 10000, 1, QVariant());
    addSupplierOf("A1", "Bianchi Luca", "luca@esempio.it", 120, QDate(m_year - 1, 3, 12));
    openOrderForLines();
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
        type("txt_codice", c.code);
        enter("txt_codice");
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
    type("txt_codice", "");
    enter("txt_codice");
    EXPECT_EQ(label("lbl_quantita_reale")->text(), "");
    EXPECT_EQ(m_form->lblInfo(22)->text(), "");
    EXPECT_EQ(text("txt_rowidArticolo"), "");
}

TEST_P(ArticlePanelTest, TheStockCheckOffersTheReorderOnlyWhenSwitchedOnAndShort)
{
    test::ScriptedDialogs dialogs;
    addArticle("A5", "Cinque in magazzino", 25000, 5, 5);
    addSupplierOf("A5", "Bianchi Luca", "luca@esempio.it", 50, QDate(m_year - 1, 1, 10));
    openOrderForLines();
    struct Case
    {
        const char* setting;
        const char* asked;
        bool enabled;
        bool question;
    };
    const Case cases[] = {{"1", "8", true, true},
                          {"1", "5", true, false},
                          {"1", "4", false, false},
                          {"2", "8", false, false},
                          {"0", "8", false, false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "CheckQtaMED " << c.setting << ", asked " << c.asked);
        m_host->SaveSetting("COMM", "CheckQtaMED", c.setting, "docs");
        const qsizetype before = dialogs.messages().size();
        if (c.question) {
            dialogs.expectMessage("- QUANTITA' DA ORDINARE    : 3", host::Answer::Yes);
            dialogs.expectMessage("Invio della mail non ancora configurato: nessuna mail è stata inviata.");
        }
        type("txt_codice", "A5");
        enter("txt_codice");
        type("txt_qta", c.asked);
        enter("txt_qta");
        EXPECT_EQ(mailButton()->isEnabled(), c.enabled);
        EXPECT_EQ(focusName(), "txt_prezzo");
        // The line's amount follows the quantity.
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
    type("txt_qta", "9");
    enter("txt_qta");
    EXPECT_EQ(dialogs.messages().size(), before + 1);
    EXPECT_TRUE(mailButton()->isEnabled());
}

TEST_P(ArticlePanelTest, TheDuplicateLineCheckFindsAPaddedCodeButNotAnotherCase)
{
    test::addOrderLine(db(), "21", QDate(m_year, 4, 4), [](Recordset& t) {
        t.setValue("Riga", 1);
        t.setValue("codice_med", "B2");
        t.setValue("rowid_med", 12);
    });
    test::addOrderLine(db(), "21", QDate(m_year, 4, 4), [](Recordset& t) {
        t.setValue("Riga", 2);
        t.setValue("codice_med", "A1  ");
        t.setValue("rowid_med", 31);
    });
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
    openOrderForLines();
    const std::pair<const char*, const char*> typed[] = {{"23/11/26", "23/11/2026"},
                                                         {"23112026", "23/11/2026"},
                                                         {"23/11/2026", "23/11/2026"},
                                                         {"5-6-27", "05/06/2027"}};
    for (const auto& [entered, shown] : typed) {
        SCOPED_TRACE(entered);
        type("txt_dataEvento", entered);
        enter("txt_dataEvento");
        EXPECT_EQ(text("txt_dataEvento"), shown);
        EXPECT_EQ(focusName(), "txt_soggettiEvento");
    }
    ASSERT_TRUE(dialogs.messages().isEmpty());
    // Bad text is refused with a message and left as it was typed, by Enter or by the mouse.
    for (const char* bad : {"31/02/26", "domani"}) {
        SCOPED_TRACE(bad);
        const qsizetype before = dialogs.messages().size();
        dialogs.expectMessage("non è una data valida");
        type("txt_dataRitiro1", bad);
        enter("txt_dataRitiro1");
        EXPECT_EQ(text("txt_dataRitiro1"), bad);
        EXPECT_EQ(focusName(), "txt_dataRitiro1");
        dialogs.expectMessage("non è una data valida");
        QTest::mouseClick(field("txt_soggettiEvento"), Qt::LeftButton);
        EXPECT_EQ(focusName(), "txt_dataRitiro1");
        EXPECT_EQ(text("txt_dataRitiro1"), bad);
        EXPECT_EQ(field("txt_dataRitiro1")->selectedText(), bad) << "ready to be typed over";
        ASSERT_EQ(dialogs.messages().size(), before + 2);
        EXPECT_EQ(dialogs.messages()[before].icon, host::Icon::Exclamation);
    }
    type("txt_dataRitiro1", "");
    enter("txt_dataRitiro1");
    EXPECT_EQ(focusName(), "txt_dataRitiro2");
}

TEST_P(ArticlePanelTest, EnterWalksTheHeaderThenTheLineAndAddsIt)
{
    test::ScriptedDialogs noBoxes;
    addArticle("BOM001", "Cuore d'argento", 125000, 40, 35);
    openNewOrder(7);
    activate();
    field("txt_dataReg")->setFocus(Qt::TabFocusReason);
    const char* const header[] = {"txt_dataReg",     "txt_ragsoc",     "txt_telefono",   "txt_cellulare",
                                  "txt_email",       "txt_tipoEvento", "txt_dataEvento", "txt_soggettiEvento",
                                  "txt_dataRitiro1", "txt_dataRitiro2"};
    const std::map<std::string, QString> values = {{"txt_ragsoc", "Rossi Maria"},
                                                   {"txt_dataEvento", "200627"},
                                                   {"txt_soggettiEvento", "Marco e Giulia"}};
    for (const char* name : header) {
        ASSERT_EQ(focusName(), name);
        if (const auto it = values.find(name); it != values.end())
            QTest::keyClicks(field(name), it->second);
        enter(name);
    }
    EXPECT_EQ(text("txt_dataEvento"), "20/06/2027");
    ASSERT_EQ(focusName(), "txt_codice") << "the lines open once the header is complete";
    QTest::keyClicks(field("txt_codice"), "BOM001");
    enter("txt_codice");
    ASSERT_EQ(focusName(), "txt_qta");
    field("txt_qta")->selectAll();
    QTest::keyClicks(field("txt_qta"), "3");
    enter("txt_qta");
    ASSERT_EQ(focusName(), "txt_prezzo");
    field("txt_prezzo")->selectAll();
    QTest::keyClicks(field("txt_prezzo"), "10,5");
    enter("txt_prezzo");
    EXPECT_EQ(text("txt_prezzo"), Money::fromRaw(105000).toCurrencyText());
    EXPECT_EQ(text("txt_totaleRiga"), Money::fromRaw(315000).toCurrencyText());
    ASSERT_EQ(focusName(), "txt_dataRitiro");
    enter("txt_dataRitiro");
    // Enter on the line's last field runs the line toolbar's ADD.
    EXPECT_EQ(m_form->LineCount(), 1);
    EXPECT_TRUE(m_recording->reported.isEmpty()) << m_recording->reported.join('\n').toStdString();
    EXPECT_EQ(focusName(), "txt_codice") << "ready for the next line";

    // Where lines cannot be entered yet, Enter goes to the header field that keeps them closed.
    field("txt_soggettiEvento")->clear();
    m_form->AbilitaRighe();
    field("txt_dataRitiro2")->setFocus(Qt::TabFocusReason);
    enter("txt_dataRitiro2");
    EXPECT_EQ(focusName(), "txt_soggettiEvento");
}

TEST_P(ArticlePanelTest, TheFieldBeingTypedInTakesTheActiveColourAndGivesItBack)
{
    test::ScriptedDialogs noBoxes;
    m_host->SaveSetting("COLORI", "Attivo", "&H80FFFF", "eKELA");
    const QColor active = host::toQColor(0x80FFFF);
    openOrderForLines();
    for (const char* name : {"txt_telefono", "txt_ragsoc", "txt_codice"}) {
        SCOPED_TRACE(name);
        QLineEdit* box = field(name);
        const QColor before = box->palette().color(QPalette::Base);
        box->setFocus(Qt::TabFocusReason);
        ASSERT_TRUE(box->hasFocus());
        EXPECT_EQ(box->palette().color(QPalette::Base), active);
        // Every key refreshes the commands, which paint some fields: the one typed in stays active.
        QTest::keyClick(box, Qt::Key_End);
        QTest::keyClick(box, Qt::Key_X);
        QTest::keyClick(box, Qt::Key_Backspace);
        EXPECT_EQ(box->palette().color(QPalette::Base), active);
        field("txt_email")->setFocus(Qt::TabFocusReason);
        EXPECT_EQ(box->palette().color(QPalette::Base), before);
    }
}

TEST_P(ArticlePanelTest, APickFromAnArticleMenuLoadsTheArticle)
{
    test::ScriptedDialogs noBoxes;
    addArticle("BOM001", "Cuore d'argento", 125000, 40, 35, "BOMBONIERE");
    addArticle("AST001", "Astuccio in raso", 9000, 300, 250, "ASTUCCI");
    addArticle("FAZ001", "Fazzoletto in lino", 45000, 20, 20, "FAZZOLETTI");
    frm_Commissioni& form = openOrderForLines();
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

XV_INSTANTIATE_FOR_ENGINES(ArticlePanelTest);

} // namespace

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
        typeHere(QString());
    }
    EXPECT_TRUE(m_recording->reported.isEmpty()) << m_recording->reported.join('\n').toStdString();
    ASSERT_EQ(m_form->LineCount(), 5);
    qint64 total = 0;
    for (int i = 0; i < 5; ++i) {
        const int row = lines::FirstDataRow + i;
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_Riga), QString::number(i + 1));
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_codice_med), QLatin1String(lines[i].code));
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_qta), QLatin1String(lines[i].quantity));
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_imponibile), Money::fromRaw(lines[i].amountRaw).toCurrencyText());
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_Nominativo), "Esposito Anna");
        EXPECT_EQ(grid()->textMatrix(row, lines::Col_attrib05), "10/05/2027");
        total += lines[i].amountRaw;
    }
    EXPECT_EQ(text("txt_Totale"), Money::fromRaw(total).toCurrencyText());
    EXPECT_EQ(m_form->statusPanelText(7), "Tot.Righe: 5");
}
