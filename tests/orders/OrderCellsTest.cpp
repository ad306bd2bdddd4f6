// SPDX-License-Identifier: MIT
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/Money.h"
#include "common/RuntimeError.h"
#include "data/Recordset.h"
#include "data/Schema.h"
#include "data/TypeCodes.h"
#include "lines/GridColumns.h"
#include "orders/OrderCells.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;
namespace TypeCode = data::TypeCode;

const QDateTime kNow(QDate(2026, 11, 23), QTime(17, 45, 12));

TEST(OrderCellsTest, ACellBecomesTheValueItsColumnTypeAsksFor)
{
    const QDateTime zeroDay(QDate(1899, 12, 30), QTime(10, 30));
    const std::tuple<int, const char16_t*, QVariant> cases[] = {
        {TypeCode::SmallInt, u"3", 3},
        {TypeCode::SmallInt, u"2.5", 2}, // halves to even
        {TypeCode::Integer, u"", 0},
        {TypeCode::Integer, u"12 pezzi", 12},
        {TypeCode::Single, u"2.5", 2.5},
        {TypeCode::Single, u"", 0.0},
        {TypeCode::Double, u"2,125", 2.125},
        {TypeCode::Double, u"", 0.0},
        {TypeCode::Currency, u"1.234,57 \u20ac", "1234.5700"},
        {TypeCode::Currency, u"", "0.0000"},
        {TypeCode::Date, u"", kNow},
        {TypeCode::Date, u"28/02/2026", QDateTime(QDate(2026, 2, 28), QTime(0, 0))},
        {TypeCode::Date, u"28/02/2026 10:30:00", QDateTime(QDate(2026, 2, 28), QTime(10, 30))},
        {TypeCode::Date, u"10:30:00", zeroDay},
        {TypeCode::Text, u" D'Angelo ", " D'Angelo "},
        {TypeCode::Text, u"", ""},
    };
    for (const auto& [type, cell, expected] : cases) {
        const QString text = QString::fromUtf16(cell);
        SCOPED_TRACE(testing::Message() << type << " '" << text.toStdString() << "'");
        const auto value = orders::cellToField("campo", type, text, kNow);
        ASSERT_TRUE(value);
        EXPECT_EQ(*value, expected);
    }
    EXPECT_FALSE(orders::cellToField("rowid", TypeCode::Integer, "5", kNow));
    EXPECT_FALSE(orders::cellToField("RowId", TypeCode::Integer, "5", kNow));
    EXPECT_FALSE(orders::cellToField("", TypeCode::Text, "x", kNow));
    for (const auto& [type, cell] :
         {std::pair{TypeCode::Date, "domani"}, std::pair{TypeCode::Date, "31/02/2026"},
          std::pair{TypeCode::Currency, "abc"}, std::pair{TypeCode::Double, "2..5"}}) {
        SCOPED_TRACE(cell);
        try {
            (void)orders::cellToField("campo", type, cell, kNow);
            ADD_FAILURE() << "the cell must be refused";
        } catch (const common::RuntimeError& e) {
            EXPECT_EQ(e.number(), 13);
        }
    }
}

class OrderCellsRoundTripTest : public test::SchemaTest
{
protected:
    QStringList load(int key)
    {
        Recordset rs = Recordset::open(db(), "select * from movimenti where rowid=" + QString::number(key));
        return orders::gridCells(rs, types());
    }
    QStringList names()
    {
        QStringList result;
        for (const data::ColumnInfo& column : data::tableColumns(db(), "movimenti"))
            result << column.name;
        return result;
    }
    QVector<int> types()
    {
        QVector<int> result;
        for (const data::ColumnInfo& column : data::tableColumns(db(), "movimenti"))
            result << column.typeCode;
        return result;
    }
};

// Stored, loaded into cells, written back by the save's rule, stored again and loaded again: every
// column of an order line shows the same cell.
TEST_P(OrderCellsRoundTripTest, EveryColumnOfALineSurvivesASave)
{
    const QDateTime zeroDay(QDate(1899, 12, 30), QTime(0, 0));
    const int key = test::addOrderLine(db(), "7", QDate(2026, 2, 28),
                                       {{"Tipogestione", "1"},
                                        {"Tipomovimento", "CO"},
                                        {"documento", "COMM"},
                                        {"codice_med", "BOM001"},
                                        {"Descrizione1", "Scatola"},
                                        {"Descrizione2", ""},
                                        {"Nominativo", "D'Angelo"},
                                        {"codenominativo", "C001"},
                                        {"Indirizzo", "Via Roma 1"},
                                        {"Cap", "80100"},
                                        {"comune", "Napoli"},
                                        {"Spedizione", ""},
                                        {"provincia", "NA"},
                                        {"Strada", "SS 7"},
                                        {"telefono", "081 123"},
                                        {"Cellulare", ""},
                                        {"Email", "a@b.it"},
                                        {"attrib00", "1"},
                                        {"attrib01", "0"},
                                        {"attrib02", "Mandorla"},
                                        {"attrib03", ""},
                                        {"attrib04", "Matrimonio"},
                                        {"attrib06", "Anna e Luca"},
                                        {"attrib07", "nota"},
                                        {"attrib08", ""},
                                        {"attrib09", "x"},
                                        {"attrib10", "y"},
                                        {"StatoRiga", "EMESSO"},
                                        {"Tipo", "A"},
                                        {"note", "20/11/2026"},
                                        {"pagamento", "Contanti"},
                                        {"referente", ""},
                                        {"riferimenti", "tel. 333"},
                                        {"rowid_utente", 2},
                                        {"Riga", 3},
                                        {"rowid_testata", 0},
                                        {"rowid_deposito", 1},
                                        {"rowid_med", 17},
                                        {"rowid_controparti", 12},
                                        {"codice_iva", 22},
                                        {"Rowid_Pagamento", 4},
                                        {"qta", 2.5},
                                        {"quantita", 2.125},
                                        {"sconto1", 10.5},
                                        {"sconto2", 0},
                                        {"percentuale", 22},
                                        {"prezzo", 1.2345},
                                        {"prezzo2", 0},
                                        {"imponibile", -3.5},
                                        {"imposta", 1234.5678},
                                        {"totale", 1234567.89},
                                        {"datareg", QDateTime(QDate(2026, 2, 28), QTime(17, 45, 12))},
                                        {"Datadal", QDate(2026, 11, 20)},
                                        {"oradal", zeroDay.addSecs(10 * 3600 + 1800)},
                                        {"Dataal", QDateTime(QDate(2026, 11, 21), QTime(9, 15))},
                                        {"oraal", zeroDay.addSecs(18 * 3600)},
                                        {"attrib05", QDate(2026, 6, 13)}});
    const QStringList first = load(key);

    Recordset table = Recordset::openTable(db(), "movimenti");
    table.addNew();
    orders::writeCells(table, names(), types(), first, kNow);
    table.update();
    const QStringList second = load(table.value("rowid").toInt());

    ASSERT_EQ(second.size(), first.size());
    const QStringList columns = names();
    for (qsizetype c = 1; c < first.size(); ++c) {
        SCOPED_TRACE(columns[c].toStdString());
        EXPECT_EQ(second[c], first[c]);
    }
    EXPECT_EQ(first[lines::Col_quantita], "2,125");
}

XV_INSTANTIATE_FOR_ENGINES(OrderCellsRoundTripTest);

} // namespace
