// SPDX-License-Identifier: MIT
#include "orders/OrderSelections.h"
#include "data/Recordset.h"
#include "TestDatabase.h"
#include "TestOrders.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using orders::ChosenOrders;

TEST(OrderSelectionsTest, ChosenRowsGiveTwoQuotedListsInTheOrderChosenWithQuotesDoubled)
{
    data::Recordset rows = data::Recordset::fromRows(
        {"numero", "serie", "Nominativo"},
        {{"15", "2026", "Rossi"}, {"12", 2025, "Bianchi"}, {"1'2", "2026", "Verdi"}});
    rows.moveLast(); // wherever the cursor was left, every row is read
    const ChosenOrders chosen = orders::chosenOrders(rows);
    EXPECT_EQ(chosen.numbers, "'15','12','1''2'");
    EXPECT_EQ(chosen.series, "'2026','2025','2026'");

    data::Recordset none = data::Recordset::fromRows({"numero", "serie"}, {});
    EXPECT_TRUE(orders::chosenOrders(none).isEmpty());
}

class SlipSelectionTest : public test::HostedTest
{
};

// The slips of an order, of the chosen orders and of one line are those of orders: a supplier's delivery
// note that shares the number and the year gets none.
TEST_P(SlipSelectionTest, EachKindOfControlSlipSelectsTheOrdersRowsAndNoDeliveryNotesSharingTheirNumbers)
{
    data::Database& db = h().GetConnection();
    const QDate day(2026, 6, 20);
    test::addCounter(db, 2026, 8);
    const int first = test::addOrderLine(db, "8", day);
    test::addOrderLine(db, "8", day);
    test::addOrderLine(db, "12", day.addYears(-1));
    const int note = test::addOrderLine(db, "8", day, {{"documento", "DDTF"}});
    const auto rows = [this](const QString& sql) { return h().OpenRecordset(sql).recordCount(); };
    const orders::OrderKey order{"COMM", "8", "2026"};
    EXPECT_EQ(rows(orders::slipSqlForOrder(order)), 2);
    EXPECT_EQ(rows(orders::slipSqlForChosen({"'8','12'", "'2026','2025'"}, "CO")), 3);
    EXPECT_EQ(rows(orders::slipSqlForChosen({"'8'", "'2026'"}, "XX")), 0) << "no order of another kind";
    EXPECT_EQ(rows(orders::slipSqlForLine(first, order)), 1);
    EXPECT_EQ(rows(orders::slipSqlForLine(note, order)), 0);
}

XV_INSTANTIATE_FOR_ENGINES(SlipSelectionTest);

TEST(OrderSelectionsTest, TheChangeOfStateSetsTheKindOfRowThatGoesWithTheNewStateAndTheCardsTakeOneDay)
{
    const ChosenOrders chosen{"'12'", "'2025'"};
    EXPECT_EQ(
        orders::statusChangeSql("EMESSO", "RITIRATO", chosen, "CO"),
        "update movimenti set tipogestione='EVENTO',tipomovimento='ENTRATA', StatoRiga='RITIRATO' where "
        "StatoRiga='EMESSO' AND numero in ('12') and serie in ('2025') and documento in (select "
        "tipodocumento from numeratori where codtipodoc='CO')");
    EXPECT_EQ(orders::statusChangeSql("RITIRATO", "EMESSO", chosen, "C'O"),
              "update movimenti set tipogestione='0',tipomovimento='CO', StatoRiga='EMESSO' where "
              "StatoRiga='RITIRATO' AND numero in ('12') and serie in ('2025') and documento in (select "
              "tipodocumento from numeratori where codtipodoc='C''O')");
    EXPECT_TRUE(orders::cardsListSql(QDate(2026, 6, 5)).endsWith("DataComm=DateValue('05/06/2026')"));
}

// A printed statement marks collected the rows of its order alone: its series, number and document.
TEST(OrderSelectionsTest, TheStatementMarksCollectedOnlyItsOrdersRows)
{
    EXPECT_EQ(orders::collectedStatusSql("COMM", 2026, "4'2"),
              "update movimenti set statoriga='RITIRATO' where serie='2026' and numero='4''2' and "
              "documento='COMM'");
}

} // namespace
