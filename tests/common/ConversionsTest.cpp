// SPDX-License-Identifier: MIT
#include "common/Conversions.h"
#include "ErrorNumberOf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace xv::common;
using namespace xv::common::test;

const QLocale Italian(QLocale::Italian, QLocale::Italy);

TEST(ConversionsTest, NumericValueReadsTheLeadingPointDecimalNumber)
{
    const struct
    {
        const char* text;
        double value;
    } cases[] = {{"12abc", 12}, {"  -3.5kg", -3.5}, {"abc", 0}, {"", 0},        {"1,5", 1},   {".5", 0.5},
                 {"1e3", 1000}, {"1e", 1},          {"1e+", 1}, {"1E-2", 0.01}, {"&H10", 16}, {"&hff", 255},
                 {"&O17", 15},  {"&O8", 0},         {"&Hg", 0}, {"\t+7", 7},    {"-", 0},     {"1.2.3", 1.2},
                 {"1e-400", 0}, {"- 5", 0},         {"007", 7}, {"2.5e1x", 25}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_DOUBLE_EQ(numericValue(QLatin1String(c.text)), c.value);
    }
    EXPECT_FALSE(std::signbit(numericValue(QStringLiteral("-0"))));
    EXPECT_EQ(errorNumberOf([] { numericValue(QStringLiteral("1e400")); }), Overflow);
}

TEST(ConversionsTest, WholeNumbersRoundHalvesToEven)
{
    const struct
    {
        double value;
        qint32 expected;
    } cases[] = {{0.5, 0},  {1.5, 2},    {2.5, 2},         {-2.5, -2},         {-0.5, 0},
                 {3.49, 3}, {-3.51, -4}, {32767.4, 32767}, {-32768.5, -32768}, {100.0, 100}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(toInt16(c.value), c.expected);
        EXPECT_EQ(toInt32(c.value), c.expected);
    }
    EXPECT_EQ(toInt32(2147483647.4), std::numeric_limits<qint32>::max());
    EXPECT_EQ(toInt32(-2147483648.5), std::numeric_limits<qint32>::min());
    EXPECT_EQ(toByte(254.5), 254);
    EXPECT_EQ(toByte(-0.5), 0);
    EXPECT_EQ(toByte(qint16(255)), 255);
}

TEST(ConversionsTest, WholeNumbersOutsideTheirRangeOverflow)
{
    for (const double value : {32767.5, -32768.6, 1e10, std::nan("")}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(errorNumberOf([&] { toInt16(value); }), Overflow);
    }
    for (const double value : {2147483647.5, -2147483649.0, std::nan("")}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(errorNumberOf([&] { toInt32(value); }), Overflow);
    }
    for (const double value : {255.5, -0.6, 1e3}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(errorNumberOf([&] { toByte(value); }), Overflow);
    }
    EXPECT_EQ(errorNumberOf([] { toByte(300); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { toByte(-1); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { toByte(qint16(256)); }), Overflow);
}

TEST(ConversionsTest, WholeNumberTextInTheLocaleOrWithDecimalPoint)
{
    const struct
    {
        const char* text;
        qint32 expected;
    } cases[] = {{"300", 300}, {" 42 ", 42}, {"2,5", 2},   {"3.5", 4},   {"1.234", 1234}, {"-7", -7},
                 {"True", -1}, {"vero", -1}, {"FALSE", 0}, {"Falso", 0}, {"1e2", 100},    {"+8", 8}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(toInt16(QLatin1String(c.text), Italian), c.expected);
        EXPECT_EQ(toInt32(QLatin1String(c.text), Italian), c.expected);
    }
    EXPECT_EQ(toInt16(QStringLiteral("2.5"), QLocale::c()), 2);
    EXPECT_EQ(toInt32(QStringLiteral("40000")), 40000);

    for (const char* text : {"abc", "", "  ", "12abc", "nan", "inf", "1,2,3", "1.23.4", "1,234.5", "yes"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(errorNumberOf([&] { toInt16(QLatin1String(text), Italian); }), TypeMismatch);
        EXPECT_EQ(errorNumberOf([&] { toInt32(QLatin1String(text), Italian); }), TypeMismatch);
    }
    EXPECT_EQ(errorNumberOf([] { toInt16(QStringLiteral("40000")); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { toInt32(QStringLiteral("3000000000")); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { toInt16(QStringLiteral("1e999")); }), Overflow);
}

TEST(ConversionsTest, BooleanText)
{
    const struct
    {
        const char* text;
        bool expected;
    } cases[] = {{"True", true}, {"false", false}, {"VERO", true}, {"falso", false}, {"0", false},
                 {"0,0", false}, {"0.0", false},   {"-1", true},   {"0,5", true},    {" 2 ", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(toBool(QLatin1String(c.text), Italian), c.expected);
    }
    for (const char* text : {"", "abc", "maybe", "yes", "truex", "0x1"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(errorNumberOf([&] { toBool(QLatin1String(text), Italian); }), TypeMismatch);
    }
}

TEST(ConversionsTest, StoredFlagsUseMinusOneForTrue)
{
    EXPECT_EQ(toVbBool(true), -1);
    EXPECT_EQ(toVbBool(false), 0);
    EXPECT_TRUE(fromVbBool(-1));
    EXPECT_TRUE(fromVbBool(1));
    EXPECT_FALSE(fromVbBool(0));
}

} // namespace
