// SPDX-License-Identifier: MIT
// The change of state of 500 orders at once through the real form, offscreen, on SQLite: a demo shop of
// three years of orders, the list window answered by script with 500 orders, the question answered Yes.
// Iterations go one way and back ("EMESSO" to "RITIRATO", then back), so the shop keeps its size and
// every iteration moves the same 500 orders.
#include "data/Database.h"
#include "data/Recordset.h"
#include "demo/DemoData.h"
#include "form/frm_Commissioni.h"
#include "host/Dialogs.h"
#include "host/Host.h"
#include "host/Services.h"
#include "hostui/ListWindow.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QSet>
#include <QTemporaryDir>

namespace {

using namespace xv;

constexpr int kOrders = 500;
// A shop of about 12,000 order lines: three years of a busy favour shop.
constexpr int kShopOrders = 3000;

QString orderKey(const data::Recordset& rows)
{
    return data::variantText(rows.value(0)) + QLatin1Char('/') + data::variantText(rows.value(1));
}

void changeStateOfFiveHundredOrders(benchmark::State& state)
{
    QTemporaryDir dir;
    host::HostOptions options;
    options.dataPath = dir.path() + QLatin1Char('/');
    options.connectionText = QStringLiteral("sqlite:") + dir.path() + QStringLiteral("/bench.db");
    options.fillDemoData = false;
    options.startCounters = false; // the demo shop brings its own
    options.userName = QStringLiteral("bench");
    options.stationName = QStringLiteral("BANCO1");
    auto owned = std::make_unique<host::Host>(options);
    if (!owned->Initialize()) {
        state.SkipWithError("the database could not be opened");
        return;
    }
    host::Host& h = *owned;
    host::setHost(std::move(owned));
    host::setFormSettings(
        std::make_unique<host::IniFormSettings>(options.dataPath + QStringLiteral("f.ini")));
    host::setListWindowFactory([] { return std::make_unique<hostui::ListWindow>(); });
    demo::DemoOptions demoOptions;
    demoOptions.orders = kShopOrders;
    demo::fillDemoData(h.GetConnection(), demoOptions);

    // The orders moved: the first 500 issued ones of the list, the same ones every time.
    QSet<QString> moved;
    {
        data::Recordset issued = h.OpenRecordset(
            QStringLiteral("SELECT * FROM Doc_Commissioni_testate WHERE [STATO COMMISSIONE]='EMESSO'"));
        for (issued.moveFirst(); !issued.eof() && moved.size() < kOrders; issued.moveNext())
            moved.insert(orderKey(issued));
    }
    if (moved.size() < kOrders) {
        state.SkipWithError("the demo shop has fewer than 500 issued orders");
        host::resetServices();
        return;
    }
    int chosen = 0;
    hostui::ListWindows::setHandler([&](const hostui::ListRequest&, const data::Recordset& shown) {
        hostui::ListAnswer answer{true, {}, std::nullopt};
        data::Recordset rows = shown;
        for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
            if (moved.contains(orderKey(rows)))
                answer.rows << rows.position();
        }
        chosen = static_cast<int>(answer.rows.size());
        return answer;
    });
    int unexpected = 0;
    host::Dialogs::setMessageHandler([&](const host::MessageRequest& request) {
        if (request.text.startsWith(QLatin1String("Le commissioni selezionate sono state")))
            return host::Answer::Yes;
        ++unexpected;
        return host::Answer::No;
    });

    {
        form::frm_Commissioni form;
        form.resize(1366, 768);
        form.show();
        form.InitForm(0);
        QApplication::processEvents();

        bool forth = true;
        QElapsedTimer clock;
        for (auto _ : state) {
            const QString from = forth ? QStringLiteral("EMESSO") : QStringLiteral("RITIRATO");
            const QString to = forth ? QStringLiteral("RITIRATO") : QStringLiteral("EMESSO");
            clock.start();
            form.Documenti_StampaCControllo(from, to);
            state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
            if (chosen != kOrders) {
                state.SkipWithError("the list did not offer the 500 orders");
                break;
            }
            forth = !forth;
        }
    }
    if (unexpected > 0)
        state.SkipWithError("unexpected message box");
    const QString rows =
        data::variantText(h.OpenRecordset(QStringLiteral("select count(*) from movimenti")).value(0));
    state.counters["shop_rows"] = rows.toDouble();
    hostui::ListWindows::setHandler({});
    host::Dialogs::setMessageHandler({});
    host::resetServices();
}

[[maybe_unused]] const bool registered = [] {
    benchmark::RegisterBenchmark("changeStateOf500Orders/sqlite", changeStateOfFiveHundredOrders)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(20);
    return true;
}();

} // namespace
