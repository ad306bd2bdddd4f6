// SPDX-License-Identifier: MIT
// The real program, started as a user starts it, once per iteration, on a copy of the benchmark shop:
// coldStartToReadyForm times the start until the form is shown and takes keys; peakMemoryOrderAndSearch
// opens the shop's thousand-line order by its number, uses the order search window, and reports the
// process's peak resident memory (its VmHWM, as the program reads it at the end) as peak_mb.
// Before each timed cold start on SQLite the copied database file (and its journal, if any) is written out
// and dropped from the system's page cache (fdatasync, then posix_fadvise POSIX_FADV_DONTNEED), so the start
// reads it from the disk as the first start of the day does; cached_kb says how much of it was still in the
// cache at the start (0 when the drop worked). The program and Qt's libraries stay cached, as they are
// after any earlier start. On PostgreSQL the server's own cache is not emptied: a shop's server runs all day.
#include "BenchShop.h"

#include <benchmark/benchmark.h>

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <algorithm>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

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

// The SQLite file a connection text names, or nothing for a server's database.
QString sqliteFile(const QString& connectionText)
{
    const QLatin1String prefix("sqlite:");
    return connectionText.startsWith(prefix) ? connectionText.mid(prefix.size()) : QString();
}

// Writes the file out and drops it from the page cache; answers false when it could not be opened.
bool dropFromCache(const QString& path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    if (fd < 0)
        return false;
    ::fdatasync(fd); // dirty pages are not dropped
    const bool dropped = ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED) == 0;
    ::close(fd);
    return dropped;
}

// How many kB of the file are in the page cache now.
double cachedKb(const QString& path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    if (fd < 0)
        return 0;
    struct stat info
    {
    };
    double kb = 0;
    if (::fstat(fd, &info) == 0 && info.st_size > 0) {
        const auto size = static_cast<std::size_t>(info.st_size);
        void* map = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
        if (map != MAP_FAILED) {
            const long page = ::sysconf(_SC_PAGESIZE);
            std::vector<unsigned char> resident((size + static_cast<std::size_t>(page) - 1) /
                                                static_cast<std::size_t>(page));
            if (::mincore(map, size, resident.data()) == 0) {
                for (unsigned char r : resident)
                    kb += (r & 1) ? static_cast<double>(page) / 1024 : 0;
            }
            ::munmap(map, size);
        }
    }
    ::close(fd);
    return kb;
}

Outcome runProgram(const bench::BenchShop& shop, Run run, double* cachedAtStart = nullptr)
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
    const QString file = sqliteFile(shop.connectionText());
    if (cachedAtStart && !file.isEmpty()) {
        *cachedAtStart = 0;
        for (const QString& part : {file, file + QStringLiteral("-journal"), file + QStringLiteral("-wal")}) {
            if (QFile::exists(part) && !dropFromCache(part)) {
                outcome.fault = QStringLiteral("the database could not be dropped from the cache");
                return outcome;
            }
            *cachedAtStart += cachedKb(part);
        }
    }
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
    double cached = 0;
    for (auto _ : state) {
        double cachedNow = 0;
        outcome = runProgram(shop, run, run == Run::ColdStart ? &cachedNow : nullptr);
        cached = std::max(cached, cachedNow);
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
    if (run == Run::ColdStart && engine == data::Engine::SQLite)
        state.counters["cached_kb"] = cached;
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
