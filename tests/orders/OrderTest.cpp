// SPDX-License-Identifier: MIT
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "host/Host.h"
#include "lines/GridColumns.h"
#include "orders/Order.h"
#include "orders/OrderLoad.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;

class OrderTest : public test::HostedTest
{
protected:
    void SetUp() override
    {
        HostedTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        // Orders are the documents of a type that has an order counter; delivery notes have one of their own.
        test::addCounter(db(), m_year, 0);
        db().executeBound(
            "insert into numeratori (codtipodoc, tipodocumento, serie, numero) values ('CF', 'DDTF', ?, 0)",
            {QString::number(m_year)});
    }
    data::Database& db() { return m_host->GetConnection(); }
    QVector<int> columnTypes()
    {
        QVector<int> types;
        for (Recordset rs = m_host->OpenSchema(4, "movimenti"); !rs.eof(); rs.moveNext())
            types << rs.value("Type").toInt();
        return types;
    }
    QStringList cellsOf(const QString& numero)
    {
        Recordset rs =
            m_host->OpenRecordset(orders::orderLinesSql({"COMM", numero, QString::number(m_year)}));
        return orders::gridCells(rs, columnTypes());
    }

    const int m_year = QDate::currentDate().year();
};

TEST_P(OrderTest, TheOrderValueKeepsWhatTheFormDoesNotShow)
{
    test::addOrderLine(db(), "11", QDate(m_year, 3, 14),
                       {{"rowid_controparti", 12}, {"Rowid_Pagamento", 3}, {"Tipomovimento", "CX"}});
    const orders::Order o = orders::loadOrder(*m_host, "11", m_year);
    EXPECT_EQ(o.tipomovimento, "CX");
    EXPECT_EQ(o.customer.key, 12);
    EXPECT_EQ(o.customer.rowidPagamento, "3");
    ASSERT_EQ(o.lines.size(), 1);
    EXPECT_EQ(o.lines[0].size(), lines::ColCount);
}

TEST_P(OrderTest, ATypedNumberOpensThisYearsOrderElseLastYearsAndNoOtherRows)
{
    struct Row
    {
        int yearsBack;
        const char* documento;
    };
    struct Case
    {
        const char* what;
        std::vector<Row> rows;
        int opensYearsBack; // -1: nothing opens
    };
    const Case cases[] = {
        {"this year and last year", {{0, "COMM"}, {1, "COMM"}, {0, "COMM"}}, 0},
        {"only last year and two years ago", {{2, "COMM"}, {1, "COMM"}}, 1},
        {"only two years ago", {{2, "COMM"}}, -1},
        {"a delivery note with the number", {{0, "DDTF"}, {0, "COMM"}, {0, "DDTF"}, {1, "DDTF"}}, 0},
        {"only delivery notes", {{0, "DDTF"}, {1, "DDTF"}}, -1},
    };
    int number = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QString numero = QString::number(++number);
        int expectedLines = 0;
        for (const Row& row : c.rows) {
            const bool order = QLatin1String(row.documento) == "COMM";
            const bool opened = row.yearsBack == c.opensYearsBack && order;
            expectedLines += opened ? 1 : 0;
            test::addOrderLine(db(), numero, QDate(m_year - row.yearsBack, 5, 5),
                               {{"documento", row.documento},
                                {"Tipomovimento", order ? "CO" : "CF"},
                                {"Nominativo", opened ? "Rossi Maria" : "Altro documento"},
                                {"prezzo2", opened ? 10 : 1000},
                                {"totale", opened ? 100 : 5000}});
        }
        const orders::Order o = orders::loadOrder(*m_host, numero, m_year);
        ASSERT_EQ(o.lines.size(), expectedLines);
        if (c.opensYearsBack < 0) {
            EXPECT_EQ(o.key, 0);
            EXPECT_TRUE(o.documento.isEmpty());
            continue;
        }
        EXPECT_EQ(o.orderKey().documento, "COMM");
        EXPECT_EQ(o.numero, numero);
        EXPECT_EQ(o.serie, QString::number(m_year - c.opensYearsBack));
        EXPECT_EQ(o.customer.nominativo, "Rossi Maria");
        EXPECT_EQ(o.acconto, Money::fromInteger(10 * expectedLines));
        EXPECT_EQ(o.totale, Money::fromInteger(100 * expectedLines));
        for (const QStringList& cells : o.lines)
            EXPECT_EQ(QStringList({cells[lines::Col_documento], cells[lines::Col_serie]}),
                      QStringList({"COMM", o.serie}));
    }
}

TEST_P(OrderTest, GridCellsShowMoneyDatesNumbersAndAllowedNullsAsText)
{
    test::addOrderLine(db(), "7", QDate(m_year, 3, 14),
                       {{"prezzo", 2.5},
                        {"prezzo2", 12345.6789}, // 12.345,68 after rounding to cents
                        {"attrib05", QDateTime(QDate(2026, 11, 20), QTime(0, 0))},
                        {"oradal", QDateTime(QDate(1899, 12, 30), QTime(13, 30))},
                        {"qta", 2.5},
                        {"Email", QVariant()}});
    const QStringList cells = cellsOf("7");
    ASSERT_EQ(cells.size(), lines::ColCount);
    EXPECT_EQ(cells[lines::Col_prezzo], Money::fromRaw(25000).toCurrencyText());
    EXPECT_EQ(cells[lines::Col_prezzo2], Money::fromRaw(123456800).toCurrencyText());
    EXPECT_EQ(cells[lines::Col_datadocumento], common::shortDate(QDate(m_year, 3, 14)));
    EXPECT_EQ(cells[lines::Col_attrib05], "20/11/2026");
    EXPECT_EQ(cells[lines::Col_oradal], "13:30:00") << "a time alone shows as a time";
    EXPECT_EQ(cells[lines::Col_qta], "2.5");
    EXPECT_EQ(cells[lines::Col_Email], "") << "a null e-mail reads as empty";
    EXPECT_EQ(cells[lines::Col_referente], "");
}

TEST_P(OrderTest, ANullWhereNoneMayBeStopsTheLoad)
{
    test::addOrderLine(db(), "8", QDate(m_year, 3, 14), {{"Descrizione2", QVariant()}});
    try {
        (void)cellsOf("8");
        FAIL() << "a null description must not load silently";
    } catch (const common::RuntimeError& e) {
        EXPECT_EQ(e.number(), 94);
    }
    test::addOrderLine(db(), "9", QDate(m_year, 3, 14), {{"prezzo", QVariant()}});
    EXPECT_THROW((void)cellsOf("9"), common::RuntimeError);
    test::addOrderLine(db(), "10", QDate(m_year, 3, 14), {{"attrib04", QVariant()}});
    EXPECT_THROW(orders::loadOrder(*m_host, "10", m_year), common::RuntimeError) << "nor in the header";
}

TEST_P(OrderTest, ProposedNumberIsTheCounterPlusOneOrNothingWithoutACounter)
{
    test::addCounter(db(), 2031, 41);
    const auto proposal = orders::proposeNumber(*m_host, "CO", 2031);
    ASSERT_TRUE(proposal.has_value());
    EXPECT_EQ(QStringList({proposal->numero, proposal->serie, proposal->documento}),
              QStringList({"42", "2031", "COMM"}));
    EXPECT_GT(proposal->counterKey, 0);
    EXPECT_FALSE(orders::proposeNumber(*m_host, "CO", 2032).has_value());
    EXPECT_FALSE(orders::proposeNumber(*m_host, "XX", 2031).has_value());
}

TEST_P(OrderTest, ALoadByNumberRunsThreeStatementsHoweverLongTheOrderAndReadsTheColumnsOnce)
{
    for (int line = 0; line < 30; ++line)
        test::addOrderLine(db(), "12", QDate(m_year, 3, 14));
    test::addOrderLine(db(), "13", QDate(m_year, 3, 14));
    (void)orders::loadOrder(*m_host, "13", m_year); // the first load in a session also reads the columns
    for (const char* number : {"12", "13"}) {
        QStringList run;
        db().setStatementLog([&run](const QString& sql, const QVariantList&) { run << sql; });
        const orders::Order o = orders::loadOrder(*m_host, number, m_year);
        db().setStatementLog({});
        EXPECT_EQ(o.lines.size(), QString(number) == "12" ? 30 : 1);
        // The order found by number, its lines and its sums.
        EXPECT_EQ(run.size(), 3) << run.join('\n').toStdString();
    }
}

XV_INSTANTIATE_FOR_ENGINES(OrderTest);

TEST(OrderSql, EveryValueOfTheKeyIsQuotedAndTheLinesAreOrderedByKey)
{
    const orders::OrderKey key{"CO'MM", "5'", "20'26"};
    EXPECT_EQ(orders::orderLinesSql(key), "select * from movimenti where documento='CO''MM' and numero='5''' "
                                          "and serie='20''26' order by rowid");
    EXPECT_TRUE(
        orders::orderSumsSql(key).endsWith("where documento='CO''MM' and numero='5''' and serie='20''26'"));
    EXPECT_TRUE(
        orders::ordersByNumberSql("5'", 2026).contains("commissione='5''' and val(serie) in (2025,2026)"));
}

// A workstation holds an order by its type, series and number: the same number of another year is another
// order.
TEST(OrderLockTest, AnOrderIsHeldByItsTypeSeriesAndNumber)
{
    const orders::OrderLock lock = orders::orderLock({"COMM", "8", "2026"});
    EXPECT_EQ(lock.table, "Commissioni COMM 2026");
    EXPECT_EQ(lock.record, 8);
    EXPECT_EQ(orders::orderLock({"COMM", "8", "2025"}).table, "Commissioni COMM 2025");
}

TEST(AccessoryReadingTest, OnlyAPlainIndexNamesAFormatOrAnAmuletOption)
{
    const struct
    {
        const char* stored;
        int format;
        int amulet;
    } cases[] = {
        {"", -1, -1},   {"0", 0, 0},     {"1", 1, 1},    {"2", 2, -1},   {"3", -1, -1},
        {"01", -1, -1}, {"1.0", -1, -1}, {" 1", -1, -1}, {"-1", -1, -1}, {"x", -1, -1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(orders::cardFormat(QString::fromLatin1(c.stored)), c.format) << c.stored;
        EXPECT_EQ(orders::amuletOption(QString::fromLatin1(c.stored)), c.amulet) << c.stored;
    }
}

} // namespace
