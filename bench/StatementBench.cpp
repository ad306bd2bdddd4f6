// SPDX-License-Identifier: MIT
// Printing the statement of a thousand-line order through the real form, offscreen, as the print command
// runs it: the question answered Yes by script, the shop's settings, the paper written as a PDF file and the
// order marked collected; the notice of where the file went answered by script too. On SQLite and (with
// XV_BENCH_PG) on PostgreSQL.
#include "BenchEngines.h"
#include "BenchShop.h"

#include "form/frm_Commissioni.h"
#include "lines/FlexGrid.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

namespace {

using namespace xv;

void printThousandLineStatement(benchmark::State& state, data::Engine engine)
{
    bench::BenchShop shop(engine);
    if (!shop.ready()) {
        state.SkipWithError(shop.failure().toUtf8().constData());
        return;
    }
    QTemporaryDir paper;
    shop.host().SaveSetting(QStringLiteral("STAMPA"), QStringLiteral("Stampante"), QStringLiteral("PDF"),
                            QStringLiteral("eKELA"));
    shop.host().SaveSetting(QStringLiteral("STAMPA"), QStringLiteral("CartellaPDF"), paper.path(),
                            QStringLiteral("eKELA"));
    form::frm_Commissioni form;
    form.resize(1366, 768);
    form.show();
    form.InitForm(0);
    auto* number = form.findChild<QLineEdit*>(QStringLiteral("txt_numeroCommissione"));
    number->setText(shop.number());
    QTest::keyClick(number, Qt::Key_Return);
    if (form.LineCount() != bench::BenchShop::kLines) {
        state.SkipWithError("the shop's order did not open");
        return;
    }

    QString fault;
    QElapsedTimer clock;
    for (auto _ : state) {
        shop.expectMessage(QStringLiteral("Stampare l'estratto della Commissione corrente?"),
                           host::Answer::Yes);
        shop.expectMessage(QStringLiteral("Il documento è stato salvato come PDF"), host::Answer::Ok);
        clock.start();
        const bool printed = form.Documento_StampaRicevutaRitiro();
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        const QStringList files = QDir(paper.path()).entryList({QStringLiteral("*.pdf")}, QDir::Files);
        if ((!printed || files.size() != 1) && fault.isEmpty())
            fault = QStringLiteral("no statement was printed: ") + shop.lastBox();
        state.counters["pdf_kb"] =
            static_cast<double>(QFileInfo(paper.filePath(files.value(0))).size()) / 1024;
        for (const QString& file : files)
            QFile::remove(paper.filePath(file));
    }
    if (fault.isEmpty() && (shop.boxes() > 0 || !shop.allExpectedShown()))
        fault = QStringLiteral("unexpected message box: ") + shop.lastBox();
    if (!fault.isEmpty())
        state.SkipWithError(fault.toUtf8().constData());
}

[[maybe_unused]] const bool registered = [] {
    bench::registerOnEngines("printThousandLineStatement", printThousandLineStatement,
                             [](auto* b) { b->UseManualTime()->Iterations(10); });
    return true;
}();

} // namespace
