// SPDX-License-Identifier: MIT
// A thousand-line order in the lines grid: filling it when the order is loaded, and the renumbering,
// colouring and totals that run after every key the operator types.
#include "common/Money.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"
#include "lines/Totals.h"

#include <benchmark/benchmark.h>

#include <QColor>

namespace {

using namespace xv::lines;

constexpr int kLines = 1000;

QStringList lineCells(int line)
{
    QStringList cells;
    for (int c = 0; c < ColCount; ++c)
        cells << QString();
    cells[Col_codice_med] = QStringLiteral("BOM%1").arg(line % 100, 3, 10, QLatin1Char('0'));
    cells[Col_Descrizione1] = QStringLiteral("Bomboniera portaconfetti in porcellana");
    cells[Col_qta] = QString::number(1 + line % 120);
    cells[Col_prezzo] = xv::common::Money::fromRaw(115000).toCurrencyText();
    cells[Col_imponibile] = xv::common::Money::fromRaw(115000 * (1 + line % 120)).toCurrencyText();
    cells[Col_StatoRiga] = line % 3 ? QStringLiteral("EMESSO") : QStringLiteral("RITIRATO");
    return cells;
}

void layOut(FlexGrid& grid)
{
    layOutOrderLines(grid, ColCount);
    showOrderLineColumns(grid);
}

void fillAThousandLines(benchmark::State& state)
{
    QVector<QStringList> lines;
    for (int i = 0; i < kLines; ++i)
        lines << lineCells(i);
    for (auto _ : state) {
        FlexGrid grid;
        layOut(grid);
        for (const QStringList& cells : lines)
            grid.addItem(cells);
        benchmark::DoNotOptimize(grid.rows());
    }
}
BENCHMARK(fillAThousandLines)->Unit(benchmark::kMillisecond);

void recalculateAfterAKey(benchmark::State& state)
{
    FlexGrid grid;
    layOut(grid);
    for (int i = 0; i < kLines; ++i)
        grid.addItem(lineCells(i));
    const QColor locked(235, 240, 245);
    const QColor issued(0, 70, 160);
    const QColor collected(0, 120, 40);
    for (auto _ : state) {
        QStringList quantities;
        QStringList amounts;
        for (int r = FirstDataRow; r < grid.rows(); ++r) {
            grid.setTextMatrix(r, Col_Riga, QString::number(r - 1));
            grid.setRowBackground(r, locked);
            const QString status = grid.textMatrix(r, Col_StatoRiga).toLower();
            grid.setRowForeground(r, status == QLatin1String("emesso") ? issued : collected);
            quantities << grid.textMatrix(r, Col_qta);
            amounts << grid.textMatrix(r, Col_imponibile);
        }
        benchmark::DoNotOptimize(quantityTotal(quantities));
        benchmark::DoNotOptimize(orderTotal(amounts));
    }
}
BENCHMARK(recalculateAfterAKey)->Unit(benchmark::kMillisecond);

} // namespace
