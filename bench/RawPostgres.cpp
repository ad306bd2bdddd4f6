// SPDX-License-Identifier: MIT
// The save's statements through libpq, with the session settings the program asks for.
#include "RawEngine.h"

#include <libpq-fe.h>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace xv::bench {

std::unique_ptr<RawOrderWriter> openRawSqlite(const QString& path);
std::unique_ptr<RawReader> openRawSqliteReader(const QString& path);

namespace {

PGconn* connect(const data::ConnectionConfig& config, const QString& database)
{
    const QByteArray host = config.host.toUtf8(), port = QByteArray::number(config.port),
                     dbname = database.toUtf8(), user = config.user.toUtf8(),
                     password = config.password.toUtf8();
    const char* keys[] = {"host",     "port",    "dbname",          "user",
                          "password", "options", "connect_timeout", nullptr};
    const char* values[] = {host.constData(),
                            port.constData(),
                            dbname.constData(),
                            user.isEmpty() ? nullptr : user.constData(),
                            password.isEmpty() ? nullptr : password.constData(),
                            "-c standard_conforming_strings=on",
                            "10",
                            nullptr};
    PGconn* conn = PQconnectdbParams(keys, values, 0);
    if (PQstatus(conn) != CONNECTION_OK) {
        const std::string error = PQerrorMessage(conn);
        PQfinish(conn);
        throw std::runtime_error("connect: " + error);
    }
    return conn;
}

// Owns one result; throws when the statement failed.
class Result
{
public:
    Result(PGconn* conn, PGresult* result, const char* what) : m_result(result)
    {
        const ExecStatusType status = PQresultStatus(result);
        if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
            const std::string error = PQerrorMessage(conn);
            PQclear(result);
            throw std::runtime_error(std::string(what) + ": " + error);
        }
    }
    ~Result() { PQclear(m_result); }
    Result(const Result&) = delete;
    Result& operator=(const Result&) = delete;
    PGresult* get() const { return m_result; }

private:
    PGresult* m_result;
};

class PostgresWriter final : public RawOrderWriter
{
public:
    explicit PostgresWriter(const data::ConnectionConfig& config)
        : m_conn(connect(config, config.databaseName))
    {
        if (!config.schema.isEmpty())
            exec(("SET search_path TO " + config.schema.toStdString()).c_str());
        exec("SET datestyle TO 'ISO, DMY'");
    }
    ~PostgresWriter() override { PQfinish(m_conn); }

    void readOrder(const orders::OrderKey& key) override
    {
        m_rows.clear();
        KeyParams params(key);
        Result select(m_conn,
                      PQexecParams(m_conn,
                                   "select * from movimenti where documento=$1 and numero=$2 and serie=$3 "
                                   "order by rowid",
                                   3, nullptr, params.values, nullptr, nullptr, 0),
                      "select");
        std::vector<int> kept;
        std::string columns;
        for (int c = 0; c < PQnfields(select.get()); ++c) {
            const std::string name = PQfname(select.get(), c);
            if (name == "rowid")
                continue;
            kept.push_back(c);
            columns += (columns.empty() ? "" : ",") + name;
        }
        m_columns = columns;
        for (int r = 0; r < PQntuples(select.get()); ++r) {
            std::vector<std::optional<std::string>> row;
            for (int c : kept)
                row.push_back(PQgetisnull(select.get(), r, c)
                                  ? std::nullopt
                                  : std::optional(std::string(PQgetvalue(select.get(), r, c))));
            m_rows.push_back(std::move(row));
        }
    }

    int countRows(const orders::OrderKey& key) override
    {
        KeyParams params(key);
        Result count(
            m_conn,
            PQexecParams(m_conn,
                         "select count(*) from movimenti where documento=$1 and numero=$2 and serie=$3", 3,
                         nullptr, params.values, nullptr, nullptr, 0),
            "count");
        return std::stoi(PQgetvalue(count.get(), 0, 0));
    }

    void save(qint32 idnumeratore, const orders::OrderKey& key) override
    {
        Transaction transaction(*this);
        const std::string id = std::to_string(idnumeratore);
        const char* idValue[] = {id.c_str()};
        Result(m_conn,
               PQexecParams(m_conn,
                            "update numeratori set dataultdoc=now(), numero=numero+1 where idnumeratore=$1",
                            1, nullptr, idValue, nullptr, nullptr, 0),
               "counter");
        KeyParams params(key);
        Result(m_conn,
               PQexecParams(m_conn,
                            "select rowid from movimenti where documento=$1 and numero=$2 and serie=$3", 3,
                            nullptr, params.values, nullptr, nullptr, 0),
               "exists");
        insertRows();
        keepSave(key);
        transaction.commit();
    }

    void update(const orders::OrderKey& key) override
    {
        Transaction transaction(*this);
        deleteRows(key);
        insertRows();
        keepSave(key);
        transaction.commit();
    }

    void remove(const orders::OrderKey& key) override
    {
        Transaction transaction(*this);
        deleteRows(key);
        transaction.commit();
    }

private:
    // As the program does: the save's identity looked up, then kept with the order.
    void keepSave(const orders::OrderKey& key)
    {
        const std::string id = orders::Order::newSaveId().toStdString();
        const char* idValue[] = {id.c_str()};
        Result(m_conn,
               PQexecParams(m_conn, "select documento, numero, serie from salvataggi where id = $1", 1, nullptr,
                            idValue, nullptr, nullptr, 0),
               "earlier save");
        KeyParams params(key);
        const char* values[] = {id.c_str(), params.values[0], params.values[1], params.values[2]};
        Result(m_conn,
               PQexecParams(m_conn,
                            "insert into salvataggi (id, documento, numero, serie, dal) values ($1, $2, $3, $4, now())",
                            4, nullptr, values, nullptr, nullptr, 0),
               "keep save");
    }
    struct KeyParams
    {
        explicit KeyParams(const orders::OrderKey& key)
            : documento(key.documento.toUtf8()), numero(key.numero.toUtf8()),
              serie(key.serie.toUtf8()), values{documento.constData(), numero.constData(), serie.constData()}
        {
        }
        QByteArray documento, numero, serie;
        const char* values[3];
    };

    class Transaction
    {
    public:
        explicit Transaction(PostgresWriter& w) : m_w(w) { m_w.exec("BEGIN"); }
        ~Transaction()
        {
            if (!m_done)
                PQclear(PQexec(m_w.m_conn, "ROLLBACK"));
        }
        void commit()
        {
            m_w.exec("COMMIT");
            m_done = true;
        }

    private:
        PostgresWriter& m_w;
        bool m_done = false;
    };

    void exec(const char* sql) { Result(m_conn, PQexec(m_conn, sql), sql); }

    void deleteRows(const orders::OrderKey& key)
    {
        KeyParams params(key);
        Result(m_conn,
               PQexecParams(m_conn, "delete from movimenti where documento=$1 and numero=$2 and serie=$3", 3,
                            nullptr, params.values, nullptr, nullptr, 0),
               "delete");
    }

    void insertRows()
    {
        if (m_rows.empty())
            return;
        const int n = static_cast<int>(m_rows.front().size());
        int prepared = 0;
        std::vector<const char*> values;
        for (std::size_t start = 0; start < m_rows.size(); start += bench::kRowsPerInsert) {
            const int count =
                static_cast<int>(std::min<std::size_t>(bench::kRowsPerInsert, m_rows.size() - start));
            if (count != prepared) {
                const std::string sql = bench::multiRowInsert(m_columns, n, count, true);
                Result(m_conn, PQprepare(m_conn, "", sql.c_str(), n * count, nullptr), "prepare");
                prepared = count;
            }
            values.assign(static_cast<std::size_t>(n * count), nullptr);
            for (int r = 0; r < count; ++r) {
                const auto& row = m_rows[start + static_cast<std::size_t>(r)];
                for (int c = 0; c < n; ++c)
                    values[static_cast<std::size_t>(r * n + c)] = row[c] ? row[c]->c_str() : nullptr;
            }
            Result(m_conn, PQexecPrepared(m_conn, "", n * count, values.data(), nullptr, nullptr, 0),
                   "insert");
        }
    }

    PGconn* m_conn;
    std::string m_columns;
    std::vector<std::vector<std::optional<std::string>>> m_rows;
};

} // namespace

namespace {

// Qt hands "?" placeholders to the server as $1, $2...; the same is done here, outside quoted texts.
std::string numberedPlaceholders(const QString& sql)
{
    std::string out;
    int n = 0;
    bool quoted = false;
    for (const char c : sql.toStdString()) {
        if (c == '\'')
            quoted = !quoted;
        if (c == '?' && !quoted)
            out += "$" + std::to_string(++n);
        else
            out += c;
    }
    return out;
}

class PostgresReader final : public RawReader
{
public:
    explicit PostgresReader(const data::ConnectionConfig& config) : m_conn(connect(config, config.databaseName))
    {
        if (!config.schema.isEmpty())
            Result(m_conn, PQexec(m_conn, ("SET search_path TO " + config.schema.toStdString()).c_str()), "set");
        Result(m_conn, PQexec(m_conn, "SET datestyle TO 'ISO, DMY'"), "set");
    }
    ~PostgresReader() override { PQfinish(m_conn); }

    qint64 run(const QString& nativeSql, const QVariantList& values) override
    {
        std::vector<std::string> texts;
        for (const QVariant& value : values)
            texts.push_back(value.toString().toStdString());
        std::vector<const char*> params;
        for (const std::string& text : texts)
            params.push_back(text.c_str());
        const Result result(m_conn,
                            PQexecParams(m_conn, numberedPlaceholders(nativeSql).c_str(),
                                         static_cast<int>(params.size()), nullptr, params.data(), nullptr,
                                         nullptr, 0),
                            "select");
        const int rows = PQntuples(result.get());
        const int columns = PQnfields(result.get());
        std::size_t bytes = 0;
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < columns; ++c)
                bytes += static_cast<std::size_t>(PQgetlength(result.get(), r, c));
        }
        m_bytes += bytes;
        return rows;
    }

private:
    PGconn* m_conn;
    std::size_t m_bytes = 0;
};

} // namespace

std::unique_ptr<RawReader> RawReader::open(const data::ConnectionConfig& config)
{
    if (config.engine == data::Engine::SQLite)
        return openRawSqliteReader(config.sqlitePath);
    return std::make_unique<PostgresReader>(config);
}

std::unique_ptr<RawOrderWriter> RawOrderWriter::open(const data::ConnectionConfig& config)
{
    if (config.engine == data::Engine::SQLite)
        return openRawSqlite(config.sqlitePath);
    return std::make_unique<PostgresWriter>(config);
}

void runOnPostgresServer(const data::ConnectionConfig& config, const QString& sql)
{
    PGconn* conn = connect(config, QStringLiteral("postgres"));
    PGresult* result = PQexec(conn, sql.toUtf8().constData());
    const bool ok = PQresultStatus(result) == PGRES_COMMAND_OK;
    const std::string error = PQerrorMessage(conn);
    PQclear(result);
    PQfinish(conn);
    if (!ok)
        throw std::runtime_error(sql.toStdString() + ": " + error);
}

std::string multiRowInsert(const std::string& columns, int columnCount, int rows, bool numbered)
{
    std::string sql = "insert into movimenti (" + columns + ") values ";
    int parameter = 0;
    for (int r = 0; r < rows; ++r) {
        sql += r == 0 ? "(" : ",(";
        for (int c = 0; c < columnCount; ++c) {
            if (c > 0)
                sql += ',';
            if (numbered) {
                sql += '$';
                sql += std::to_string(++parameter);
            } else {
                sql += '?';
            }
        }
        sql += ")";
    }
    return sql;
}

} // namespace xv::bench
