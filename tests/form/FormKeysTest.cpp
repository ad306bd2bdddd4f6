// SPDX-License-Identifier: MIT
// The order form's keys and its closing, driven offscreen on a real temporary database of each engine.
#include "ScriptedDialogs.h"
#include "TestDatabase.h"
#include "TestOrders.h"

#include "data/Recordset.h"
#include "form/frm_Commissioni.h"
#include "host/Host.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"

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

class FormKeysTest : public test::EngineTest
{
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        auto h = std::make_unique<host::Host>(database().hostOptions());
        m_host = h.get();
        ASSERT_TRUE(m_host->Initialize());
        host::setHost(std::move(h));
        host::setFormSettings(std::make_unique<host::IniFormSettings>(database().dataPath() + "finestre.ini"));
        m_year = QDate::currentDate().year();
    }
    void TearDown() override
    {
        m_form.reset();
        host::resetServices();
        EngineTest::TearDown();
    }

    frm_Commissioni& openForm()
    {
        m_form = std::make_unique<frm_Commissioni>();
        m_form->show();
        m_form->InitForm(0);
        QApplication::processEvents();
        return *m_form;
    }
    frm_Commissioni& openNewOrder()
    {
        test::addCounter(db(), m_year, 7);
        openForm().tbComandiDocumento_ButtonClick(documentButton(1));
        return *m_form;
    }
    // An order of this year with the given number of lines, shown on the form in browse mode.
    frm_Commissioni& openOrderOf(int lines)
    {
        for (int i = 0; i < lines; ++i)
            test::addOrderLine(db(), "21", QDate(m_year, 4, 4), [i](Recordset& t) {
                t.setValue("attrib06", "Sofia");
                t.setValue("qta", i + 1);
            });
        openForm();
        QLineEdit* number = field("txt_numeroCommissione");
        QTest::keyClicks(number, "21");
        QTest::keyClick(number, Qt::Key_Return);
        return *m_form;
    }
    QLineEdit* field(const char* name) const { return m_form->findChild<QLineEdit*>(QString::fromLatin1(name)); }
    QAction* documentButton(int index) { return m_form->tbComandiDocumento().button(index); }
    data::Database& db() { return m_host->GetConnection(); }
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

    host::Host* m_host = nullptr;
    std::unique_ptr<frm_Commissioni> m_form;
    int m_year = 0;
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

XV_INSTANTIATE_FOR_ENGINES(FormKeysTest);

} // namespace
