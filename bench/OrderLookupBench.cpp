// SPDX-License-Identifier: MIT
// Finding and reading one order among many: what the operator waits for when typing an order number.
// Point XV_BENCH_DB at a database built by xvelario-makedb (for example --rows 1000000) to measure a
// shop of that size; without it a database of some tens of thousands of rows is built once here.
#include "data/Database.h"
#include "demo/DemoData.h"
#include "data/Recordset.h"
#include "data/Schema.h"
#include "orders/OpenOrder.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <memory>

namespace {

using namespace xv::data;
using namespace xv::demo;

struct Shop
{
    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<Database> db;
    QString number;
    int year = 0;
};

Shop& shop()
{
    static Shop s = [] {
        Shop made;
        QString path = qEnvironmentVariable("XV_BENCH_DB");
        const bool build = path.isEmpty();
        if (build) {
            made.dir = std::make_unique<QTemporaryDir>();
            path = made.dir->path() + QStringLiteral("/bench.db");
        }
        ConnectionConfig config;
        config.sqlitePath = path;
        made.db = std::make_unique<Database>(config);
        migrate(*made.db);
        if (build) {
            DemoOptions options;
            options.orders = 20000;
            fillDemoData(*made.db, options);
        }
        Recordset last = Recordset::open(
            *made.db,
            QStringLiteral("select commissione, serie from mov_co order by serie desc, val(commissione) desc"));
        made.number = last.text(QStringLiteral("commissione"));
        made.year = last.text(QStringLiteral("serie")).toInt();
        return made;
    }();
    return s;
}

void findAndReadOrder(benchmark::State& state)
{
    Shop& s = shop();
    int lines = 0;
    for (auto _ : state) {
        Recordset found = Recordset::open(*s.db, xv::orders::ordersByNumberSql(s.number, s.year));
        const xv::orders::OrderKey key{found.text(QStringLiteral("documento")),
                                       found.text(QStringLiteral("commissione")),
                                       found.text(QStringLiteral("serie"))};
        Recordset sums = Recordset::open(*s.db, xv::orders::orderSumsSql(key));
        Recordset rows = Recordset::open(*s.db, xv::orders::orderLinesSql(key));
        lines = rows.recordCount();
        benchmark::DoNotOptimize(sums.eof());
    }
    state.counters["lines"] = lines;
}
BENCHMARK(findAndReadOrder)->Unit(benchmark::kMillisecond);

void tableStructure(benchmark::State& state)
{
    Shop& s = shop();
    for (auto _ : state)
        benchmark::DoNotOptimize(tableColumns(*s.db, QStringLiteral("movimenti")));
}
BENCHMARK(tableStructure)->Unit(benchmark::kMicrosecond);

} // namespace
