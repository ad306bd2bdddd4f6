// SPDX-License-Identifier: MIT
// The change of state of 500 orders at once through the real form and the real list window, offscreen, in
// the shop BenchShop opens (a demo shop named by XV_BENCH_DB or XV_BENCH_PG), on SQLite and (with
// XV_BENCH_PG) on PostgreSQL. Timed from the menu entry ("Tutte le Commssioni Emesse da Ritirare" and back)
// until the update is written and the window has closed: the list window opened on its first page and
// painted, the operator's keys in it (Shift+PageDown, page after page, the list reading its next pages from
// the database as the end is reached, until the 500th order is chosen; then Enter), the question answered Yes
// by script, and the update of those orders' lines. The form itself shows nothing new afterwards, so no frame
// of it is waited for. Iterations go one way and back, so the shop keeps its size and every iteration moves
// the newest 500 orders of a state. They start from the state that has more orders, since a small shop has
// fewer than 500 issued ones.
// The yardstick (raw_ms) is the update alone: after each iteration the same statement for the same orders,
// taking them back, runs straight through the engine's C API, and the orders are then moved forth again
// untimed. reads_ms is the window's reads: every read the program ran in the iteration (its pages), captured
// as the engine got it and run again through the C API. What is left of the time is the window's own work.
#include "BenchEngines.h"
#include "BenchShop.h"
#include "RawEngine.h"

#include "data/Recordset.h"
#include "form/frm_Commissioni.h"
#include "host/Dialogs.h"
#include "host/Services.h"
#include "hostui/ListWindow.h"
#include "orders/OrderSearch.h"
#include "orders/OrderSelections.h"

#include <benchmark/benchmark.h>

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QMenu>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <functional>
#include <vector>

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
    for (int turn = 0; turn < state.max_iterations; ++turn)
        shop.expectMessage(QStringLiteral("Le commissioni selezionate sono state"), host::Answer::Yes);

    QString fault;
    double rawTotal = 0;
    double readsTotal = 0;
    int readCount = 0;
    {
        form::frm_Commissioni form;
        form.resize(1366, 768);
        form.show();
        form.InitForm(0);
        QApplication::processEvents();
        // The entries of the FIND button's menu, as the operator picks them.
        const auto entry = [&](const QString& key) -> QAction* {
            auto* find = form.findChild<QAction*>(QStringLiteral("act_FIND"));
            if (!find || !find->menu())
                return nullptr;
            for (QAction* action : find->menu()->actions()) {
                if (action->property("key").toString() == key)
                    return action;
            }
            return nullptr;
        };
        QAction* toCollected = entry(QStringLiteral("CO_RITIRATO"));
        QAction* toIssued = entry(QStringLiteral("CO_EMESSO"));
        if (!toCollected || !toIssued) {
            state.SkipWithError("the FIND menu has no change of state");
            return;
        }

        int chosen = 0;
        // The window is modal: the operator's keys are sent from inside its own event loop, once it shows.
        std::function<void(int)> operate = [&](int tries) {
            QTimer::singleShot(tries == 0 ? 0 : 1, &form, [&, tries] {
                auto* dialog = qobject_cast<hostui::ListDialog*>(QApplication::activeModalWidget());
                if (!dialog || !dialog->isVisible()) {
                    if (tries < 10000)
                        operate(tries + 1);
                    else
                        fault = QStringLiteral("the list window did not open");
                    return;
                }
                QTableView* view = dialog->tableView();
                view->setFocus(Qt::OtherFocusReason);
                QApplication::processEvents();
                // Page after page down the list, the choice growing with the highlight; the list asks the
                // database for more each time its end comes into view.
                for (int presses = 0; view->currentIndex().row() < kOrders - 1 && presses < 1000; ++presses) {
                    QTest::keyClick(view, Qt::Key_PageDown, Qt::ShiftModifier);
                    QApplication::processEvents();
                }
                while (view->currentIndex().row() > kOrders - 1) {
                    QTest::keyClick(view, Qt::Key_Up, Qt::ShiftModifier);
                    QApplication::processEvents();
                }
                chosen = static_cast<int>(dialog->chosenRows().size());
                if (chosen != kOrders) {
                    dialog->reject();
                    return;
                }
                QTest::keyClick(view, Qt::Key_Return);
                if (dialog->isVisible()) {
                    fault = QStringLiteral("Enter did not choose the orders");
                    dialog->reject();
                }
            });
        };

        std::unique_ptr<bench::RawReader> raw;
        try {
            raw = bench::RawReader::open(shop.host().GetConnection().config());
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
            return;
        }
        const auto rawUpdate = [&](const QString& from, const QString& to,
                                   const orders::ChosenOrders& orders) {
            raw->run(
                data::rewriteSql(orders::statusChangeSql(from, to, orders, QStringLiteral("CO")), engine),
                {});
        };
        struct Read
        {
            QString sql;
            QVariantList values;
        };
        std::vector<Read> reads;
        data::Database& db = shop.host().GetConnection();
        bool forth = true;
        QElapsedTimer clock;
        for (auto _ : state) {
            chosen = 0;
            const QString& from = forth ? first : second;
            const QString& to = forth ? second : first;
            // The newest 500 orders in the state: those the operator's keys choose.
            data::Recordset newest =
                shop.host().OpenRecordset(orders::orderChoiceSql("CO", from, {}, kOrders));
            const orders::ChosenOrders moved = orders::chosenOrders(newest);
            QAction* action = from == QLatin1String("EMESSO") ? toCollected : toIssued;
            operate(0);
            reads.clear();
            db.setStatementLog([&reads](const QString& sql, const QVariantList& values) {
                if (sql.trimmed().startsWith(QLatin1String("select"), Qt::CaseInsensitive))
                    reads.push_back({sql, values});
            });
            clock.start();
            action->trigger();
            state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
            db.setStatementLog({});
            if (fault.isEmpty() && chosen != kOrders)
                fault = QStringLiteral("the list did not offer the 500 orders (%1 chosen)").arg(chosen);
            if (fault.isEmpty()) {
                try {
                    QElapsedTimer rawClock;
                    rawClock.start();
                    rawUpdate(to, from, moved);
                    rawTotal += static_cast<double>(rawClock.nsecsElapsed()) / 1e6;
                    rawUpdate(from, to, moved);
                    // Read after the orders moved back and forth: the rows they find are the same.
                    rawClock.start();
                    for (const Read& read : reads)
                        raw->run(read.sql, read.values);
                    readsTotal += static_cast<double>(rawClock.nsecsElapsed()) / 1e6;
                    readCount += static_cast<int>(reads.size());
                } catch (const std::exception& e) {
                    fault = QString::fromUtf8(e.what());
                }
            }
            if (!fault.isEmpty()) {
                state.SkipWithError(fault.toUtf8().constData());
                break;
            }
            forth = !forth;
        }
    }
    if (state.error_occurred())
        return;
    state.counters["raw_ms"] = benchmark::Counter(rawTotal, benchmark::Counter::kAvgIterations);
    state.counters["reads_ms"] = benchmark::Counter(readsTotal, benchmark::Counter::kAvgIterations);
    state.counters["reads"] = benchmark::Counter(readCount, benchmark::Counter::kAvgIterations);
    if (fault.isEmpty() && (shop.boxes() > 0 || !shop.allExpectedShown()))
        fault = QStringLiteral("unexpected message box: ") + shop.lastBox();
    if (!fault.isEmpty())
        state.SkipWithError(fault.toUtf8().constData());
}

[[maybe_unused]] const bool registered = [] {
    bench::registerOnEngines("changeStateOf500Orders", changeStateOfFiveHundredOrders,
                             [](auto* b) { b->UseManualTime()->Iterations(10); });
    return true;
}();

} // namespace
