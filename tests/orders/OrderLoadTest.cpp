// SPDX-License-Identifier: MIT
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/RuntimeError.h"
#include "host/Host.h"
#include "lines/GridColumns.h"
#include "orders/OpenOrder.h"
#include "orders/OrderLoad.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;

class OrderLoadTest : public test::HostedTest
{
protected:
    int addLine(const QString& numero, const QString& serie, const std::function<void(Recordset&)>& adjust = {})
    {
        return test::addOrderLine(m_host->GetConnection(), numero, QDate(serie.toInt(), 3, 14), [&](Recordset& t) {
            t.setValue("Datadal", QDateTime(QDate(2026, 11, 20), QTime(0, 0)));
            t.setValue("attrib05", QDateTime(QDate(2026, 11, 20), QTime(0, 0)));
            t.setValue("qta", 2.5);
            if (adjust)
                adjust(t);
        });
    }

    QVector<int> columnTypes()
    {
        QVector<int> types;
        for (Recordset rs = m_host->OpenSchema(4, "movimenti"); !rs.eof(); rs.moveNext())
            types << rs.value("Type").toInt();
        return types;
    }

};

TEST_P(OrderLoadTest, GridCellsShowMoneyDatesNumbersAndAllowedNullsAsText)
{
    addLine("7", "2026", [](Recordset& t) {
        t.setMoney("prezzo", Money::fromRaw(25000));       // 2,50
        t.setMoney("prezzo2", Money::fromRaw(123456789)); // 12.345,68 after rounding to cents
        t.setValue("oradal", QDateTime(QDate(1899, 12, 30), QTime(13, 30)));
        t.setValue("Nominativo", "D'Angelo Carla");
    });
    Recordset rs = m_host->OpenRecordset(orders::orderLinesSql({"COMM", "7", "2026"}));
    ASSERT_FALSE(rs.eof());
    const QStringList cells = orders::gridCells(rs, columnTypes());
    ASSERT_EQ(cells.size(), lines::ColCount);
    EXPECT_EQ(cells[lines::Col_prezzo], Money::fromRaw(25000).toCurrencyText());
    EXPECT_EQ(cells[lines::Col_prezzo2], Money::fromRaw(123456800).toCurrencyText());
    EXPECT_TRUE(cells[lines::Col_prezzo].contains("2,50"));
    EXPECT_EQ(cells[lines::Col_datadocumento], "14/03/2026");
    EXPECT_EQ(cells[lines::Col_attrib05], "20/11/2026");
    EXPECT_EQ(cells[lines::Col_oradal], "13:30:00") << "a time alone shows as a time";
    EXPECT_EQ(cells[lines::Col_qta], "2.5");
    EXPECT_EQ(cells[lines::Col_numero], "7");
    EXPECT_EQ(cells[lines::Col_Nominativo], "D'Angelo Carla");
    EXPECT_EQ(cells[lines::Col_Email], "") << "a null e-mail reads as empty";
    EXPECT_EQ(cells[lines::Col_Strada], "");
    EXPECT_EQ(cells[lines::Col_referente], "");
    EXPECT_FALSE(cells[lines::Col_rowid].isEmpty());
}

TEST_P(OrderLoadTest, ANullWhereNoneMayBeIsAnError)
{
    addLine("8", "2026", [](Recordset& t) { t.setValue("Descrizione2", QVariant()); });
    Recordset rs = m_host->OpenRecordset(orders::orderLinesSql({"COMM", "8", "2026"}));
    try {
        (void)orders::gridCells(rs, columnTypes());
        FAIL() << "a null description must not load silently";
    } catch (const common::RuntimeError& e) {
        EXPECT_EQ(e.number(), 94);
    }
    addLine("9", "2026", [](Recordset& t) { t.setValue("prezzo", QVariant()); });
    Recordset money = m_host->OpenRecordset(orders::orderLinesSql({"COMM", "9", "2026"}));
    EXPECT_THROW((void)orders::gridCells(money, columnTypes()), common::RuntimeError);
}

TEST_P(OrderLoadTest, ProposedNumberIsTheCounterPlusOneOrNothingWithoutACounter)
{
    data::Database& db = m_host->GetConnection();
    test::addCounter(db, 2026, 41);
    const auto proposal = orders::proposeNumber(*m_host, "CO", 2026);
    ASSERT_TRUE(proposal.has_value());
    EXPECT_EQ(proposal->numero, "42");
    EXPECT_EQ(proposal->serie, "2026");
    EXPECT_EQ(proposal->documento, "COMM");
    EXPECT_GT(proposal->counterKey, 0);
    EXPECT_FALSE(orders::proposeNumber(*m_host, "CO", 2027).has_value());
    EXPECT_FALSE(orders::proposeNumber(*m_host, "XX", 2026).has_value());
}

XV_INSTANTIATE_FOR_ENGINES(OrderLoadTest);

TEST(CustomerTest, AddressTipHasNoBlankBeforeTheProvince)
{
    orders::Customer c;
    c.indirizzo = "Via Roma 1";
    c.cap = "80100";
    c.comune = "Napoli";
    c.provincia = "NA";
    EXPECT_EQ(c.addressTip(), "Via Roma 1 - CAP: 80100 - Napoli(NA)");
}

} // namespace
