// SPDX-License-Identifier: MIT
// A key typed into a header field of a thousand-line order, through the real form on a real database with
// the shop's colours in its settings, on SQLite and (with XV_BENCH_PG) on PostgreSQL: timed from the key
// until the paint of the field that shows the letter has been delivered (everything the key runs, then the
// frame).
#include "BenchEngines.h"
#include "BenchShop.h"
#include "FrameWatch.h"

#include "form/frm_Commissioni.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
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
            bench::FrameWatch frame(persons);
            QElapsedTimer clock;
            bool adding = true;
            for (auto _ : state) {
                frame.settle();
                clock.start();
                // A letter and its removal in turn, so the field stays the same size throughout.
                QTest::keyClick(persons, adding ? Qt::Key_A : Qt::Key_Backspace);
                frame.arm();
                if (!frame.waitForFrame()) {
                    state.SkipWithError("the field was not painted after the key");
                    break;
                }
                state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
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
                             typeIntoAHeaderFieldOfAThousandLineOrder,
                             [](auto* b) { b->UseManualTime()->Iterations(200); });
    return true;
}();

} // namespace
