// SPDX-License-Identifier: MIT
#include "Database.h"

#include "common/Dates.h"
#include "common/Money.h"
#include "common/RuntimeError.h"
#include "data/NativeHandle.h"
#include "data/PostgresRead.h"
#include "data/TypeCodes.h"

#include <QAtomicInteger>
#include <QDateTime>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlField>
#include <QSqlRecord>
#include <QTimeZone>

#include <libpq-fe.h>
#include <poll.h>
#include <sqlite3.h>

#include <cstdlib>

Q_LOGGING_CATEGORY(lcDb, "xv.host.db")

namespace xv::data {

using common::ErrorNumber;
using common::RuntimeError;

namespace {

QString nextConnectionName()
{
    static QAtomicInteger<int> counter;
    return QStringLiteral("xv-%1").arg(counter.fetchAndAddRelaxed(1));
}

[[noreturn]] void fail(const QSqlError& error, const QString& statement)
{
    QString text = error.text().trimmed();
    if (const QString refusal = writeRefusal(error); !refusal.isEmpty())
        text = refusal + QLatin1Char('\n') + text;
    throw RuntimeError(ErrorNumber::DatabaseError,
                       statement.isEmpty() ? text : QStringLiteral("%1\n[%2]").arg(text, statement));
}

// A backslash in a quoted value must be an ordinary character, or a name ending in one would end the
// literal. It is asked for when the session starts, not only set afterwards, because the driver decides
// once at connect whether to double backslashes in the values it binds. Options the operator gives in
// PGOPTIONS are kept in front, so this one wins.
QString conformingStringsOption()
{
    QString options = qEnvironmentVariable("PGOPTIONS").trimmed();
    if (!options.isEmpty())
        options += QLatin1Char(' ');
    options += QStringLiteral("-c standard_conforming_strings=on");
    options.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    options.replace(QLatin1Char('\''), QLatin1String("\\'"));
    return QLatin1Char('\'') + options + QLatin1Char('\'');
}

} // namespace

QString writeRefusal(const QSqlError& error)
{
    // SQLite gives its result code as a number, whose low byte is the primary code also for an extended
    // one; PostgreSQL its five-character SQLSTATE. The SQLite driver drops the code of a failed commit,
    // where a full disk shows when the changes are written out: then the engine's own words tell.
    const QString code = error.nativeErrorCode();
    const QString said = error.databaseText();
    bool number = false;
    const int sqlite = code.size() < 5 ? code.toInt(&number) & 0xFF : -1;
    if ((number && sqlite == SQLITE_READONLY) || code == QLatin1String("25006") ||
        (code.isEmpty() && said.contains(QLatin1String("attempt to write a readonly database"))))
        return QStringLiteral("Il database è in sola lettura: impossibile registrare le modifiche. "
                              "Controllare che il file del database e la sua cartella, o la cartella "
                              "condivisa, si possano scrivere e riprovare.");
    if ((number && sqlite == SQLITE_FULL) || code == QLatin1String("53100") ||
        (code.isEmpty() && said.contains(QLatin1String("database or disk is full"))))
        return QStringLiteral("Il disco del database è pieno: impossibile registrare le modifiche. Liberare "
                              "spazio sul disco del database e riprovare.");
    return {};
}

ConnectionConfig ConnectionConfig::fromText(const QString& text)
{
    ConnectionConfig config;
    const QString trimmed = text.trimmed();
    if (trimmed.startsWith(QLatin1String("sqlite:"), Qt::CaseInsensitive)) {
        config.engine = Engine::SQLite;
        config.sqlitePath = trimmed.mid(7);
        return config;
    }
    config.engine = Engine::PostgreSQL;
    const auto words = trimmed.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString& word : words) {
        const qsizetype eq = word.indexOf(QLatin1Char('='));
        if (eq <= 0)
            throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                               QStringLiteral("Connessione non valida: '%1'").arg(word));
        const QString key = word.left(eq).toLower();
        const QString value = word.mid(eq + 1);
        if (key == QLatin1String("host"))
            config.host = value;
        else if (key == QLatin1String("port"))
            config.port = value.toInt();
        else if (key == QLatin1String("dbname"))
            config.databaseName = value;
        else if (key == QLatin1String("user"))
            config.user = value;
        else if (key == QLatin1String("password"))
            config.password = value;
        else if (key == QLatin1String("schema")) {
            // A schema is named in SQL as an identifier, so only a plain identifier is accepted.
            static const QRegularExpression identifier(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]{0,62}$"));
            if (!identifier.match(value).hasMatch())
                throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                                   QStringLiteral("Nome di schema non valido: '%1'").arg(value));
            config.schema = value;
        } else
            throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                               QStringLiteral("Parametro di connessione sconosciuto: '%1'").arg(key));
    }
    if (config.databaseName.isEmpty())
        config.databaseName = config.user.isEmpty() ? QStringLiteral("postgres") : config.user;
    return config;
}

QString ConnectionConfig::describe() const
{
    if (engine == Engine::SQLite)
        return QStringLiteral("SQLite %1").arg(sqlitePath);
    return QStringLiteral("PostgreSQL %1@%2:%3/%4").arg(user, host).arg(port).arg(databaseName);
}

Database::Database(const ConnectionConfig& config) : m_config(config), m_connectionName(nextConnectionName())
{
    QSqlDatabase db = QSqlDatabase::addDatabase(config.engine == Engine::SQLite ? QStringLiteral("QSQLITE")
                                                                                : QStringLiteral("QPSQL"),
                                                m_connectionName);
    if (!db.isValid())
        throw RuntimeError(
            ErrorNumber::DatabaseError,
            QStringLiteral("Driver di database non disponibile per %1").arg(config.describe()));
    if (config.engine == Engine::SQLite) {
        db.setDatabaseName(config.sqlitePath);
        // Several workstations may share one file: wait for a writer instead of failing at once.
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    } else {
        db.setHostName(config.host);
        db.setPort(config.port);
        db.setDatabaseName(config.databaseName);
        db.setUserName(config.user);
        db.setPassword(config.password);
        db.setConnectOptions(QStringLiteral("connect_timeout=10;options=") + conformingStringsOption());
    }
    if (!db.open()) {
        const QSqlError error = db.lastError();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_connectionName);
        throw RuntimeError(
            ErrorNumber::DatabaseError,
            QStringLiteral("Impossibile aprire %1: %2").arg(config.describe(), error.text().trimmed()));
    }
    setUpSession();
    qCDebug(lcDb) << "opened" << config.describe();
}

void Database::setUpSession()
{
    if (m_config.engine == Engine::SQLite) {
        registerSqliteFunctions(handle());
        executeBound(QStringLiteral("PRAGMA foreign_keys=ON"));
        executeBound(QStringLiteral("PRAGMA journal_mode=WAL"));
    } else {
        if (!m_config.schema.isEmpty())
            executeBound(QStringLiteral("SET search_path TO %1").arg(m_config.schema));
        executeBound(QStringLiteral("SET datestyle TO 'ISO, DMY'"));
        executeBound(QStringLiteral("SET standard_conforming_strings = on"));
        setWorkstationTimeZone();
    }
}

// The session reads the times of now() and of date-times handed over with a zone in the workstation's own
// zone, whatever the server or PGTZ say; a zone the server does not know falls back to the present offset.
void Database::setWorkstationTimeZone()
{
    const QString zone = QString::fromUtf8(QTimeZone::systemTimeZoneId());
    if (!zone.isEmpty()) {
        try {
            executeBound(QStringLiteral("select set_config('TimeZone', ?, false)"), {zone});
            return;
        } catch (const RuntimeError& e) {
            qCWarning(lcDb) << "time zone" << zone << "unknown to the server:" << e.description();
        }
    }
    const int offset = QDateTime::currentDateTime().offsetFromUtc();
    const int minutes = std::abs(offset) / 60;
    executeBound(QStringLiteral("SET TIME ZONE INTERVAL '%1%2:%3' HOUR TO MINUTE")
                     .arg(offset < 0 ? QLatin1Char('-') : QLatin1Char('+'))
                     .arg(minutes / 60, 2, 10, QLatin1Char('0'))
                     .arg(minutes % 60, 2, 10, QLatin1Char('0')));
}

Database::~Database()
{
    dropPreparedStatements();
    {
        QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
        if (db.isOpen()) {
            if (m_transactionDepth > 0)
                db.rollback();
            db.close();
        }
    }
    QSqlDatabase::removeDatabase(m_connectionName);
}

QSqlDatabase Database::handle() const
{
    return QSqlDatabase::database(m_connectionName, false);
}

void Database::failStatement(int n)
{
    m_failAt = n > 0 ? m_statements + n : 0;
}

void Database::countStatement(const QString& statement)
{
    ++m_statements;
    if (m_failAt != 0 && m_statements == m_failAt) {
        m_failAt = 0;
        throw RuntimeError(ErrorNumber::DatabaseError,
                           QStringLiteral("Errore provocato per prova\n[%1]").arg(statement));
    }
}

QSqlQuery Database::prepareAndRun(const QString& nativeSql, const QVariantList& values)
{
    countStatement(nativeSql);
    reopenIfLost(nativeSql);
    if (m_log)
        m_log(nativeSql, values);
    QSqlQuery query(handle());
    query.setForwardOnly(true);
    query.setNumericalPrecisionPolicy(QSql::HighPrecision);
    if (values.isEmpty()) {
        if (!query.exec(nativeSql))
            failOn(query.lastError(), nativeSql);
        return query;
    }
    if (!query.prepare(nativeSql))
        failOn(query.lastError(), nativeSql);
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!query.exec())
        failOn(query.lastError(), nativeSql);
    return query;
}

QSqlQuery Database::execute(const QString& suiteSql)
{
    return prepareAndRun(rewriteSql(suiteSql, m_config.engine), {});
}

namespace {

// What a statement run through the driver gave, as a read gives it.
ReadRows rowsOf(QSqlQuery& query)
{
    ReadRows out;
    const QSqlRecord record = query.record();
    const int count = record.count();
    for (int i = 0; i < count; ++i) {
        const QSqlField field = record.field(i);
        out.names << field.name();
        out.types << field.metaType();
    }
    while (query.next()) {
        QVector<QVariant> row(count);
        for (int i = 0; i < count; ++i)
            row[i] = query.value(i);
        out.rows.push_back(std::move(row));
    }
    return out;
}

} // namespace

ReadRows Database::read(const QString& suiteSql)
{
    const QString nativeSql = rewriteSql(suiteSql, m_config.engine);
    countStatement(nativeSql);
    reopenIfLost(nativeSql);
    if (m_log)
        m_log(nativeSql, {});
    ReadRows out;
    QSqlError error;
    const bool read = m_config.engine == Engine::SQLite ? readSqliteRows(handle(), nativeSql, out, error)
                                                        : readPostgresRows(handle(), nativeSql, out, error);
    if (read)
        return out;
    if (error.isValid())
        failOn(error, nativeSql);
    // Another statement's rows are still coming on this connection: the driver discards them first.
    QSqlQuery query(handle());
    query.setForwardOnly(true);
    query.setNumericalPrecisionPolicy(QSql::HighPrecision);
    if (!query.exec(nativeSql))
        failOn(query.lastError(), nativeSql);
    return rowsOf(query);
}

QSqlQuery Database::executeBound(const QString& nativeSql, const QVariantList& values)
{
    return prepareAndRun(nativeSql, values);
}

int Database::rowsAffected(const QString& suiteSql)
{
    return execute(suiteSql).numRowsAffected();
}

// Preparing a statement costs the engine about as much as running it (an insert of sixty columns is parsed
// and planned anew each time), so the statements that repeat over the lines of a write are prepared once in
// its transaction. They go when the transaction ends: a connection lost and opened again between two writes
// then never meets a statement of the session that went, and a statement run outside a transaction is not
// kept at all.
QVariant Database::executeReused(const QString& nativeSql, const QVariantList& values)
{
    countStatement(nativeSql);
    if (m_log)
        m_log(nativeSql, values);
    const auto prepare = [&] {
        QSqlError error;
        std::unique_ptr<ReusedStatement> statement =
            ReusedStatement::prepare(handle(), m_config.engine, nativeSql, error);
        if (!statement)
            failOn(error, nativeSql);
        ++m_statementsPrepared;
        return statement;
    };
    std::unique_ptr<ReusedStatement> once;
    ReusedStatement* statement = nullptr;
    if (!inTransaction()) {
        once = prepare();
        statement = once.get();
    } else if (const auto found = m_prepared.find(nativeSql); found != m_prepared.end()) {
        statement = found->second.get();
    } else {
        statement = m_prepared.emplace(nativeSql, prepare()).first->second.get();
    }
    QVariant key;
    QSqlError error;
    if (!statement->run(values, key, error))
        failOn(error, nativeSql);
    return key;
}

void Database::dropPreparedStatements()
{
    m_prepared.clear();
}

// The outermost level is a real transaction; each inner one is a savepoint, so an inner failure undoes
// only its own work and the caller's transaction stays open to commit or roll back as it decides.
QString Database::savepointName(int level)
{
    return QStringLiteral("xv_livello_%1").arg(level);
}

void Database::beginTransaction()
{
    if (m_transactionDepth == 0) {
        beginOutermost();
    } else {
        executeBound(QStringLiteral("SAVEPOINT ") + savepointName(m_transactionDepth));
    }
    ++m_transactionDepth;
}

void Database::commit()
{
    if (m_transactionDepth == 0)
        throw RuntimeError(ErrorNumber::InvalidProcedureCall, QStringLiteral("Nessuna transazione aperta"));
    countStatement(QStringLiteral("COMMIT"));
    reopenIfLost(QStringLiteral("COMMIT"));
    if (m_transactionDepth == 1) {
        if (!handle().commit())
            failOn(handle().lastError(), QStringLiteral("COMMIT"));
    } else {
        executeBound(QStringLiteral("RELEASE SAVEPOINT ") + savepointName(m_transactionDepth - 1));
    }
    --m_transactionDepth;
    if (m_transactionDepth == 0)
        dropPreparedStatements();
}

void Database::rollback()
{
    if (m_transactionDepth == 0)
        return;
    if (m_transactionDepth > 1 && !m_connectionLost) {
        const QString savepoint = savepointName(m_transactionDepth - 1);
        try {
            executeBound(QStringLiteral("ROLLBACK TO SAVEPOINT ") + savepoint);
            executeBound(QStringLiteral("RELEASE SAVEPOINT ") + savepoint);
            --m_transactionDepth;
            return;
        } catch (const RuntimeError& e) {
            // Whatever the inner level wrote may still be there: the whole transaction goes, and the
            // outer levels find it gone when they try to commit.
            qCWarning(lcDb) << "rollback to savepoint failed, rolling back everything:" << e.description();
        }
    }
    if (m_connectionLost) {
        // The server ended the transaction with the session; each level is left as its guard gives up.
        if (--m_transactionDepth == 0)
            dropPreparedStatements();
        return;
    }
    m_transactionDepth = 0;
    const bool rolledBack = handle().rollback();
    dropPreparedStatements();
    if (!rolledBack)
        failOn(handle().lastError(), QStringLiteral("ROLLBACK"));
}

QVariant Database::toStorage(const QVariant& value, int typeCode, const QString& column) const
{
    if (value.isNull() || !value.isValid())
        return value;
    if (typeCode == TypeCode::Date)
        return storedDate(value, column);
    if (typeCode == TypeCode::Currency)
        return storedAmount(value, column);
    return value;
}

namespace {

// A text already in the form a date column keeps, to the second, is kept as it stands: read into a
// QDateTime in local time it would cost a look-up of the machine's zone for every date of every line, and
// a wall-clock time the local zone skips would be refused.
bool inStoredForm(const QVariant& value)
{
    if (value.metaType().id() != QMetaType::QString)
        return false;
    const QString text = value.toString();
    if (text.size() != 19 || text[4] != u'-' || text[7] != u'-' || text[10] != u' ' || text[13] != u':' ||
        text[16] != u':')
        return false;
    const auto when = common::parseDateAndTime(text);
    return when && common::storedDateTime(when->date, when->time) == text;
}

} // namespace

// A date column takes a date, or the text a date column itself gives back ("2026-11-23 10:30:00"); a
// date as people write it ("23/11/2026") would be kept as a text the engines cannot compare as a date.
QVariant Database::storedDate(const QVariant& value, const QString& column) const
{
    if (inStoredForm(value))
        return value;
    static const QRegularExpression storedForm(
        QStringLiteral("^[0-9]{4}-[0-9]{2}-[0-9]{2}([ T][0-9]{2}:[0-9]{2}(:[0-9]{2}([.][0-9]+)?)?)?$"));
    QDateTime when;
    switch (value.metaType().id()) {
    case QMetaType::QDate:
        when = value.toDate().startOfDay();
        break;
    case QMetaType::QDateTime:
        when = value.toDateTime();
        break;
    case QMetaType::QString:
        if (storedForm.match(value.toString()).hasMatch())
            when = common::parseDateTime(value.toString()).value_or(QDateTime());
        break;
    default:
        break;
    }
    if (!when.isValid())
        throw RuntimeError(ErrorNumber::TypeMismatch,
                           QStringLiteral("Tipo non corrispondente: '%1' non è una data (campo %2)")
                               .arg(value.toString(), column));
    // The wall-clock time as the workstation reads it, to the second, on both engines: a zone-less
    // text is stored as it stands, where a date-time with a zone would be shifted into the session's.
    return when.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

// A currency column takes a number, or plain decimal text with a point as amounts are stored; currency
// text as shown ("12,34 €") would be kept as text on SQLite.
QVariant Database::storedAmount(const QVariant& value, const QString& column) const
{
    switch (value.metaType().id()) {
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return value;
    case QMetaType::QString:
        if (const auto amount = common::Money::tryParseDecimalText(value.toString()))
            return m_config.engine == Engine::SQLite ? QVariant(amount->toDouble())
                                                     : QVariant(amount->toDecimalText());
        break;
    default:
        break;
    }
    throw RuntimeError(ErrorNumber::TypeMismatch,
                       QStringLiteral("Tipo non corrispondente: '%1' non è un importo (campo %2)")
                           .arg(value.toString(), column));
}

// --- The outermost transaction, and a connection the server has closed ---

void Database::beginOutermost()
{
    reopenIfLost(QStringLiteral("BEGIN"));
    if (m_config.engine == Engine::SQLite) {
        // A deferred transaction that reads before it writes may be refused its first write at once, busy
        // timeout or not, when another workstation wrote to the file in between. Taking the write lock at
        // the start makes it wait for the other workstation instead.
        QSqlQuery query(handle());
        if (!query.exec(QStringLiteral("BEGIN IMMEDIATE")))
            failOn(query.lastError(), QStringLiteral("BEGIN IMMEDIATE"));
        return;
    }
    if (!handle().transaction())
        failOn(handle().lastError(), QStringLiteral("BEGIN"));
}

QString Database::unreachable(const QString& why) const
{
    return QStringLiteral("Impossibile raggiungere il database (%1): %2").arg(m_config.describe(), why);
}

bool Database::serverClosedConnection() const
{
    if (m_config.engine != Engine::PostgreSQL)
        return false;
    PGconn* connection = postgresHandle(handle());
    if (!connection)
        return false; // closed by the program, not by the server: it stays closed
    if (PQstatus(connection) == CONNECTION_BAD)
        return true;
    // An idle session is sent nothing unasked but a notice or the server's goodbye before it closes.
    // Reading what is there lets a closed connection show now, before a statement is sent down it.
    pollfd socket{PQsocket(connection), POLLIN, 0};
    for (int read = 0; read < 8 && ::poll(&socket, 1, 0) > 0; ++read) {
        if (!PQconsumeInput(connection))
            break;
    }
    return PQstatus(connection) == CONNECTION_BAD;
}

void Database::reopenIfLost(const QString& statement)
{
    if (m_reopening)
        return; // the session's own set-up: a failure there is the reopening's failure
    if (!m_connectionLost) {
        if (m_transactionDepth > 0 || !serverClosedConnection())
            return;
        m_connectionLost = true;
    }
    // What a lost transaction had written is gone with it: running its later statements on a new
    // connection would save half of it.
    if (m_transactionDepth > 0)
        throw RuntimeError(ErrorNumber::DatabaseError,
                           unreachable(QStringLiteral("il collegamento con il server si è interrotto durante "
                                                      "l'operazione, che non è stata eseguita.\n[%1]")
                                           .arg(statement)));
    reopen();
}

void Database::reopen()
{
    const QScopedValueRollback reopening(m_reopening, true);
    dropPreparedStatements(); // they belong to the session that has gone
    QSqlDatabase db = handle();
    db.close();
    if (!db.open())
        throw RuntimeError(
            ErrorNumber::DatabaseError,
            unreachable(QStringLiteral("il server non risponde.\n%1").arg(db.lastError().text().trimmed())));
    m_connectionLost = false;
    try {
        setUpSession();
    } catch (...) {
        // A session half set up would read dates or names the wrong way: it is opened again next time.
        m_connectionLost = true;
        throw;
    }
    qCInfo(lcDb) << "reopened" << m_config.describe();
    if (m_reopened) {
        try {
            m_reopened();
        } catch (const std::exception& e) {
            qCWarning(lcDb) << "after reopening:" << e.what();
        }
    }
}

void Database::failOn(const QSqlError& error, const QString& statement)
{
    if (serverClosedConnection()) {
        m_connectionLost = true;
        throw RuntimeError(
            ErrorNumber::DatabaseError,
            unreachable(QStringLiteral("il collegamento con il server si è interrotto.\n%1\n[%2]")
                            .arg(error.text().trimmed(), statement)));
    }
    fail(error, statement);
}

Transaction::Transaction(Database& db) : m_db(db)
{
    m_db.beginTransaction();
}

Transaction::~Transaction()
{
    if (!m_done) {
        try {
            m_db.rollback();
        } catch (const std::exception& e) {
            qCWarning(lcDb) << "rollback failed:" << e.what();
        }
    }
}

void Transaction::commit()
{
    m_db.commit();
    m_done = true;
}

} // namespace xv::data
