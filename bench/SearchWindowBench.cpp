// SPDX-License-Identifier: MIT
// The search window ("Trova Commissioni") through the real form, offscreen, as the operator uses it: the
// FIND button opens the window (timed until its rows are in the list), keys typed into its filter box narrow
// the list, and Enter opens the chosen order. A key is timed until the database has answered the text and
// the frame that shows the letter and the rows found has been painted. Three kinds of text are typed, one
// benchmark each, letter by letter and then taken back with Backspace: common texts (a part of a common
// surname, a ceremony, an order number); a rare name, on a handful of orders in the whole shop; and a name
// with accents. The demo shop has neither of the last two, so the benchmark writes three small orders for
// each into its own copy of the shop before it starts. Beside them the engine's own C API (sqlite3, libpq)
// runs the same SQL texts and reads every value of every row: raw_ms, and ratio = program / raw.
#include "BenchShop.h"
#include "FrameWatch.h"

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

enum class Operation { Open, Type, TypeRare, TypeAccented };

// The names the shop's demo customers never have, each written on this many orders of the copy.
const QString kRareCustomer = QStringLiteral("Quagliarella Ottavio");
const QString kAccentedCustomer = QStringLiteral("\u00C8rcoli Nicol\u00F2");
constexpr int kNamedOrders = 3;

// A text typed letter by letter and then taken back.
QString typedAndTakenBack(const QString& text)
{
    return text + QString(text.size(), QLatin1Char('\b'));
}

// What the operator types, one key per iteration. Common texts: a part of a name, its undoing, a ceremony, an
// order number (the benchmark's own order). A backspace that empties the box brings back the unfiltered list,
// which asks nothing.
QString keysTyped(Operation operation, const QString& number)
{
    switch (operation) {
    case Operation::TypeRare:
        return typedAndTakenBack(QStringLiteral("quagliar"));
    case Operation::TypeAccented:
        return typedAndTakenBack(QStringLiteral("nicol\u00F2"));
    default:
        return typedAndTakenBack(QStringLiteral("rossi")) + typedAndTakenBack(QStringLiteral("matrim")) +
               typedAndTakenBack(number);
    }
}

// The longest text of those typed: the rows it finds are counted.
QString wholeText(Operation operation, const QString& keys)
{
    return operation == Operation::Type ? QString() : keys.left(keys.indexOf(QLatin1Char('\b')));
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
    // Customers of years ago, whose orders are far down the list.
    shop.writeCustomerOrders(kRareCustomer, kNamedOrders);
    shop.writeCustomerOrders(kAccentedCustomer, kNamedOrders);
    std::unique_ptr<RawReader> raw;
    try {
        raw = openRaw(shop.host().GetConnection().config());
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
        return;
    }
    // The statements the window runs for a text: on SQLite, first the count that chooses the way to seek
    // it (a text of three letters or more, not a number), then the search that way. The way is taken from
    // the program's answer before the clock starts; the count itself is run and timed.
    const auto rawStatements = [engine, &shop](const QString& text) {
        QList<QByteArray> statements;
        if (engine == data::Engine::SQLite && orders::nameIndexCanServe(text))
            statements << orders::nameIndexCountSql(text, orders::kFewNameRows).toUtf8();
        const orders::NameLookup lookup = orders::nameLookupFor(shop.host().GetConnection(), text);
        statements << data::rewriteSql(
                          orders::orderSearchSql("CO", text, hostui::ListWindow::kSearchLimit, lookup),
                          engine)
                          .toUtf8();
        return statements;
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
    int foundRows = -1;
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
            for (const QByteArray& statement : rawStatements({}))
                raw->read(statement);
            rawTotal += seconds(rawClock);
            state.SetIterationTime(took);
            program += took;
            if (!error.isEmpty())
                break;
        }
    } else {
        inWindow(
            [&](hostui::ListDialog& dialog) {
                const QString keys = keysTyped(operation, shop.number());
                const QString whole = wholeText(operation, keys);
                bench::FrameWatch frame(dialog.filterEdit());
                int key = 0;
                for (auto _ : state) {
                    const QChar typed = keys.at(key++ % keys.size());
                    frame.settle();
                    QElapsedTimer clock;
                    clock.start();
                    if (typed == QLatin1Char('\b'))
                        QTest::keyClick(dialog.filterEdit(), Qt::Key_Backspace);
                    else // a letter with its text, accented ones too, as a keyboard sends it
                        QTest::sendKeyEvent(QTest::Click, dialog.filterEdit(),
                                            Qt::Key(typed.toUpper().unicode()), QString(typed),
                                            Qt::NoModifier);
                    frame.arm();
                    // The box shows the letter in the first frame; the rows the database finds come after it,
                    // and their repaint is delivered by one more turn of the event loop.
                    waitForRows(dialog);
                    if (!frame.waitForFrame()) {
                        error = QStringLiteral("the window was not painted after the key");
                        state.SkipWithError(error.toStdString().c_str());
                        break;
                    }
                    QApplication::processEvents(QEventLoop::AllEvents);
                    const double took = seconds(clock);
                    if (!whole.isEmpty() && dialog.filterEdit()->text() == whole)
                        foundRows = dialog.visibleRowCount();
                    state.SetIterationTime(took);
                    program += took;
                    const QString text = dialog.filterEdit()->text().trimmed();
                    if (!text.isEmpty()) {
                        const QList<QByteArray> statements = rawStatements(text);
                        QElapsedTimer rawClock;
                        rawClock.start();
                        for (const QByteArray& statement : statements)
                            raw->read(statement);
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
            },
            0);
        find->trigger();
        if (!chosenNumber.isEmpty() && form.order().numero != chosenNumber)
            error = QStringLiteral("Enter did not open the chosen order");
    }
    if (error.isEmpty() && foundRows >= 0 && foundRows < kNamedOrders)
        error =
            QStringLiteral("the search did not find the %1 orders written for the name").arg(kNamedOrders);
    if (state.error_occurred())
        return;
    if (!error.isEmpty())
        state.SkipWithError(error.toStdString().c_str());
    else if (shop.boxes() > 0)
        state.SkipWithError(("unexpected message box: " + shop.lastBox()).toStdString().c_str());
    state.counters["raw_ms"] = benchmark::Counter(rawTotal * 1000, benchmark::Counter::kAvgIterations);
    state.counters["ratio"] = rawTotal > 0 ? program / rawTotal : 0;
    state.counters["rows_shown"] = shownRows;
    if (foundRows >= 0)
        state.counters["rows_found"] = foundRows;
}

[[maybe_unused]] const bool registered = [] {
    for (const auto engine : {data::Engine::SQLite, data::Engine::PostgreSQL}) {
        if (engine == data::Engine::PostgreSQL && qEnvironmentVariableIsEmpty("XV_BENCH_PG"))
            continue;
        const std::string suffix = engine == data::Engine::SQLite ? "/sqlite" : "/postgresql";
        for (const auto& [name, operation] :
             {std::pair{"openSearchWindow", Operation::Open},
              std::pair{"typeIntoSearchFilter", Operation::Type},
              std::pair{"typeARareNameIntoSearchFilter", Operation::TypeRare},
              std::pair{"typeAnAccentedNameIntoSearchFilter", Operation::TypeAccented}}) {
            benchmark::RegisterBenchmark((name + suffix).c_str(), measure, engine, operation)
                ->Unit(benchmark::kMillisecond)
                ->UseManualTime()
                ->Iterations(operation == Operation::Open   ? 20
                             : operation == Operation::Type ? 40
                                                            : 32);
        }
    }
    return true;
}();

} // namespace
