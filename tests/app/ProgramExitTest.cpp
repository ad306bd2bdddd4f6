// SPDX-License-Identifier: MIT
#include "FileModes.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace {

// The program's environment for a start on a data folder of the test's own, headless; a database of its
// own unless the program's default one is wanted.
QProcessEnvironment programEnvironment(const QTemporaryDir& dir, bool ownDatabase = true)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("XVELARIO_DATA", dir.path());
    environment.remove("XVELARIO_DB");
    // A database of its own starts empty: no demo shop to write first.
    if (ownDatabase)
        environment.insert("XVELARIO_DB", "sqlite:" + dir.path() + "/negozio.db");
    return environment;
}

struct ExitCase
{
    const char* name;
    int signal;
};

// The real program, started as a shop's session starts it and ended as a logout (SIGTERM) or Ctrl+C
// (SIGINT) ends it: it must leave through its normal exit, with status 0, not die in its teardown.
class ProgramExitTest : public ::testing::TestWithParam<ExitCase>
{
};

TEST_P(ProgramExitTest, TheProgramEndsWithStatusZero)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QProcess program;
    QProcessEnvironment environment = programEnvironment(dir);
    environment.insert("QT_LOGGING_RULES", "xv.*.debug=false;xv.*.info=false;xv.app.info=true");
    program.setProcessEnvironment(environment);
    program.setReadChannel(QProcess::StandardError);
    program.start(QStringLiteral(XV_PROGRAM), QStringList());
    ASSERT_TRUE(program.waitForStarted(30000)) << program.errorString().toStdString();

    QByteArray printed;
    const QDeadlineTimer deadline(120000);
    while (!printed.contains("the order form is open") && program.state() == QProcess::Running &&
           !deadline.hasExpired()) {
        program.waitForReadyRead(200);
        printed += program.readAllStandardError();
    }
    ASSERT_TRUE(printed.contains("the order form is open")) << printed.toStdString();

    ASSERT_EQ(::kill(static_cast<pid_t>(program.processId()), GetParam().signal), 0);
    ASSERT_TRUE(program.waitForFinished(60000));
    printed += program.readAllStandardError();
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit) << printed.toStdString();
    EXPECT_EQ(program.exitCode(), 0) << printed.toStdString();
    EXPECT_TRUE(QFile::exists(dir.path() + "/negozio.db"));
}

INSTANTIATE_TEST_SUITE_P(Signals, ProgramExitTest,
                         ::testing::Values(ExitCase{"SIGTERM", SIGTERM}, ExitCase{"SIGINT", SIGINT}),
                         [](const ::testing::TestParamInfo<ExitCase>& exitCase) {
                             return std::string(exitCase.param.name);
                         });

// Measuring a start asks the program to say when its form is ready and to end there by itself, also after
// opening an order by its number or using the search window (an empty shop: no order, no row).
TEST(ProgramReadyProbeTest, WhenAskedTheProgramSaysItsFormIsReadyWithItsPeakMemoryAndEnds)
{
    const struct
    {
        const char* name;
        const char* value;
    } cases[] = {{"", ""}, {"XVELARIO_OPEN_ORDER", "999"}, {"XVELARIO_SEARCH", "Rossi"}};
    for (const auto& c : cases) {
        QTemporaryDir dir;
        ASSERT_TRUE(dir.isValid());
        QProcess program;
        QProcessEnvironment environment = programEnvironment(dir);
        environment.insert("XVELARIO_EXIT_WHEN_READY", "1");
        if (*c.name)
            environment.insert(c.name, c.value);
        program.setProcessEnvironment(environment);
        program.start(QStringLiteral(XV_PROGRAM), QStringList());
        ASSERT_TRUE(program.waitForFinished(120000)) << c.name;
        const QString printed = QString::fromUtf8(program.readAllStandardError());
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit) << c.name << printed.toStdString();
        EXPECT_EQ(program.exitCode(), 0) << c.name << printed.toStdString();
        const QRegularExpressionMatch ready =
            QRegularExpression("xVELARIO ready; peak memory (\\d+) kB; lines 0").match(printed);
        ASSERT_TRUE(ready.hasMatch()) << c.name << printed.toStdString();
        EXPECT_GT(ready.captured(1).toLong(), 0) << c.name;
    }
}

// The program's own database, made on the first start, holds the demo shop; its data folder and all that
// the program and its tools write in it are the owner's alone though the session's umask would let others
// read them.
TEST(ProgramReadyProbeTest, AFirstStartOnTheProgramsOwnDatabaseShowsTheDemoShopToTheOwnerAlone)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString data = dir.filePath("dati");
    QProcess program;
    QProcessEnvironment environment = programEnvironment(dir, false);
    environment.insert("XVELARIO_DATA", data);
    environment.insert("XVELARIO_EXIT_WHEN_READY", "1");
    program.setProcessEnvironment(environment);
    const xv::test::Umask open(022);
    program.start(QStringLiteral(XV_PROGRAM), QStringList());
    ASSERT_TRUE(program.waitForFinished(120000));
    ASSERT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
    // The tools a shop runs on the same folder: a copy on demand and an import of customers.
    const struct
    {
        const char* tool;
        QStringList arguments;
    } tools[] = {{XV_BACKUP_TOOL, {}}, {XV_IMPORT_TOOL, {"clienti", XV_DOCS "/import-clienti.csv"}}};
    for (const auto& t : tools) {
        QProcess run;
        QProcessEnvironment toolEnvironment = programEnvironment(dir, false);
        toolEnvironment.insert("XVELARIO_DATA", data);
        run.setProcessEnvironment(toolEnvironment);
        run.start(QString::fromUtf8(t.tool), t.arguments);
        ASSERT_TRUE(run.waitForFinished(120000)) << t.tool;
        EXPECT_EQ(run.exitCode(), 0) << t.tool << run.readAllStandardError().toStdString();
    }
    EXPECT_TRUE(QFileInfo::exists(data + "/xvelario.db"));
    EXPECT_EQ(QDir(data + "/backup").entryList(QDir::Files).size(), 1);
    EXPECT_EQ(xv::test::openToOthers(data), QStringList());
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "demo-check");
        db.setDatabaseName(data + "/xvelario.db");
        ASSERT_TRUE(db.open());
        QSqlQuery q(db);
        ASSERT_TRUE(q.exec("select count(*) from movimenti") && q.next());
        EXPECT_GT(q.value(0).toInt(), 50);
    }
    QSqlDatabase::removeDatabase("demo-check");
}

} // namespace
