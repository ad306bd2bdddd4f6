// SPDX-License-Identifier: MIT
// The order form's keys, commands, closing and layout, driven offscreen on a real temporary SQLite
// database.
#include "FormFixture.h"
#include "ScriptedDialogs.h"
#include "ScriptedLists.h"
#include "TestOrders.h"

#include "common/Money.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QWindow>

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace xv;
using namespace xv::lines;
using common::Money;
using data::Recordset;
using form::frm_Commissioni;

class FormKeysTest : public test::FormTest
{
protected:
    // An order of this year with the given number of lines, shown on the form in browse mode.
    frm_Commissioni& openOrderOf(int lines)
    {
        for (int i = 0; i < lines; ++i)
            test::addOrderLine(db(), "21", QDate(m_year, 4, 4), {{"attrib06", "Sofia"}, {"qta", i + 1}});
        openForm();
        typeNumberAndEnter("21");
        return *m_form;
    }
    int heldLocks()
    {
        return Recordset::open(db(), "select count(*) as n from blocchi_record").value("n").toInt();
    }

    // Runs the program's event loop until the form ends it, doing first what starts the close.
    int runUntilTheProgramEnds(const std::function<void()>& start)
    {
        const bool quitOnLast = QApplication::quitOnLastWindowClosed();
        // Only the form may end the run here, not Qt's own rule for the last window.
        QApplication::setQuitOnLastWindowClosed(false);
        QTimer::singleShot(0, m_form.get(), start);
        QTimer watchdog;
        watchdog.setSingleShot(true);
        QObject::connect(&watchdog, &QTimer::timeout, qApp, [] { QCoreApplication::exit(99); });
        watchdog.start(10000);
        const int status = QApplication::exec();
        QApplication::setQuitOnLastWindowClosed(quitOnLast);
        return status;
    }
};

TEST_P(FormKeysTest, AnsweringNoToTheClosingQuestionKeepsTheFormEveryLineAndWhatWasTyped)
{
    for (const char* code : {"A1", "B2", "C3"})
        addArticle(code, QStringLiteral("Articolo %1").arg(code), 10000);
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = startOrder();
    for (const char* code : {"A1", "B2", "C3"})
        addLine(code, "2");
    QTest::keyClicks(field("txt_soggettiEvento"), " e Sofia");

    const std::pair<const char*, std::function<void()>> ways[] = {
        {"Esc", [&] { QTest::keyClick(field("txt_qta"), Qt::Key_Escape); }},
        {"EXIT", [&] { form.tbComandiDocumento_ButtonClick(documentButton(8)); }},
        {"close button", [&] { EXPECT_FALSE(form.windowHandle()->close()); }},
    };
    for (const auto& [way, close] : ways) {
        SCOPED_TRACE(way);
        dialogs.expectMessage("Si desidera uscire?", host::Answer::No);
        close();
        QApplication::processEvents();
        EXPECT_TRUE(form.isVisible());
        EXPECT_EQ(text("txt_soggettiEvento"), "Marco e Giulia e Sofia");
        EXPECT_EQ(column(Col_codice_med), QStringList({"A1", "B2", "C3"}));
        EXPECT_EQ(text("txt_Totale"), Money::fromInteger(6).toCurrencyText());
        EXPECT_EQ(form.ModeTag1() + form.ModeTag2(), "XS");
    }
    ASSERT_EQ(dialogs.messages().size(), 3);
    EXPECT_EQ(dialogs.messages().front().buttons, host::Buttons::YesNo);
}

TEST_P(FormKeysTest, ExitAnsweredYesReleasesTheLockAndEndsTheProgram)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openNewOrder(7);
    ASSERT_EQ(m_host->LockRecord(static_cast<quintptr>(form.winId()), 7, "Commissioni"), "");
    ASSERT_EQ(heldLocks(), 1);
    dialogs.expectMessage("Si desidera uscire?", host::Answer::Yes);
    EXPECT_EQ(runUntilTheProgramEnds([&] { form.tbComandiDocumento_ButtonClick(documentButton(8)); }), 0);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(heldLocks(), 0);
}

TEST_P(FormKeysTest, YesClosesEvenWhenTheLockCannotBeReleased)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openNewOrder(7);
    db().execute("drop table blocchi_record"); // the release now fails in the database
    dialogs.expectMessage("Si desidera uscire?", host::Answer::Yes);
    dialogs.expectMessage("Errori rilevati durante l'eliminazione del record bloccato!");
    EXPECT_EQ(runUntilTheProgramEnds([&] { form.close(); }), 0);
    EXPECT_FALSE(form.isVisible());
    ASSERT_EQ(dialogs.messages().size(), 2);
    EXPECT_EQ(dialogs.messages()[1].icon, host::Icon::Exclamation);
}

TEST_P(FormKeysTest, EveryKeyRunsTheFormsKeyHandlingOnceWhereverItGoes)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openNewOrder(7);
    QLineEdit* persons = field("txt_soggettiEvento");
    persons->setFocus();
    QApplication::processEvents();
    // A key the field does not take is offered to each of its parents in turn; the form acts on it once.
    const std::pair<const char*, std::function<void()>> keys[] = {
        {"letter", [&] { QTest::keyClick(persons, Qt::Key_M); }},
        {"arrow up, which no field takes", [&] { QTest::keyClick(persons, Qt::Key_Up); }},
        {"letter through the window", [&] { QTest::keyClick(form.windowHandle(), Qt::Key_M); }},
        {"F9 through the window", [&] { QTest::keyClick(form.windowHandle(), Qt::Key_F9); }},
        {"letter to the form itself", [&] { QTest::keyClick(&form, Qt::Key_M); }},
    };
    for (const auto& [name, type] : keys) {
        SCOPED_TRACE(name);
        const int before = form.keysHandled();
        type();
        EXPECT_EQ(form.keysHandled(), before + 1);
    }
    // Held down, a key repeats: every repeat is a key of its own.
    const int before = form.keysHandled();
    const QString typed = persons->text();
    QTest::keyPress(persons, Qt::Key_M);
    QTest::simulateEvent(persons, true, Qt::Key_M, Qt::NoModifier, "m", true);
    QTest::keyRelease(persons, Qt::Key_M);
    EXPECT_EQ(form.keysHandled(), before + 2);
    EXPECT_EQ(persons->text(), typed + "mm");
}

TEST_P(FormKeysTest, TheHostsKeyFilterDecidesWhatIsTyped)
{
    test::ScriptedDialogs noBoxes;
    m_host->filterKeys = true;
    startOrder();
    QLineEdit* persons = field("txt_soggettiEvento");
    persons->clear();
    QTest::keyClicks(persons, "quxa");
    EXPECT_EQ(persons->text(), "Qua");
}

TEST_P(FormKeysTest, AKeyAsksForEachColourOfTheLinesOnceWhateverTheirNumber)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openOrderOf(15);
    ASSERT_EQ(form.LineCount(), 15);
    m_host->SaveSetting("Colori", "Emesso", "&H102030", "eKELA");
    m_host->colours.clear();
    QTest::keyClick(field("txt_numeroCommissione"), Qt::Key_Up);
    m_host->colours.sort();
    EXPECT_EQ(m_host->colours, QStringList({"collected", "issued", "locked"}));
    // The colours are still the shop's settings of the moment, read again at the next key.
    EXPECT_EQ(grid()->rowForeground(2), QColor(0x30, 0x20, 0x10));
}

TEST_P(FormKeysTest, F7AndF8StayCrossedAndAKeyWhoseButtonIsDisabledDoesNothing)
{
    addArticle("A1", "Primo", 10000);
    addArticle("B2", "Secondo", 20000);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = startOrder();
    addLine("A1", "1");
    fillLine("B2", "2");

    QTest::keyClick(&form, Qt::Key_F8); // adds
    EXPECT_EQ(column(Col_codice_med), QStringList({"A1", "B2"}));
    grid()->setRow(FirstDataRow);
    QTest::keyClick(&form, Qt::Key_F7); // removes
    EXPECT_EQ(column(Col_codice_med), QStringList({"B2"}));
    EXPECT_EQ(column(Col_Riga), QStringList({"1"}));

    // REMOVE, EDIT and ADD disabled in turn: F8, F7 and F6 do nothing.
    for (const auto& [button, key] :
         {std::pair{2, Qt::Key_F8}, std::pair{3, Qt::Key_F7}, std::pair{1, Qt::Key_F6}}) {
        SCOPED_TRACE(button);
        linesButton(button)->setEnabled(false);
        QTest::keyClick(&form, key);
        EXPECT_EQ(form.LineCount(), 1);
        linesButton(button)->setEnabled(true);
    }
}

TEST_P(FormKeysTest, F5WithATextBoxFocusedRunsNoSearchOnlyTheRecalculation)
{
    test::ScriptedDialogs noBoxes;
    test::ScriptedLists lists;
    frm_Commissioni& form = openForm();
    activate();
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

TEST_P(FormKeysTest, AtTheSmallestCommonScreenTheGridShowsTenLinesOrMore)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openOrderOf(15);
    form.resize(1366, 768);
    QApplication::processEvents();
    ASSERT_EQ(form.LineCount(), 15);
    auto wholeRows = [this] {
        grid()->scrollToTop();
        int whole = 0;
        for (int r = FirstDataRow; r < grid()->rows(); ++r) {
            const int top = grid()->rowViewportPosition(r);
            if (top >= 0 && top + grid()->QTableView::rowHeight(r) <= grid()->viewport()->height())
                ++whole;
        }
        return whole;
    };
    EXPECT_GE(wholeRows(), 10) << "grid viewport " << grid()->viewport()->height() << " px high";

    // Changing the order, with both of the article panel's warnings up, leaves the grid as high.
    QTest::keyClick(field("txt_numeroCommissione"), Qt::Key_F3);
    for (const char* warning : {"lblInfo_29", "lbl_MsgCodice"})
        widget(warning)->show();
    QApplication::processEvents();
    EXPECT_GE(wholeRows(), 10) << "grid viewport " << grid()->viewport()->height() << " px high";
}

TEST_P(FormKeysTest, TheMainFrameStaysNearTheMiddleOfAWideWindow)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    form.resize(1920, 1000);
    QApplication::processEvents();
    QWidget* frame = widget("fra_Main");
    const int frameMiddle = frame->mapTo(&form, QPoint(frame->width() / 2, 0)).x();
    EXPECT_LT(frameMiddle, form.width() / 2);
    EXPECT_GT(frameMiddle, form.width() / 2 - 12);
    EXPECT_GT(widget("txt_numeroCommissione")->mapTo(&form, QPoint()).x(), frame->mapTo(&form, QPoint()).x());
}

XV_INSTANTIATE_ON_SQLITE(FormKeysTest);

} // namespace
