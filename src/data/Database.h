// SPDX-License-Identifier: MIT
#pragma once

#include "data/ReusedStatement.h"
#include "data/SqlDialect.h"
#include "data/SqliteRead.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <unordered_map>

namespace xv::data {

// Where the data live: the embedded SQLite file, or a shop's shared PostgreSQL server.
struct ConnectionConfig
{
    Engine engine = Engine::SQLite;
    QString sqlitePath;
    QString host = QStringLiteral("127.0.0.1");
    int port = 5432;
    QString databaseName;
    QString user;
    QString password;
    QString schema; // PostgreSQL only: empty means the server's default search path

    // "sqlite:/path/file.db" or a libpq-style "host=... port=... dbname=... user=... password=...
    // schema=...".
    static ConnectionConfig fromText(const QString& text);
    QString describe() const;
};

// What stops every write, in words the operator can act on: a database that cannot be written (a file on
// a read-only share or with the wrong permissions, a server that takes only reads) or a disk with no room
// left. Empty for any other error. An error the connection raises starts with it when there is one.
QString writeRefusal(const QSqlError& error);

// The one open connection of the program, in the suite's SQL dialect: every text passes through the
// dialect rewrite before it reaches the engine.
class Database
{
public:
    explicit Database(const ConnectionConfig& config);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    Engine engine() const { return m_config.engine; }
    const ConnectionConfig& config() const { return m_config; }
    QSqlDatabase handle() const;

    // Runs a statement written in the suite's dialect; values must already be quoted with sqlEscape.
    QSqlQuery execute(const QString& suiteSql);
    // The whole result of a read in the suite's dialect, as the driver gives it; on SQLite through the
    // engine's own interface.
    ReadRows read(const QString& suiteSql);
    // Runs a statement of our own, native to the engine, with bound placeholders.
    QSqlQuery executeBound(const QString& nativeSql, const QVariantList& values = {});
    int rowsAffected(const QString& suiteSql);

    // As executeBound, for a statement that changes rows and is run again and again with other values (the
    // insert of each line of an order): its text is prepared once in the transaction, not at every run.
    // Answers the row key an insert added (see ReusedStatement::run).
    QVariant executeReused(const QString& nativeSql, const QVariantList& values);
    // Forgets the statements prepared for executeReused, as the end of the outermost transaction does. A
    // connection closed in the middle of a transaction must call it first: the statements belong to the
    // session, and SQLite closes no connection that still has some.
    void dropPreparedStatements();
    // How many times a statement was prepared for executeReused since the connection opened.
    qint64 statementsPrepared() const { return m_statementsPrepared; }

    // Transactions nest: an inner level is a savepoint of the outer one. commit() and rollback() end the
    // innermost level only; rolling back the outermost one is a real ROLLBACK.
    void beginTransaction();
    void commit();
    void rollback();
    bool inTransaction() const { return m_transactionDepth > 0; }
    int transactionDepth() const { return m_transactionDepth; }

    // How a value is handed to the engine for a column of the given type code. A value a date or currency
    // column would keep as foreign text is a type mismatch naming the column.
    QVariant toStorage(const QVariant& value, int typeCode, const QString& column = {}) const;

    // What a failure half-way leaves behind is proved by making one fail: the n-th statement from now on
    // (a commit counts as one) fails as the engine's own errors do. 0 turns it off; it fails once.
    void failStatement(int n);
    // Called each time a connection the server had closed has been opened again, so that what belonged
    // to the old session (a record lock naming it) can be carried over to the new one.
    void setReopenedHandler(std::function<void()> handler) { m_reopened = std::move(handler); }
    // Statements run (commits included) since the connection opened.
    qint64 statementCount() const { return m_statements; }

    // Sees every statement as the engine gets it (native text and bound values) just before it runs, so
    // that the same work can be repeated elsewhere or counted; an empty function turns it off.
    using StatementLog = std::function<void(const QString& nativeSql, const QVariantList& values)>;
    void setStatementLog(StatementLog log) { m_log = std::move(log); }

private:
    void countStatement(const QString& statement);
    // What every session needs before its first statement: on PostgreSQL the search path, the date style,
    // standard strings and the workstation's time zone; on SQLite our functions and pragmas.
    void setUpSession();
    static QString savepointName(int level);
    void setWorkstationTimeZone();
    QVariant storedDate(const QVariant& value, const QString& column) const;
    QVariant storedAmount(const QVariant& value, const QString& column) const;
    QSqlQuery prepareAndRun(const QString& nativeSql, const QVariantList& values);

    ConnectionConfig m_config;
    QString m_connectionName;
    int m_transactionDepth = 0;
    qint64 m_statements = 0;
    qint64 m_failAt = 0;

    // A server that restarts or stops ends the session. The connection is opened again, with its session
    // set up as at the start, before the next transaction or statement outside one; a transaction that was
    // open when it went is never carried on: its statements and its commit fail until it is rolled back.
    void reopenIfLost(const QString& statement);
    void reopen();
    bool serverClosedConnection() const;
    void beginOutermost();
    [[noreturn]] void failOn(const QSqlError& error, const QString& statement);
    QString unreachable(const QString& why) const;
    bool m_connectionLost = false;
    bool m_reopening = false;
    std::function<void()> m_reopened;
    StatementLog m_log;
    std::unordered_map<QString, std::unique_ptr<ReusedStatement>> m_prepared;
    qint64 m_statementsPrepared = 0;
};

// Rolls back unless commit() was called: an early return or an exception never leaves half a write.
// Opened while another is open, it undoes only its own work and leaves the outer one open.
class Transaction
{
public:
    explicit Transaction(Database& db);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

private:
    Database& m_db;
    bool m_done = false;
};

} // namespace xv::data
