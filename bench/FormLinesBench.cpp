// SPDX-License-Identifier: MIT
// A thousand-line order through the real form, offscreen, with the shop's settings: opening it by its
// number, adding a line to it and changing the quantity of one of its lines, each up to the next frame, on
// SQLite and (with XV_BENCH_PG) on PostgreSQL.
#include "BenchEngines.h"
#include "BenchShop.h"

#include "form/frm_Commissioni.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include <functional>

namespace {

using namespace xv;

QLineEdit* field(form::frm_Commissioni& form, const char* name)
{
    return form.findChild<QLineEdit*>(QString::fromLatin1(name));
}

void openByNumber(form::frm_Commissioni& form, const QString& number)
{
    QLineEdit* box = field(form, "txt_numeroCommissione");
    box->setText(number);
    QTest::keyClick(box, Qt::Key_Return);
    QApplication::processEvents();
}

// The form open on the shop's order, in browse mode or, with changing set, opened for changes.
void withTheOrderOpen(benchmark::State& state, data::Engine engine, bool duplicateCheck, bool changing,
                      const std::function<void(form::frm_Commissioni&, bench::BenchShop&)>& measure)
{
    bench::BenchShop shop(engine);
    if (!shop.ready()) {
        state.SkipWithError(shop.failure().toUtf8().constData());
        return;
    }
    shop.host().SaveSetting(QStringLiteral("comm"), QStringLiteral("checkAddRigaFlex"),
                            duplicateCheck ? QStringLiteral("1") : QStringLiteral("0"),
                            QStringLiteral("DOCS"));
    {
        form::frm_Commissioni form;
        form.resize(1366, 768);
        form.show();
        form.InitForm(0);
        openByNumber(form, shop.number());
        if (changing) {
            QTest::keyClick(field(form, "txt_numeroCommissione"), Qt::Key_F3);
            field(form, "txt_dataRitiro")->setText(QStringLiteral("20/05/2026"));
            QApplication::processEvents();
        }
        if (form.LineCount() != bench::BenchShop::kLines)
            state.SkipWithError("the order did not open");
        else
            measure(form, shop);
        if (shop.boxes() > 0)
            state.SkipWithError("a message box appeared");
    }
}

void openAThousandLineOrderByNumber(benchmark::State& state, data::Engine engine)
{
    withTheOrderOpen(
        state, engine, false, false, [&state](form::frm_Commissioni& form, bench::BenchShop& shop) {
            for (auto _ : state)
                openByNumber(form, shop.number());
            if (form.LineCount() != bench::BenchShop::kLines || field(form, "txt_ragsoc")->text().isEmpty())
                state.SkipWithError("the order was not shown");
        });
}

void addALineToAThousandLineOrder(benchmark::State& state, data::Engine engine)
{
    withTheOrderOpen(state, engine, false, true, [&state](form::frm_Commissioni& form, bench::BenchShop&) {
        QAction* add = form.tbComandiRighe().byKey(QStringLiteral("ADD"));
        const int before = static_cast<int>(form.LineCount());
        for (auto _ : state) {
            field(form, "txt_codice")->setText(QStringLiteral("NUOVO1"));
            form.Informazioni_MED();
            field(form, "txt_qta")->setText(QStringLiteral("12"));
            add->trigger();
            QApplication::processEvents();
        }
        if (form.LineCount() != before + static_cast<qint64>(state.iterations()))
            state.SkipWithError("not every line was added");
        state.counters["lines"] = static_cast<double>(form.LineCount());
    });
}

void changeAQuantityInAThousandLineOrder(benchmark::State& state, data::Engine engine)
{
    withTheOrderOpen(state, engine, true, true, [&state](form::frm_Commissioni& form, bench::BenchShop&) {
        lines::FlexGrid* grid = form.grid();
        QAction* edit = form.tbComandiRighe().byKey(QStringLiteral("EDIT"));
        // The first line of its article, so that the duplicate check replaces this very line.
        const int row = lines::FirstDataRow + 50;
        grid->scrollTo(grid->model()->index(row, lines::Col_qta), QAbstractItemView::PositionAtCenter);
        bool seven = true;
        for (auto _ : state) {
            const QRect cell = grid->visualRect(grid->model()->index(row, lines::Col_qta));
            QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
            field(form, "txt_qta")->setText(seven ? QStringLiteral("7") : QStringLiteral("8"));
            edit->trigger();
            QApplication::processEvents();
            seven = !seven;
        }
        if (form.LineCount() != bench::BenchShop::kLines ||
            grid->textMatrix(row, lines::Col_qta) != (seven ? QStringLiteral("8") : QStringLiteral("7")))
            state.SkipWithError("the line was not changed in place");
    });
}

[[maybe_unused]] const bool registered = [] {
    bench::registerOnEngines("openAThousandLineOrderByNumber", openAThousandLineOrderByNumber,
                             [](auto* b) { b->Iterations(50); });
    bench::registerOnEngines("addALineToAThousandLineOrder", addALineToAThousandLineOrder,
                             [](auto* b) { b->Iterations(100); });
    bench::registerOnEngines("changeAQuantityInAThousandLineOrder", changeAQuantityInAThousandLineOrder,
                             [](auto* b) { b->Iterations(100); });
    return true;
}();

} // namespace
