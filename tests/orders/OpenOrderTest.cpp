// SPDX-License-Identifier: MIT
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/RuntimeError.h"
#include "host/Host.h"
#include "lines/GridColumns.h"
#include "orders/OpenOrder.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;

class OpenOrderTest : public test::HostedTest
{
protected:
    void SetUp() override
    {
        HostedTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        // Orders are the documents of a type that has an order counter.
        test::addCounter(m_host->GetConnection(), QDate::currentDate().year(), 0);
        m_host->GetConnection().executeBound(
            "insert into numeratori (codtipodoc, tipodocumento, serie, numero) "
            "values ('CF', 'DDTF', ?, 0)",
            {QString::number(QDate::currentDate().year())});
    }
    int addLine(const QString& numero, const QDate& date, const std::function<void(Recordset&)>& adjust = {})
    {
        return test::addOrderLine(m_host->GetConnection(), numero, date, adjust);
    }
    orders::OpenOrder loadByNumber(const QString& number, int year)
    {
        return orders::loadOrder(*m_host, number, year);
    }
    // A supplier's delivery note: another document type, with a counter of its own, sharing the numbers.
    int addDeliveryLine(const QString& numero, const QDate& date,
                        const std::function<void(Recordset&)>& adjust = {})
    {
        return addLine(numero, date, [&adjust](Recordset& t) {
            t.setValue("documento", "DDTF");
            t.setValue("Tipomovimento", "CF");
            t.setValue("Nominativo", "Confetteria Sulmonese Srl");
            if (adjust)
                adjust(t);
        });
    }
};

TEST_P(OpenOrderTest, TheWholeOrderComesInOneValue)
{
    const int year = QDate::currentDate().year();
    const int first = addLine("11", QDate(year, 3, 14), [year](Recordset& t) {
        t.setValue("attrib04", "Matrimonio");
        t.setValue("attrib05", QDateTime(QDate(year, 6, 20), QTime(0, 0)));
        t.setValue("attrib06", "Marco e Giulia");
        t.setValue("Datadal", QDateTime(QDate(year, 6, 18), QTime(0, 0)));
        t.setValue("Nominativo", "Rossi Maria");
        t.setValue("telefono", "081 555 1234");
        t.setValue("Cellulare", QVariant());
        t.setValue("Email", QVariant());
        t.setValue("Rowid_Pagamento", 3);
        t.setValue("riferimenti", "Sala Aurora");
        t.setValue("attrib00", "1");
        t.setValue("attrib01", "0");
        t.setValue("attrib02", "5");
        t.setMoney("prezzo2", Money::fromInteger(50));
        t.setMoney("totale", Money::fromInteger(120));
    });
    addLine("11", QDate(year, 3, 14), [](Recordset& t) {
        t.setValue("codice_med", "CNF002");
        t.setMoney("totale", Money::fromRaw(305000));
    });

    const orders::OpenOrder o = loadByNumber("11", year);
    EXPECT_EQ(o.key, first);
    EXPECT_EQ(o.numero, "11");
    EXPECT_EQ(o.serie, QString::number(year));
    EXPECT_EQ(o.documento, "COMM");
    EXPECT_EQ(o.tipomovimento, "CO");
    EXPECT_EQ(o.datadocumento.date(), QDate(year, 3, 14));
    EXPECT_EQ(o.tipoEvento, "Matrimonio");
    EXPECT_EQ(o.dataEvento, QDate(year, 6, 20).toString("dd/MM/yyyy"));
    EXPECT_EQ(o.soggettiEvento, "Marco e Giulia");
    EXPECT_EQ(o.datadal, QDate(year, 6, 18).toString("dd/MM/yyyy"));
    EXPECT_EQ(o.riferimenti, "Sala Aurora");
    EXPECT_EQ(o.statoRiga, "EMESSO");
    EXPECT_EQ(o.biglietti, "1");
    EXPECT_EQ(o.amuleto, "0");
    EXPECT_EQ(o.confetti, "5");
    EXPECT_EQ(o.mandorla, "");
    EXPECT_EQ(o.acconto, Money::fromInteger(50));
    EXPECT_EQ(o.totale, Money::fromRaw(1505000));
    EXPECT_EQ(o.customer.nominativo, "Rossi Maria");
    EXPECT_EQ(o.customer.telefono, "081 555 1234");
    EXPECT_EQ(o.customer.cellulare, "") << "a null mobile reads as empty";
    EXPECT_EQ(o.customer.email, "");
    EXPECT_EQ(o.customer.rowidPagamento, "3");
    ASSERT_EQ(o.lines.size(), 2);
    EXPECT_EQ(o.lines[0].size(), lines::ColCount);
    EXPECT_EQ(o.lines[0][lines::Col_rowid], QString::number(first));
    EXPECT_EQ(o.lines[1][lines::Col_codice_med], "CNF002");
}

TEST_P(OpenOrderTest, AnUnknownNumberGivesAnEmptyOrder)
{
    addLine("11", QDate::currentDate());
    const orders::OpenOrder o = loadByNumber("12", QDate::currentDate().year());
    EXPECT_EQ(o.key, 0);
    EXPECT_TRUE(o.numero.isEmpty());
    EXPECT_TRUE(o.lines.isEmpty());
    EXPECT_EQ(o.statoRiga, "EMESSO");
    EXPECT_EQ(o.acconto, Money());
}

TEST_P(OpenOrderTest, ANullWhereAValueMustBeStopsTheLoad)
{
    addLine("11", QDate::currentDate(), [](Recordset& t) { t.setValue("attrib04", QVariant()); });
    EXPECT_THROW(loadByNumber("11", QDate::currentDate().year()), common::RuntimeError);
}

TEST_P(OpenOrderTest, ATypedNumberOpensThisYearsOrderElseLastYearsAndNoOtherRows)
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
    const int year = QDate::currentDate().year();
    int number = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QString numero = QString::number(++number);
        int expectedLines = 0;
        for (const Row& row : c.rows) {
            const bool opened = row.yearsBack == c.opensYearsBack && QLatin1String(row.documento) == "COMM";
            expectedLines += opened ? 1 : 0;
            auto fill = [opened](Recordset& t) {
                t.setValue("Nominativo", opened ? "Rossi Maria" : "Altro documento");
                t.setMoney("prezzo2", Money::fromInteger(opened ? 10 : 1000));
                t.setMoney("totale", Money::fromInteger(opened ? 100 : 5000));
            };
            const QDate date(year - row.yearsBack, 5, 5);
            if (QLatin1String(row.documento) == "COMM")
                addLine(numero, date, fill);
            else
                addDeliveryLine(numero, date, fill);
        }
        const orders::OpenOrder o = loadByNumber(numero, year);
        ASSERT_EQ(o.lines.size(), expectedLines);
        if (c.opensYearsBack < 0) {
            EXPECT_EQ(o.key, 0);
            EXPECT_TRUE(o.documento.isEmpty());
            continue;
        }
        EXPECT_EQ(o.documento, "COMM");
        EXPECT_EQ(o.numero, numero);
        EXPECT_EQ(o.serie, QString::number(year - c.opensYearsBack));
        EXPECT_EQ(o.customer.nominativo, "Rossi Maria");
        EXPECT_EQ(o.acconto, Money::fromInteger(10 * expectedLines));
        EXPECT_EQ(o.totale, Money::fromInteger(100 * expectedLines));
        for (const QStringList& cells : o.lines) {
            EXPECT_EQ(cells[lines::Col_documento], "COMM");
            EXPECT_EQ(cells[lines::Col_serie], o.serie);
        }
    }
}

TEST_P(OpenOrderTest, AKeyOpensExactlyThatOrderOfAnyYear)
{
    const int year = QDate::currentDate().year();
    addLine("14", QDate(year, 1, 10));
    const int old =
        addLine("14", QDate(year - 2, 1, 10), [](Recordset& t) { t.setValue("Nominativo", "Greco Lucia"); });
    addDeliveryLine("14", QDate(year - 2, 1, 11));
    const orders::OpenOrder o =
        orders::loadOrder(*m_host, orders::OrderKey{"COMM", "14", QString::number(year - 2)});
    EXPECT_EQ(o.key, old);
    EXPECT_EQ(o.lines.size(), 1);
    EXPECT_EQ(o.customer.nominativo, "Greco Lucia");
    EXPECT_TRUE(orders::loadOrder(*m_host, orders::OrderKey{"COMM", "14", QString::number(year - 1)})
                    .lines.isEmpty());
}

TEST_P(OpenOrderTest, LinesComeInTheOrderOfTheirRowKeys)
{
    const QDate today = QDate::currentDate();
    QVector<int> keys;
    for (const char* code : {"BOM001", "AST002", "CNF003"})
        keys << addLine("15", today, [code](Recordset& t) { t.setValue("codice_med", code); });
    // A row whose indexed values change moves to the end of PostgreSQL's table and of its indexes; only
    // an explicit order keeps it first.
    m_host->GetConnection().executeBound("update movimenti set codice_med='BOM009' where rowid=?", {keys[0]});
    const orders::OpenOrder o = loadByNumber("15", today.year());
    ASSERT_EQ(o.lines.size(), 3);
    EXPECT_EQ(o.key, keys[0]);
    EXPECT_EQ(o.lines[0][lines::Col_codice_med], "BOM009");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(o.lines[i][lines::Col_rowid], QString::number(keys[i]));
}

TEST(OpenOrderSql, EveryValueOfTheKeyIsQuotedAndTheLinesAreOrderedByKey)
{
    const orders::OrderKey key{"CO'MM", "5'", "20'26"};
    EXPECT_EQ(orders::orderLinesSql(key), "select * from movimenti where documento='CO''MM' and numero='5''' "
                                          "and serie='20''26' order by rowid");
    EXPECT_TRUE(
        orders::orderSumsSql(key).endsWith("where documento='CO''MM' and numero='5''' and serie='20''26'"));
    EXPECT_TRUE(
        orders::ordersByNumberSql("5'", 2026).contains("commissione='5''' and val(serie) in (2025,2026)"));
}

XV_INSTANTIATE_FOR_ENGINES(OpenOrderTest);

} // namespace

namespace {

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
        EXPECT_EQ(xv::orders::cardFormat(QString::fromLatin1(c.stored)), c.format) << c.stored;
        EXPECT_EQ(xv::orders::amuletOption(QString::fromLatin1(c.stored)), c.amulet) << c.stored;
    }
}

} // namespace
