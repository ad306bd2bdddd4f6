// SPDX-License-Identifier: MIT
// Saving a new thousand-line order, updating it and deleting it through the real form, offscreen, with the
// shop's settings, on SQLite and (with XV_BENCH_PG) on PostgreSQL. Each is timed as the form runs it: the
// header copied into the lines and the write, with its closing message answered by script (a delete is what
// F4 runs: the question and the write). Beside it, in the same iteration and on the same database, the
// engine's own C API runs the same statements with the same rows: the time shown is the program's, raw_ms
// the engine's, ratio the one over the other.
#include "BenchShop.h"
#include "RawEngine.h"

#include "form/frm_Commissioni.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>

#include <functional>

namespace {

using namespace xv;

enum class Operation { Save, Update, Delete };

QLineEdit* field(form::frm_Commissioni& form, const char* name)
{
    return form.findChild<QLineEdit*>(QString::fromLatin1(name));
}

QVector<QStringList> gridLines(form::frm_Commissioni& form)
{
    const lines::FlexGrid* grid = form.grid();
    QVector<QStringList> lines;
    for (int r = lines::FirstDataRow; r < grid->rows(); ++r) {
        QStringList cells;
        for (int c = 0; c < grid->cols(); ++c)
            cells << grid->textMatrix(r, c);
        lines << cells;
    }
    return lines;
}

// A new order as F2 starts it, with the lines of the shop's order entered into it and its header filled.
void enterNewOrder(form::frm_Commissioni& form, const QVector<QStringList>& lines)
{
    if (form.ModeTag1() != QLatin1String("N"))
        form.NuovoAnnulla(form.tbComandiDocumento().button(1));
    form.NuovoAnnulla(form.tbComandiDocumento().button(1));
    const orders::Order& order = form.order();
    for (QStringList cells : lines) {
        cells[lines::Col_rowid] = QStringLiteral("0");
        cells[lines::Col_numero] = order.numero;
        cells[lines::Col_serie] = order.serie;
        cells[lines::Col_documento] = order.documento;
        form.grid()->addItem(cells);
    }
    field(form, "txt_telefono")->setText(QStringLiteral("0831 123456"));
    field(form, "txt_tipoEvento")->setText(QStringLiteral("Matrimonio"));
    field(form, "txt_soggettiEvento")->setText(QStringLiteral("Marco e Giulia"));
    field(form, "txt_Acconto")->setText(QStringLiteral("100"));
    form.Flex_RicalcolaTotali();
    QApplication::processEvents();
}

double seconds(QElapsedTimer& clock)
{
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

void measure(benchmark::State& state, data::Engine engine, Operation operation)
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
    QLineEdit* number = field(form, "txt_numeroCommissione");
    number->setText(shop.number());
    QTest::keyClick(number, Qt::Key_Return);
    const QVector<QStringList> lines = gridLines(form);
    if (lines.size() != bench::BenchShop::kLines) {
        state.SkipWithError("the shop's order did not open");
        return;
    }

    double program = 0;
    double raw = 0;
    QString fault;
    try {
        std::unique_ptr<bench::RawOrderWriter> engineApi =
            bench::RawOrderWriter::open(shop.host().GetConnection().config());
        QElapsedTimer clock;
        const auto run = [&](const QString& mode) {
            clock.start();
            if (mode != QLatin1String("E"))
                form.Documento_CopiaTestata();
            const bool written = form.SalvaAggiornaElimina(mode);
            const double elapsed = seconds(clock);
            if (!written && fault.isEmpty())
                fault = QStringLiteral("the form did not write: ") + shop.lastBox();
            return elapsed;
        };
        const auto timeRaw = [&](const std::function<void()>& statements) {
            clock.start();
            statements();
            return seconds(clock);
        };
        const auto expectRows = [&](const orders::OrderKey& key, int rows) {
            if (engineApi->countRows(key) != rows && fault.isEmpty())
                fault = QStringLiteral("the order does not have %1 rows").arg(rows);
        };

        // The order the update and the delete work on, saved as the operator saves it and read back.
        orders::OrderKey key;
        qint32 counter = 0;
        if (operation != Operation::Save) {
            enterNewOrder(form, lines);
            shop.expectMessage(QStringLiteral("Salvataggio eseguito correttamente!"), host::Answer::Ok);
            run(QStringLiteral("S"));
            key = form.order().orderKey();
            engineApi->readOrder(key);
            form.Flex_CaricaDocumento(key);
        }

        for (auto _ : state) {
            double time = 0;
            switch (operation) {
            case Operation::Save:
                enterNewOrder(form, lines);
                counter = form.order().idnumeratore;
                shop.expectMessage(QStringLiteral("Salvataggio eseguito correttamente!"), host::Answer::Ok);
                time = run(QStringLiteral("S"));
                key = form.order().orderKey();
                expectRows(key, bench::BenchShop::kLines);
                engineApi->readOrder(key); // each new order has a number of its own
                engineApi->remove(key);
                raw += timeRaw([&] { engineApi->save(counter, key); });
                expectRows(key, bench::BenchShop::kLines);
                engineApi->remove(key); // the shop keeps its size from one iteration to the next
                break;
            case Operation::Update:
                shop.expectMessage(QStringLiteral("Aggiornamento del documento"), host::Answer::Ok);
                time = run(QStringLiteral("A"));
                expectRows(key, bench::BenchShop::kLines);
                form.Flex_CaricaDocumento(key); // as the save reads the order back
                raw += timeRaw([&] { engineApi->update(key); });
                expectRows(key, bench::BenchShop::kLines);
                break;
            case Operation::Delete:
                shop.expectMessage(QStringLiteral("Eliminare il documento"), host::Answer::Yes);
                shop.expectMessage(QStringLiteral("Cancellazione del documento"), host::Answer::Ok);
                time = run(QStringLiteral("E"));
                expectRows(key, 0);
                engineApi->update(key); // the rows back, to delete them again
                raw += timeRaw([&] { engineApi->remove(key); });
                expectRows(key, 0);
                engineApi->update(key);
                form.Flex_CaricaDocumento(key);
                break;
            }
            program += time;
            state.SetIterationTime(time);
        }
        if (operation != Operation::Save)
            engineApi->remove(key);
    } catch (const std::exception& e) {
        fault = QString::fromUtf8(e.what());
    }
    if (fault.isEmpty() && (shop.boxes() > 0 || !shop.allExpectedShown()))
        fault = QStringLiteral("unexpected message box: ") + shop.lastBox();
    if (!fault.isEmpty()) {
        state.SkipWithError(fault.toUtf8().constData());
        return;
    }
    state.counters["raw_ms"] = benchmark::Counter(raw * 1000, benchmark::Counter::kAvgIterations);
    state.counters["ratio"] = raw > 0 ? program / raw : 0;
}

[[maybe_unused]] const bool registered = [] {
    const struct
    {
        const char* name;
        Operation operation;
    } operations[] = {{"saveANewThousandLineOrder", Operation::Save},
                      {"updateAThousandLineOrder", Operation::Update},
                      {"deleteAThousandLineOrder", Operation::Delete}};
    for (const auto engine : {data::Engine::SQLite, data::Engine::PostgreSQL}) {
        // PostgreSQL is measured when a database to copy is named; see the README.
        if (engine == data::Engine::PostgreSQL && qEnvironmentVariableIsEmpty("XV_BENCH_PG"))
            continue;
        for (const auto& op : operations) {
            const std::string name =
                std::string(op.name) + (engine == data::Engine::SQLite ? "/sqlite" : "/postgresql");
            benchmark::RegisterBenchmark(name.c_str(), measure, engine, op.operation)
                ->Unit(benchmark::kMillisecond)
                ->UseManualTime()
                ->Iterations(20);
        }
    }
    return true;
}();

} // namespace
