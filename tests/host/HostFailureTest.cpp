// SPDX-License-Identifier: MIT
#include "ScriptedDialogs.h"
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Database.h"
#include "host/Host.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

using namespace xv;

class HostFailureTest : public test::HostedTest
{
protected:
    QString readLog() const
    {
        QFile file(m_host->logFilePath());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    // What must still work once the database has failed under the host: the error being handled is
    // shown with the built-in title and logged, and settings answer their defaults.
    void expectTheErrorPathToSurvive()
    {
        test::ScriptedDialogs dialogs;
        dialogs.expectMessage("Origine: Documento_Salva");
        try {
            h().GetConnection().execute("select count(*) from impostazioni");
            FAIL() << "the failed database answered";
        } catch (...) {
            EXPECT_NO_THROW(h().ReportError("Documento_Salva", "AZIONE: 1", true));
        }
        ASSERT_EQ(dialogs.messages().size(), 1);
        EXPECT_EQ(dialogs.messages()[0].title, "xVELARIO");
        EXPECT_EQ(dialogs.messages()[0].icon, host::Icon::Critical);

        EXPECT_EQ(h().GetSetting("comm", "sql", "mov_co", "DOCS"), "mov_co");
        EXPECT_EQ(h().GetAppTitle(), "xVELARIO");
        EXPECT_EQ(h().GetStockThreshold(), 5);
        const QString log = readLog();
        EXPECT_TRUE(log.contains("Documento_Salva\tAZIONE: 1\tErrore ")) << log.toStdString();
        EXPECT_TRUE(log.contains("\tGetSetting\teKELA/KELA/AppTitle\t")) << log.toStdString();
    }
};

TEST_P(HostFailureTest, AClosedConnectionLeavesTheErrorPathWorking)
{
    h().GetConnection().handle().close();
    expectTheErrorPathToSurvive();
}

TEST_P(HostFailureTest, ADroppedSettingsTableLeavesTheErrorPathWorking)
{
    h().GetConnection().executeBound("drop table impostazioni");
    expectTheErrorPathToSurvive();
}

XV_INSTANTIATE_FOR_ENGINES(HostFailureTest);

} // namespace
