// SPDX-License-Identifier: MIT
#include "ReusedStatement.h"

#include "NativeHandle.h"

#include <QDateTime>
#include <QLocale>
#include <QSqlDriver>
#include <QSqlQuery>

#include <libpq-fe.h>
#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

namespace xv::data {

namespace {

// The errors read as the driver's own read ("<engine's text> Unable to fetch row"), so that the operator
// and the log see the same text whichever way a statement ran.
QSqlError sqliteError(sqlite3* connection, const QString& what, int code)
{
    return QSqlError(what, QString(reinterpret_cast<const QChar*>(sqlite3_errmsg16(connection))),
                     QSqlError::StatementError, QString::number(code));
}

bool isNullValue(const QVariant& value)
{
    if (!value.isValid() || value.isNull())
        return true;
    switch (value.metaType().id()) {
    case QMetaType::QString:
        return static_cast<const QString*>(value.constData())->isNull();
    case QMetaType::QByteArray:
        return static_cast<const QByteArray*>(value.constData())->isNull();
    default:
        return false;
    }
}

class SqliteStatement final : public ReusedStatement
{
public:
    SqliteStatement(sqlite3* connection, sqlite3_stmt* statement)
        : m_connection(connection), m_statement(statement)
    {
    }
    ~SqliteStatement() override { sqlite3_finalize(m_statement); }
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    bool run(const QVariantList& values, QVariant& key, QSqlError& error) override
    {
        // Every run ends with the statement reset and its values cleared, whatever happened.
        if (sqlite3_bind_parameter_count(m_statement) != values.size()) {
            error =
                QSqlError(QStringLiteral("Parameter count mismatch"), QString(), QSqlError::StatementError);
            return false;
        }
        // The strings stay alive in values until the statement has run and been reset.
        for (int i = 0; i < values.size(); ++i) {
            const int result = bind(i + 1, values[i]);
            if (result != SQLITE_OK) {
                error = sqliteError(m_connection, QStringLiteral("Unable to bind parameters"), result);
                sqlite3_clear_bindings(m_statement);
                m_utf8.clear();
                return false;
            }
        }
        const int result = sqlite3_step(m_statement);
        if (result != SQLITE_DONE && result != SQLITE_ROW) {
            error = sqliteError(m_connection, QStringLiteral("Unable to fetch row"), result);
            sqlite3_reset(m_statement);
            sqlite3_clear_bindings(m_statement);
            m_utf8.clear();
            return false;
        }
        // As the driver answers it: no key when nothing was ever inserted on the connection.
        const qint64 rowid = sqlite3_last_insert_rowid(m_connection);
        key = rowid != 0 ? QVariant(rowid) : QVariant();
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
        m_utf8.clear();
        return true;
    }

private:
    // Each type as Qt's SQLite driver binds it, so that a value is stored the same whichever way it went.
    int bind(int index, const QVariant& value)
    {
        if (isNullValue(value))
            return sqlite3_bind_null(m_statement, index);
        switch (value.metaType().id()) {
        case QMetaType::QByteArray: {
            const auto* bytes = static_cast<const QByteArray*>(value.constData());
            return sqlite3_bind_blob(m_statement, index, bytes->constData(), int(bytes->size()),
                                     SQLITE_STATIC);
        }
        case QMetaType::Bool:
        case QMetaType::Int:
            return sqlite3_bind_int(m_statement, index, value.toInt());
        case QMetaType::Double:
            return sqlite3_bind_double(m_statement, index, value.toDouble());
        case QMetaType::UInt:
        case QMetaType::LongLong:
            return sqlite3_bind_int64(m_statement, index, value.toLongLong());
        case QMetaType::QDateTime:
            return bindText(index, value.toDateTime().toString(Qt::ISODateWithMs));
        case QMetaType::QTime:
            return bindText(index, value.toTime().toString(u"hh:mm:ss.zzz"));
        case QMetaType::QString: {
            const auto* text = static_cast<const QString*>(value.constData());
            // Handed over in the file's own encoding, a text is not converted again by the engine while the
            // statement runs, one character at a time. A text with a surrogate half on its own still goes
            // as UTF-16, so the engine stores it exactly as it always has.
            if (!hasSurrogates(*text)) {
                m_utf8.push_back(text->toUtf8());
                const QByteArray& bytes = m_utf8.back();
                return sqlite3_bind_text(m_statement, index, bytes.constData(), int(bytes.size()), SQLITE_STATIC);
            }
            return sqlite3_bind_text16(m_statement, index, text->utf16(), int(text->size() * sizeof(QChar)),
                                       SQLITE_STATIC);
        }
        default:
            return bindText(index, value.toString());
        }
    }

    int bindText(int index, const QString& text)
    {
        return sqlite3_bind_text16(m_statement, index, text.utf16(), int(text.size() * sizeof(QChar)),
                                   SQLITE_TRANSIENT);
    }

    static bool hasSurrogates(const QString& text)
    {
        return std::any_of(text.begin(), text.end(), [](QChar c) { return c.isSurrogate(); });
    }

    sqlite3* m_connection;
    sqlite3_stmt* m_statement;
    // The texts bound as UTF-8, alive until the statement has run and been reset.
    std::vector<QByteArray> m_utf8;
};

class DriverStatement final : public ReusedStatement
{
public:
    explicit DriverStatement(const QSqlDatabase& db) : m_query(db)
    {
        m_query.setForwardOnly(true);
        m_query.setNumericalPrecisionPolicy(QSql::HighPrecision);
    }

    bool prepare(const QString& nativeSql, QSqlError& error)
    {
        if (m_query.prepare(nativeSql))
            return true;
        error = m_query.lastError();
        return false;
    }

    bool run(const QVariantList& values, QVariant& key, QSqlError& error) override
    {
        for (int i = 0; i < values.size(); ++i)
            m_query.bindValue(i, values[i]);
        if (!m_query.exec()) {
            error = m_query.lastError();
            return false;
        }
        key = m_query.next() ? m_query.value(0) : QVariant();
        return true;
    }

private:
    QSqlQuery m_query;
};

// On PostgreSQL the driver prepares with PREPARE and runs each line as an EXECUTE whose values it writes
// into the text, which the server parses again; here the statement is prepared and run by the protocol's
// own messages, each value handed over as text for the column's own input to read, as the driver's
// literal would be read.
class PostgresStatement final : public ReusedStatement
{
public:
    PostgresStatement(PGconn* connection, QByteArray name) : m_connection(connection), m_name(std::move(name)) {}
    ~PostgresStatement() override
    {
        // Prepared statements outlive transactions: the name is given back, unless the session has gone.
        if (PQstatus(m_connection) == CONNECTION_OK && PQtransactionStatus(m_connection) != PQTRANS_ACTIVE)
            PQclear(PQexec(m_connection, ("DEALLOCATE " + m_name).constData()));
    }
    PostgresStatement(const PostgresStatement&) = delete;
    PostgresStatement& operator=(const PostgresStatement&) = delete;

    // As the driver words it: the server's message and its SQLSTATE, then what was being done.
    static QSqlError error(PGconn* connection, const PGresult* result, const QString& what)
    {
        QString message = QString::fromUtf8(PQerrorMessage(connection));
        QString state;
        if (result) {
            state = QString::fromLatin1(PQresultErrorField(result, PG_DIAG_SQLSTATE));
            message += QStringLiteral("(%1)").arg(state);
        }
        return QSqlError(QStringLiteral("QPSQL: ") + what, message,
                         PQstatus(connection) == CONNECTION_OK ? QSqlError::StatementError
                                                               : QSqlError::ConnectionError,
                         state);
    }

    bool run(const QVariantList& values, QVariant& key, QSqlError& error) override
    {
        std::vector<QByteArray> texts(values.size());
        std::vector<const char*> pointers(values.size(), nullptr);
        for (qsizetype i = 0; i < values.size(); ++i) {
            if (isNullValue(values[i]))
                continue;
            texts[i] = text(values[i]);
            if (texts[i].contains('\0')) {
                error = QSqlError(QStringLiteral("QPSQL: Unable to create query"),
                                  QStringLiteral("un testo contiene il carattere nullo, che il server non accetta"),
                                  QSqlError::StatementError);
                return false;
            }
            pointers[i] = texts[i].constData();
        }
        const std::unique_ptr<PGresult, decltype(&PQclear)> result(
            PQexecPrepared(m_connection, m_name.constData(), int(values.size()), pointers.data(), nullptr,
                           nullptr, 0),
            &PQclear);
        const ExecStatusType status = result ? PQresultStatus(result.get()) : PGRES_FATAL_ERROR;
        if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
            error = PostgresStatement::error(m_connection, result.get(), QStringLiteral("Unable to create query"));
            return false;
        }
        key = QVariant();
        if (status == PGRES_TUPLES_OK && PQntuples(result.get()) > 0 && !PQgetisnull(result.get(), 0, 0)) {
            const char* value = PQgetvalue(result.get(), 0, 0);
            switch (PQftype(result.get(), 0)) {
            case 20: // int8
                key = QByteArray(value).toLongLong();
                break;
            case 21: // int2
            case 23: // int4
                key = QByteArray(value).toInt();
                break;
            default:
                key = QString::fromUtf8(value);
            }
        }
        return true;
    }

private:
    // A value as the driver writes it into its literals, without the quotes.
    static QByteArray text(const QVariant& value)
    {
        switch (value.metaType().id()) {
        case QMetaType::QString:
            return static_cast<const QString*>(value.constData())->toUtf8();
        case QMetaType::Bool:
            return value.toBool() ? QByteArrayLiteral("TRUE") : QByteArrayLiteral("FALSE");
        case QMetaType::Double:
        case QMetaType::Float:
            return QByteArray::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
        case QMetaType::QDateTime:
            return value.toDateTime().toString(Qt::ISODateWithMs).toUtf8();
        case QMetaType::QDate:
            return value.toDate().toString(Qt::ISODate).toUtf8();
        case QMetaType::QTime:
            return value.toTime().toString(u"hh:mm:ss.zzz").toUtf8();
        default:
            return value.toString().toUtf8();
        }
    }

    PGconn* m_connection;
    QByteArray m_name;
};

// Qt's own rewriting of "?" placeholders into the server's $1, $2..., outside quoted texts.
QByteArray numberedPlaceholders(const QString& sql)
{
    QString out;
    int n = 0;
    QChar quote;
    for (const QChar c : sql) {
        if (quote.isNull() && (c == u'\'' || c == u'"'))
            quote = c;
        else if (c == quote)
            quote = QChar();
        if (c == u'?' && quote.isNull())
            out += QLatin1Char('$') + QString::number(++n);
        else
            out += c;
    }
    return out.toUtf8();
}

} // namespace

std::unique_ptr<ReusedStatement> ReusedStatement::prepare(const QSqlDatabase& db, Engine engine,
                                                          const QString& nativeSql, QSqlError& error)
{
    if (engine == Engine::SQLite) {
        sqlite3* connection = sqliteHandle(db);
        if (!connection) {
            error = QSqlError(QStringLiteral("Database non aperto"), QString(), QSqlError::ConnectionError);
            return nullptr;
        }
        sqlite3_stmt* statement = nullptr;
        const int result =
            sqlite3_prepare16_v3(connection, nativeSql.utf16(), int(nativeSql.size() * sizeof(QChar)),
                                 SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
        if (result != SQLITE_OK) {
            error = sqliteError(connection, QStringLiteral("Unable to execute statement"), result);
            sqlite3_finalize(statement);
            return nullptr;
        }
        return std::make_unique<SqliteStatement>(connection, statement);
    }
    if (engine == Engine::PostgreSQL) {
        if (PGconn* connection = postgresHandle(db)) {
            static std::atomic<int> counter{0};
            QByteArray name = "xv_ripetuta_" + QByteArray::number(++counter);
            const std::unique_ptr<PGresult, decltype(&PQclear)> result(
                PQprepare(connection, name.constData(), numberedPlaceholders(nativeSql).constData(), 0, nullptr),
                &PQclear);
            if (!result || PQresultStatus(result.get()) != PGRES_COMMAND_OK) {
                error = PostgresStatement::error(connection, result.get(), QStringLiteral("Unable to prepare statement"));
                return nullptr;
            }
            return std::make_unique<PostgresStatement>(connection, std::move(name));
        }
    }
    auto statement = std::make_unique<DriverStatement>(db);
    if (!statement->prepare(nativeSql, error))
        return nullptr;
    return statement;
}

} // namespace xv::data
