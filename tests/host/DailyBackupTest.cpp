// SPDX-License-Identifier: MIT
#include "FileModes.h"
#include "ScriptedDialogs.h"
#include "TestDatabase.h"

#include "data/Backup.h"
#include "host/Host.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;

class DailyBackupTest : public ::testing::Test
{
protected:
    host::HostOptions options() const
    {
        host::HostOptions o = m_database.hostOptions();
        o.dailyBackup = true;
        return o;
    }
    QString todaysCopy() const
    {
        return m_database.dataPath() + "backup/" +
               data::backupFileName(QDate::currentDate(), data::Engine::SQLite);
    }
    static qint64 rowsIn(const QString& path)
    {
        data::Database db(data::ConnectionConfig::fromText("sqlite:" + path));
        QSqlQuery query = db.executeBound("select count(*) from movimenti");
        return query.next() ? query.value(0).toLongLong() : -1;
    }

    test::TestDatabase m_database{data::Engine::SQLite};
};

TEST_F(DailyBackupTest, TheFirstStartOfTheDayCopiesTheDatabaseAndLaterStartsDoNot)
{
    {
        host::Host h(options());
        ASSERT_TRUE(h.Initialize());
        h.waitForDailyBackup();
        EXPECT_EQ(data::sqliteBackupProblem(todaysCopy()), QString());
        h.GetConnection().executeBound("insert into movimenti (numero, serie) values ('1', '2026')");
    }
    EXPECT_EQ(rowsIn(todaysCopy()), 0);
    EXPECT_EQ(test::openToOthers(m_database.dataPath() + "backup"), QStringList());
    host::Host again(options());
    ASSERT_TRUE(again.Initialize());
    again.waitForDailyBackup();
    EXPECT_EQ(rowsIn(todaysCopy()), 0) << "the day's copy was taken again";
}

TEST_F(DailyBackupTest, TheCopiesKeptAreThoseTheSettingSays)
{
    const QString folder = m_database.dataPath() + "backup/";
    ASSERT_TRUE(QDir().mkpath(folder));
    for (int days = 1; days <= 4; ++days) {
        QFile old(folder + data::backupFileName(QDate::currentDate().addDays(-days), data::Engine::SQLite));
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    }
    {
        host::Host first(m_database.hostOptions());
        ASSERT_TRUE(first.Initialize());
        first.SaveSetting("BACKUP", "DaConservare", "3", "eKELA");
    }
    host::Host h(options());
    ASSERT_TRUE(h.Initialize());
    h.waitForDailyBackup();
    QStringList expected;
    for (int days = 2; days >= 0; --days)
        expected << data::backupFileName(QDate::currentDate().addDays(-days), data::Engine::SQLite);
    EXPECT_EQ(QDir(folder).entryList(QDir::Files, QDir::Name), expected);
}

TEST_F(DailyBackupTest, AFailedCopyIsLoggedAndToldOnceButTheProgramStarts)
{
    // A file where the folder should be: no copy can go there.
    QFile blocker(m_database.dataPath() + "backup");
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    test::ScriptedDialogs dialogs;
    dialogs.expectMessage("copia di sicurezza di oggi non è stata fatta");
    host::Host h(options());
    ASSERT_TRUE(h.Initialize());
    EXPECT_NO_THROW(h.GetConnection().executeBound("select count(*) from movimenti"))
        << "the program works while its copy is taken";
    // Told by the program's own events, with nobody waiting for the copy; the wait at the end tells nothing
    // more.
    const QDeadlineTimer deadline(20000);
    while (!test::logOf(h).contains("CopiaGiornaliera") && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    EXPECT_TRUE(test::logOf(h).contains("CopiaGiornaliera")) << test::logOf(h).toStdString();
    h.waitForDailyBackup();
}

TEST_F(DailyBackupTest, TheProgramHoldsItsDatabaseFromARestoreWhileItRunsAndDoesNotStartDuringOne)
{
    const QString path = m_database.config().sqlitePath;
    {
        host::Host h(m_database.hostOptions());
        ASSERT_TRUE(h.Initialize());
        EXPECT_EQ(data::UseMark::take(path, data::UseMark::Kind::Exclusive), nullptr);
        h.Terminate();
        EXPECT_NE(data::UseMark::take(path, data::UseMark::Kind::Exclusive), nullptr);
    }
    const auto restoring = data::UseMark::take(path, data::UseMark::Kind::Exclusive);
    ASSERT_NE(restoring, nullptr);
    host::Host h(m_database.hostOptions());
    EXPECT_FALSE(h.Initialize());
    EXPECT_TRUE(test::logOf(h).contains("ripristino")) << test::logOf(h).toStdString();
}

} // namespace
