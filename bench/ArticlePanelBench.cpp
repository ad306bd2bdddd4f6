// SPDX-License-Identifier: MIT
// The article panel shown for a code typed into a new order: the article, its supplier's agent, its last
// delivery and its last sale, through the real form offscreen on the shop's own settings, on SQLite and
// (with XV_BENCH_PG) on PostgreSQL. The codes are the two articles with the most movements, the slowest to
// look up; a shop of some size is named by XV_BENCH_DB or XV_BENCH_PG (xvelario-makedb).
#include "BenchEngines.h"
#include "BenchShop.h"

#include "data/Recordset.h"
#include "form/frm_Commissioni.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

namespace {

using namespace xv;

void showTheArticlePanelForACode(benchmark::State& state, data::Engine engine)
{
    bench::BenchShop shop(engine);
    if (!shop.ready()) {
        state.SkipWithError(shop.failure().toUtf8().constData());
        return;
    }
    QStringList codes;
    for (data::Recordset busiest = shop.host().OpenRecordset(QStringLiteral(
             "select codice_med, count(*) as n from movimenti group by codice_med order by 2 desc"));
         !busiest.eof() && codes.size() < 2; busiest.moveNext())
        codes << busiest.text(QStringLiteral("codice_med"));

    form::frm_Commissioni form;
    form.resize(1366, 768);
    form.show();
    form.InitForm(0);
    QTest::keyClick(&form, Qt::Key_F2); // a new order
    QApplication::processEvents();
    QLineEdit* code = form.findChild<QLineEdit*>(QStringLiteral("txt_codice"));
    QLabel* real = form.findChild<QLabel*>(QStringLiteral("lbl_quantita_reale"));
    if (codes.size() < 2 || form.ModeTag2() != QLatin1String("S")) {
        state.SkipWithError("no articles to show, or no new order");
        return;
    }
    int turn = 0;
    for (auto _ : state) {
        code->setText(codes.at(turn++ % 2));
        form.Informazioni_MED();
        QApplication::processEvents();
    }
    if (real->text().isEmpty() || form.lblInfo(22)->text().isEmpty())
        state.SkipWithError("the panel stayed empty");
    if (shop.boxes() > 0)
        state.SkipWithError("a message box appeared");
}

[[maybe_unused]] const bool registered = [] {
    bench::registerOnEngines("showTheArticlePanelForACode", showTheArticlePanelForACode,
                             [](auto* b) { b->Iterations(200); });
    return true;
}();

} // namespace
