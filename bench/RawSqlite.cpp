// SPDX-License-Identifier: MIT
// The save's statements through the sqlite3 C API, with the connection settings the program uses.
#include "RawEngine.h"

#include "data/SqlDialect.h"

#include <QDateTime>

#include <sqlite3.h>

#include <algorithm>
#include <map>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace xv::bench {

std::unique_ptr<RawOrderWriter> openRawSqlite(const QString& path);
std::unique_ptr<RawReader> openRawSqliteReader(const QString& path);

namespace {

class Statement
{
public:
    Statement(sqlite3* db, const std::string& sql) : m_db(db)
    {
        if (sqlite3_prepare_v2(db, sql.c_str(), static_cast<int>(sql.size()), &m_stmt, nullptr) != SQLITE_OK)
            throw std::runtime_error(std::string("prepare: ") + sqlite3_errmsg(db) + " [" + sql + "]");
    }
    ~Statement() { sqlite3_finalize(m_stmt); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    sqlite3_stmt* get() const { return m_stmt; }
    void bindKey(const orders::OrderKey& key)
    {
        bindText(1, key.documento);
        bindText(2, key.numero);
        bindText(3, key.serie);
    }
    void bindText(int index, const QString& text)
    {
        const QByteArray utf8 = text.toUtf8();
        sqlite3_bind_text(m_stmt, index, utf8.constData(), static_cast<int>(utf8.size()), SQLITE_TRANSIENT);
    }
    // True while a row is there; throws on an error.
    bool step()
    {
        const int rc = sqlite3_step(m_stmt);
        if (rc == SQLITE_ROW)
            return true;
        if (rc != SQLITE_DONE)
            throw std::runtime_error(std::string("step: ") + sqlite3_errmsg(m_db));
        return false;
    }
    void reset() { sqlite3_reset(m_stmt); }

private:
    sqlite3* m_db;
    sqlite3_stmt* m_stmt = nullptr;
};

class SqliteWriter final : public RawOrderWriter
{
public:
    explicit SqliteWriter(const QString& path)
    {
        if (sqlite3_open_v2(path.toUtf8().constData(), &m_db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK)
            throw std::runtime_error(std::string("open: ") + (m_db ? sqlite3_errmsg(m_db) : "out of memory"));
        sqlite3_busy_timeout(m_db, 5000);
        exec("PRAGMA foreign_keys=ON");
        exec("PRAGMA journal_mode=WAL");
    }
    ~SqliteWriter() override
    {
        freeRows();
        sqlite3_close(m_db);
    }

    void readOrder(const orders::OrderKey& key) override
    {
        freeRows();
        Statement select(m_db, "select * from movimenti where documento=?1 and numero=?2 and serie=?3 "
                               "order by rowid");
        select.bindKey(key);
        std::vector<int> kept;
        std::string columns;
        for (int c = 0; c < sqlite3_column_count(select.get()); ++c) {
            const std::string name = sqlite3_column_name(select.get(), c);
            if (sqlite3_stricmp(name.c_str(), "rowid") == 0)
                continue;
            kept.push_back(c);
            columns += (columns.empty() ? "" : ",") + name;
        }
        m_columns = columns;
        while (select.step()) {
            std::vector<sqlite3_value*> row;
            for (int c : kept)
                row.push_back(sqlite3_value_dup(sqlite3_column_value(select.get(), c)));
            m_rows.push_back(std::move(row));
        }
    }

    int countRows(const orders::OrderKey& key) override
    {
        Statement count(m_db, "select count(*) from movimenti where documento=?1 and numero=?2 and serie=?3");
        count.bindKey(key);
        return count.step() ? sqlite3_column_int(count.get(), 0) : 0;
    }

    void save(qint32 idnumeratore, const orders::OrderKey& key) override
    {
        Transaction transaction(*this);
        Statement counter(m_db, "update numeratori set dataultdoc=?1, numero=numero+1 where idnumeratore=?2");
        counter.bindText(1, QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
        sqlite3_bind_int(counter.get(), 2, idnumeratore);
        counter.step();
        Statement exists(m_db, "select rowid from movimenti where documento=?1 and numero=?2 and serie=?3");
        exists.bindKey(key);
        exists.step();
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
        const QString id = orders::Order::newSaveId();
        Statement earlier(m_db, "select documento, numero, serie from salvataggi where id = ?1");
        earlier.bindText(1, id);
        earlier.step();
        Statement keep(m_db, "insert into salvataggi (id, documento, numero, serie, dal) values (?1, ?2, ?3, ?4, ?5)");
        keep.bindText(1, id);
        keep.bindText(2, key.documento);
        keep.bindText(3, key.numero);
        keep.bindText(4, key.serie);
        keep.bindText(5, QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
        keep.step();
    }
    class Transaction
    {
    public:
        explicit Transaction(SqliteWriter& w) : m_w(w) { m_w.exec("BEGIN"); }
        ~Transaction()
        {
            if (!m_done)
                sqlite3_exec(m_w.m_db, "ROLLBACK", nullptr, nullptr, nullptr);
        }
        void commit()
        {
            m_w.exec("COMMIT");
            m_done = true;
        }

    private:
        SqliteWriter& m_w;
        bool m_done = false;
    };

    void exec(const char* sql)
    {
        char* error = nullptr;
        if (sqlite3_exec(m_db, sql, nullptr, nullptr, &error) != SQLITE_OK) {
            const std::string text = error ? error : "?";
            sqlite3_free(error);
            throw std::runtime_error(std::string(sql) + ": " + text);
        }
    }

    void deleteRows(const orders::OrderKey& key)
    {
        Statement remove(m_db, "delete from movimenti where documento=?1 and numero=?2 and serie=?3");
        remove.bindKey(key);
        remove.step();
    }

    void insertRows()
    {
        if (m_rows.empty())
            return;
        const int n = static_cast<int>(m_rows.front().size());
        std::map<int, Statement> inserts;
        for (std::size_t start = 0; start < m_rows.size(); start += bench::kRowsPerInsert) {
            const int count =
                static_cast<int>(std::min<std::size_t>(bench::kRowsPerInsert, m_rows.size() - start));
            auto found = inserts.find(count);
            if (found == inserts.end())
                found =
                    inserts.try_emplace(count, m_db, bench::multiRowInsert(m_columns, n, count, false)).first;
            Statement& insert = found->second;
            for (int r = 0; r < count; ++r) {
                for (int c = 0; c < n; ++c)
                    sqlite3_bind_value(insert.get(), r * n + c + 1, m_rows[start + r][c]);
            }
            insert.step();
            insert.reset();
        }
    }

    void freeRows()
    {
        for (auto& row : m_rows) {
            for (sqlite3_value* value : row)
                sqlite3_value_free(value);
        }
        m_rows.clear();
    }

    sqlite3* m_db = nullptr;
    std::string m_columns;
    std::vector<std::vector<sqlite3_value*>> m_rows;
};

class SqliteReader final : public RawReader
{
public:
    explicit SqliteReader(const QString& path)
    {
        if (sqlite3_open_v2(path.toUtf8().constData(), &m_db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK)
            throw std::runtime_error(std::string("open: ") + (m_db ? sqlite3_errmsg(m_db) : "out of memory"));
        sqlite3_busy_timeout(m_db, 5000);
        data::registerSqliteFunctions(m_db);
        sqlite3_exec(m_db, "PRAGMA foreign_keys=ON", nullptr, nullptr, nullptr);
    }
    ~SqliteReader() override { sqlite3_close(m_db); }

    qint64 run(const QString& nativeSql, const QVariantList& values) override
    {
        Statement statement(m_db, nativeSql.toStdString());
        for (int i = 0; i < values.size(); ++i)
            statement.bindText(i + 1, values[i].toString());
        qint64 rows = 0;
        std::size_t bytes = 0;
        while (statement.step()) {
            ++rows;
            const int columns = sqlite3_column_count(statement.get());
            for (int c = 0; c < columns; ++c) {
                if (const unsigned char* text = sqlite3_column_text(statement.get(), c))
                    bytes += std::strlen(reinterpret_cast<const char*>(text));
            }
        }
        m_bytes += bytes;
        return rows;
    }

private:
    sqlite3* m_db = nullptr;
    std::size_t m_bytes = 0;
};

} // namespace

std::unique_ptr<RawOrderWriter> openRawSqlite(const QString& path)
{
    return std::make_unique<SqliteWriter>(path);
}

std::unique_ptr<RawReader> openRawSqliteReader(const QString& path)
{
    return std::make_unique<SqliteReader>(path);
}

} // namespace xv::bench
