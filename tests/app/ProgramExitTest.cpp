// SPDX-License-Identifier: MIT
#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace {

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
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("XVELARIO_DATA", dir.path());
    // A database of its own starts empty: no demo shop to write first.
    environment.insert("XVELARIO_DB", "sqlite:" + dir.path() + "/negozio.db");
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
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("XVELARIO_DATA", dir.path());
        environment.insert("XVELARIO_DB", "sqlite:" + dir.path() + "/negozio.db");
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

} // namespace
