// SPDX-License-Identifier: MIT
#include "orders/OrderSelections.h"
#include "data/Recordset.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using orders::ChosenOrders;

const QString kSlipSelect = QStringLiteral(
    "SELECT numero,datadocumento,Codice_med,Descrizione1,qta as quantita,note as DataRitiro,"
    "datadal as DataRitiro1,dataal as DataRitiro2, rowid_controparti,Nominativo,codenominativo, "
    "rowid_med & '.bmp' as fotoart FROM movimenti ");

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

TEST(OrderSelectionsTest, EachKindOfControlSlipSelectsItsRows)
{
    const ChosenOrders chosen{"'12','15'", "'2025','2026'"};
    EXPECT_EQ(orders::slipSqlForOrder("8", "20'26"), kSlipSelect + "where numero='8' and serie='20''26'");
    EXPECT_EQ(orders::slipSqlForChosen(chosen),
              kSlipSelect + "where numero in ('12','15') and serie in ('2025','2026') ORDER BY numero asc");
    EXPECT_EQ(orders::slipSqlForLine(41), kSlipSelect + "where rowid=41");
}

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

} // namespace
