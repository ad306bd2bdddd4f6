// SPDX-License-Identifier: MIT
// Saving a new thousand-line order, updating it and deleting it through the real form, offscreen, with the
// shop's settings, on SQLite and (with XV_BENCH_PG) on PostgreSQL.
// - Saving and updating are timed from the F3 key to the form ready again: the checks before saving, the
//   check of every text of every line, the question, the header copied into the lines, the write, the
//   closing message, the print question, the order read back and shown, and the paint of the lines that
//   shows it. The boxes are answered by script (Yes, Ok, No to printing) as the operator answers them.
// - Deleting is timed from the F4 key, through the form's own key handling, to the form ready again: the
//   question (answered Yes), the write, the closing message (Ok) and the repaint of whatever the delete
//   changed on screen. The order stays shown after a delete, so the window may have nothing to repaint;
//   repaints counts the window's repaints per delete.
// Beside it, in the same iteration and on the same database, the engine's own C API runs the same write
// statements with the same rows: the time shown is the program's, raw_ms the engine's, ratio the one over
// the other (the yardstick is the write alone, so the ratio of save and update also holds the checks, the
// read back and the paint).
#include "BenchShop.h"
#include "FrameWatch.h"
#include "RawEngine.h"

#include "common/Dates.h"
#include "form/frm_Commissioni.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>

#include <algorithm>
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

// A new order as F2 starts it, with the lines of the shop's order entered into it and its header filled as
// the checks before saving want it.
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
    const QString day = common::shortDate(QDate::currentDate().addMonths(2));
    field(form, "txt_ragsoc")->setText(QStringLiteral("Rossi Maria"));
    field(form, "txt_dataEvento")->setText(day);
    field(form, "txt_dataRitiro1")->setText(day);
    field(form, "txt_telefono")->setText(QStringLiteral("0831 123456"));
    field(form, "txt_tipoEvento")->setText(QStringLiteral("Matrimonio"));
    field(form, "txt_soggettiEvento")->setText(QStringLiteral("Marco e Giulia"));
    field(form, "txt_Acconto")->setText(QStringLiteral("100"));
    form.SetTextBoxControparte(); // as leaving the name field does: the customer becomes the order's
    form.Flex_RicalcolaTotali();
    form.AbilitaRighe();
    form.grid()->setFocus(Qt::OtherFocusReason);
    bench::FrameWatch::settle();
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
    int repaints = 0;
    qint64 programStatements = 0;
    qint64 timedStatements = 0;
    QString fault;
    try {
        std::unique_ptr<bench::RawOrderWriter> engineApi =
            bench::RawOrderWriter::open(shop.host().GetConnection().config());
        QElapsedTimer clock;
        bench::FrameWatch frame(form.grid());
        // F3 as the operator presses it, with the lines in focus, until the lines are painted again.
        const auto pressF3 = [&] {
            frame.settle();
            clock.start();
            QTest::keyClick(form.grid(), Qt::Key_F3);
            frame.arm();
            const bool painted = frame.waitForFrame();
            const double elapsed = seconds(clock);
            if (!painted && fault.isEmpty())
                fault = QStringLiteral("the lines were not painted again after F3");
            // Saved and read back, the order is shown in browse mode with all its lines.
            if ((form.ModeTag1() + form.ModeTag2() != QLatin1String("NM") ||
                 form.LineCount() != bench::BenchShop::kLines) &&
                fault.isEmpty())
                fault = QStringLiteral("F3 did not save and show the order: ") + shop.lastBox();
            return elapsed;
        };
        const auto expectSave = [&](bool isNew) {
            shop.expectMessage(isNew ? QStringLiteral("Salvare la commissione")
                                     : QStringLiteral("Aggiornare la commissione"),
                               host::Answer::Yes);
            shop.expectMessage(isNew ? QStringLiteral("Salvataggio eseguito correttamente!")
                                     : QStringLiteral("Aggiornamento del documento"),
                               host::Answer::Ok);
            shop.expectMessage(QStringLiteral("Stampare il documento"), host::Answer::No);
        };
        // The saved order opened for changes (F3), and a letter added to or taken from a header field, so
        // that the update has something to write.
        bool adding = true;
        const auto startChanges = [&] {
            form.grid()->setFocus(Qt::OtherFocusReason);
            QTest::keyClick(form.grid(), Qt::Key_F3);
            QLineEdit* persons = field(form, "txt_soggettiEvento");
            if (form.ModeTag2() != QLatin1String("A") || !persons->isEnabled()) {
                if (fault.isEmpty())
                    fault = QStringLiteral("F3 did not open the order for changes");
                return;
            }
            persons->setFocus(Qt::OtherFocusReason);
            persons->end(false);
            QTest::keyClick(persons, adding ? Qt::Key_A : Qt::Key_Backspace);
            adding = !adding;
            form.grid()->setFocus(Qt::OtherFocusReason);
        };
        // F4 as the operator presses it, with the lines in focus, until the window has painted what the
        // delete changed. The order stays on screen after a delete, so there may be nothing to paint.
        bench::WindowFrames window(&form);
        const auto pressF4 = [&] {
            form.grid()->setFocus(Qt::OtherFocusReason);
            frame.settle();
            clock.start();
            QTest::keyClick(form.grid(), Qt::Key_F4);
            const int painted = window.waitUntilPainted();
            const double elapsed = seconds(clock);
            if (painted < 0 && fault.isEmpty())
                fault = QStringLiteral("the window was still repainting long after F4");
            repaints += std::max(painted, 0);
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
            expectSave(true);
            pressF3();
            key = form.order().orderKey();
            engineApi->readOrder(key);
        }

        for (auto _ : state) {
            if (!fault.isEmpty()) {
                state.SkipWithError(fault.toUtf8().constData());
                break;
            }
            double time = 0;
            // A key pressed, with the program's own statements until the form is ready again counted (the
            // raw engine has a connection of its own).
            const auto counted = [&](const std::function<double()>& press) {
                const qint64 before = shop.host().GetConnection().statementCount();
                const double took = press();
                timedStatements = shop.host().GetConnection().statementCount() - before;
                return took;
            };
            switch (operation) {
            case Operation::Save:
                enterNewOrder(form, lines);
                counter = form.order().idnumeratore;
                expectSave(true);
                time = counted(pressF3);
                key = form.order().orderKey();
                expectRows(key, bench::BenchShop::kLines);
                engineApi->readOrder(key); // each new order has a number of its own
                engineApi->remove(key);
                raw += timeRaw([&] { engineApi->save(counter, key); });
                expectRows(key, bench::BenchShop::kLines);
                engineApi->remove(key); // the shop keeps its size from one iteration to the next
                break;
            case Operation::Update:
                startChanges();
                expectSave(false);
                time = counted(pressF3);
                expectRows(key, bench::BenchShop::kLines);
                raw += timeRaw([&] { engineApi->update(key); });
                expectRows(key, bench::BenchShop::kLines);
                form.Flex_CaricaDocumento(key); // the rows the raw update wrote, as the next F3 finds them
                break;
            case Operation::Delete:
                shop.expectMessage(QStringLiteral("Eliminare il documento"), host::Answer::Yes);
                shop.expectMessage(QStringLiteral("Cancellazione del documento"), host::Answer::Ok);
                time = counted(pressF4);
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
            programStatements += timedStatements;
        }
        if (operation != Operation::Save)
            engineApi->remove(key);
    } catch (const std::exception& e) {
        fault = QString::fromUtf8(e.what());
    }
    if (fault.isEmpty() && (shop.boxes() > 0 || !shop.allExpectedShown()))
        fault = QStringLiteral("unexpected message box: ") + shop.lastBox();
    if (state.error_occurred())
        return;
    if (!fault.isEmpty()) {
        state.SkipWithError(fault.toUtf8().constData());
        return;
    }
    state.counters["raw_ms"] = benchmark::Counter(raw * 1000, benchmark::Counter::kAvgIterations);
    state.counters["ratio"] = raw > 0 ? program / raw : 0;
    state.counters["statements"] =
        benchmark::Counter(static_cast<double>(programStatements), benchmark::Counter::kAvgIterations);
    if (operation == Operation::Delete)
        state.counters["repaints"] = benchmark::Counter(repaints, benchmark::Counter::kAvgIterations);
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
