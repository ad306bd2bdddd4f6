// SPDX-License-Identifier: MIT
#pragma once

#include "data/Database.h"
#include "host/Host.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <memory>
#include <string>

namespace xv::test {

// A fresh, empty database for one test: a file in a temporary folder, or a new schema on the
// PostgreSQL server named by XV_TEST_PG, dropped again at the end.
class TestDatabase
{
public:
    explicit TestDatabase(data::Engine engine);
    ~TestDatabase();

    // Empty when the engine cannot be reached; the reason says why.
    bool available() const { return m_available; }
    const QString& reason() const { return m_reason; }

    data::Engine engine() const { return m_engine; }
    QString dataPath() const { return m_dir.path() + QLatin1Char('/'); }
    QString connectionText() const;
    data::ConnectionConfig config() const { return data::ConnectionConfig::fromText(connectionText()); }
    // Host options on this database, bare tables (no demo data, no counters), a fixed operator and
    // workstation.
    host::HostOptions hostOptions() const;

private:
    data::Engine m_engine;
    QTemporaryDir m_dir;
    bool m_available = false;
    QString m_reason;
    QString m_pgBase;
    QString m_schema;
};

// PostgreSQL must be there when the test script started it or in CI; elsewhere its tests are skipped.
bool postgresRequired();

// The database as a shop meets it when it cannot be written: the SQLite file opened again read-only, as
// SQLite opens a file on a read-only share or without write permission (which would not stop a test run as
// root); a PostgreSQL session that takes only reads, as on a standby server. False puts it back.
void setReadOnly(data::Database& db, bool readOnly);

// Everything the host has written to its log so far.
QString logOf(const host::Host& h);

// Base of the tests that run once per engine.
class EngineTest : public ::testing::TestWithParam<data::Engine>
{
protected:
    void SetUp() override;
    void TearDown() override;
    TestDatabase& database() { return *m_database; }

private:
    std::unique_ptr<TestDatabase> m_database;
};

// Base of the tests that work on an open, migrated database of each engine.
class SchemaTest : public EngineTest
{
protected:
    void SetUp() override;
    void TearDown() override;
    data::Database& db() { return *m_db; }

private:
    std::unique_ptr<data::Database> m_db;
};

// Base of the tests that work through a host, made ready on a fresh database of each engine.
class HostedTest : public EngineTest
{
protected:
    void SetUp() override;
    void TearDown() override;
    host::Host& h() { return *m_host; }

    std::unique_ptr<host::Host> m_host;
};

std::string engineName(const ::testing::TestParamInfo<data::Engine>& info);

#define XV_INSTANTIATE_FOR_ENGINES(Suite)                                                                  \
    INSTANTIATE_TEST_SUITE_P(Engines, Suite,                                                               \
                             ::testing::Values(::xv::data::Engine::SQLite, ::xv::data::Engine::PostgreSQL), \
                             ::xv::test::engineName)

// A suite whose statements do not differ between the engines runs on the embedded one alone.
#define XV_INSTANTIATE_ON_SQLITE(Suite)                                                                      \
    INSTANTIATE_TEST_SUITE_P(SQLite, Suite, ::testing::Values(::xv::data::Engine::SQLite),                   \
                             ::xv::test::engineName)

} // namespace xv::test
