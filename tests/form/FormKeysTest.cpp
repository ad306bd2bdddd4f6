// SPDX-License-Identifier: MIT
// The order form's keys and its closing, driven offscreen on a real temporary database of each engine.
#include "ScriptedDialogs.h"
#include "FormFixture.h"
#include "TestDatabase.h"
#include "TestOrders.h"

#include "data/Recordset.h"
#include "form/frm_Commissioni.h"
#include "host/Host.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace xv;
using data::Recordset;
using form::frm_Commissioni;

// The real host, counting how often the form asks it for the lines' colours.
class ColourCountingHost : public host::Host
{
public:
    using Host::Host;
    host::Colour GetLockedColor() override { return ++locked, Host::GetLockedColor(); }
    host::Colour GetIssuedColor() override { return ++issued, Host::GetIssuedColor(); }
    host::Colour GetCollectedColor() override { return ++collected, Host::GetCollectedColor(); }
    int locked = 0;
    int issued = 0;
    int collected = 0;
};

class FormKeysTest : public test::FormTest
{
protected:
    std::unique_ptr<host::Host> makeHost(const host::HostOptions& options) override
    {
        auto h = std::make_unique<ColourCountingHost>(options);
        m_counting = h.get();
        return h;
    }
    frm_Commissioni& openNewOrder() { return FormTest::openNewOrder(7); }
    // An order of this year with the given number of lines, shown on the form in browse mode.
    frm_Commissioni& openOrderOf(int lines)
    {
        for (int i = 0; i < lines; ++i)
            test::addOrderLine(db(), "21", QDate(m_year, 4, 4), [i](Recordset& t) {
                t.setValue("attrib06", "Sofia");
                t.setValue("qta", i + 1);
            });
        openForm();
        typeNumberAndEnter("21");
        return *m_form;
    }
    int heldLocks() { return Recordset::open(db(), "select count(*) as n from blocchi_record").value("n").toInt(); }

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

    ColourCountingHost* m_counting = nullptr;
};

TEST_P(FormKeysTest, AnsweringNoToTheClosingQuestionKeepsTheFormAndWhatWasTyped)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openNewOrder();
    QTest::keyClicks(field("txt_soggettiEvento"), "Marco e Giulia");
    field("txt_ragsoc")->setText("Rossi Maria");

    const std::pair<const char*, std::function<void()>> ways[] = {
        {"Esc", [&] { QTest::keyClick(field("txt_soggettiEvento"), Qt::Key_Escape); }},
        {"EXIT", [&] { form.tbComandiDocumento_ButtonClick(documentButton(8)); }},
        {"close button", [&] { EXPECT_FALSE(form.windowHandle()->close()); }},
    };
    for (const auto& [way, close] : ways) {
        SCOPED_TRACE(way);
        dialogs.expectMessage("Si desidera uscire?", host::Answer::No);
        close();
        QApplication::processEvents();
        EXPECT_TRUE(form.isVisible());
        EXPECT_EQ(field("txt_soggettiEvento")->text(), "Marco e Giulia");
        EXPECT_EQ(field("txt_ragsoc")->text(), "Rossi Maria");
        EXPECT_EQ(form.ModeTag1(), "X");
        EXPECT_EQ(form.ModeTag2(), "S");
    }
    ASSERT_EQ(dialogs.messages().size(), 3);
    const host::MessageRequest& asked = dialogs.messages().front();
    EXPECT_EQ(asked.text, "Si desidera uscire?");
    EXPECT_EQ(asked.buttons, host::Buttons::YesNo);
    EXPECT_EQ(asked.icon, host::Icon::Question);
    EXPECT_EQ(asked.title, m_host->GetAppTitle());
}

TEST_P(FormKeysTest, ExitAnsweredYesReleasesTheLockAndEndsTheProgram)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openNewOrder();
    ASSERT_EQ(m_host->LockRecord(static_cast<quintptr>(form.winId()), 7, "Commissioni"), "");
    ASSERT_EQ(heldLocks(), 1);
    dialogs.expectMessage("Si desidera uscire?", host::Answer::Yes);
    const int status = runUntilTheProgramEnds([&] { form.tbComandiDocumento_ButtonClick(documentButton(8)); });
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(heldLocks(), 0);
}

TEST_P(FormKeysTest, YesClosesEvenWhenTheLockCannotBeReleased)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openNewOrder();
    db().execute("drop table blocchi_record"); // the release now fails in the database
    dialogs.expectMessage("Si desidera uscire?", host::Answer::Yes);
    dialogs.expectMessage("Errori rilevati durante l'eliminazione del record bloccato!");
    const int status = runUntilTheProgramEnds([&] { form.close(); });
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(form.isVisible());
    ASSERT_EQ(dialogs.messages().size(), 2);
    EXPECT_EQ(dialogs.messages()[1].icon, host::Icon::Exclamation);
}

TEST_P(FormKeysTest, EveryKeyRunsTheFormsKeyHandlingOnceWhereverItGoes)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openNewOrder();
    QLineEdit* persons = field("txt_soggettiEvento");
    persons->setFocus();
    QApplication::processEvents();
    // A key the field does not take is offered to each of its parents in turn; the form acts on it once.
    const std::pair<const char*, std::function<void()>> keys[] = {
        {"letter", [&] { QTest::keyClick(persons, Qt::Key_M); }},
        {"backspace", [&] { QTest::keyClick(persons, Qt::Key_Backspace); }},
        {"arrow up, which no field takes", [&] { QTest::keyClick(persons, Qt::Key_Up); }},
        {"page down", [&] { QTest::keyClick(persons, Qt::Key_PageDown); }},
        {"letter through the window", [&] { QTest::keyClick(form.windowHandle(), Qt::Key_M); }},
        {"arrow through the window", [&] { QTest::keyClick(form.windowHandle(), Qt::Key_Down); }},
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

TEST_P(FormKeysTest, AKeyAsksForEachColourOfTheLinesOnceWhateverTheirNumber)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openOrderOf(15);
    ASSERT_EQ(form.LineCount(), 15);
    m_host->SaveSetting("Colori", "Emesso", "&H102030", "eKELA");
    m_counting->locked = m_counting->issued = m_counting->collected = 0;
    QTest::keyClick(field("txt_numeroCommissione"), Qt::Key_Up);
    EXPECT_EQ(m_counting->locked, 1);
    EXPECT_EQ(m_counting->issued, 1);
    EXPECT_EQ(m_counting->collected, 1);
    // The colours are still the shop's settings of the moment, read again at the next key.
    EXPECT_EQ(form.grid()->rowForeground(2), QColor(0x30, 0x20, 0x10));
}

TEST_P(FormKeysTest, F3ShowsTheModifyCaptionsWhereverTheFocusIs)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openOrderOf(2);
    const char* const receivers[] = {"flx_Movimenti", "chk_Biglietti", "chk_Confetti_0", "tbComandiDocumento"};
    for (const char* name : receivers) {
        SCOPED_TRACE(name);
        if (form.ModeTag1() == "X") {
            form.tbComandiDocumento_ButtonClick(documentButton(1)); // back to browse
            QLineEdit* number = field("txt_numeroCommissione");
            QTest::keyClicks(number, "21");
            QTest::keyClick(number, Qt::Key_Return);
        }
        ASSERT_EQ(form.LineCount(), 2);
        ASSERT_EQ(documentButton(2)->text(), "Modifica[F3]");
        QWidget* receiver = form.findChild<QWidget*>(QString::fromLatin1(name));
        ASSERT_NE(receiver, nullptr);
        QTest::keyClick(receiver, Qt::Key_F3);
        EXPECT_EQ(form.ModeTag1(), "X");
        EXPECT_EQ(form.ModeTag2(), "A");
        EXPECT_EQ(documentButton(1)->text(), "Annulla[F2]");
        EXPECT_EQ(documentButton(2)->text(), "Aggiorna[F3]");
        EXPECT_TRUE(field("txt_soggettiEvento")->isEnabled());
    }
}

TEST_P(FormKeysTest, AtTheSmallestCommonScreenTheGridShowsTenLinesOrMore)
{
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openOrderOf(15);
    form.resize(1366, 768);
    QApplication::processEvents();
    lines::FlexGrid* grid = form.grid();
    ASSERT_EQ(form.LineCount(), 15);
    auto wholeRows = [grid] {
        grid->scrollToTop();
        int whole = 0;
        for (int r = lines::FirstDataRow; r < grid->rows(); ++r) {
            const int top = grid->rowViewportPosition(r);
            if (top >= 0 && top + grid->QTableView::rowHeight(r) <= grid->viewport()->height())
                ++whole;
        }
        return whole;
    };
    EXPECT_GE(wholeRows(), 10) << "grid viewport " << grid->viewport()->height() << " px high";

    // Changing the order, with both of the article panel's warnings up, leaves the grid as high.
    QTest::keyClick(field("txt_numeroCommissione"), Qt::Key_F3);
    for (const char* warning : {"lblInfo_29", "lbl_MsgCodice"})
        form.findChild<QWidget*>(warning)->show();
    QApplication::processEvents();
    EXPECT_GE(wholeRows(), 10) << "grid viewport " << grid->viewport()->height() << " px high";
}

XV_INSTANTIATE_FOR_ENGINES(FormKeysTest);

} // namespace
