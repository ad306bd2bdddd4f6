// SPDX-License-Identifier: MIT
// The search window ("Trova Commissioni") through the real form, offscreen, as the operator uses it: the
// FIND button opens the window, keys typed into its filter box narrow the list (a part of a customer's
// name, a ceremony, an order number, and the backspaces between them), and Enter opens the chosen order.
// Each is timed until the rows are in the list. Beside them the engine's own C API (sqlite3, libpq) runs
// the same SQL texts and reads every value of every row: raw_ms, and ratio = program / raw.
#include "BenchShop.h"

#include "data/Database.h"
#include "data/SqlDialect.h"
#include "form/frm_Commissioni.h"
#include "host/Services.h"
#include "hostui/ListWindow.h"
#include "orders/OrderSearch.h"

#include <benchmark/benchmark.h>
#include <libpq-fe.h>
#include <sqlite3.h>

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>
#include <stdexcept>

namespace {

using namespace xv;

// Runs an SQL text of the engine and reads every value of every row as text; answers the rows read.
class RawReader
{
public:
    virtual ~RawReader() = default;
    virtual int read(const QByteArray& sql) = 0;
};

class SqliteReader final : public RawReader
{
public:
    explicit SqliteReader(const QString& path)
    {
        if (sqlite3_open_v2(path.toUtf8().constData(), &m_db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK)
            throw std::runtime_error("sqlite3_open_v2 failed");
    }
    ~SqliteReader() override { sqlite3_close(m_db); }

    int read(const QByteArray& sql) override
    {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(m_db, sql.constData(), static_cast<int>(sql.size()), &statement, nullptr) !=
            SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(m_db));
        int rows = 0;
        std::size_t bytes = 0;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (int column = 0; column < sqlite3_column_count(statement); ++column) {
                sqlite3_column_text(statement, column);
                bytes += static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
            }
            ++rows;
        }
        sqlite3_finalize(statement);
        benchmark::DoNotOptimize(bytes);
        return rows;
    }

private:
    sqlite3* m_db = nullptr;
};

class PostgresReader final : public RawReader
{
public:
    explicit PostgresReader(const data::ConnectionConfig& config)
    {
        const QByteArray host = config.host.toUtf8(), port = QByteArray::number(config.port),
                         dbname = config.databaseName.toUtf8(), user = config.user.toUtf8(),
                         password = config.password.toUtf8();
        const QByteArray options = "-c standard_conforming_strings=on" +
                                   (config.schema.isEmpty() ? QByteArray()
                                                            : " -c search_path=" + config.schema.toUtf8());
        const char* keys[] = {"host", "port", "dbname", "user", "password", "options", nullptr};
        const char* values[] = {host.constData(),
                                port.constData(),
                                dbname.constData(),
                                user.isEmpty() ? nullptr : user.constData(),
                                password.isEmpty() ? nullptr : password.constData(),
                                options.constData(),
                                nullptr};
        m_conn = PQconnectdbParams(keys, values, 0);
        if (PQstatus(m_conn) != CONNECTION_OK)
            throw std::runtime_error(PQerrorMessage(m_conn));
    }
    ~PostgresReader() override { PQfinish(m_conn); }

    int read(const QByteArray& sql) override
    {
        PGresult* result = PQexec(m_conn, sql.constData());
        if (PQresultStatus(result) != PGRES_TUPLES_OK) {
            const std::string error = PQerrorMessage(m_conn);
            PQclear(result);
            throw std::runtime_error(error);
        }
        const int rows = PQntuples(result);
        std::size_t bytes = 0;
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < PQnfields(result); ++column) {
                PQgetvalue(result, row, column);
                bytes += static_cast<std::size_t>(PQgetlength(result, row, column));
            }
        }
        PQclear(result);
        benchmark::DoNotOptimize(bytes);
        return rows;
    }

private:
    PGconn* m_conn = nullptr;
};

std::unique_ptr<RawReader> openRaw(const data::ConnectionConfig& config)
{
    if (config.engine == data::Engine::SQLite)
        return std::make_unique<SqliteReader>(config.sqlitePath);
    return std::make_unique<PostgresReader>(config);
}

enum class Operation { Open, Type };

// What the operator types, one key per iteration: a part of a name, its undoing, a ceremony, an order
// number (the benchmark's own order). A backspace that empties the box brings back the unfiltered list,
// which asks nothing.
QString keysTyped(const QString& number)
{
    return QStringLiteral("rossi\b\b\b\b\bmatrim\b\b\b\b\b\b") + number + QString(number.size(), QLatin1Char('\b'));
}

double seconds(const QElapsedTimer& clock)
{
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

hostui::ListDialog* openDialog()
{
    return qobject_cast<hostui::ListDialog*>(QApplication::activeModalWidget());
}

void waitForRows(hostui::ListDialog& dialog)
{
    while (dialog.searchPending())
        QApplication::processEvents(QEventLoop::AllEvents);
}

void measure(benchmark::State& state, data::Engine engine, Operation operation)
{
    bench::BenchShop shop(engine);
    if (!shop.ready()) {
        state.SkipWithError(shop.failure().toStdString().c_str());
        return;
    }
    host::setListWindowFactory([] { return std::make_unique<hostui::ListWindow>(); });
    std::unique_ptr<RawReader> raw;
    try {
        raw = openRaw(shop.host().GetConnection().config());
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
        return;
    }
    const auto rawSql = [engine](const QString& text) {
        return data::rewriteSql(orders::orderSearchSql("CO", text, hostui::ListWindow::kSearchLimit), engine)
            .toUtf8();
    };

    form::frm_Commissioni form;
    form.resize(1366, 768);
    form.show();
    form.InitForm(0);
    QApplication::processEvents();
    auto* find = form.findChild<QAction*>(QStringLiteral("act_FIND"));
    if (!find) {
        state.SkipWithError("no FIND button");
        return;
    }

    double program = 0;
    double rawTotal = 0;
    int shownRows = 0;
    QString chosenNumber;
    QString error;
    // The window is modal: what happens inside it runs from its own event loop.
    // Events may be processed while the window's rows are read, before it is shown: it is waited for.
    std::function<void(std::function<void(hostui::ListDialog&)>, int)> inWindow =
        [&](std::function<void(hostui::ListDialog&)> work, int tries) {
            QTimer::singleShot(tries == 0 ? 0 : 1, &form, [&, work, tries] {
                hostui::ListDialog* dialog = openDialog();
                if (dialog && dialog->isVisible())
                    work(*dialog);
                else if (tries < 10000)
                    inWindow(work, tries + 1);
                else
                    error = QStringLiteral("the search window did not open");
            });
        };

    if (operation == Operation::Open) {
        for (auto _ : state) {
            QElapsedTimer clock;
            double took = 0;
            inWindow([&](hostui::ListDialog& dialog) {
                QApplication::processEvents();
                took = seconds(clock);
                shownRows = dialog.visibleRowCount();
                dialog.reject();
            }, 0);
            clock.start();
            find->trigger();
            QElapsedTimer rawClock;
            rawClock.start();
            raw->read(rawSql({}));
            rawTotal += seconds(rawClock);
            state.SetIterationTime(took);
            program += took;
            if (!error.isEmpty())
                break;
        }
    } else {
        inWindow([&](hostui::ListDialog& dialog) {
            const QString keys = keysTyped(shop.number());
            int key = 0;
            for (auto _ : state) {
                const QChar typed = keys.at(key++ % keys.size());
                QElapsedTimer clock;
                clock.start();
                if (typed == QLatin1Char('\b'))
                    QTest::keyClick(dialog.filterEdit(), Qt::Key_Backspace);
                else
                    QTest::keyClick(dialog.filterEdit(), typed.toLatin1());
                waitForRows(dialog);
                const double took = seconds(clock);
                state.SetIterationTime(took);
                program += took;
                const QString text = dialog.filterEdit()->text().trimmed();
                if (!text.isEmpty()) {
                    QElapsedTimer rawClock;
                    rawClock.start();
                    raw->read(rawSql(text));
                    rawTotal += seconds(rawClock);
                }
            }
            // The order whose number is typed is the one Enter opens.
            dialog.filterEdit()->setText(shop.number());
            waitForRows(dialog);
            shownRows = dialog.visibleRowCount();
            if (shownRows > 0)
                chosenNumber = dialog.cellText(dialog.rowAt(0), orders::Search_numero);
            QTest::keyClick(dialog.filterEdit(), Qt::Key_Return);
            if (dialog.isVisible()) {
                error = QStringLiteral("Enter did not choose a row");
                dialog.reject();
            }
        }, 0);
        find->trigger();
        if (!chosenNumber.isEmpty() && form.order().numero != chosenNumber)
            error = QStringLiteral("Enter did not open the chosen order");
    }
    if (!error.isEmpty())
        state.SkipWithError(error.toStdString().c_str());
    else if (shop.boxes() > 0)
        state.SkipWithError(("unexpected message box: " + shop.lastBox()).toStdString().c_str());
    state.counters["raw_ms"] = benchmark::Counter(rawTotal * 1000, benchmark::Counter::kAvgIterations);
    state.counters["ratio"] = rawTotal > 0 ? program / rawTotal : 0;
    state.counters["rows_shown"] = shownRows;
}

[[maybe_unused]] const bool registered = [] {
    for (const auto engine : {data::Engine::SQLite, data::Engine::PostgreSQL}) {
        if (engine == data::Engine::PostgreSQL && qEnvironmentVariableIsEmpty("XV_BENCH_PG"))
            continue;
        const std::string suffix = engine == data::Engine::SQLite ? "/sqlite" : "/postgresql";
        for (const auto& [name, operation] :
             {std::pair{"openSearchWindow", Operation::Open}, std::pair{"typeIntoSearchFilter", Operation::Type}}) {
            benchmark::RegisterBenchmark((name + suffix).c_str(), measure, engine, operation)
                ->Unit(benchmark::kMillisecond)
                ->UseManualTime()
                ->Iterations(operation == Operation::Open ? 20 : 40);
        }
    }
    return true;
}();

} // namespace
