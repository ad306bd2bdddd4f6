// SPDX-License-Identifier: MIT
// The change of state of 500 orders at once through the real form, offscreen, in the shop BenchShop opens
// (a demo shop named by XV_BENCH_DB or XV_BENCH_PG), on SQLite and (with XV_BENCH_PG) on PostgreSQL: the
// list window answered by script as an operator would: scrolling down its pages until 500 orders show, then
// choosing them all; the question answered Yes. Iterations go one way and back, so the shop keeps its size
// and every iteration moves the newest 500 orders of a state. They start from the state that has more
// orders, since a small shop has fewer than 500 issued ones.
#include "BenchEngines.h"
#include "BenchShop.h"

#include "data/Recordset.h"
#include "form/frm_Commissioni.h"
#include "host/Dialogs.h"
#include "host/Services.h"
#include "orders/OrderSearch.h"
#include "hostui/ListWindow.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>

namespace {

using namespace xv;

constexpr int kOrders = 500;

int ordersIn(host::Host& h, const QString& state)
{
    return static_cast<int>(h.OpenRecordset(orders::orderChoiceSql("CO", state, {}, kOrders)).recordCount());
}

void changeStateOfFiveHundredOrders(benchmark::State& state, data::Engine engine)
{
    bench::BenchShop shop(engine);
    if (!shop.ready()) {
        state.SkipWithError(shop.failure().toUtf8().constData());
        return;
    }
    host::setListWindowFactory([] { return std::make_unique<hostui::ListWindow>(); });
    QString first = QStringLiteral("EMESSO");
    QString second = QStringLiteral("RITIRATO");
    if (ordersIn(shop.host(), first) < kOrders)
        std::swap(first, second);
    if (ordersIn(shop.host(), first) < kOrders) {
        state.SkipWithError("the shop has fewer than 500 orders in either state: name a demo shop");
        return;
    }
    int chosen = 0;
    hostui::ListWindows::setHandler([&](const hostui::ListRequest& request, const data::Recordset& shown) {
        // The window asks for a page more each time the operator reaches the end of the list.
        data::Recordset rows = shown;
        for (int count = request.pageSize * 2; request.page && rows.recordCount() < kOrders;
             count += request.pageSize)
            rows = request.page({}, count);
        hostui::ListAnswer answer{true, {}, rows};
        for (int row = 0; row < std::min(kOrders, rows.recordCount()); ++row)
            answer.rows << row;
        chosen = static_cast<int>(answer.rows.size());
        return answer;
    });
    for (int turn = 0; turn < state.max_iterations; ++turn)
        shop.expectMessage(QStringLiteral("Le commissioni selezionate sono state"), host::Answer::Yes);

    {
        form::frm_Commissioni form;
        form.resize(1366, 768);
        form.show();
        form.InitForm(0);
        QApplication::processEvents();

        bool forth = true;
        QElapsedTimer clock;
        for (auto _ : state) {
            clock.start();
            form.Documenti_StampaCControllo(forth ? first : second, forth ? second : first);
            state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
            if (chosen != kOrders) {
                state.SkipWithError("the list did not offer the 500 orders");
                break;
            }
            forth = !forth;
        }
    }
    hostui::ListWindows::setHandler({});
    if (shop.boxes() > 0 || !shop.allExpectedShown())
        state.SkipWithError("unexpected message box");
}

[[maybe_unused]] const bool registered = [] {
    bench::registerOnEngines("changeStateOf500Orders", changeStateOfFiveHundredOrders,
                             [](auto* b) { b->UseManualTime()->Iterations(10); });
    return true;
}();

} // namespace
