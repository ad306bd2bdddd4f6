// SPDX-License-Identifier: MIT
// The demo generator as the package installs it: a new private SQLite shop, refusals with status 2.
#include "FileModes.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct ToolRun
{
    int status = -1;
    QString output;
};

ToolRun makedb(const QStringList& arguments)
{
    QProcess tool;
    tool.start(QStringLiteral(XV_MAKEDB_TOOL), arguments);
    if (!tool.waitForFinished(120000))
        return {};
    return {tool.exitCode(), QString::fromUtf8(tool.readAllStandardOutput() + tool.readAllStandardError())};
}

TEST(MakedbToolTest, MakesANewPrivateShopOfTheOrdersAskedForAndRefusesWhatItCannotDo)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString shop = dir.filePath("negozio.db");
    const xv::test::Umask open(022);
    const ToolRun made =
        makedb({"--orders", "12", "--customers", "5", "--seed", "7", "--today", "2026-06-20", shop});
    ASSERT_EQ(made.status, 0) << made.output.toStdString();
    EXPECT_TRUE(made.output.contains("12 commissioni")) << made.output.toStdString();
    EXPECT_EQ(xv::test::openToOthers(dir.path()), QStringList());
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "makedb-check");
        db.setDatabaseName(shop);
        ASSERT_TRUE(db.open());
        QSqlQuery q(db);
        ASSERT_TRUE(
            q.exec("select count(distinct serie || '/' || numero) from movimenti where documento = 'COMM'"));
        ASSERT_TRUE(q.next());
        EXPECT_EQ(q.value(0).toInt(), 12);
    }
    QSqlDatabase::removeDatabase("makedb-check");

    QFile before(shop);
    ASSERT_TRUE(before.open(QIODevice::ReadOnly));
    const QByteArray kept = before.readAll();
    before.close();
    const struct
    {
        QStringList arguments;
        const char* told;
    } refused[] = {
        {{shop}, "esiste già"},
        {{"--rows", "100", "--orders", "5", dir.filePath("a.db")}, "si escludono"},
        {{"--orders", "dodici", dir.filePath("b.db")}, "--orders"},
        {{"--rows", "-3", dir.filePath("c.db")}, "--rows"},
        {{"--seed", "sette", dir.filePath("d.db")}, "--seed"},
        {{"--today", "2026-13-40", dir.filePath("e.db")}, "--today"},
        {{"--customers", "0", dir.filePath("f.db")}, "--customers"},
        {{}, "un solo file"},
        {{"--pg", "sqlite:/tmp/x.db"}, "PostgreSQL"},
        {{"--pg", "host=127.0.0.1 dbname=x", dir.filePath("g.db")}, "non si indica un file"},
    };
    for (const auto& r : refused) {
        const ToolRun run = makedb(r.arguments);
        EXPECT_EQ(run.status, 2) << r.told << run.output.toStdString();
        EXPECT_TRUE(run.output.contains(QString::fromUtf8(r.told))) << r.told << run.output.toStdString();
    }
    ASSERT_TRUE(before.open(QIODevice::ReadOnly));
    EXPECT_EQ(before.readAll(), kept) << "an existing shop is never overwritten";
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{"negozio.db"})
        << "a refusal makes no file";
}

} // namespace
