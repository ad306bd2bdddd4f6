// SPDX-License-Identifier: MIT
#include "../common/ErrorNumberOf.h"

#include "lines/Totals.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>
#include <utility>

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
    EXPECT_EQ(lineAmountText(3, Money::fromRaw(25000)), QStringLiteral("7,50\u00a0€"));
    // quantity, price, the amount shown: cents rounded halves away from zero
    const std::tuple<double, qint64, qint64> cases[] = {
        {0.5, 19900, 10000}, {0.5, 19700, 9900}, {-0.5, 19700, -9900}, {-2, 15000, -30000}};
    for (const auto& [quantity, price, shown] : cases)
        EXPECT_EQ(lineAmountText(quantity, Money::fromRaw(price)), currency(shown))
            << quantity << " x " << price;

    for (double quantity :
         {1e16, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(errorNumberOf([&] { lineAmountText(quantity, Money::fromInteger(1)); }), Overflow)
            << quantity;
}

TEST(TotalsTest, NewLineAmountsTakeBothDiscountsFromTheGrossAndLeaveTheTaxOutOfTheTotal)
{
    // Percentages are read as single precision, which shows in large discounts and in the tax text.
    const std::tuple<qint64, const char*, const char*, const char*, qint64, const char16_t*> cases[] = {
        {75000, "", "0", "22", 75000, u"1,65"},
        {1000000, "10", "5", "22", 850000, u"18,7"},
        {-75000, "", "", "22", -75000, u"-1,65"},
        {100000000000, "33.3", "", "0", 66700000800, u"0"},
        {100, "", "", "0.001", 100, u"0,000000100000004749745"},
        {10000000000000, "", "", "22", 10000000000000, u"220000000"},
    };
    for (const auto& [gross, sconto1, sconto2, percentuale, imponibile, imposta] : cases) {
        SCOPED_TRACE(gross);
        const LineAmounts amounts =
            newLineAmounts(currency(gross), QString::fromLatin1(sconto1), QString::fromLatin1(sconto2),
                           QString::fromLatin1(percentuale));
        EXPECT_EQ(amounts.gross, Money::fromRaw(gross));
        EXPECT_EQ(amounts.imponibile, currency(imponibile));
        EXPECT_EQ(amounts.totale, currency(imponibile));
        EXPECT_EQ(amounts.imposta, QString::fromUtf16(imposta));
        EXPECT_TRUE(Money::tryParse(amounts.imposta).has_value());
    }
    // The gross goes through the currency format first.
    const LineAmounts rounded = newLineAmounts(QStringLiteral("7,505"), {}, {}, QStringLiteral("22"));
    EXPECT_EQ(rounded.gross, Money::fromRaw(75100));
    EXPECT_EQ(rounded.imposta, QStringLiteral("1,6522"));
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
    const QStringList notAnAmount = {QStringLiteral("7,50"), QStringLiteral("dieci")};
    EXPECT_EQ(errorNumberOf([&] { orderTotal(notAnAmount); }), TypeMismatch);
}

TEST(TotalsTest, QuantityTotalRoundsAfterEveryLine)
{
    const std::pair<QStringList, qint32> cases[] = {
        {{}, 0}, {{"1.5", "1.5"}, 4}, {{"0.5", "0.5", "0.5"}, 0}, {{"3", "pezzi", "10 pz"}, 13}};
    for (const auto& [cells, total] : cases)
        EXPECT_EQ(quantityTotal(cells), total) << cells.join(u'|').toStdString();
    EXPECT_EQ(errorNumberOf([] { quantityTotal({"2147483647", "1"}); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { quantityTotal({"-2147483648", "-1"}); }), Overflow);
    EXPECT_EQ(quantityTotalText(-12), QStringLiteral("Tot.Q.tà: -12"));
}

} // namespace
