// SPDX-License-Identifier: MIT
// The article panel shown for a code typed into a new order: the article, its supplier's agent, its last
// delivery and its last sale, through the real form offscreen on the shop's own settings. The codes are
// the two articles with the most movements, the slowest to look up.
// Point XV_BENCH_DB at a database built by xvelario-makedb (for example --rows 1000000) to measure a
// shop of that size; without it a database of some tens of thousands of rows is built here.
#include "data/Database.h"
#include "data/Recordset.h"
#include "data/Schema.h"
#include "demo/DemoData.h"
#include "form/frm_Commissioni.h"
#include "host/Dialogs.h"
#include "host/Host.h"
#include "host/Services.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

using namespace xv;

QString benchDatabase(QTemporaryDir& dir)
{
    QString path = qEnvironmentVariable("XV_BENCH_DB");
    if (!path.isEmpty())
        return path;
    path = dir.path() + QStringLiteral("/panel.db");
    data::ConnectionConfig config;
    config.sqlitePath = path;
    data::Database db(config);
    data::migrate(db);
    demo::DemoOptions options;
    options.orders = 20000;
    demo::fillDemoData(db, options);
    return path;
}

void showTheArticlePanelForACode(benchmark::State& state)
{
    QTemporaryDir dir;
    host::HostOptions options;
    options.dataPath = dir.path() + QLatin1Char('/');
    options.connectionText = QStringLiteral("sqlite:") + benchDatabase(dir);
    options.fillDemoData = false;
    options.startCounters = false;
    options.userName = QStringLiteral("bench");
    options.stationName = QStringLiteral("BANCO1");
    auto owned = std::make_unique<host::Host>(options);
    host::Host& h = *owned;
    if (!h.Initialize()) {
        state.SkipWithError("the database could not be opened");
        return;
    }
    host::setHost(std::move(owned));
    host::setFormSettings(
        std::make_unique<host::IniFormSettings>(options.dataPath + QStringLiteral("finestre.ini")));
    int boxes = 0;
    host::Dialogs::setMessageHandler([&boxes](const host::MessageRequest&) {
        ++boxes;
        return host::Answer::No;
    });
    QStringList codes;
    for (data::Recordset busiest = h.OpenRecordset(QStringLiteral(
             "select codice_med, count(*) as n from movimenti group by codice_med order by 2 desc"));
         !busiest.eof() && codes.size() < 2; busiest.moveNext())
        codes << busiest.text(QStringLiteral("codice_med"));

    {
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
        } else {
            int turn = 0;
            for (auto _ : state) {
                code->setText(codes.at(turn++ % 2));
                form.Informazioni_MED();
                QApplication::processEvents();
            }
            if (real->text().isEmpty() || form.lblInfo(22)->text().isEmpty())
                state.SkipWithError("the panel stayed empty");
            state.counters["movements"] =
                static_cast<double>(h.OpenRecordset(QStringLiteral("select count(*) as n from movimenti"))
                                        .number(QStringLiteral("n")));
        }
        if (boxes > 0)
            state.SkipWithError("a message box appeared");
    }
    host::Dialogs::setMessageHandler({});
    host::resetServices();
}
BENCHMARK(showTheArticlePanelForACode)->Unit(benchmark::kMillisecond)->Iterations(200);

} // namespace
