// SPDX-License-Identifier: MIT
#include "../common/ErrorNumberOf.h"

#include "lines/Totals.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace xv::common::test;
using xv::common::Money;
using namespace xv::lines;

QString currency(qint64 raw)
{
    return Money::fromRaw(raw).toCurrencyText();
}

TEST(TotalsTest, LineAmountIsPriceTimesQuantityInCurrencyText)
{
    EXPECT_EQ(lineAmountText(3, Money::fromRaw(25000)), currency(75000));
    EXPECT_TRUE(lineAmountText(3, Money::fromRaw(25000)).startsWith(QStringLiteral("7,50")));

    const struct
    {
        double quantity;
        qint64 price;
        qint64 shown; // what the text reads back as: cents, halves to even
    } cases[] = {
        {3, 25000, 75000},   {0.5, 19900, 10000},     {0.5, 19700, 9800},
        {-2, 15000, -30000}, {1000, 12345, 12345000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.quantity);
        EXPECT_EQ(Money::parse(lineAmountText(c.quantity, Money::fromRaw(c.price))), Money::fromRaw(c.shown));
    }

    const double inf = std::numeric_limits<double>::infinity();
    for (double quantity : {1e300, 1e16, inf, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(errorNumberOf([&] { lineAmountText(quantity, Money::fromInteger(1)); }), Overflow)
            << quantity;
}

TEST(TotalsTest, NewLineAmountsTakeBothDiscountsFromTheGrossAndLeaveTheTaxOutOfTheTotal)
{
    const struct
    {
        QString amount;
        const char* sconto1;
        const char* sconto2;
        const char* percentuale;
        qint64 gross;
        QString imponibile;
        const char16_t* imposta;
    } cases[] = {
        {currency(75000), "", "0", "22", 75000, currency(75000), u"1,65"},
        {currency(1000000), "10", "5", "22", 1000000, currency(850000), u"18,7"},
        // the gross goes through the currency format first
        {QStringLiteral("7,505"), "", "", "22", 75000, currency(75000), u"1,65"},
        // discounts read as single precision show at this size
        {currency(100000000000), "33.3", "", "0", 100000000000, currency(66700000800), u"0"},
        {currency(10000), "", "", "10.1", 10000, currency(10000), u"0,101000003814697"},
        {currency(100), "", "", "0.001", 100, currency(100), u"0,000000100000004749745"},
        {currency(10000000000000), "", "", "22", 10000000000000, currency(10000000000000), u"220000000"},
        {currency(-75000), "", "", "22", -75000, currency(-75000), u"-1,65"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.amount.toStdString());
        const LineAmounts amounts =
            newLineAmounts(c.amount, QString::fromLatin1(c.sconto1), QString::fromLatin1(c.sconto2),
                           QString::fromLatin1(c.percentuale));
        EXPECT_EQ(amounts.gross, Money::fromRaw(c.gross));
        EXPECT_EQ(amounts.imponibile, c.imponibile);
        EXPECT_EQ(amounts.totale, c.imponibile);
        EXPECT_EQ(amounts.imposta, QString::fromUtf16(c.imposta));
        EXPECT_TRUE(Money::tryParse(amounts.imposta).has_value());
    }
    EXPECT_EQ(errorNumberOf([] { newLineAmounts(QStringLiteral("dieci"), {}, {}, {}); }), TypeMismatch);
    EXPECT_EQ(errorNumberOf([] { newLineAmounts(currency(10000), QStringLiteral("1e40"), {}, {}); }),
              Overflow);
}

TEST(TotalsTest, OrderTotalAddsTheCellsAndCountsBlanksAsZero)
{
    const QStringList cells = {currency(75000), QString(), currency(122500), QStringLiteral(" "),
                               currency(12345000)};
    EXPECT_EQ(orderTotal(cells), Money::fromRaw(12542500));
    EXPECT_EQ(orderTotal({}), Money());
    EXPECT_EQ(errorNumberOf([] {
                  orderTotal({QStringLiteral("7,50"), QStringLiteral("dieci")});
              }),
              TypeMismatch);
}

TEST(TotalsTest, QuantityTotalRoundsAfterEveryLine)
{
    const struct
    {
        QStringList cells;
        qint32 total;
    } cases[] = {
        {{}, 0},
        {{"1.5", "1.5"}, 4},
        {{"2.5"}, 2},
        {{"0.5", "0.5", "0.5"}, 0},
        {{"-1.5"}, -2},
        {{"3", "pezzi", "10 pz"}, 13},
        {{"2147483647.4"}, 2147483647},
        {{"-2147483648.5"}, -2147483647 - 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.cells.join(u'|').toStdString());
        EXPECT_EQ(quantityTotal(c.cells), c.total);
    }
    EXPECT_EQ(errorNumberOf([] { quantityTotal({"2147483647", "1"}); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { quantityTotal({"2147483647.5"}); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { quantityTotal({"-2147483648", "-1"}); }), Overflow);
    EXPECT_EQ(quantityTotalText(-12), QStringLiteral("Tot.Q.tà: -12"));
}

} // namespace
