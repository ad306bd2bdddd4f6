// SPDX-License-Identifier: MIT
// The article panel shown for a code typed into a line of a new order, through the real form offscreen on
// the shop's own settings, on SQLite and (with XV_BENCH_PG) on PostgreSQL: timed from the Enter key that
// leaves the typed code, through the form's own key handling (the article, its supplier's agent, its last
// delivery and its last sale read, the focus moved on to the quantity), until the window has painted the
// panel. The code itself is typed before the clock starts.
// The codes shown are the two busiest articles of the shop (the most movements, the slowest to look up)
// among those with everything the panel shows: a supplier's delivery, a sale, and a supplier with an agent
// on record. Busier articles without them are passed over: the panel timed is the one the operator reads
// for a busy article the shop reorders, agent and all. The counter busiest_rank says how far down the list
// of the busiest the second code chosen is. A shop of some size is named by XV_BENCH_DB or XV_BENCH_PG
// (xvelario-makedb).
#include "BenchEngines.h"
#include "BenchShop.h"
#include "FrameWatch.h"

#include "common/Dates.h"
#include "data/Recordset.h"
#include "form/frm_Commissioni.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include <utility>

namespace {

using namespace xv;

void showTheArticlePanelForACode(benchmark::State& state, data::Engine engine)
{
    bench::BenchShop shop(engine);
    if (!shop.ready()) {
        state.SkipWithError(shop.failure().toUtf8().constData());
        return;
    }
    form::frm_Commissioni form;
    form.resize(1366, 768);
    form.show();
    form.InitForm(0);
    QTest::keyClick(&form, Qt::Key_F2); // a new order
    QApplication::processEvents();
    QLineEdit* code = form.findChild<QLineEdit*>(QStringLiteral("txt_codice"));
    QLabel* real = form.findChild<QLabel*>(QStringLiteral("lbl_quantita_reale"));
    if (form.ModeTag2() != QLatin1String("S")) {
        state.SkipWithError("no new order");
        return;
    }
    // The header as the checks want it, so that the line's fields open.
    const QString day = common::shortDate(QDate::currentDate().addMonths(2));
    for (const auto& [name, text] :
         {std::pair{"txt_ragsoc", QStringLiteral("Rossi Maria")}, std::pair{"txt_dataEvento", day},
          std::pair{"txt_dataRitiro1", day}, std::pair{"txt_dataRitiro2", day},
          std::pair{"txt_soggettiEvento", QStringLiteral("Marco e Giulia")}})
        form.findChild<QLineEdit*>(QString::fromLatin1(name))->setText(text);
    form.SetTextBoxControparte();
    form.AbilitaRighe();
    if (!code->isEnabled()) {
        state.SkipWithError("the line's fields did not open");
        return;
    }
    QLineEdit* article = form.findChild<QLineEdit*>(QStringLiteral("txt_rowidArticolo"));
    QLineEdit* quantity = form.findChild<QLineEdit*>(QStringLiteral("txt_qta"));
    QString shownBefore;
    bench::WindowFrames window(&form);
    QElapsedTimer clock;
    QString fault;
    // The code typed into the line's code field, then Enter as the operator presses it, until the window
    // has painted what the lookup changed.
    const auto show = [&](const QString& text) {
        code->setFocus(Qt::OtherFocusReason);
        code->clear();
        QTest::keyClicks(code, text);
        bench::FrameWatch::settle();
        clock.start();
        QTest::keyClick(code, Qt::Key_Return);
        const int painted = window.waitUntilPainted();
        const double elapsed = static_cast<double>(clock.nsecsElapsed()) / 1e9;
        if (painted <= 0 && fault.isEmpty())
            fault = QStringLiteral("the window was not painted after Enter on the code");
        // The lookup leaves the article's own number beside the code and the operator on the quantity.
        if ((article->text() == shownBefore || !quantity->hasFocus()) && fault.isEmpty())
            fault = QStringLiteral("Enter on the code did not look it up: ") + text;
        shownBefore = article->text();
        return elapsed;
    };
    // The panel itself, untimed, says whether an article has all it shows: the same settings and queries
    // the timed lookups then run, rather than a second opinion written here.
    const auto complete = [&] {
        return !real->text().isEmpty() && !form.lblInfo(22)->text().isEmpty() &&
               !form.lblInfoArt(0)->text().isEmpty() && !form.lblInfoArt(1)->text().isEmpty();
    };

    constexpr int kCandidates = 50;
    QStringList busiest;
    for (data::Recordset rs = shop.host().OpenRecordset(QStringLiteral(
             "select codice_med, count(*) as n from movimenti group by codice_med order by 2 desc"));
         !rs.eof() && busiest.size() < kCandidates; rs.moveNext())
        busiest << rs.text(QStringLiteral("codice_med"));
    QStringList codes;
    int rank = 0;
    for (int i = 0; i < busiest.size() && codes.size() < 2; ++i) {
        show(busiest.at(i));
        if (complete()) {
            codes << busiest.at(i);
            rank = i + 1;
        }
    }
    fault.clear(); // a busy code the shop's articles lack was refused on the way: it is simply passed over
    if (codes.size() < 2) {
        state.SkipWithError(
            QStringLiteral("fewer than two of the %1 busiest articles have a delivery, a sale "
                           "and a supplier's agent")
                .arg(busiest.size())
                .toUtf8()
                .constData());
        return;
    }

    int turn = 0;
    for (auto _ : state) {
        state.SetIterationTime(show(codes.at(turn++ % 2)));
        if (!fault.isEmpty()) {
            state.SkipWithError(fault.toUtf8().constData());
            return;
        }
    }
    if (!complete())
        state.SkipWithError("the panel was not filled");
    if (shop.boxes() > 0)
        state.SkipWithError("a message box appeared");
    state.counters["busiest_rank"] = rank;
}

[[maybe_unused]] const bool registered = [] {
    bench::registerOnEngines("showTheArticlePanelForACode", showTheArticlePanelForACode,
                             [](auto* b) { b->UseManualTime()->Iterations(200); });
    return true;
}();

} // namespace
