// SPDX-License-Identifier: MIT
#include "host/SqlDialect.h"
#include "common/RuntimeError.h"
#include "host/SqlText.h"

#include <gtest/gtest.h>

#include <QDate>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <ostream>

using namespace xv::host;

namespace xv::host {

// Names the engine in failure messages instead of dumping its bytes.
void PrintTo(Engine engine, std::ostream* out)
{
    *out << (engine == Engine::SQLite ? "SQLite" : "PostgreSQL");
}

} // namespace xv::host

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

// ---------------------------------------------------------------------------------------------------
// rewriteSql

struct RewriteCase
{
    const char* input;
    const char* sqlite;   // nullptr: unchanged
    const char* postgres; // nullptr: as on SQLite
};

const RewriteCase rewriteCases[] = {
    {"select 'a [b] & now' from t", nullptr, nullptr},
    {"select 'it''s [x] & now', now from t", "select 'it''s [x] & now', now() from t", nullptr},
    {"select nowhere, now_col, t.now, now(), NOW (), snow, now.x from t", nullptr, nullptr},
    {"select :now, @now from t", nullptr, nullptr},
    {"update numeratori set dataultdoc=now,numero=numero+1 where idnumeratore=5",
     "update numeratori set dataultdoc=now(),numero=numero+1 where idnumeratore=5", nullptr},
    {"select\tNOW\n from t where d<Now", "select\tnow()\n from t where d<now()", nullptr},
    {"select now", "select now()", nullptr},
    {"select a$ now", "select a$ now()", nullptr},
    {"select year([Data Commissione]) IN ( 2025 , 2026 ) from v", nullptr,
     "select year(\"data commissione\") IN ( 2025 , 2026 ) from v"},
    {"select * from v WHERE [STATO COMMISSIONE]='EMESSO'", nullptr,
     "select * from v WHERE \"stato commissione\"='EMESSO'"},
    {"select [Città Ordine] from t", nullptr, "select \"città ordine\" from t"},
    {"select [a\"b] from t", nullptr, "select \"a\"\"b\" from t"},
    {"select [it's], now from t", "select [it's], now() from t", "select \"it's\", now() from t"},
    {"select rowid_med & '.bmp' as fotoart from m", "select rowid_med || '.bmp' as fotoart from m", nullptr},
    {"select a&b&'&' from t", "select a||b||'&' from t", nullptr},
    {"select \"Now\" & \"[x]\", \"a\"\"&now\" from t", "select \"Now\" || \"[x]\", \"a\"\"&now\" from t",
     nullptr},
    {"select 1 -- it's now & [x]\n, now", "select 1 -- it's now & [x]\n, now()", nullptr},
    {"select /* it's now & [x] */ now", "select /* it's now & [x] */ now()", nullptr},
    {"select 'abc & now", nullptr, nullptr},
    {"select [abc, now & x", "select [abc, now() || x", nullptr},
    {"", nullptr, nullptr},
};

TEST(RewriteSql, RewritesOnlyOutsideLiteralsIdentifiersAndComments)
{
    for (const RewriteCase& c : rewriteCases) {
        const QString input = text(c.input);
        const QString sqlite = c.sqlite ? text(c.sqlite) : input;
        const QString postgres = c.postgres ? text(c.postgres) : sqlite;
        EXPECT_EQ(rewriteSql(input, Engine::SQLite), sqlite) << c.input;
        EXPECT_EQ(rewriteSql(input, Engine::PostgreSQL), postgres) << c.input;
    }
}

// A quadratic scan would take minutes on these; a linear one, milliseconds.
TEST(RewriteSql, LongUnclosedTextsStayLinear)
{
    const QString brackets(200000, QLatin1Char('['));
    EXPECT_EQ(rewriteSql(brackets, Engine::PostgreSQL), brackets);
    const QString nows = QStringLiteral("now ").repeated(50000);
    EXPECT_EQ(rewriteSql(nows, Engine::SQLite), QStringLiteral("now() ").repeated(50000));
}

// ---------------------------------------------------------------------------------------------------
// sqlEscape

TEST(SqlText, DoublesEveryQuote)
{
    const struct
    {
        const char* value;
        const char* escaped;
    } cases[] = {{"O'Brien", "O''Brien"}, {"''", "''''"}, {"", ""}, {"abc", "abc"}, {"'a'b'", "''a''b''"}};
    for (const auto& c : cases) {
        EXPECT_EQ(sqlEscape(text(c.value)), text(c.escaped)) << c.value;
        EXPECT_EQ(sqlQuoted(text(c.value)), QLatin1Char('\'') + text(c.escaped) + QLatin1Char('\''))
            << c.value;
    }
}

TEST(SqliteFunctions, RefuseAConnectionThatIsNotAnOpenSqliteOne)
{
    const QString name = QStringLiteral("dialect-unopened");
    {
        const QSqlDatabase unopened = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        for (const QSqlDatabase& db : {unopened, QSqlDatabase()}) {
            try {
                registerSqliteFunctions(db);
                ADD_FAILURE() << "no error for " << db.connectionName().toStdString();
            } catch (const xv::common::RuntimeError& error) {
                EXPECT_EQ(error.number(), static_cast<int>(xv::common::ErrorNumber::DatabaseError));
            }
        }
    }
    QSqlDatabase::removeDatabase(name);
}

// ---------------------------------------------------------------------------------------------------
// The functions, run for real on each engine

class DialectOnEngine : public ::testing::TestWithParam<Engine>
{
protected:
    void SetUp() override
    {
        static int connections = 0;
        m_name = QStringLiteral("dialect-test-%1").arg(++connections);
        if (engine() == Engine::SQLite) {
            m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
            m_db.setDatabaseName(QStringLiteral(":memory:"));
            ASSERT_TRUE(m_db.open()) << m_db.lastError().text().toStdString();
            registerSqliteFunctions(m_db);
            return;
        }
        const QString conninfo = qEnvironmentVariable("XV_TEST_PG");
        if (conninfo.isEmpty()) {
            if (qEnvironmentVariable("CI") == QLatin1String("true"))
                FAIL() << "PostgreSQL was not available: XV_TEST_PG is not set";
            GTEST_SKIP() << "XV_TEST_PG is not set";
        }
        m_db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), m_name);
        for (const QString& pair : conninfo.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            const QString key = pair.section(QLatin1Char('='), 0, 0);
            const QString value = pair.section(QLatin1Char('='), 1);
            if (key == QLatin1String("host"))
                m_db.setHostName(value);
            else if (key == QLatin1String("port"))
                m_db.setPort(value.toInt());
            else if (key == QLatin1String("user"))
                m_db.setUserName(value);
            else if (key == QLatin1String("dbname"))
                m_db.setDatabaseName(value);
            else if (key == QLatin1String("password"))
                m_db.setPassword(value);
        }
        ASSERT_TRUE(m_db.open()) << "PostgreSQL was not available: " << m_db.lastError().text().toStdString();
        // The cascade of DROP SCHEMA would otherwise fill the test log with notices.
        ASSERT_TRUE(native(QStringLiteral("SET client_min_messages TO warning")));
        m_schema = QStringLiteral("t_%1").arg(QRandomGenerator::global()->generate64(), 0, 16);
        ASSERT_TRUE(native(QStringLiteral("CREATE SCHEMA %1").arg(m_schema)));
        ASSERT_TRUE(native(QStringLiteral("SET search_path TO %1").arg(m_schema)));
        for (const QString& definition : postgresFunctionDefinitions())
            ASSERT_TRUE(native(definition));
    }

    void TearDown() override
    {
        if (!m_schema.isEmpty())
            native(QStringLiteral("DROP SCHEMA %1 CASCADE").arg(m_schema));
        m_db.close();
        m_db = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
    }

    Engine engine() const { return GetParam(); }

    bool native(const QString& sql)
    {
        QSqlQuery query(m_db);
        const bool ok = query.exec(sql);
        EXPECT_TRUE(ok) << sql.toStdString() << ": " << query.lastError().text().toStdString();
        return ok;
    }

    // The table's date column is TEXT on SQLite and timestamp on PostgreSQL, as the program creates it.
    void createTable(const QString& name, const QString& columns)
    {
        QString ddl = columns;
        ddl.replace(QLatin1String("DATE"),
                    engine() == Engine::SQLite ? QLatin1String("text") : QLatin1String("timestamp"));
        native(QStringLiteral("create table %1 (%2)").arg(name, ddl));
    }

    // Runs a text of the program's dialect; its error text when it fails, null when it succeeds.
    QString failure(const QString& dialectSql, QSqlQuery& query)
    {
        if (!query.exec(rewriteSql(dialectSql, engine())))
            return query.lastError().text();
        return {};
    }

    QString failure(const QString& dialectSql)
    {
        QSqlQuery query(m_db);
        return failure(dialectSql, query);
    }

    void run(const QString& dialectSql)
    {
        const QString error = failure(dialectSql);
        EXPECT_TRUE(error.isNull()) << dialectSql.toStdString() << ": " << error.toStdString();
    }

    QVariant scalar(const QString& dialectSql)
    {
        QSqlQuery query(m_db);
        const QString error = failure(dialectSql, query);
        EXPECT_TRUE(error.isNull()) << dialectSql.toStdString() << ": " << error.toStdString();
        if (!error.isNull() || !query.next()) {
            ADD_FAILURE() << "no row from " << dialectSql.toStdString();
            return {};
        }
        return query.value(0);
    }

    QSqlDatabase m_db;
    QString m_name;
    QString m_schema;
};

TEST_P(DialectOnEngine, ValReadsTheLeadingNumber)
{
    const struct
    {
        const char* expression;
        std::optional<double> expected;
    } cases[] = {
        {"val('2026')", 2026},       {"val('12abc')", 12}, {"val('abc')", 0}, {"val('')", 0},
        {"val(NULL)", std::nullopt}, {"val(3.5)", 3.5},    {"val(17)", 17},   {"VAL('  -1.5e2x')", -150},
        {"Val('.5')", 0.5},          {"val('+7')", 7},     {"val('1e')", 1},  {"val('12.34.56')", 12.34},
        {"val('5') / 2", 2.5},       {"val(17) / 2", 8.5},
    };
    for (const auto& c : cases) {
        const QVariant value = scalar(QStringLiteral("select ") + text(c.expression));
        if (!c.expected)
            EXPECT_TRUE(value.isNull()) << c.expression;
        else
            EXPECT_DOUBLE_EQ(value.toDouble(), *c.expected) << c.expression;
    }
    EXPECT_FALSE(failure(QStringLiteral("select val('1e999')")).isNull());
}

TEST_P(DialectOnEngine, ValPicksASeries)
{
    createTable(QStringLiteral("s"), QStringLiteral("serie text"));
    run(QStringLiteral("insert into s values ('2024'), ('2025'), ('2026'), ('2026b'), ('abc'), (NULL)"));
    EXPECT_EQ(scalar(QStringLiteral("select count(*) from s where val(serie) in (2025,2026)")).toInt(), 3);
}

TEST_P(DialectOnEngine, YearOfDatesAndTexts)
{
    createTable(QStringLiteral("d"), QStringLiteral("id integer, d DATE"));
    run(QStringLiteral("insert into d values (1, '2026-11-23 10:30:00'), (2, NULL)"));
    const struct
    {
        const char* expression;
        std::optional<int> expected;
    } cases[] = {
        {"year(d) from d where id=1", 2026},
        {"YEAR(d) from d where id=2", std::nullopt},
        {"year('2026-01-01')", 2026},
        {"year('23/11/2026')", 2026},
        {"year('1/1/30')", 1930},
        {"year('1/1/29')", 2029},
        {"year('31/02/2026')", std::nullopt},
        {"year('abc')", std::nullopt},
        {"year(NULL)", std::nullopt},
    };
    for (const auto& c : cases) {
        const QVariant value = scalar(QStringLiteral("select ") + text(c.expression));
        if (!c.expected)
            EXPECT_TRUE(value.isNull()) << c.expression;
        else
            EXPECT_EQ(value.toInt(), *c.expected) << c.expression;
    }
    const int before = QDate::currentDate().year();
    const int now = scalar(QStringLiteral("select year(now)")).toInt();
    EXPECT_TRUE(now == before || now == QDate::currentDate().year()) << now;
}

TEST_P(DialectOnEngine, BracketedNamesWithBlanks)
{
    createTable(QStringLiteral("comm"), QStringLiteral("id integer, datacomm DATE, stato text"));
    const bool lower = engine() == Engine::PostgreSQL;
    native(QStringLiteral("create view vcomm as select id, datacomm as \"%1\", stato as \"%2\" from comm")
               .arg(lower ? QLatin1String("data commissione") : QLatin1String("Data Commissione"),
                    lower ? QLatin1String("stato commissione") : QLatin1String("Stato Commissione")));
    run(QStringLiteral("insert into comm values (1, '2024-12-31 00:00:00', 'EMESSO'), "
                       "(2, '2025-01-15 00:00:00', 'EMESSO'), (3, '2026-06-01 00:00:00', 'ANNULLATO'), "
                       "(4, '2026-07-01 00:00:00', 'EMESSO'), (5, NULL, 'EMESSO')"));
    EXPECT_EQ(
        scalar(QStringLiteral("select count(*) from vcomm where year([Data Commissione]) IN ( 2025 , 2026 ) "
                              "and [STATO COMMISSIONE]='EMESSO'"))
            .toInt(),
        2);
}

TEST_P(DialectOnEngine, DateValueMatchesTheStoredMidnight)
{
    createTable(QStringLiteral("d"), QStringLiteral("id integer, d DATE"));
    run(QStringLiteral("insert into d values (1, '2026-11-23 00:00:00'), (2, '2026-11-23 10:30:00'), "
                       "(3, '2026-11-24 00:00:00')"));
    const char* spellings[] = {"DateValue('23/11/2026')",         "datevalue('23/11/26')",
                               "DATEVALUE('2026-11-23')",         "DateValue(' 23/11/2026 ')",
                               "DateValue('23-11-2026')",         "DateValue('23.11.2026')",
                               "DateValue('2026-11-23 18:45:00')"};
    for (const char* spelling : spellings)
        EXPECT_EQ(scalar(QStringLiteral("select count(*) from d where d=") + text(spelling)).toInt(), 1)
            << spelling;
    EXPECT_EQ(scalar(QStringLiteral("select count(*) from d where d >= DateValue('23/11/2026') "
                                    "and d < DateValue('24/11/2026')"))
                  .toInt(),
              2);
    EXPECT_EQ(
        scalar(QStringLiteral("select count(*) from d where DateValue(d) = DateValue('23/11/2026')")).toInt(),
        2);
    EXPECT_EQ(scalar(QStringLiteral("select year(DateValue('29/02/2024'))")).toInt(), 2024);
}

TEST_P(DialectOnEngine, DateValueRejectsImpossibleDates)
{
    const char* impossible[] = {
        "31/02/2026", "29/02/2025", "2026-13-01", "0000-01-01", "23/11/226", "abc", ""};
    for (const char* date : impossible) {
        const QString error = failure(QStringLiteral("select DateValue('%1')").arg(text(date)));
        EXPECT_TRUE(error.contains(QStringLiteral("DateValue: data non valida '%1'").arg(text(date))))
            << date << ": " << error.toStdString();
    }
}

TEST_P(DialectOnEngine, BareNowStampsTheRow)
{
    createTable(QStringLiteral("numeratori"),
                QStringLiteral("idnumeratore integer, numero integer, dataultdoc DATE"));
    run(QStringLiteral("insert into numeratori values (5, 1, NULL), (6, 1, NULL)"));
    run(QStringLiteral("update numeratori set dataultdoc=now,numero=numero+1 where idnumeratore=5"));
    EXPECT_EQ(
        scalar(QStringLiteral("select count(*) from numeratori where dataultdoc is not null and numero=2 "
                              "and idnumeratore=5 and dataultdoc >= DateValue('01/01/2020')"))
            .toInt(),
        1);
    EXPECT_TRUE(scalar(QStringLiteral("select dataultdoc from numeratori where idnumeratore=6")).isNull());
    const QVariant stamp = scalar(QStringLiteral("select dataultdoc from numeratori where idnumeratore=5"));
    if (engine() == Engine::SQLite) {
        const QRegularExpression stored(QStringLiteral("^\\d{4}-\\d{2}-\\d{2} \\d{2}:\\d{2}:\\d{2}$"));
        EXPECT_TRUE(stored.match(stamp.toString()).hasMatch()) << stamp.toString().toStdString();
    } else {
        EXPECT_TRUE(stamp.toDateTime().isValid());
    }
}

TEST_P(DialectOnEngine, AmpersandJoinsTexts)
{
    createTable(QStringLiteral("m"), QStringLiteral("rowid_med integer"));
    run(QStringLiteral("insert into m values (17)"));
    EXPECT_EQ(scalar(QStringLiteral("select rowid_med & '.bmp' as fotoart from m")).toString(),
              QStringLiteral("17.bmp"));
    EXPECT_EQ(scalar(QStringLiteral("select 'a' & 'b'&'c'")).toString(), QStringLiteral("abc"));
}

TEST_P(DialectOnEngine, QuotedValuesComeBackUnchanged)
{
    const char* values[] = {"O'Brien", "''", "[x] & now", "a -- b", "/* c */ \"d\"", ""};
    for (const char* value : values)
        EXPECT_EQ(scalar(QStringLiteral("select ") + sqlQuoted(text(value))).toString(), text(value))
            << value;
}

std::string engineName(const ::testing::TestParamInfo<Engine>& engine)
{
    return engine.param == Engine::SQLite ? "SQLite" : "PostgreSQL";
}

INSTANTIATE_TEST_SUITE_P(Engines, DialectOnEngine, ::testing::Values(Engine::SQLite, Engine::PostgreSQL),
                         engineName);

} // namespace
