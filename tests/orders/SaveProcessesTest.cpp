// SPDX-License-Identifier: MIT
// Saving from several processes at once, and from one killed half-way: the workstations are child
// processes (save_child) saving through the program's own code on one database.
#include "TestDatabase.h"
#include "TestOrders.h"

#include "data/Database.h"
#include "host/Host.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QSqlQuery>
#include <QThread>

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <random>

namespace {

using namespace xv;
using test::scalar;

// A workstation in a child process, driven one command at a time.
class Workstation
{
public:
    Workstation(const QString& connection, int lines, const QString& name)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(XV_SAVE_CHILD), {connection, QString::number(lines), name});
    }
    ~Workstation()
    {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(10000))
            kill();
    }
    void send(const char* command)
    {
        m_process.write(command);
        m_process.write("\n");
        m_process.waitForBytesWritten();
    }
    // The rest of the next line it prints, which must start with the word; empty, and a failure, if not.
    QString expect(const QString& word)
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(60000)) {
                ADD_FAILURE() << "the workstation said nothing; expected " << word.toStdString() << "; "
                              << m_process.errorString().toStdString() << ", exit " << m_process.exitCode();
                return {};
            }
        }
        const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
        if (!line.startsWith(word + QLatin1Char(' '))) {
            ADD_FAILURE() << "expected " << word.toStdString()
                          << ", the workstation said: " << line.toStdString();
            return {};
        }
        return line.mid(word.size() + 1);
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
};

// The schema and this year's first counter, as the program sets up a new shop's database.
void prepare(host::HostOptions options)
{
    options.startCounters = true;
    host::Host h(options);
    ASSERT_TRUE(h.Initialize());
}

TEST(SaveKilledTest, AWorkstationKilledAtAnyMomentOfASaveLeavesTheWholeOrderOrNoneOfIt)
{
    test::TestDatabase database(data::Engine::SQLite);
    const QString connection = database.connectionText();
    prepare(database.hostOptions());
    constexpr int kLines = 1000;

    // How long a save takes here: the kills are spread over it and a little beyond, into the commit.
    QElapsedTimer timer;
    {
        Workstation w(connection, kLines, QStringLiteral("misura"));
        w.send("propose");
        w.expect(QStringLiteral("proposed"));
        timer.start();
        w.send("save");
        ASSERT_FALSE(w.expect(QStringLiteral("saved")).isEmpty());
    }
    qint64 saveMs = timer.elapsed();
    const unsigned seed = qEnvironmentVariableIsSet("XV_TEST_SEED")
                              ? qEnvironmentVariable("XV_TEST_SEED").toUInt()
                              : std::random_device()();
    std::cout << "a save of " << kLines << " lines takes " << saveMs << " ms; kills seeded " << seed
              << " (XV_TEST_SEED=" << seed << " repeats them)" << std::endl;
    std::mt19937 random(seed);

    int whole = 0;
    int none = 0;
    qint64 counterBefore = 1; // the order saved while measuring
    qint64 rowsBefore = kLines;
    // The next workstation starts while the last one's leftovers are checked.
    const auto start = [&](int kill) {
        auto w = std::make_unique<Workstation>(connection, kLines, QStringLiteral("ucciso%1").arg(kill));
        w->send("propose");
        return w;
    };
    // Fifty kills spread at random; should they all have fallen on one side of the commit, up to twenty more
    // aimed at the other, so that both a save cut while writing and one already committed are seen.
    constexpr int kSpread = 50;
    constexpr int kKills = kSpread + 20;
    const auto oneSideOnly = [&] { return whole == 0 || none == 0; };
    std::unique_ptr<Workstation> next = start(1);
    for (int kill = 1; kill <= kKills; ++kill) {
        const QString customer = QStringLiteral("ucciso%1 ordine 1").arg(kill);
        qint64 after = std::uniform_int_distribution<qint64>(0, saveMs + saveMs / 5)(random);
        if (kill > kSpread)
            after = whole == 0 ? saveMs * 2 : saveMs / 4;
        SCOPED_TRACE(QStringLiteral("kill %1, %2 ms into the save, seed %3")
                         .arg(kill)
                         .arg(after)
                         .arg(seed)
                         .toStdString());
        {
            const std::unique_ptr<Workstation> w = std::move(next);
            w->expect(QStringLiteral("proposed"));
            w->send("save");
            QThread::msleep(static_cast<unsigned long>(after));
            w->kill();
        }
        if (kill < kKills)
            next = start(kill + 1);
        data::Database db(database.config());
        ASSERT_EQ(scalar(db, "PRAGMA integrity_check"), "ok");
        const qint64 lines =
            scalar(db, "select count(*) from movimenti where Nominativo=?", {customer}).toLongLong();
        const qint64 counter = scalar(db, "select numero from numeratori").toLongLong();
        const qint64 rows = scalar(db, "select count(*) from movimenti").toLongLong();
        if (lines == 0) {
            // Still writing then: on a machine slower now than when measured, the save takes longer.
            saveMs = std::max(saveMs, after);
            EXPECT_EQ(counter, counterBefore);
            EXPECT_EQ(rows, rowsBefore);
            ++none;
        } else {
            ++whole;
            ASSERT_EQ(lines, kLines);
            EXPECT_EQ(counter, counterBefore + 1);
            EXPECT_EQ(rows, rowsBefore + kLines);
            EXPECT_EQ(
                scalar(db, "select count(distinct numero) from movimenti where Nominativo=?", {customer}),
                "1");
        }
        counterBefore = counter;
        rowsBefore = rows;
        if (kill >= kSpread && !oneSideOnly())
            break;
    }
    std::cout << whole << " of " << whole + none << " kills came after the commit" << std::endl;
    EXPECT_GT(none, 0) << "no kill cut a save short";
    EXPECT_GT(whole, 0) << "no kill came after a commit";
}

class SaveProcessesTest : public test::EngineTest
{
};

TEST_P(SaveProcessesTest, FourWorkstationsProposedTheSameNumbersKeepEveryOrder)
{
    constexpr int kStations = 4;
    constexpr int kOrders = 50;
    constexpr int kLines = 3;
    prepare(database().hostOptions());
    std::vector<std::unique_ptr<Workstation>> stations;
    for (int s = 1; s <= kStations; ++s)
        stations.push_back(
            std::make_unique<Workstation>(database().connectionText(), kLines, QStringLiteral("P%1").arg(s)));

    for (int round = 1; round <= kOrders; ++round) {
        // All four are proposed the same number before any of them saves, as on four counters at once.
        QStringList proposed;
        for (auto& w : stations)
            w->send("propose");
        for (auto& w : stations)
            proposed << w->expect(QStringLiteral("proposed"));
        ASSERT_EQ(proposed.count(QString::number(round * kStations - kStations + 1)), kStations)
            << proposed.join(QLatin1Char(',')).toStdString();
        for (auto& w : stations)
            w->send("save");
        for (auto& w : stations)
            ASSERT_FALSE(w->expect(QStringLiteral("saved")).isEmpty());
    }
    stations.clear();

    data::Database db(database().config());
    constexpr int kAll = kStations * kOrders;
    // Every order kept whole under a number of its own, and the counter at the last number given.
    EXPECT_EQ(scalar(db, "select count(*) from movimenti"), QString::number(kAll * kLines));
    EXPECT_EQ(scalar(db, "select count(distinct Nominativo) from movimenti"), QString::number(kAll));
    EXPECT_EQ(scalar(db, "select count(distinct numero) from movimenti"), QString::number(kAll));
    EXPECT_EQ(scalar(db,
                     "select count(*) from (select numero from movimenti group by numero "
                     "having count(*) = ? and count(distinct Nominativo) = 1) whole",
                     {kLines}),
              QString::number(kAll));
    EXPECT_EQ(scalar(db, "select numero from numeratori"), QString::number(kAll));
    EXPECT_EQ(scalar(db, "select max(cast(numero as integer)) from movimenti"), QString::number(kAll));
}

XV_INSTANTIATE_FOR_ENGINES(SaveProcessesTest);

} // namespace
