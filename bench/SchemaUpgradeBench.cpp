// SPDX-License-Identifier: MIT
// The schema upgrade an existing shop's database goes through once, at the first start of the program that
// brings the newest version, on the shop BenchShop opens (a copy of the demo shop named by XV_BENCH_DB or
// XV_BENCH_PG). Timed from the start of the upgrade's transaction to its commit: on SQLite that is the
// index of the customers' names and the ceremonies, filled from every row of `movimenti`, and its triggers;
// on PostgreSQL the version only, since its trigram indexes came earlier. Before each timed run the copy is
// put back, untimed, as the version before left it.
#include "BenchEngines.h"
#include "BenchShop.h"

#include "data/Database.h"
#include "data/Recordset.h"
#include "data/Schema.h"

#include <benchmark/benchmark.h>

#include <QElapsedTimer>

namespace {

using namespace xv;

// The database as the version before the newest one left it.
void asTheVersionBefore(data::Database& db)
{
    if (db.engine() == data::Engine::SQLite) {
        db.executeBound(QStringLiteral("drop table if exists %1").arg(QLatin1String(data::kNameIndexTable)));
        for (const char* trigger : {"inserimento", "cancellazione", "modifica"})
            db.executeBound(
                QStringLiteral("drop trigger if exists movimenti_nomi_%1").arg(QLatin1String(trigger)));
    }
    db.executeBound(
        QStringLiteral("delete from versione_schema where versione = %1").arg(data::latestSchemaVersion()));
}

void upgradeTheSchemaOfAShop(benchmark::State& state, data::Engine engine)
{
    bench::BenchShop shop(engine);
    if (!shop.ready()) {
        state.SkipWithError(shop.failure().toUtf8().constData());
        return;
    }
    data::Database& db = shop.host().GetConnection();
    for (auto _ : state) {
        asTheVersionBefore(db);
        QElapsedTimer clock;
        clock.start();
        const int before = data::migrate(db);
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        if (before != data::latestSchemaVersion() - 1 ||
            data::schemaVersion(db) != data::latestSchemaVersion()) {
            state.SkipWithError("the upgrade did not run from the version before to the newest");
            return;
        }
    }
    state.counters["rows"] = static_cast<double>(
        data::Recordset::open(db, QStringLiteral("select count(*) from movimenti")).value(0).toLongLong());
}

const bool registered = [] {
    bench::registerOnEngines("upgradeTheSchemaOfAShop", upgradeTheSchemaOfAShop,
                             [](benchmark::internal::Benchmark* b) { b->UseManualTime()->Iterations(3); });
    return true;
}();

} // namespace
