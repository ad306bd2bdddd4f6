// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "data/Database.h"
#include "host/Host.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QSqlQuery>
#include <QThread>

#include <gtest/gtest.h>

namespace {

using namespace xv;

class RecordLockTest : public test::HostedTest
{
protected:
    std::unique_ptr<host::Host> workstation(const char* station, const char* user)
    {
        auto options = database().hostOptions();
        options.stationName = station;
        options.userName = user;
        auto made = std::make_unique<host::Host>(options);
        EXPECT_TRUE(made->Initialize());
        return made;
    }

    // The program holding the window's lock dies without releasing it: its server session ends on
    // PostgreSQL; on SQLite its process is one that no longer runs.
    void killSessionOf(host::Host& holder, quintptr window)
    {
        data::Database& db = h().GetConnection();
        if (GetParam() == data::Engine::PostgreSQL) {
            QSqlQuery own = holder.GetConnection().executeBound("select pg_backend_pid()");
            ASSERT_TRUE(own.next());
            const int pid = own.value(0).toInt();
            db.executeBound("select pg_terminate_backend(?)", {pid});
            QDeadlineTimer deadline(10000);
            while (!deadline.hasExpired()) {
                QSqlQuery q = db.executeBound("select count(*) from pg_stat_activity where pid = ?", {pid});
                if (q.next() && q.value(0).toInt() == 0)
                    return;
                QThread::msleep(20);
            }
            FAIL() << "the killed session is still there";
        }
        db.executeBound("update blocchi_record set processo = ? where finestra = ?",
                        {deadProcess(), QVariant::fromValue<qulonglong>(window)});
    }

    static qint64 deadProcess()
    {
        QProcess child;
        child.start("true", QStringList());
        EXPECT_TRUE(child.waitForStarted());
        const qint64 pid = child.processId();
        EXPECT_TRUE(child.waitForFinished());
        return pid;
    }

    QList<int> lockedRecords()
    {
        QList<int> records;
        QSqlQuery q = h().GetConnection().executeBound("select record from blocchi_record order by record");
        while (q.next())
            records << q.value(0).toInt();
        return records;
    }
};

TEST_P(RecordLockTest, ALockIsHeldAgainstOtherWorkstationsUntilReleased)
{
    auto other = workstation("BANCO2", "anna");
    EXPECT_EQ(h().LockRecord(101, 42, "movimenti"), "");
    EXPECT_EQ(h().LockRecord(101, 42, "movimenti"), ""); // the holder may lock again
    const QString held = other->LockRecord(7, 42, "movimenti");
    EXPECT_TRUE(held.contains("N. 42") && held.contains("tester") && held.contains("BANCO1"))
        << held.toStdString();
    EXPECT_EQ(other->LockRecord(7, 43, "movimenti"), "");
    EXPECT_TRUE(h().ReleaseRecordLock(101));
    EXPECT_EQ(other->LockRecord(8, 42, "movimenti"), "");
    other->ClearRecordLock();
    EXPECT_EQ(h().LockRecord(101, 42, "movimenti"), "");
}

// Asking for a lock someone else holds only reads: it must leave the caller's own transaction alone.
TEST_P(RecordLockTest, FindingTheRecordHeldLeavesTheCallersTransactionOpen)
{
    auto other = workstation("BANCO2", "anna");
    ASSERT_EQ(other->LockRecord(7, 42, "movimenti"), "");
    data::Database& db = h().GetConnection();
    {
        data::Transaction transaction(db);
        db.executeBound("insert into movimenti (numero, serie) values ('1', '2026')");
        EXPECT_FALSE(h().LockRecord(101, 42, "movimenti").isEmpty());
        EXPECT_TRUE(db.inTransaction());
        db.executeBound("insert into movimenti (numero, serie) values ('2', '2026')");
        transaction.commit();
    }
    QSqlQuery q = db.executeBound("select count(*) from movimenti");
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.value(0).toInt(), 2);
}

TEST_P(RecordLockTest, ALockWhoseSessionHasGoneNoLongerBlocksTheOrder)
{
    auto other = workstation("BANCO2", "anna");
    ASSERT_EQ(other->LockRecord(7, 42, "movimenti"), "");

    ASSERT_FALSE(h().LockRecord(101, 42, "movimenti").isEmpty());
    killSessionOf(*other, 7);
    EXPECT_EQ(h().LockRecord(101, 42, "movimenti"), "");
    auto third = workstation("BANCO3", "marco");
    EXPECT_TRUE(third->LockRecord(9, 42, "movimenti").contains("BANCO1")) << "the new lock holds";
}

TEST_P(RecordLockTest, AStartClearsTheLocksLeftByThisWorkstationsEarlierRunOnly)
{
    auto other = workstation("BANCO2", "anna");
    ASSERT_EQ(h().LockRecord(101, 43, "movimenti"), "");
    ASSERT_EQ(other->LockRecord(7, 44, "movimenti"), "");
    auto earlierRun = workstation("BANCO1", "tester");
    ASSERT_EQ(earlierRun->LockRecord(55, 42, "movimenti"), "");
    killSessionOf(*earlierRun, 55);
    ASSERT_EQ(lockedRecords(), QList<int>({42, 43, 44}));

    auto restarted = workstation("BANCO1", "tester");
    EXPECT_EQ(lockedRecords(), QList<int>({43, 44})) << "live locks stay, of this workstation too";
}

TEST_P(RecordLockTest, AHostThatEndsReleasesTheLockItHeld)
{
    auto other = workstation("BANCO2", "anna");
    ASSERT_EQ(other->LockRecord(7, 42, "movimenti"), "");
    ASSERT_EQ(lockedRecords(), QList<int>({42}));
    other.reset();
    EXPECT_EQ(lockedRecords(), QList<int>());
    EXPECT_EQ(h().LockRecord(101, 42, "movimenti"), "");
}

// A release the database refuses is reported and answered false, so that the window can warn and go on.
TEST_P(RecordLockTest, AReleaseThatFailsIsReportedAndAnsweredFalse)
{
    ASSERT_EQ(h().LockRecord(101, 42, "movimenti"), "");
    h().GetConnection().execute("drop table blocchi_record");
    EXPECT_FALSE(h().ReleaseRecordLock(101));
    EXPECT_TRUE(test::logOf(h()).contains("ReleaseRecordLock")) << test::logOf(h()).toStdString();
}

XV_INSTANTIATE_FOR_ENGINES(RecordLockTest);

} // namespace
