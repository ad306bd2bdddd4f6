// SPDX-License-Identifier: MIT
// The conversions run for every cell of every line shown or saved: they must stay cheap.
#include "common/Conversions.h"
#include "common/Money.h"
#include "data/SqlDialect.h"

#include <benchmark/benchmark.h>

namespace {

void parseCurrencyText(benchmark::State& state)
{
    const QString text = QStringLiteral("1.234.567,89 €");
    for (auto _ : state)
        benchmark::DoNotOptimize(xv::common::Money::parse(text));
}
BENCHMARK(parseCurrencyText);

void formatCurrencyText(benchmark::State& state)
{
    const auto amount = xv::common::Money::fromRaw(12345678900);
    for (auto _ : state)
        benchmark::DoNotOptimize(amount.toCurrencyText());
}
BENCHMARK(formatCurrencyText);

void numericValueOfText(benchmark::State& state)
{
    const QString text = QStringLiteral("  2026 e oltre");
    for (auto _ : state)
        benchmark::DoNotOptimize(xv::common::numericValue(text));
}
BENCHMARK(numericValueOfText);

void rewriteOrderQuery(benchmark::State& state)
{
    const QString sql = QStringLiteral(
        "select commissione from mov_co where commissione='12' and year([Data Commissione]) IN ( 2025 , 2026 )");
    for (auto _ : state)
        benchmark::DoNotOptimize(xv::data::rewriteSql(sql, xv::data::Engine::PostgreSQL));
}
BENCHMARK(rewriteOrderQuery);

} // namespace
