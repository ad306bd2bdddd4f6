// SPDX-License-Identifier: MIT
// Loading the thousand-line order by its number, as the form does when the operator types it and presses
// Enter: the program's own find and load of its header and lines, not the showing of them on the form (that
// is openAThousandLineOrderByNumber).
// In the same iteration the statements the load ran, captured as the engine got them, run again through
// the engine's C API: the time shown is the program's, raw_ms the engine's, ratio the one over the other.
#include "BenchShop.h"
#include "RawEngine.h"

#include "data/Database.h"
#include "orders/Order.h"

#include <benchmark/benchmark.h>

#include <QDate>
#include <QElapsedTimer>

#include <vector>

namespace {

using namespace xv;

struct Statement
{
    QString sql;
    QVariantList values;
};

double seconds(const QElapsedTimer& clock)
{
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

void loadOrderByNumber(benchmark::State& state, data::Engine engine)
{
    bench::BenchShop shop(engine);
    if (!shop.ready()) {
        state.SkipWithError(shop.failure().toUtf8().constData());
        return;
    }
    data::Database& db = shop.host().GetConnection();
    // The benchmark's own order of a thousand lines, this year's, as the operator types its number.
    const QString number = shop.number();
    const int year = QDate::currentDate().year();
    if (number.isEmpty()) {
        state.SkipWithError("the shop has no order to load");
        return;
    }

    std::vector<Statement> statements;
    double program = 0;
    double raw = 0;
    int lines = 0;
    try {
        const std::unique_ptr<bench::RawReader> engineApi = bench::RawReader::open(db.config());
        QElapsedTimer clock;
        for (auto _ : state) {
            statements.clear();
            db.setStatementLog([&statements](const QString& sql, const QVariantList& values) {
                statements.push_back({sql, values});
            });
            clock.start();
            const orders::Order order = orders::loadOrder(shop.host(), number, year);
            const double time = seconds(clock);
            db.setStatementLog({});
            lines = static_cast<int>(order.lines.size());
            if (lines != bench::BenchShop::kLines) {
                state.SkipWithError("the order did not load");
                return;
            }
            clock.start();
            for (const Statement& s : statements)
                engineApi->run(s.sql, s.values);
            raw += seconds(clock);
            program += time;
            state.SetIterationTime(time);
        }
    } catch (const std::exception& e) {
        db.setStatementLog({});
        state.SkipWithError(e.what());
        return;
    }
    state.counters["raw_ms"] = benchmark::Counter(raw * 1000, benchmark::Counter::kAvgIterations);
    state.counters["ratio"] = raw > 0 ? program / raw : 0;
    state.counters["lines"] = lines;
    state.counters["statements"] = static_cast<double>(statements.size());
}

[[maybe_unused]] const bool registered = [] {
    for (const auto engine : {data::Engine::SQLite, data::Engine::PostgreSQL}) {
        if (engine == data::Engine::PostgreSQL && qEnvironmentVariableIsEmpty("XV_BENCH_PG"))
            continue;
        const std::string name =
            std::string("loadOrderByNumber") + (engine == data::Engine::SQLite ? "/sqlite" : "/postgresql");
        benchmark::RegisterBenchmark(name.c_str(), loadOrderByNumber, engine)
            ->Unit(benchmark::kMillisecond)
            ->UseManualTime()
            ->Iterations(50);
    }
    return true;
}();

} // namespace
