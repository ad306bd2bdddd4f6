// SPDX-License-Identifier: MIT
#pragma once

#include "data/SqlDialect.h"

#include <benchmark/benchmark.h>

#include <QtGlobal>

#include <string>

namespace xv::bench {

// Registers a benchmark that runs on a database as "<operation>/sqlite" and, when XV_BENCH_PG names a
// database to copy, "<operation>/postgresql", in milliseconds: scripts/bench reads the engine from the name
// and the size of the shop from the database it named. configure sets the iterations and the timing.
template <typename Configure>
void registerOnEngines(const std::string& operation, void (*run)(benchmark::State&, data::Engine),
                       Configure configure)
{
    for (const auto engine : {data::Engine::SQLite, data::Engine::PostgreSQL}) {
        if (engine == data::Engine::PostgreSQL && qEnvironmentVariableIsEmpty("XV_BENCH_PG"))
            continue;
        const std::string name = operation + (engine == data::Engine::SQLite ? "/sqlite" : "/postgresql");
        configure(benchmark::RegisterBenchmark(name.c_str(), run, engine)->Unit(benchmark::kMillisecond));
    }
}

} // namespace xv::bench
