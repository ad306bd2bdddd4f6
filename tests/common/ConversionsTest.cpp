// SPDX-License-Identifier: MIT
#include "common/Conversions.h"
#include "ErrorNumberOf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

namespace {

using namespace xv::common;
using namespace xv::common::test;

const QLocale Italian(QLocale::Italian, QLocale::Italy);

TEST(ConversionsTest, NumericValueReadsTheLeadingPointDecimalNumber)
{
    const std::pair<const char*, double> cases[] = {
        {"12abc", 12},  {"  -3.5kg", -3.5}, {"abc", 0},   {"- 5", 0},    {"1,5", 1},     {".5", 0.5},
        {"1.2.3", 1.2}, {"007", 7},         {"\t+7", 7},  {"1e3", 1000}, {"1E-2", 0.01}, {"1e+", 1},
        {"1e-400", 0},  {"&hff", 255},      {"&O17", 15}, {"&O8", 0}};
    for (const auto& [text, value] : cases)
        EXPECT_DOUBLE_EQ(numericValue(QLatin1String(text)), value) << text;
    EXPECT_FALSE(std::signbit(numericValue(QStringLiteral("-0"))));
    EXPECT_EQ(errorNumberOf([] { numericValue(QStringLiteral("1e400")); }), Overflow);
}

TEST(ConversionsTest, WholeNumbersRoundHalvesToEvenWithinTheirRange)
{
    const std::pair<double, qint32> cases[] = {{0.5, 0},    {1.5, 2},         {2.5, 2},          {-2.5, -2},
                                               {-3.51, -4}, {32767.4, 32767}, {-32768.5, -32768}};
    for (const auto& [value, expected] : cases) {
        SCOPED_TRACE(value);
        EXPECT_EQ(toInt16(value), expected);
        EXPECT_EQ(toInt32(value), expected);
    }
    EXPECT_EQ(toInt32(2147483647.4), std::numeric_limits<qint32>::max());
    EXPECT_EQ(toInt32(-2147483648.5), std::numeric_limits<qint32>::min());
    EXPECT_EQ(toByte(254.5), 254);
    EXPECT_EQ(toByte(-0.5), 0);
    EXPECT_EQ(toByte(qint16(255)), 255);

    for (const double value : {32767.5, -32768.6, std::nan("")})
        EXPECT_EQ(errorNumberOf([&] { toInt16(value); }), Overflow) << value;
    for (const double value : {2147483647.5, -2147483649.0, std::nan("")})
        EXPECT_EQ(errorNumberOf([&] { toInt32(value); }), Overflow) << value;
    for (const double value : {255.5, -0.6})
        EXPECT_EQ(errorNumberOf([&] { toByte(value); }), Overflow) << value;
    EXPECT_EQ(errorNumberOf([] { toByte(300); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { toByte(-1); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { toByte(qint16(256)); }), Overflow);
}

TEST(ConversionsTest, WholeNumberTextInTheLocaleOrWithDecimalPoint)
{
    const std::pair<const char*, qint32> cases[] = {{" 42 ", 42},    {"2,5", 2},   {"3.5", 4},
                                                    {"1.234", 1234}, {"vero", -1}, {"FALSE", 0}};
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(toInt16(QLatin1String(text), Italian), expected);
        EXPECT_EQ(toInt32(QLatin1String(text), Italian), expected);
    }
    for (const char* text : {"", "12abc", "nan", "inf", "1,2,3", "1,234.5", "yes"}) {
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
    const std::pair<const char*, bool> cases[] = {{"True", true}, {"falso", false}, {"VERO", true},
                                                  {"0", false},   {"0.0", false},   {"-1", true},
                                                  {"0,5", true},  {" 2 ", true}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(toBool(QLatin1String(text), Italian), expected) << text;
    for (const char* text : {"", "abc", "maybe", "yes", "truex", "0x1"})
        EXPECT_EQ(errorNumberOf([&] { toBool(QLatin1String(text), Italian); }), TypeMismatch) << text;
}

} // namespace
