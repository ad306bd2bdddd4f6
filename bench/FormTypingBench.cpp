// SPDX-License-Identifier: MIT
// A key typed into a header field of a thousand-line order, through the real form on a real database with
// the shop's colours in its settings: everything that runs between the key and the next frame, on SQLite and
// (with XV_BENCH_PG) on PostgreSQL.
#include "BenchEngines.h"
#include "BenchShop.h"

#include "form/frm_Commissioni.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QLineEdit>
#include <QTest>

namespace {

using namespace xv;

void typeIntoAHeaderFieldOfAThousandLineOrder(benchmark::State& state, data::Engine engine)
{
    bench::BenchShop shop(engine);
    if (!shop.ready()) {
        state.SkipWithError(shop.failure().toUtf8().constData());
        return;
    }
    {
        form::frm_Commissioni form;
        form.resize(1366, 768);
        form.show();
        form.InitForm(0);
        QLineEdit* number = form.findChild<QLineEdit*>(QStringLiteral("txt_numeroCommissione"));
        QTest::keyClicks(number, shop.number());
        QTest::keyClick(number, Qt::Key_Return);
        QTest::keyClick(number, Qt::Key_F3); // modify the order shown: its header fields open
        QLineEdit* persons = form.findChild<QLineEdit*>(QStringLiteral("txt_soggettiEvento"));
        persons->setFocus();
        QApplication::processEvents();
        if (form.LineCount() != bench::BenchShop::kLines || !persons->isEnabled()) {
            state.SkipWithError("the order did not open for changes");
        } else {
            bool adding = true;
            for (auto _ : state) {
                // A letter and its removal in turn, so the field stays the same size throughout.
                QTest::keyClick(persons, adding ? Qt::Key_A : Qt::Key_Backspace);
                adding = !adding;
            }
            state.counters["lines"] = static_cast<double>(form.LineCount());
        }
        if (shop.boxes() > 0)
            state.SkipWithError("a message box appeared");
    }
}
[[maybe_unused]] const bool registered = [] {
    bench::registerOnEngines("typeIntoAHeaderFieldOfAThousandLineOrder",
                             typeIntoAHeaderFieldOfAThousandLineOrder, [](auto* b) { b->Iterations(200); });
    return true;
}();

} // namespace
