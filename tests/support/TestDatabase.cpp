// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "data/Schema.h"
#include "data/SqlDialect.h"

#include <QFile>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <stdexcept>

namespace xv::test {

namespace {

// Runs one statement on the server on a short-lived connection of its own.
QString adminExec(const QString& base, const QString& statement)
{
    const QString name = QStringLiteral("xv-test-admin-%1").arg(QRandomGenerator::global()->generate());
    QString error;
    {
        const data::ConnectionConfig config = data::ConnectionConfig::fromText(base);
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
        db.setHostName(config.host);
        db.setPort(config.port);
        db.setDatabaseName(config.databaseName);
        db.setUserName(config.user);
        db.setPassword(config.password);
        if (!db.open()) {
            error = db.lastError().text();
        } else {
            QSqlQuery query(db);
            if (!query.exec(statement))
                error = query.lastError().text();
            db.close();
        }
    }
    QSqlDatabase::removeDatabase(name);
    return error;
}

} // namespace

void setReadOnly(data::Database& db, bool readOnly)
{
    if (db.engine() == data::Engine::PostgreSQL) {
        db.executeBound(QStringLiteral("set default_transaction_read_only = %1")
                            .arg(readOnly ? QLatin1String("on") : QLatin1String("off")));
        return;
    }
    QSqlDatabase handle = db.handle();
    handle.close();
    handle.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000") +
                             (readOnly ? QStringLiteral(";QSQLITE_OPEN_READONLY") : QString()));
    if (!handle.open())
        throw std::runtime_error(handle.lastError().text().toStdString());
    data::registerSqliteFunctions(handle);
    QSqlQuery(handle).exec(QStringLiteral("PRAGMA foreign_keys=ON"));
}

QString logOf(const host::Host& h)
{
    QFile file(h.logFilePath());
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

bool postgresRequired()
{
    return !qEnvironmentVariableIsEmpty("XV_TEST_REQUIRE_PG") || qEnvironmentVariable("CI") == QLatin1String("true");
}

TestDatabase::TestDatabase(data::Engine engine) : m_engine(engine)
{
    if (!m_dir.isValid()) {
        m_reason = QStringLiteral("no temporary folder");
        return;
    }
    if (engine == data::Engine::SQLite) {
        m_available = true;
        return;
    }
    m_pgBase = qEnvironmentVariable("XV_TEST_PG");
    if (m_pgBase.isEmpty()) {
        m_reason = QStringLiteral("XV_TEST_PG is not set: no PostgreSQL server to test on");
        return;
    }
    m_schema = QStringLiteral("t_%1").arg(QRandomGenerator::global()->generate64(), 0, 16);
    const QString error = adminExec(m_pgBase, QStringLiteral("create schema %1").arg(m_schema));
    if (!error.isEmpty()) {
        m_reason = QStringLiteral("PostgreSQL not reachable: ") + error;
        return;
    }
    m_available = true;
}

TestDatabase::~TestDatabase()
{
    if (m_engine == data::Engine::PostgreSQL && m_available)
        adminExec(m_pgBase, QStringLiteral("drop schema %1 cascade").arg(m_schema));
}

QString TestDatabase::connectionText() const
{
    if (m_engine == data::Engine::SQLite)
        return QStringLiteral("sqlite:") + dataPath() + QStringLiteral("test.db");
    return m_pgBase + QStringLiteral(" schema=") + m_schema;
}

host::HostOptions TestDatabase::hostOptions() const
{
    host::HostOptions options;
    options.dataPath = dataPath();
    options.connectionText = connectionText();
    options.fillDemoData = false;
    options.startCounters = false; // each test writes the counters it needs
    options.userName = QStringLiteral("tester");
    options.stationName = QStringLiteral("BANCO1");
    return options;
}

void EngineTest::SetUp()
{
    m_database = std::make_unique<TestDatabase>(GetParam());
    if (!m_database->available()) {
        if (GetParam() == data::Engine::PostgreSQL && !postgresRequired())
            GTEST_SKIP() << m_database->reason().toStdString();
        FAIL() << m_database->reason().toStdString();
    }
}

void EngineTest::TearDown()
{
    m_database.reset();
}

void SchemaTest::SetUp()
{
    EngineTest::SetUp();
    if (IsSkipped() || HasFatalFailure())
        return;
    m_db = std::make_unique<data::Database>(database().config());
    data::migrate(*m_db);
}

void SchemaTest::TearDown()
{
    m_db.reset();
    EngineTest::TearDown();
}

void HostedTest::SetUp()
{
    EngineTest::SetUp();
    if (IsSkipped() || HasFatalFailure())
        return;
    m_host = std::make_unique<host::Host>(database().hostOptions());
    ASSERT_TRUE(m_host->Initialize());
}

void HostedTest::TearDown()
{
    m_host.reset();
    EngineTest::TearDown();
}

std::string engineName(const ::testing::TestParamInfo<data::Engine>& info)
{
    return info.param == data::Engine::SQLite ? "SQLite" : "PostgreSQL";
}

} // namespace xv::test
