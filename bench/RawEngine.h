// SPDX-License-Identifier: MIT
#pragma once

#include "data/Database.h"
#include "orders/Order.h"

#include <QString>
#include <QVariantList>

#include <memory>
#include <string>

namespace xv::bench {

// The yardstick for the save benchmarks: the statements of a save, an update and a delete of one order run
// straight through the engine's own C API (sqlite3, libpq), on the same database as the program, with the
// rows the program stored, so that the benchmarks can say how far the program is from the engine itself.
// Each write is one transaction; a failure throws std::runtime_error with the engine's text.
class RawOrderWriter
{
public:
    virtual ~RawOrderWriter() = default;

    // A connection of its own to the database the configuration names.
    static std::unique_ptr<RawOrderWriter> open(const data::ConnectionConfig& config);

    // Keeps the order's rows as they are stored (all but their row keys), to write the same values again.
    virtual void readOrder(const orders::OrderKey& key) = 0;
    virtual int countRows(const orders::OrderKey& key) = 0;

    // A new order: the counter advanced, the key looked up, every row inserted through one prepared insert.
    virtual void save(qint32 idnumeratore, const orders::OrderKey& key) = 0;
    // The order's rows deleted by its key and inserted again.
    virtual void update(const orders::OrderKey& key) = 0;
    // The order's rows deleted by its key.
    virtual void remove(const orders::OrderKey& key) = 0;
};

// An order's rows go in as the program writes them: up to this many to one insert, the statement for a full
// batch prepared once.
constexpr int kRowsPerInsert = 100;

// "insert into movimenti (columns) values (...),(...)" for rows rows of columns values each; numbered asks
// for PostgreSQL's $1, $2... instead of "?".
std::string multiRowInsert(const std::string& columns, int columnCount, int rows, bool numbered);

// The yardstick for the reading benchmarks: statements the program ran, captured as the engine got them
// (native text and bound values), run again straight through the engine's C API, every value of every row
// read as text, as a reader of the rows does. Each statement is prepared and run anew, as the program's are.
class RawReader
{
public:
    virtual ~RawReader() = default;
    // A connection of its own to the database the configuration names, set up as the program's session.
    static std::unique_ptr<RawReader> open(const data::ConnectionConfig& config);
    // The number of rows the statement gave; throws std::runtime_error with the engine's text.
    virtual qint64 run(const QString& nativeSql, const QVariantList& values) = 0;
};

// Runs one statement on the PostgreSQL server of the configuration, connected to its maintenance database
// "postgres" (a database cannot be copied or dropped from a connection to itself). Throws on failure.
void runOnPostgresServer(const data::ConnectionConfig& config, const QString& sql);

} // namespace xv::bench
