// SPDX-License-Identifier: MIT
#include "../common/ErrorNumberOf.h"
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/Money.h"
#include "common/RuntimeError.h"
#include "data/Recordset.h"
#include "data/Schema.h"
#include "data/TypeCodes.h"
#include "lines/GridColumns.h"
#include "orders/OrderCells.h"
#include "orders/OrderSave.h"

#include <QSqlQuery>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;
namespace TypeCode = data::TypeCode;

const QDateTime kNow(QDate(2026, 11, 23), QTime(17, 45, 12));

// Every control character but NUL (which no engine keeps), and the line and paragraph separators.
QString controlCharacters()
{
    QString text = QStringLiteral("a\tb\rc\nd");
    for (char16_t c = 1; c < 0x20; ++c)
        text += QChar(c);
    return text + QChar(0x7F) + QChar(0x85) + QChar(0x2028) + QStringLiteral("fine");
}

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
};

// Every column of an order line, each type taking in turn the values easy to lose, stored, loaded into
// cells, written back by the save's rule, stored again and loaded again, shows the same cell. Texts are
// any an operator may paste: each reads back as it was written.
TEST_P(OrderCellsRoundTripTest, EveryColumnOfALineSurvivesASave)
{
    const QVector<data::ColumnInfo> columns = data::tableColumns(db(), "movimenti");
    ASSERT_EQ(columns.size(), lines::ColCount);
    QStringList names;
    QVector<int> types;
    for (const data::ColumnInfo& column : columns) {
        names << column.name;
        types << column.typeCode;
    }
    const auto load = [&](int key) {
        Recordset rs = Recordset::open(db(), "select * from movimenti where rowid=" + QString::number(key));
        return orders::gridCells(rs, types);
    };
    const QDateTime zeroDay(QDate(1899, 12, 30), QTime(0, 0));
    const QMap<int, QVariantList> samples = {
        {TypeCode::SmallInt, {3, 0}},
        {TypeCode::Integer, {17, 12345}},
        {TypeCode::Single, {2.5, 10.5}},
        {TypeCode::Double, {2.125}},
        {TypeCode::Currency, {12345, -35000, 12345678, Q_INT64_C(12345678900), 0}}, // raw, four decimals
        {TypeCode::Date,
         {QDateTime(QDate(2026, 2, 28), QTime(17, 45, 12)), QDate(2026, 11, 20).startOfDay(),
          zeroDay.addSecs(10 * 3600 + 1800)}},
        {TypeCode::Text,
         {"D'Angelo", "", "20/11/2026", "'; drop table movimenti; --", "C:\\dati\\' or '1'='1 \\",
          QStringLiteral("Bomboniere è ").repeated(800).left(10000), controlCharacters(),
          QStringLiteral("Auguri 🎉💍 𝄞 𠀋 ñandú [now] #1/1/2026# & 100% _x_ !")}}};
    QMap<int, int> used;
    QMap<int, QString> texts;
    Recordset table = Recordset::openTable(db(), "movimenti");
    table.addNew();
    for (int c = 1; c < columns.size(); ++c) {
        const data::ColumnInfo& column = columns[c];
        const QVariantList& values = samples[column.typeCode];
        ASSERT_FALSE(values.isEmpty()) << column.name.toStdString();
        const QVariant value = values[used[column.typeCode]++ % values.size()];
        if (column.typeCode == TypeCode::Text)
            texts[c] = value.toString();
        if (column.typeCode == TypeCode::Currency)
            table.setMoney(column.name, Money::fromRaw(value.toLongLong()));
        else
            table.setValue(column.name, value);
    }
    table.update();
    const QStringList first = load(table.value("rowid").toInt());
    for (auto text = texts.cbegin(); text != texts.cend(); ++text)
        EXPECT_EQ(first[text.key()], text.value()) << names[text.key()].toStdString();

    table.addNew();
    orders::writeCells(table, names, types, first, kNow);
    table.update();
    const QStringList second = load(table.value("rowid").toInt());
    ASSERT_EQ(second.size(), first.size());
    for (qsizetype c = 1; c < first.size(); ++c)
        EXPECT_EQ(second[c], first[c]) << names[c].toStdString();
    EXPECT_EQ(first[lines::Col_quantita], "2,125");
}

// The lines of an order as a saved one holds them in the grid, with the grid's names and type codes.
orders::OrderWrite savedLines(data::Database& db, int count)
{
    const int key = test::addOrderLine(db, "5", QDate(2026, 11, 20));
    orders::OrderWrite order;
    for (const data::ColumnInfo& column : data::tableColumns(db, "movimenti")) {
        order.grid.names << column.name;
        order.grid.typeCodes << column.typeCode;
    }
    Recordset rs = Recordset::open(db, "select * from movimenti where rowid=" + QString::number(key));
    order.grid.lines = QVector<QStringList>(count, orders::gridCells(rs, order.grid.typeCodes));
    order.key = {"COMM", "5", "2026"};
    return order;
}

TEST_P(OrderCellsRoundTripTest, AnOrderOfAnyLengthIsWrittenThroughTheSameStatements)
{
    qint64 prepared[2] = {};
    int i = 0;
    for (int lines : {2, 6}) {
        orders::OrderWrite order = savedLines(db(), lines);
        const qint64 before = db().statementsPrepared();
        ASSERT_TRUE(orders::writeOrder(db(), orders::WriteMode::Update, order, {}).done);
        prepared[i++] = db().statementsPrepared() - before;
        QSqlQuery q = db().executeBound("select count(*) from movimenti where numero='5'");
        ASSERT_TRUE(q.next());
        EXPECT_EQ(q.value(0).toInt(), lines);
    }
    EXPECT_EQ(prepared[1], prepared[0]) << "as many statements for six lines as for two";
    EXPECT_LE(prepared[0], 2) << "one insert, and one stock update at most";
}

// Where the clocks go forward at midnight a day has no midnight in local time; the dates of an order are
// written as the grid shows them all the same.
TEST_P(OrderCellsRoundTripTest, ADayWithoutAMidnightIsWrittenAsShown)
{
    struct Zone
    {
        explicit Zone(const char* zone) : m_before(qgetenv("TZ")), m_had(qEnvironmentVariableIsSet("TZ"))
        {
            qputenv("TZ", zone);
            tzset();
        }
        ~Zone()
        {
            if (m_had)
                qputenv("TZ", m_before);
            else
                qunsetenv("TZ");
            tzset();
        }
        QByteArray m_before;
        bool m_had;
    } chile("America/Santiago"); // 6 September 2026 begins at 01:00

    orders::OrderWrite order = savedLines(db(), 1);
    order.grid.lines[0][lines::Col_Datadal] = "06/09/2026";
    order.grid.lines[0][lines::Col_attrib05] = "06/09/2026 00:00:00";
    ASSERT_TRUE(orders::writeOrder(db(), orders::WriteMode::Update, order, {}).done);
    const bool sqlite = GetParam() == data::Engine::SQLite;
    QSqlQuery q =
        db().executeBound(sqlite ? "select Datadal, attrib05 from movimenti where numero='5'"
                                 : "select Datadal::text, attrib05::text from movimenti where numero='5'");
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.value(0).toString(), "2026-09-06 00:00:00");
    EXPECT_EQ(q.value(1).toString(), "2026-09-06 00:00:00");
}

// Found once for a whole order, the fields are still named in any case, and a name the table lacks fails
// only when its cell is written, after the cells before it, as it does when every name is looked up.
TEST_P(OrderCellsRoundTripTest, FieldsFoundOnceWriteAndFailAsByName)
{
    const QStringList names = {"NUMERO", "strada", "nessuno", "prezzo"};
    const QVector<int> types = {TypeCode::Text, TypeCode::Text, TypeCode::Text, TypeCode::Currency};
    Recordset table = Recordset::openTable(db(), "movimenti");
    const QVector<int> indexes = orders::fieldIndexes(table, names);
    EXPECT_EQ(indexes[2], -1);
    const struct
    {
        QStringList cells;
        int error;
    } cases[] = {{{"7", "a", "x", "1,00"}, 3265}, {{"7", "a"}, 0}, {{"7", "a", "", "abc"}, 3265}};
    for (const auto& [cells, error] : cases) {
        SCOPED_TRACE(cells.join('|').toStdString());
        for (bool once : {false, true}) {
            table.addNew();
            const auto write = [&] {
                if (once)
                    orders::writeCells(table, names, indexes, types, cells, kNow);
                else
                    orders::writeCells(table, names, types, cells, kNow);
            };
            EXPECT_EQ(common::test::errorNumberOf(write), error);
            table.cancelUpdate();
        }
    }
    const QStringList badFirst = {"7", "a", "abc", "1,00"};
    const QVector<int> moneyFirst = {TypeCode::Text, TypeCode::Text, TypeCode::Currency, TypeCode::Currency};
    table.addNew();
    EXPECT_EQ(common::test::errorNumberOf(
                  [&] { orders::writeCells(table, names, indexes, moneyFirst, badFirst, kNow); }),
              common::test::TypeMismatch);
    table.cancelUpdate();

    table.addNew();
    orders::writeCells(table, names.mid(0, 2), indexes.mid(0, 2), types, {"8", "Via Roma"}, kNow);
    table.update();
    const Recordset saved = Recordset::open(db(), "select numero, Strada from movimenti");
    EXPECT_EQ(saved.text("numero"), "8");
    EXPECT_EQ(saved.text("strada"), "Via Roma");
}

XV_INSTANTIATE_FOR_ENGINES(OrderCellsRoundTripTest);

} // namespace
