// SPDX-License-Identifier: MIT
// xvelario-backup as a shop runs it: from the command line, while a workstation (save_child) saves orders.
#include "TestDatabase.h"

#include "data/Backup.h"
#include "data/Database.h"
#include "host/Host.h"

#include <QFile>
#include <QProcess>
#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;

struct ToolResult
{
    int exitCode = -1;
    QString output;
};

ToolResult runTool(const test::TestDatabase& database, const QStringList& arguments)
{
    QProcess tool;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XVELARIO_DATA", database.dataPath());
    environment.insert("XVELARIO_DB", database.connectionText());
    tool.setProcessEnvironment(environment);
    tool.setProcessChannelMode(QProcess::MergedChannels);
    tool.start(QStringLiteral(XV_BACKUP_TOOL), arguments);
    if (!tool.waitForFinished(60000))
        return {};
    return {tool.exitStatus() == QProcess::NormalExit ? tool.exitCode() : -1,
            QString::fromLocal8Bit(tool.readAll())};
}

qint64 count(data::Database& db, const QString& sql)
{
    QSqlQuery query = db.executeBound(sql);
    return query.next() ? query.value(0).toLongLong() : -1;
}

// A workstation saving orders of a known number of lines, one command at a time.
class SavingStation
{
public:
    SavingStation(const QString& connection, int lines)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(XV_SAVE_CHILD), {connection, QString::number(lines), "Negozio"});
    }
    ~SavingStation()
    {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(10000))
            m_process.kill();
    }
    void send(const char* command)
    {
        m_process.write(command);
        m_process.write("\n");
        m_process.waitForBytesWritten();
    }
    bool answered(const char* word)
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(60000))
                return false;
        }
        return m_process.readLine().startsWith(word);
    }
    // How many saves it has reported since last asked, without waiting for one.
    int saves()
    {
        int done = 0;
        m_process.waitForReadyRead(1);
        while (m_process.canReadLine()) {
            const QByteArray line = m_process.readLine();
            EXPECT_FALSE(line.startsWith("error")) << line.toStdString();
            done += line.startsWith("saved") ? 1 : 0;
        }
        return done;
    }

private:
    QProcess m_process;
};

// Then the database, its orders deleted, is brought back from a copy by the tool.
TEST(BackupToolTest, ACopyTakenWhileAWorkstationSavesIsSoundAndHoldsWholeOrdersOnly)
{
    test::TestDatabase database(data::Engine::SQLite);
    {
        host::HostOptions options = database.hostOptions();
        options.startCounters = true;
        host::Host h(options);
        ASSERT_TRUE(h.Initialize());
    }
    constexpr int kLines = 300;
    constexpr int kOrders = 30;
    {
        SavingStation station(database.connectionText(), kLines);
        // The workstation is handed all its work at once and saves one order after another without a pause.
        for (int order = 0; order < kOrders; ++order) {
            station.send("propose");
            station.send("save");
        }
        ASSERT_TRUE(station.answered("proposed"));
        int saved = 0;
        int copies = 0;
        int midway = 0;
        qint64 before = 0;
        while (saved < kOrders && copies < 200) {
            const int savedBefore = saved;
            const QString file = database.dataPath() + QStringLiteral("copia-%1.db").arg(++copies);
            const ToolResult result = runTool(database, {file});
            ASSERT_EQ(result.exitCode, 0) << result.output.toStdString();
            saved += station.saves();

            SCOPED_TRACE(file.toStdString());
            ASSERT_EQ(data::sqliteBackupProblem(file), QString());
            data::Database db(data::ConnectionConfig::fromText("sqlite:" + file));
            QSqlQuery integrity = db.executeBound("PRAGMA integrity_check");
            ASSERT_TRUE(integrity.next());
            EXPECT_EQ(integrity.value(0).toString(), "ok");
            const qint64 orders = count(db, "select count(distinct Nominativo) from movimenti");
            EXPECT_GE(orders, savedBefore) << "an order saved before the copy began is missing";
            EXPECT_GE(orders, before) << "a copy went back in time";
            EXPECT_EQ(
                count(db, QStringLiteral("select count(*) from (select Nominativo from movimenti group by "
                                         "Nominativo having count(*) <> %1) part")
                              .arg(kLines)),
                0);
            EXPECT_EQ(count(db, "select count(*) from movimenti"), orders * kLines);
            if (orders > 0 && orders < kOrders)
                ++midway;
            before = orders;
            QFile::remove(file);
        }
        EXPECT_EQ(saved, kOrders);
        // The copies were taken while the orders were being written, not before nor after all of them.
        EXPECT_GT(midway, 0) << copies << " copies";
    }

    const QString copy = database.dataPath() + "copia.db";
    const ToolResult backup = runTool(database, {copy});
    ASSERT_EQ(backup.exitCode, 0) << backup.output.toStdString();
    EXPECT_TRUE(backup.output.contains(copy)) << backup.output.toStdString();
    data::Database(database.config()).executeBound("delete from movimenti");
    const ToolResult restore = runTool(database, {"--restore", copy});
    ASSERT_EQ(restore.exitCode, 0) << restore.output.toStdString();
    data::Database db(database.config());
    EXPECT_EQ(count(db, "select count(*) from movimenti"), kOrders * kLines);

    EXPECT_EQ(runTool(database, {"--restore"}).exitCode, 2);
    EXPECT_EQ(runTool(database, {"uno.db", "due.db"}).exitCode, 2);
}

} // namespace
