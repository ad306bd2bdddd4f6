// SPDX-License-Identifier: MIT
#include "data/SqlDialect.h"
#include "TestDatabase.h"
#include "common/RuntimeError.h"
#include "data/SqlText.h"

#include <gtest/gtest.h>

#include <QSqlDatabase>

#include <optional>

namespace {

using namespace xv;
using data::Engine;
using data::rewriteSql;

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

struct RewriteCase
{
    const char* input;
    const char* sqlite;   // nullptr: unchanged
    const char* postgres; // nullptr: as on SQLite
};

const RewriteCase rewriteCases[] = {
    {"select 'it''s [x] & now', now from t", "select 'it''s [x] & now', now() from t", nullptr},
    {"select nowhere, now_col, t.now, now(), NOW (), snow, now.x, :now, @now from t", nullptr, nullptr},
    {"select\tNOW\n from t where d<Now", "select\tnow()\n from t where d<now()", nullptr},
    {"select a$ now", "select a$ now()", nullptr},
    {"select [Città Ordine] from v WHERE [STATO COMMISSIONE]='EMESSO'", nullptr,
     "select \"città ordine\" from v WHERE \"stato commissione\"='EMESSO'"},
    {"select [a\"b] from t", nullptr, "select \"a\"\"b\" from t"},
    {"select [it's], now from t", "select [it's], now() from t", "select \"it's\", now() from t"},
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
        EXPECT_EQ(rewriteSql(input, Engine::SQLite), sqlite) << c.input;
        EXPECT_EQ(rewriteSql(input, Engine::PostgreSQL), c.postgres ? text(c.postgres) : sqlite) << c.input;
    }
}

// A quadratic scan would take minutes on these; a linear one, milliseconds.
TEST(RewriteSql, LongUnclosedTextsStayLinear)
{
    const QString brackets(200000, QLatin1Char('['));
    EXPECT_EQ(rewriteSql(brackets, Engine::PostgreSQL), brackets);
    EXPECT_EQ(rewriteSql(QString("now ").repeated(50000), Engine::SQLite), QString("now() ").repeated(50000));
}

TEST(SqlText, DoublesEveryQuote)
{
    const struct
    {
        const char* value;
        const char* escaped;
    } cases[] = {{"O'Brien", "O''Brien"}, {"''", "''''"}, {"", ""}, {"'a'b'", "''a''b''"}};
    for (const auto& c : cases) {
        EXPECT_EQ(data::sqlEscape(text(c.value)), text(c.escaped)) << c.value;
        EXPECT_EQ(data::sqlQuoted(text(c.value)), "'" + text(c.escaped) + "'") << c.value;
    }
}

TEST(SqliteFunctions, RefuseAConnectionThatIsNotAnOpenSqliteOne)
{
    const QString name = "dialect-unopened";
    {
        const QSqlDatabase unopened = QSqlDatabase::addDatabase("QSQLITE", name);
        for (const QSqlDatabase& db : {unopened, QSqlDatabase()}) {
            try {
                data::registerSqliteFunctions(db);
                ADD_FAILURE() << "no error for " << db.connectionName().toStdString();
            } catch (const common::RuntimeError& error) {
                EXPECT_EQ(error.number(), static_cast<int>(common::ErrorNumber::DatabaseError));
            }
        }
    }
    QSqlDatabase::removeDatabase(name);
}

// The edge cases of val(), year() and DateValue() on each engine; the program's own texts using them are
// run in DialectOnEnginesTest.
class DialectFunctionsTest : public test::SchemaTest
{
protected:
    QVariant select(const QString& expression)
    {
        QSqlQuery query = db().execute("select " + expression);
        EXPECT_TRUE(query.next()) << expression.toStdString();
        return query.value(0);
    }
};

TEST_P(DialectFunctionsTest, ValReadsTheLeadingNumber)
{
    const struct
    {
        const char* expression;
        std::optional<double> expected;
    } cases[] = {
        {"val('12abc')", 12}, {"val('abc')", 0},          {"val('')", 0},        {"val(NULL)", std::nullopt},
        {"val(3.5)", 3.5},    {"VAL('  -1.5e2x')", -150}, {"Val('.5')", 0.5},    {"val('+7')", 7},
        {"val('1e')", 1},     {"val('12.34.56')", 12.34}, {"val('5') / 2", 2.5}, {"val(17) / 2", 8.5},
        // Digits alone, as years and numbers are kept, on either side of the length read without a pattern.
        {"val('2026')", 2026}, {"val('0012')", 12}, {"val('123456789012345')", 123456789012345.0},
        {"val('1234567890123456')", 1234567890123456.0}, {"val('2026 ')", 2026}, {"val(' 2026')", 2026},
    };
    for (const auto& c : cases) {
        const QVariant value = select(text(c.expression));
        if (!c.expected)
            EXPECT_TRUE(value.isNull()) << c.expression;
        else
            EXPECT_DOUBLE_EQ(value.toDouble(), *c.expected) << c.expression;
    }
    EXPECT_THROW(db().execute("select val('1e999')"), common::RuntimeError);

    // Finding an order by number tests val() on each of its lines: PostgreSQL must write the body into
    // the query rather than call the function once per row, and a null column still gives null.
    if (GetParam() == data::Engine::PostgreSQL) {
        db().execute("create table valori (t text)");
        db().execute("insert into valori values ('2026'), (NULL)");
        QSqlQuery plan = db().execute("explain verbose select val(t) from valori");
        QString lines;
        while (plan.next())
            lines += plan.value(0).toString() + '\n';
        EXPECT_FALSE(lines.contains("val(")) << lines.toStdString();
        QSqlQuery values = db().execute("select val(t) from valori order by t");
        ASSERT_TRUE(values.next());
        EXPECT_DOUBLE_EQ(values.value(0).toDouble(), 2026);
        ASSERT_TRUE(values.next());
        EXPECT_TRUE(values.value(0).isNull());
    }
}

TEST_P(DialectFunctionsTest, YearOfTextsAndTheTwoDigitBoundary)
{
    const struct
    {
        const char* expression;
        std::optional<int> expected;
    } cases[] = {
        {"year('2026-01-01')", 2026}, {"YEAR('23/11/2026')", 2026},         {"year('1/1/30')", 1930},
        {"year('1/1/29')", 2029},     {"year('31/02/2026')", std::nullopt}, {"year('abc')", std::nullopt},
        {"year(NULL)", std::nullopt},
    };
    for (const auto& c : cases) {
        const QVariant value = select(text(c.expression));
        if (!c.expected)
            EXPECT_TRUE(value.isNull()) << c.expression;
        else
            EXPECT_EQ(value.toInt(), *c.expected) << c.expression;
    }
}

TEST_P(DialectFunctionsTest, DateValueReadsEverySpellingOfADay)
{
    for (const char* spelling :
         {"23/11/26", "2026-11-23", " 23/11/2026 ", "23-11-2026", "23.11.2026", "2026-11-23 18:45:00"})
        EXPECT_TRUE(select(QString("DateValue('%1') = DateValue('23/11/2026')").arg(spelling)).toBool())
            << spelling;
    EXPECT_EQ(select("year(DateValue('29/02/2024'))").toInt(), 2024);
}

TEST_P(DialectFunctionsTest, DateValueRejectsImpossibleDatesNamingThem)
{
    for (const char* date :
         {"31/02/2026", "29/02/2025", "2026-13-01", "0000-01-01", "23/11/226", "abc", ""}) {
        try {
            db().execute(QString("select DateValue('%1')").arg(date));
            ADD_FAILURE() << "no error for '" << date << "'";
        } catch (const common::RuntimeError& error) {
            EXPECT_TRUE(error.description().contains(QString("DateValue: data non valida '%1'").arg(date)))
                << date << ": " << error.description().toStdString();
        }
    }
}

XV_INSTANTIATE_FOR_ENGINES(DialectFunctionsTest);

} // namespace
