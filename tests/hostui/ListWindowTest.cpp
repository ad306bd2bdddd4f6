// SPDX-License-Identifier: MIT
#include "ScriptedDialogs.h"
#include "ScriptedLists.h"
#include "PdfText.h"
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "host/Host.h"
#include "hostui/ListWindow.h"
#include "orders/OrderSearch.h"
#include "host/Services.h"

#include <QApplication>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace {

QString searchOrders(const QString& text, int limit, const QVariantList& after)
{
    return xv::orders::orderSearchSql("CO", text, limit, xv::orders::NameLookup::WalkOrders,
                                      xv::orders::searchRowKey(after));
}

using namespace xv;
using common::Money;
using hostui::ListAnswer;
using hostui::ListDialog;
using hostui::ListRequest;
using data::Recordset;

// The list window runs an event loop of its own: the steps run inside it and say what went wrong, and on a
// failure the window is closed, so that the call returns and the test reports it instead of waiting for the
// run's time-out.
void driveModalList(QString& problem, std::function<QString(ListDialog&)> steps)
{
    QTimer::singleShot(0, [&problem, steps = std::move(steps)] {
        auto* dialog = qobject_cast<ListDialog*>(QApplication::activeModalWidget());
        if (!dialog) {
            problem = QStringLiteral("no modal list window");
            return;
        }
        problem = steps(*dialog);
        if (!problem.isEmpty())
            dialog->reject();
    });
}

QVector<QVariant> rowOf(Recordset rows, int row)
{
    rows.moveFirst();
    for (int i = 0; i < row; ++i)
        rows.moveNext();
    QVector<QVariant> values;
    for (int column = 0; column < rows.fieldCount(); ++column)
        values << rows.value(column);
    return values;
}

int findRow(Recordset rows, const QString& field, const QString& text)
{
    for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
        if (rows.text(field) == text)
            return rows.position();
    }
    return -1;
}

class ListWindowTest : public test::EngineTest
{
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        host::setHost(std::make_unique<host::Host>(database().hostOptions()));
        ASSERT_TRUE(host::host().Initialize());
        db().execute("insert into numeratori (codtipodoc, tipodocumento, serie, numero) values ('CO', "
                     "'COMM', '2026', 10)");
        db().execute(
            "insert into movimenti (documento, numero, serie, datadocumento, Nominativo, attrib04, "
            "totale) values ('COMM', '1', '2025', '2025-02-10 00:00:00', 'Rossi Maria', 'Battesimo', 10.5), "
            "('COMM', '2', '2025', '2025-06-01 00:00:00', 'D''Angelo Pia', 'Battesimo', 120), "
            "('COMM', '1', '2026', '2026-01-15 00:00:00', 'Bianchi Luca', 'Battesimo', 99.9), "
            "('COMM', '2', '2026', '2026-02-20 00:00:00', 'Rossi Anna', 'Battesimo', 1234.5), "
            "('COMM', '10', '2026', '2026-03-01 00:00:00', 'Verdi Carla', 'Battesimo', 45)");
        db().execute("insert into controparti (tipocontroparte, ragsoc, comune) values ('C', 'ROSSI MARIO', "
                     "'Roma'), ('C', 'ROSATI ANNA', 'Napoli'), ('C', 'BIANCHI LUCA', 'Milano'), "
                     "('C', 'D''AMICO PIA', 'Bari')");
    }
    void TearDown() override
    {
        host::resetServices();
        EngineTest::TearDown();
    }
    data::Database& db() { return host::host().GetConnection(); }

    hostui::ListWindow m_window;
};

TEST_P(ListWindowTest, SelectFromListKeepsTheChosenRowsInSelectionOrderAndACancelClearsThem)
{
    test::ScriptedLists lists;
    lists.expectChoice("Commissioni", {3, 1});
    bool confirmed = false;
    m_window.SelectFromList("mov_co", 1, "Commissioni", confirmed);
    EXPECT_TRUE(confirmed);
    ASSERT_EQ(lists.shown().size(), 1);
    EXPECT_TRUE(lists.requests()[0].multiSelect);
    const Recordset& shown = lists.shown()[0];
    ASSERT_EQ(shown.recordCount(), 5);
    const Recordset chosen = m_window.GetSelectedRows();
    ASSERT_EQ(chosen.recordCount(), 2);
    EXPECT_EQ(rowOf(chosen, 0), rowOf(shown, 3));
    EXPECT_EQ(rowOf(chosen, 1), rowOf(shown, 1));

    lists.expectChoice("", {3});
    m_window.SelectFromList("SELECT ragsoc, comune FROM controparti order by ragsoc", 0, "", confirmed);
    EXPECT_FALSE(lists.requests().last().multiSelect);
    EXPECT_EQ(m_window.GetSelectedRows().text("RAGSOC"), "ROSSI MARIO");

    lists.expectCancel("Clienti");
    m_window.SelectFromList("controparti", 1, "Clienti", confirmed);
    EXPECT_FALSE(confirmed);
    EXPECT_TRUE(m_window.GetSelectedRows().isEmpty());
}

TEST_P(ListWindowTest, ABadSourceThrowsWithoutAWindow)
{
    test::ScriptedLists lists; // no window may open
    bool confirmed = true;
    EXPECT_THROW(m_window.SelectFromList("select nulla from tabella_inesistente", 0, "", confirmed),
                 common::RuntimeError);
    EXPECT_FALSE(confirmed);
    EXPECT_THROW(m_window.SelectFromList("controparti; drop table movimenti", 0, "", confirmed),
                 common::RuntimeError);
    EXPECT_THROW(m_window.PickRow("", "select * from nessuna"), common::RuntimeError);
}

TEST_P(ListWindowTest, SearchOrdersListsNewestFirstAndReturnsNumberThenYear)
{
    test::ScriptedLists lists;
    lists.expectList("Trova Commissioni", [](const ListRequest& request, const Recordset& rows) {
        EXPECT_FALSE(request.search) << "the whole list came: nothing to look up";
        EXPECT_EQ(rowOf(rows, 0)[0].toString(), "10"); // by the number's value, not its text
        EXPECT_EQ(rowOf(rows, 3)[1].toString(), "2025");
        return ListAnswer{true, {findRow(rows, "Nominativo", "Rossi Maria")}, std::nullopt};
    });
    const auto order = m_window.Search("Trova Commissioni", searchOrders);
    ASSERT_TRUE(order);
    ASSERT_EQ(order->size(), 10);
    EXPECT_EQ(order->mid(0, 4), QStringList({"1", "2025", "10/02/2025", "Rossi Maria"}));
    EXPECT_EQ((*order)[8], Money::fromDouble(10.5).toCurrencyText());

    lists.expectCancel("Trova");
    EXPECT_FALSE(m_window.Search("Trova Commissioni", searchOrders));
    EXPECT_TRUE(m_window.GetSelectedRows().isEmpty());
}

TEST_P(ListWindowTest, AShortenedOrderListStillFindsOlderOrdersByNameOrNumber)
{
    hostui::ListWindow window(2);
    test::ScriptedLists lists;
    lists.expectList("Trova", [](const ListRequest& request, const Recordset& rows) {
        EXPECT_EQ(rows.recordCount(), 2);
        EXPECT_TRUE(request.note.contains("ultime 2")) << request.note.toStdString();
        if (!request.search)
            return ListAnswer();
        EXPECT_EQ(request.search("d'angelo").recordCount(), 1);
        EXPECT_GE(findRow(request.search("1"), "serie", "2025"), 0);
        const Recordset found = request.search("rossi");
        EXPECT_EQ(found.recordCount(), 2);
        return ListAnswer{true, {findRow(found, "Nominativo", "Rossi Maria")}, found};
    });
    const auto order = window.Search("Trova Commissioni", searchOrders);
    ASSERT_TRUE(order) << "no search for a shortened list";
    EXPECT_EQ(order->mid(0, 4), QStringList({"1", "2025", "10/02/2025", "Rossi Maria"}));
}

TEST_P(ListWindowTest, TheRealSearchWindowReadsAPageAtATimeAsTheListScrollsAndAsksAtOnceForATypedText)
{
    db().execute("update movimenti set attrib04='Cresima' where Nominativo='Verdi Carla'");
    hostui::ListWindow window(2);
    QStringList counts;
    const host::IListWindow::SearchSql counted = [&counts](const QString& text, int limit,
                                                           const QVariantList& after) {
        counts << text + ":" + QString::number(limit) +
                      (after.isEmpty()
                           ? ""
                           : " after " + after.value(0).toString() + "/" + after.value(1).toString());
        return searchOrders(text, limit, after);
    };
    QString problem;
    driveModalList(problem, [](ListDialog& dialog) {
        // The view asks for more rows until its height is filled or none are left.
        if (!QTest::qWaitFor([&dialog] { return dialog.visibleRowCount() == 5; }, 3000))
            return QStringLiteral("rows shown before typing: %1").arg(dialog.visibleRowCount());
        QTest::keyClicks(dialog.filterEdit(), "cresi");
        if (!QTest::qWaitFor([&dialog] { return !dialog.searchPending(); }, 3000))
            return QStringLiteral("the typed text was never looked up");
        if (dialog.visibleRowCount() != 1)
            return QStringLiteral("rows shown for the text: %1").arg(dialog.visibleRowCount());
        QTest::keyClick(dialog.filterEdit(), Qt::Key_Return);
        return QString();
    });
    const auto order = window.Search("Trova Commissioni", counted);
    ASSERT_EQ(problem, QString());
    ASSERT_TRUE(order);
    EXPECT_EQ(order->mid(0, 5), QStringList({"10", "2026", "01/03/2026", "Verdi Carla", "Cresima"}));
    // A page at a time, each starting after the last order of the one before (newest first: 10 and 2 of
    // 2026, then 1 of 2026 and 2 of 2025, then 1 of 2025); the typed text asked as it stood once the keys
    // given together had arrived.
    EXPECT_EQ(counts.mid(0, 3), QStringList({":2", ":2 after 2/2026", ":2 after 2/2025"}));
    EXPECT_EQ(counts.last(), "cresi:2");
}

TEST_P(ListWindowTest, PickRowAlwaysAsksAndAsksNothingForNoRows)
{
    test::ScriptedLists lists;
    lists.expectChoice("Clienti", {1});
    EXPECT_EQ(m_window.PickRow("Clienti", "select ragsoc, comune from controparti where ragsoc like 'ROS%' "
                                          "order by ragsoc"),
              QVariantList({"ROSSI MARIO", "Roma"}));

    lists.expectChoice("Clienti", {0}); // one row is still shown for the operator to confirm
    EXPECT_EQ(m_window.PickRow("Clienti", "select ragsoc from controparti where ragsoc like 'D''AM%'"),
              QVariantList({"D'AMICO PIA"}));

    EXPECT_FALSE(m_window.PickRow("Clienti", "select ragsoc from controparti where ragsoc like 'ZZ%'"));
    EXPECT_EQ(lists.requests().size(), 2);
}

TEST_P(ListWindowTest, ConfigurationKeysEditTheirSectionAndSaveOnlyWhenConfirmed)
{
    host::IHost& h = host::host();
    h.SaveSetting("comm", "sql", "mov_co", "DOCS");
    h.SaveSetting("comm", "CheckQtaMED", "0", "docs");
    h.SaveSetting("co", "Altro", "1", "docs");
    test::ScriptedLists lists;
    lists.expectSettings("Impostazioni", [](const hostui::SettingsRequest& request) {
        EXPECT_EQ(request.store, "docs");
        EXPECT_EQ(request.section, "comm");
        EXPECT_EQ(request.entries, (QVector<hostui::SettingEntry>{{"checkqtamed", "0"}, {"sql", "mov_co"}}));
        return std::optional<QVector<hostui::SettingEntry>>(
            {{"checkqtamed", "1"}, {"sql", "mov_co"}, {"StampaComande", "O'Hara"}, {" ", "ignored"}});
    });
    bool confirmed = false;
    m_window.SelectFromList("config_comm", 0, "Impostazioni commissioni", confirmed);
    EXPECT_TRUE(confirmed);
    EXPECT_EQ(h.GetSetting("COMM", "CheckQtaMED", "x", "DOCS"), "1");
    EXPECT_EQ(h.GetSetting("comm", "StampaComande", "x", "docs"), "O'Hara");

    lists.expectSettings("", [](const hostui::SettingsRequest& request) {
        EXPECT_EQ(request.section, "co");
        return std::optional<QVector<hostui::SettingEntry>>();
    });
    m_window.SelectFromList("config_CO", 0, "", confirmed);
    EXPECT_FALSE(confirmed);
}

TEST_P(ListWindowTest, ThePrintButtonPrintsTheRowsShownThroughTheShopsPrintDestination)
{
    QTemporaryDir pdfDir;
    host::host().SaveSetting("STAMPA", "Stampante", "PDF", "eKELA");
    host::host().SaveSetting("STAMPA", "CartellaPDF", pdfDir.path(), "eKELA");
    ListRequest request;
    request.caption = "Commissioni da ritirare";
    request.printable = true;
    ListDialog dialog(request, host::host().OpenRecordset("select numero, serie, Nominativo from movimenti"));
    QTest::keyClicks(dialog.filterEdit(), "rossi");
    test::ScriptedDialogs dialogs;
    dialogs.expectMessage("Il documento è stato salvato come PDF in:");
    auto* print = dialog.findChild<QPushButton*>("printButton");
    ASSERT_NE(print, nullptr);
    QTest::mouseClick(print, Qt::LeftButton);
    const QStringList files = test::pdfFiles(pdfDir.path());
    ASSERT_EQ(files.size(), 1);
    const QString text = test::pdfLayoutText(files[0]);
    for (const char* shown : {"Commissioni da ritirare", "2 righe", "Nominativo", "Rossi Maria", "Rossi Anna"})
        EXPECT_TRUE(text.contains(shown, Qt::CaseInsensitive)) << shown << "\n" << text.toStdString();
    EXPECT_FALSE(text.contains("Bianchi Luca"));

    // Its preview shows the same rows and prints nothing.
    dialogs.expectPreview("Commissioni da ritirare");
    QTest::mouseClick(dialog.findChild<QPushButton*>("previewButton"), Qt::LeftButton);
    ASSERT_EQ(dialogs.previews().size(), 1);
    EXPECT_TRUE(test::pdfLayoutText(dialogs.previews()[0].pdfPath).contains("Rossi Anna"));
    EXPECT_EQ(test::pdfFiles(pdfDir.path()).size(), 1);

    // A list of one day's work prints that day under its own title, whatever the caption.
    request.printTitle = "Lista bigliettini";
    request.printDay = QDate(2026, 6, 20);
    ListDialog day(request, host::host().OpenRecordset("select numero, serie from movimenti"));
    dialogs.expectMessage("Il documento è stato salvato come PDF in:");
    QTest::mouseClick(day.findChild<QPushButton*>("printButton"), Qt::LeftButton);
    const QStringList both = test::pdfFiles(pdfDir.path());
    ASSERT_EQ(both.size(), 2);
    const QString dayText = test::pdfLayoutText(both.filter("Lista_bigliettini").value(0));
    EXPECT_TRUE(dayText.contains("Lista bigliettini")) << dayText.toStdString();
    EXPECT_TRUE(dayText.contains("20/06/2026")) << dayText.toStdString();
    EXPECT_FALSE(dayText.contains("Commissioni da ritirare"));
}

XV_INSTANTIATE_FOR_ENGINES(ListWindowTest);

// The real window, driven by keys and mouse on the offscreen platform.
class ListDialogTest : public ::testing::Test
{
protected:
    static Recordset sampleRows()
    {
        return Recordset::fromRows(
            {"Nominativo", "Comune", "DataComm", "Totale", "Note"},
            {{"Rossi Maria", "Roma", QDate(2026, 3, 1).startOfDay(), 1234.5, QVariant()},
             {"Bianchi Luca", "Milano", "2025-12-24 00:00:00", "10.5000", "x"},
             {"Rosati Anna", "Napoli", QDate(2025, 1, 2), 99, QString()},
             {"Verdi Carla", "Rossano", QVariant(), 100.0, "nota"}});
    }
    static ListRequest request(bool multi = false)
    {
        ListRequest r;
        r.caption = "Elenco di prova";
        r.multiSelect = multi;
        return r;
    }
    static void click(ListDialog& dialog, int visibleRow, Qt::KeyboardModifiers modifiers = {})
    {
        QTableView* view = dialog.tableView();
        const QRect cell = view->visualRect(view->model()->index(visibleRow, 0));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers, cell.center());
    }
};

TEST_F(ListDialogTest, TypingFiltersOverAllColumnsAndOnlyTheFilteredRowsArePrinted)
{
    ListRequest r = request();
    r.printable = true;
    ListDialog dialog(r, sampleRows());
    QStringList buttons;
    for (const QPushButton* button : dialog.findChildren<QPushButton*>())
        buttons << button->text();
    EXPECT_EQ(buttons, (QStringList{"Scegli", "Annulla", "Stampa", "Anteprima", "Salva PDF..."}));
    EXPECT_EQ(dialog.counterText(), "4 righe");
    QTest::keyClicks(dialog.filterEdit(), "ros");
    EXPECT_EQ(dialog.visibleRowCount(), 3); // Rossano is a town, not a name
    EXPECT_EQ(dialog.counterText(), "3 righe");
    const QString html = dialog.printableHtml();
    EXPECT_TRUE(html.contains("Elenco di prova") && html.contains("Rosati Anna")) << html.toStdString();
    EXPECT_FALSE(html.contains("Bianchi Luca"));
    QTemporaryDir dir;
    ASSERT_TRUE(dialog.savePdf(dir.filePath("elenco.pdf")));
    QFile pdf(dir.filePath("elenco.pdf"));
    ASSERT_TRUE(pdf.open(QIODevice::ReadOnly));
    EXPECT_EQ(pdf.read(4), "%PDF");

    dialog.filterEdit()->clear();
    QTest::keyClicks(dialog.filterEdit(), "ROSSI");
    EXPECT_EQ(dialog.counterText(), "1 riga");
    EXPECT_EQ(dialog.rowAt(0), 0);
    QTest::keyClicks(dialog.filterEdit(), "xyz");
    EXPECT_EQ(dialog.visibleRowCount(), 0);
    QTest::keyClick(dialog.filterEdit(), Qt::Key_Return);
    EXPECT_NE(dialog.result(), QDialog::Accepted);
}

TEST_F(ListDialogTest, DownFromTheFilterMovesIntoTheListWhereTypingRefinesTheFilterAndEnterChooses)
{
    ListDialog dialog(request(), sampleRows());
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClicks(dialog.filterEdit(), "ross");
    EXPECT_EQ(dialog.chosenRows(), QVector<int>{0}); // the first match is highlighted as one types
    QTest::keyClick(dialog.filterEdit(), Qt::Key_Down);
    EXPECT_TRUE(dialog.tableView()->hasFocus());
    EXPECT_EQ(dialog.chosenRows(), QVector<int>{3});
    QTest::keyClick(dialog.tableView(), Qt::Key_Backspace);
    QTest::keyClick(dialog.tableView(), Qt::Key_A);
    EXPECT_EQ(dialog.filterEdit()->text(), "rosa");
    EXPECT_EQ(dialog.chosenRows(), QVector<int>{2});
    QTest::keyClick(dialog.tableView(), Qt::Key_Return);
    EXPECT_TRUE(dialog.answer().confirmed);
    EXPECT_EQ(dialog.answer().rows, QVector<int>{2});
}

TEST_F(ListDialogTest, ChooseOpensTheWindowModallyAndEscapeCancels)
{
    for (const bool confirm : {true, false}) {
        QString problem;
        driveModalList(problem, [confirm](ListDialog& dialog) {
            QTest::keyClicks(dialog.filterEdit(), "bianchi");
            QTest::keyClick(dialog.filterEdit(), confirm ? Qt::Key_Return : Qt::Key_Escape);
            return QString();
        });
        const ListAnswer answer = hostui::ListWindows::choose(request(), sampleRows());
        ASSERT_EQ(problem, QString());
        EXPECT_EQ(answer.confirmed, confirm);
        EXPECT_EQ(answer.rows, confirm ? QVector<int>{1} : QVector<int>{});
    }
}

TEST_F(ListDialogTest, SeveralRowsAreChosenInTheOrderTheyWereSelected)
{
    ListDialog clicked(request(true), sampleRows());
    clicked.show();
    click(clicked, 3);
    click(clicked, 1, Qt::ControlModifier);
    QTest::keyClick(clicked.tableView(), Qt::Key_Return);
    EXPECT_EQ(clicked.answer().rows, (QVector<int>{3, 1}));

    ListDialog extended(request(true), sampleRows());
    extended.show();
    QTest::keyClick(extended.tableView(), Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(extended.tableView(), Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(extended.chosenRows(), (QVector<int>{0, 1, 2}));
}

TEST_F(ListDialogTest, TheKeyboardAloneChoosesRowsFarApart)
{
    ListDialog dialog(request(true), sampleRows());
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    QTableView* view = dialog.tableView();
    view->setFocus();
    EXPECT_EQ(dialog.chosenRows(), QVector<int>{0});
    // Ctrl with the arrows moves without changing the choice; Space takes a row in or out.
    const struct
    {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
    } keys[] = {{Qt::Key_Down, Qt::ControlModifier}, {Qt::Key_Down, Qt::ControlModifier},
                {Qt::Key_Space, Qt::NoModifier},     {Qt::Key_Up, Qt::ControlModifier},
                {Qt::Key_Up, Qt::ControlModifier},   {Qt::Key_Space, Qt::NoModifier},
                {Qt::Key_End, Qt::ControlModifier},  {Qt::Key_Space, Qt::NoModifier}};
    for (const auto& k : keys)
        QTest::keyClick(view, k.key, k.modifiers);
    EXPECT_EQ(dialog.chosenRows(), (QVector<int>{2, 3}));
    QTest::keyClick(view, Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(dialog.answer().rows, (QVector<int>{2, 3}));
}

TEST_F(ListDialogTest, CellsReadAsTheShopWritesThemAndAHeaderClickSortsByValue)
{
    ListDialog dialog(request(), sampleRows());
    dialog.show();
    EXPECT_EQ(dialog.cellText(0, 2), "01/03/2026");
    EXPECT_EQ(dialog.cellText(1, 2), "24/12/2025"); // a date stored as text
    EXPECT_EQ(dialog.cellText(0, 3), Money::fromDouble(1234.5).toCurrencyText());
    EXPECT_TRUE(dialog.cellText(1, 3).contains("10,50"));
    EXPECT_EQ(dialog.cellText(0, 4), "");
    QHeaderView* header = dialog.tableView()->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(3) + 5, header->height() / 2));
    // 10,50 < 99 < 100 < 1.234,50 as amounts, not as texts.
    EXPECT_EQ((QVector<int>{dialog.rowAt(0), dialog.rowAt(1), dialog.rowAt(2), dialog.rowAt(3)}),
              (QVector<int>{1, 2, 3, 0}));
    click(dialog, 3);
    QTest::keyClick(dialog.tableView(), Qt::Key_Enter);
    EXPECT_EQ(dialog.answer().rows, QVector<int>{0});
}

TEST_F(ListDialogTest, AFilterPauseAsksTheDatabaseOnceAndAddsOnlyNewRows)
{
    ListRequest r = request();
    r.note = "(ultime 4: usare Cerca)";
    QStringList asked;
    r.search = [&asked](const QString& text) {
        asked << text;
        return Recordset::fromRows({"Nominativo", "Comune", "DataComm", "Totale", "Note"},
                                   {{QString("Rossi Vecchio"), QString("Roma"), QVariant(), 1.0, QVariant()},
                                    rowOf(sampleRows(), 0)});
    };
    ListDialog dialog(r, sampleRows());
    dialog.show();
    EXPECT_EQ(dialog.counterText(), "4 righe (ultime 4: usare Cerca)");
    QTest::keyClicks(dialog.filterEdit(), "rossi");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !asked.isEmpty(); }, 2000));
    QTest::qWait(400);
    EXPECT_EQ(asked, QStringList{"rossi"});
    EXPECT_EQ(dialog.counterText(), "2 righe"); // the row already shown is not added twice
    ASSERT_EQ(dialog.rowAt(1), 4);
    click(dialog, 1);
    QTest::keyClick(dialog.tableView(), Qt::Key_Return);
    const ListAnswer answer = dialog.answer();
    ASSERT_TRUE(answer.shown);
    EXPECT_EQ(answer.rows, QVector<int>{4});
    EXPECT_EQ(rowOf(*answer.shown, 4)[0].toString(), "Rossi Vecchio");
}

TEST_F(ListDialogTest, SettingsKeepStoredKeysReadOnlyAndTakeNewOnes)
{
    hostui::SettingsDialog dialog({"Impostazioni", "docs", "comm", {{"sql", "mov_co"}}});
    QTableWidget* table = dialog.table();
    EXPECT_FALSE(table->item(0, 0)->flags() & Qt::ItemIsEditable);
    table->item(0, 1)->setText("doc_righemov");
    dialog.addEntry();
    dialog.addEntry(); // left without a key: not an entry
    EXPECT_TRUE(table->item(1, 0)->flags() & Qt::ItemIsEditable);
    table->item(1, 0)->setText("Nuova");
    table->item(1, 1)->setText("1");
    EXPECT_EQ(dialog.entries(), (QVector<hostui::SettingEntry>{{"sql", "doc_righemov"}, {"Nuova", "1"}}));
}

} // namespace
