// SPDX-License-Identifier: MIT
// The print button's menus through the real form: orders moved between issued and collected in bulk,
// control slips of chosen orders, the cards list of a day, the configuration windows. On both engines: the
// change of state of chosen orders runs on the database nowhere else.
#include "FormFixture.h"
#include "ScriptedDialogs.h"
#include "ScriptedLists.h"
#include "PdfText.h"
#include "TestOrders.h"

#include "common/Dates.h"
#include "host/PrintMailSettings.h"
#include "host/Dialogs.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"
#include "orders/OrderSearch.h"
#include "orders/OrderSelections.h"

#include <QLabel>
#include <QMenu>
#include <QSqlQuery>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using data::Recordset;
using form::frm_Commissioni;

class PrintMenuTest : public test::FormTest
{
protected:
    void SetUp() override
    {
        FormTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        m_host->SaveSetting("STAMPA", "Stampante", "PDF", "eKELA");
        m_host->SaveSetting("STAMPA", "CartellaPDF", m_pdfDir.path(), "eKELA");
    }

    // An entry of the print button's menu ("PRINT") or of the second document button's ("FIND").
    void chooseEntry(const char* button, const char* key)
    {
        QMenu* menu = m_form->tbComandiDocumento().byKey(button)->menu();
        ASSERT_NE(menu, nullptr);
        for (QAction* entry : menu->actions()) {
            if (entry->property("key").toString() == QLatin1String(key))
                return entry->trigger();
        }
        FAIL() << "no entry " << key;
    }

    // Chooses, in the list window, the orders with these numbers and series, in this order.
    static test::ScriptedLists::Answerer orders(QVector<std::pair<QString, QString>> wanted)
    {
        return [wanted](const hostui::ListRequest&, const Recordset& shown) {
            hostui::ListAnswer answer{true, {}, std::nullopt};
            for (const auto& [numero, serie] : wanted) {
                Recordset r = shown;
                for (int i = 0; !r.eof(); r.moveNext(), ++i) {
                    if (r.text("numero") == numero && r.text("serie") == serie)
                        answer.rows << i;
                }
            }
            EXPECT_EQ(answer.rows.size(), wanted.size()) << "an order to choose is not in the list";
            return answer;
        };
    }

    // Every row as "numero/serie state tipogestione tipomovimento", in the order written.
    QStringList rowStates()
    {
        QSqlQuery q = db().executeBound("select numero, serie, StatoRiga, Tipogestione, Tipomovimento from "
                                        "movimenti order by rowid");
        QStringList rows;
        while (q.next())
            rows << QString("%1/%2 %3 %4 %5")
                        .arg(q.value(0).toString(), q.value(1).toString(), q.value(2).toString(),
                             q.value(3).toString(), q.value(4).toString());
        return rows;
    }

    QTemporaryDir m_pdfDir;
};

struct StateCase
{
    const char* key;
    const char* from;
    const char* to;
    const char* fromKind; // tipogestione and tipomovimento of the rows before
    const char* toKind;
    const char* question;
};

const StateCase kStateCases[] = {
    {"CO_RITIRATO", "EMESSO", "RITIRATO", "0 CO", "EVENTO ENTRATA", "sono state RITIRATE ?"},
    {"CO_EMESSO", "RITIRATO", "EMESSO", "EVENTO ENTRATA", "0 CO", "sono state EMESSE ?"},
};

TEST_P(PrintMenuTest, ThreeChosenOrdersOfTwoSeriesChangeStateWithEveryRowTheirNumberAndSeriesMatch)
{
    const QString last = QString::number(m_year - 1);
    const QString now = QString::number(m_year);
    // The program's own view is read a page at a time (OrderSearchTest); a source the shop names is read
    // whole, as it stands. Each is tried in one direction.
    db().executeBound("create view mie_commissioni as select * from Doc_Commissioni_testate");
    const char* const sources[] = {"Doc_Commissioni_testate", "mie_commissioni"};
    for (int i = 0; i < 2; ++i) {
        const char* source = sources[i];
        const StateCase& c = kStateCases[i];
        SCOPED_TRACE(std::string(source) + " " + c.key);
        db().executeBound("delete from movimenti");
        const QStringList kind = QString(c.fromKind).split(' ');
        const auto line = [&](const char* numero, int year, const char* state) {
            test::addOrderLine(db(), numero, QDate(year, 3, 3),
                               {{"StatoRiga", state}, {"Tipogestione", kind[0]}, {"Tipomovimento", kind[1]}});
        };
        line("12", m_year - 1, c.from);
        line("12", m_year - 1, c.from);
        line("12", m_year - 1, c.to); // a line already in the new state keeps its kind
        line("15", m_year, c.from);
        line("20", m_year, c.from);
        line("15", m_year - 1, c.from); // not chosen, but its number and its series each were
        line("12", m_year - 2, c.from); // a series not chosen
        line("30", m_year, c.from);     // a number not chosen
        // A supplier's delivery note with a chosen number and series is another document.
        test::addOrderLine(db(), "15", QDate(m_year, 3, 3),
                           {{"documento", "DDTF"}, {"StatoRiga", c.from}, {"Tipogestione", kind[0]},
                            {"Tipomovimento", kind[1]}});

        test::ScriptedDialogs dialogs;
        test::ScriptedLists lists;
        lists.expectList(QString("Trova le Commissioni in [%1] da passare in [%2]").arg(c.from, c.to),
                         orders({{"12", last}, {"15", now}, {"20", now}}));
        dialogs.expectMessage(c.question, host::Answer::Yes);
        m_host->SaveSetting("comm", "sql_Commissioni", source, "DOCS");
        if (!m_form)
            openForm();
        m_form->GET_Impostazioni();
        chooseEntry("FIND", c.key);

        ASSERT_EQ(lists.requests().size(), 1);
        if (i == 1) {
            EXPECT_EQ(lists.requests()[0].sql,
                      QString("SELECT * FROM mie_commissioni WHERE [STATO COMMISSIONE]='%1'").arg(c.from));
        }
        EXPECT_TRUE(lists.requests()[0].multiSelect);
        const QString moved = QString(c.to) + ' ' + c.toKind;
        const QString kept = QString(c.from) + ' ' + c.fromKind;
        const QString already = QString(c.to) + ' ' + c.fromKind;
        const QString twoBack = QString::number(m_year - 2);
        EXPECT_EQ(rowStates(), QStringList({"12/" + last + ' ' + moved, "12/" + last + ' ' + moved,
                                            "12/" + last + ' ' + already, "15/" + now + ' ' + moved,
                                            "20/" + now + ' ' + moved, "15/" + last + ' ' + moved,
                                            "12/" + twoBack + ' ' + kept, "30/" + now + ' ' + kept,
                                            "15/" + now + ' ' + kept}));
    }
    EXPECT_TRUE(m_host->reported.isEmpty()) << m_host->reported.join('\n').toStdString();
}

TEST_P(PrintMenuTest, NoCancelAndAnEmptyChoiceWriteNothingAndOnlyAChoiceAsks)
{
    test::addOrderLine(db(), "12", QDate(m_year, 3, 3));
    openForm();
    const QStringList before = rowStates();
    const struct
    {
        const char* what;
        test::ScriptedLists::Answerer answer;
        bool asked;
    } cases[] = {
        {"No", orders({{"12", QString::number(m_year)}}), true},
        {"cancel", [](const hostui::ListRequest&, const Recordset&) { return hostui::ListAnswer(); }, false},
        {"nothing chosen",
         [](const hostui::ListRequest&, const Recordset&) {
             return hostui::ListAnswer{true, {}, std::nullopt};
         },
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        test::ScriptedDialogs dialogs;
        test::ScriptedLists lists;
        lists.expectList("Trova le Commissioni in [EMESSO]", c.answer);
        if (c.asked)
            dialogs.expectMessage("Le commissioni selezionate sono state RITIRATE ?", host::Answer::No);
        chooseEntry("FIND", "CO_RITIRATO");
        EXPECT_EQ(rowStates(), before);
    }
}

// Which rows each kind of slip selects is SlipSelectionTest's, the questions OrderChoiceTest's; here, that
// each entry prints what it chose.
TEST_P(PrintMenuTest, SlipsOfTheChosenOrdersOfTheSelectedLineAndOfAnOrderWithoutRows)
{
    test::addOrderLine(db(), "12", QDate(m_year, 3, 3), {{"Descrizione1", "Scatola cuore"}});
    test::addOrderLine(db(), "12", QDate(m_year, 3, 3), {{"Descrizione1", "Confetti bianchi"}});
    test::addOrderLine(db(), "15", QDate(m_year, 3, 4), {{"Descrizione1", "Sacchetto tulle"}});
    openForm();
    {
        test::ScriptedDialogs dialogs;
        test::ScriptedLists lists;
        const QString now = QString::number(m_year);
        lists.expectList("Elenco delle Commissioni di cui stampare le righe",
                         orders({{"15", now}, {"12", now}}));
        dialogs.expectMessage("salvato come PDF");
        chooseEntry("PRINT", "SCC_INTERVALLO");
    }
    const QStringList files = test::pdfFiles(m_pdfDir.path());
    ASSERT_EQ(files.size(), 1);
    EXPECT_EQ(test::pdfLayoutText(files[0]).count("COMANDA DI CONTROLLO"), 3);

    // The line selected in the grid prints alone.
    typeNumberAndEnter("12");
    grid()->setRow(lines::FirstDataRow + 1);
    {
        test::ScriptedDialogs dialogs;
        dialogs.expectMessage(
            QString("Stampare la riga selezionata della commissione N° 12/%1 ?").arg(m_year),
            host::Answer::Yes);
        dialogs.expectMessage("salvato come PDF");
        m_form->Documento_StampaCControllo(0);
    }
    const QStringList after = test::pdfFiles(m_pdfDir.path());
    ASSERT_EQ(after.size(), 2);
    const QString line = test::pdfLayoutText(after.first() == files[0] ? after.last() : after.first());
    EXPECT_EQ(line.count("COMANDA DI CONTROLLO"), 1);
    EXPECT_TRUE(line.contains("Confetti bianchi")) << line.toStdString();

    // The open order (a new one, not yet saved) has no rows to print.
    test::ScriptedDialogs dialogs;
    test::addCounter(db(), m_year, 40);
    m_form->tbComandiDocumento_ButtonClick(documentButton(1));
    dialogs.expectMessage(QString("Stampare tutte le righe della commissione N°41/%1 ?").arg(m_year),
                          host::Answer::Yes);
    dialogs.expectMessage("Il risultato della selezione non ha restituito nessun elemento!");
    chooseEntry("PRINT", "SCC");
    EXPECT_EQ(test::pdfFiles(m_pdfDir.path()).size(), 2);
}

// The statement and the order's slips can be looked at before any paper: nothing is printed, and the
// order is not marked collected.
TEST_P(PrintMenuTest, ThePreviewsShowTheStatementAndTheSlipsOfTheOpenOrderAndPrintNothing)
{
    test::addOrderLine(db(), "12", QDate(m_year, 3, 3),
                       {{"Descrizione1", "Scatola cuore"}, {"Nominativo", "Greco Lucia"}});
    test::addOrderLine(db(), "12", QDate(m_year, 3, 3), {{"Descrizione1", "Confetti bianchi"}});
    openForm();
    typeNumberAndEnter("12");
    test::ScriptedDialogs dialogs;
    dialogs.expectPreview("Estratto commissione 12");
    chooseEntry("PRINT", "ANTEPRIMA_ECM");
    dialogs.expectPreview("Comande di controllo");
    chooseEntry("PRINT", "ANTEPRIMA_SCC");
    ASSERT_EQ(dialogs.previews().size(), 2);
    const QString statement = test::pdfLayoutText(dialogs.previews()[0].pdfPath);
    EXPECT_TRUE(statement.contains("Confetti bianchi")) << statement.toStdString();
    EXPECT_EQ(test::pdfLayoutText(dialogs.previews()[1].pdfPath).count("COMANDA DI CONTROLLO"), 2);
    EXPECT_TRUE(test::pdfFiles(m_pdfDir.path()).isEmpty());
    EXPECT_EQ(test::scalar(db(), "select count(*) from movimenti where StatoRiga='RITIRATO'"), "0");
    EXPECT_TRUE(m_host->reported.isEmpty()) << m_host->reported.join('\n').toStdString();
}

TEST_P(PrintMenuTest, TheCardsListShowsTheDaysOrdersWithCardsAndANonDateEndsSilently)
{
    const QDate day(m_year, 5, 9);
    test::addOrderLine(db(), "12", day,
                       {{"attrib00", "1"}, {"attrib08", "Con affetto"}, {"Nominativo", "Greco Lucia"}});
    test::addOrderLine(db(), "13", day, {{"attrib00", ""}, {"Nominativo", "Senza Biglietti"}});
    openForm();

    // How a typed day reads is DatesTest's; which orders the list holds, DialectOnEnginesTest's.
    const struct
    {
        std::optional<QString> typed;
        int rows; // -1: no list window
    } cases[] = {{QString("9/5/%1").arg(m_year), 1}, {std::nullopt, -1}, {"abc", -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.typed.value_or("<annullato>").toStdString());
        test::ScriptedDialogs dialogs;
        QVector<host::InputRequest> asked;
        host::Dialogs::setInputHandler([&](const host::InputRequest& request) {
            asked << request;
            return c.typed;
        });
        test::ScriptedLists lists;
        Recordset shown;
        if (c.rows >= 0)
            lists.expectList("", [&shown, &c](const hostui::ListRequest& request, const Recordset& rows) {
                shown = rows;
                EXPECT_EQ(request.printTitle, "Lista bigliettini");
                EXPECT_EQ(request.printDay, common::parseShortDate(*c.typed)) << "the day listed is printed";
                return hostui::ListAnswer();
            });
        chooseEntry("PRINT", "LISTA_BIGLIETTINI");
        ASSERT_EQ(asked.size(), 1);
        EXPECT_EQ(asked[0].title, m_host->GetAppTitle() + " - Stampa lista bigliettini ");
        EXPECT_EQ(asked[0].proposed, common::shortDate(QDate::currentDate()));
        EXPECT_TRUE(m_host->reported.isEmpty()) << m_host->reported.join('\n').toStdString();
        EXPECT_EQ(lists.requests().size(), c.rows < 0 ? 0 : 1);
        if (c.rows < 0)
            continue;
        ASSERT_EQ(shown.recordCount(), c.rows);
        EXPECT_EQ(shown.text("Cliente"), "Greco Lucia");
        EXPECT_EQ(shown.text("Dicitura"), "Con affetto");
    }
}

TEST_P(PrintMenuTest, ConfigurationIsReadAgainAfterItsWindowAndReportDesignerDoesNothing)
{
    frm_Commissioni& form = openForm();
    {
        test::ScriptedDialogs dialogs;
        test::ScriptedLists lists;
        lists.expectSettings("COMMISSIONI - CONFIGURA APP", [](const hostui::SettingsRequest& request) {
            EXPECT_EQ(request.section, "comm");
            QVector<hostui::SettingEntry> entries = request.entries;
            entries.push_back({"tipomovimento", "CX"});
            return std::optional(entries);
        });
        chooseEntry("FIND", "config_comm");
        EXPECT_EQ(form.settings().tipomovimento, "CX");
    }
    {
        int opened = 0;
        host::setPrintMailWindow([&opened] { ++opened; });
        chooseEntry("PRINT", "IMPOSTAZIONI_STAMPA_POSTA");
        host::setPrintMailWindow({});
        EXPECT_EQ(opened, 1) << "the printing and mail settings window";
    }
    {
        test::ScriptedDialogs dialogs;
        test::ScriptedLists lists;
        lists.expectSettings("CONFIGURAZIONE STAMPA COMANDE DI CONTROLLO",
                             [](const hostui::SettingsRequest& request) {
                                 EXPECT_EQ(request.section, "co");
                                 return std::optional<QVector<hostui::SettingEntry>>();
                             });
        QTest::mouseClick(form.findChild<QLabel*>("sBar_Panel2"), Qt::LeftButton);
        QTest::mouseClick(form.findChild<QLabel*>("sBar_Panel1"), Qt::LeftButton);
        QTest::mouseClick(form.findChild<QLabel*>("sBar_Panel6"), Qt::LeftButton);
    }
    QTest::mouseClick(form.findChild<QLabel*>("sBar_Panel4"), Qt::LeftButton);
    QWidget* popup = QApplication::activePopupWidget();
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->objectName(), "mFazzoletti");
    popup->close();

    test::addOrderLine(db(), "12", QDate(m_year, 3, 3));
    const QStringList before = rowStates();
    test::ScriptedDialogs dialogs;
    test::ScriptedLists lists;
    chooseEntry("PRINT", "REP_DES");
    EXPECT_EQ(rowStates(), before);
    EXPECT_TRUE(m_host->reported.isEmpty()) << m_host->reported.join('\n').toStdString();
}

XV_INSTANTIATE_FOR_ENGINES(PrintMenuTest);

} // namespace
