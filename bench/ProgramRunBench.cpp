// SPDX-License-Identifier: MIT
// The real program, started as a user starts it, once per iteration, on a copy of the benchmark shop:
// coldStartToReadyForm times the start until the form is shown and takes keys; peakMemoryOrderAndSearch
// opens the shop's thousand-line order by its number, uses the order search window, and reports the
// process's peak resident memory (its VmHWM, as the program reads it at the end) as peak_mb.
#include "BenchShop.h"

#include <benchmark/benchmark.h>

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>

namespace {

using namespace xv;

enum class Run { ColdStart, OrderAndSearch };

struct Outcome
{
    double seconds = 0;
    double peakMb = 0;
    int lines = 0;
    QString fault;
};

Outcome runProgram(const bench::BenchShop& shop, Run run)
{
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("XVELARIO_DATA"), shop.folder() + QStringLiteral("/program"));
    environment.insert(QStringLiteral("XVELARIO_DB"), shop.connectionText());
    environment.insert(QStringLiteral("XVELARIO_EXIT_WHEN_READY"), QStringLiteral("1"));
    if (run == Run::OrderAndSearch) {
        environment.insert(QStringLiteral("XVELARIO_OPEN_ORDER"), shop.number());
        environment.insert(QStringLiteral("XVELARIO_SEARCH"), QStringLiteral("ross"));
    }
    program.setProcessEnvironment(environment);
    program.setReadChannel(QProcess::StandardError);

    Outcome outcome;
    QElapsedTimer clock;
    clock.start();
    program.start(QStringLiteral(XV_PROGRAM), QStringList());
    QByteArray printed;
    const QDeadlineTimer deadline(120000);
    while (!printed.contains("xVELARIO ready") && !deadline.hasExpired()) {
        if (!program.waitForReadyRead(50) && program.state() == QProcess::NotRunning)
            break;
        printed += program.readAllStandardError();
    }
    outcome.seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    program.waitForFinished(60000);
    printed += program.readAllStandardError();
    const QRegularExpressionMatch ready =
        QRegularExpression(QStringLiteral("xVELARIO ready; peak memory (\\d+) kB; lines (\\d+)"))
            .match(QString::fromUtf8(printed));
    if (!ready.hasMatch() || program.exitCode() != 0) {
        outcome.fault = QStringLiteral("the program did not get ready: ") + QString::fromUtf8(printed.right(400));
        return outcome;
    }
    outcome.peakMb = ready.captured(1).toDouble() / 1024;
    outcome.lines = ready.captured(2).toInt();
    return outcome;
}

void measure(benchmark::State& state, data::Engine engine, Run run)
{
    bench::BenchShop shop(engine);
    if (!shop.ready()) {
        state.SkipWithError(shop.failure().toUtf8().constData());
        return;
    }
    // The first start writes the workstation's settings, as a new installation's does; it is not timed.
    Outcome outcome = runProgram(shop, run);
    double peak = 0;
    for (auto _ : state) {
        outcome = runProgram(shop, run);
        if (!outcome.fault.isEmpty())
            break;
        if (run == Run::OrderAndSearch && outcome.lines != bench::BenchShop::kLines) {
            outcome.fault = QStringLiteral("the order did not open in the program");
            break;
        }
        peak = std::max(peak, outcome.peakMb);
        state.SetIterationTime(outcome.seconds);
    }
    if (!outcome.fault.isEmpty()) {
        state.SkipWithError(outcome.fault.toUtf8().constData());
        return;
    }
    state.counters["peak_mb"] = peak;
}

[[maybe_unused]] const bool registered = [] {
    const struct
    {
        const char* name;
        Run run;
    } runs[] = {{"coldStartToReadyForm", Run::ColdStart}, {"peakMemoryOrderAndSearch", Run::OrderAndSearch}};
    for (const auto engine : {data::Engine::SQLite, data::Engine::PostgreSQL}) {
        if (engine == data::Engine::PostgreSQL && qEnvironmentVariableIsEmpty("XV_BENCH_PG"))
            continue;
        for (const auto& r : runs) {
            const std::string name =
                std::string(r.name) + (engine == data::Engine::SQLite ? "/sqlite" : "/postgresql");
            benchmark::RegisterBenchmark(name.c_str(), measure, engine, r.run)
                ->Unit(benchmark::kMillisecond)
                ->UseManualTime()
                ->Iterations(10);
        }
    }
    return true;
}();

} // namespace
