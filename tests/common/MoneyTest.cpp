// SPDX-License-Identifier: MIT
#include "common/Money.h"
#include "ErrorNumberOf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>
#include <utility>

namespace xv::common {

void PrintTo(const Money& money, std::ostream* out)
{
    *out << money.toDecimalText().toStdString();
}

} // namespace xv::common

namespace {

using namespace xv::common::test;
using xv::common::Money;

constexpr qint64 MaxRaw = std::numeric_limits<qint64>::max();
constexpr qint64 MinRaw = std::numeric_limits<qint64>::min();
const QLocale Italian(QLocale::Italian, QLocale::Italy);

TEST(MoneyTest, ParsesCurrencyText)
{
    const std::pair<const char16_t*, qint64> cases[] = {
        {u"1.234,50\u00a0€", 12345000}, {u"1.234,50 €", 12345000}, {u"€1.234,50", 12345000},
        {u"€\u202f1.234,50", 12345000}, {u"1.234,50-", -12345000}, {u"eur-3", -30000},
        {u"-1.234,50 €", -12345000},    {u"1.234", 12340000},      {u"1234,5", 12345000},
        {u"€ -1.234,50", -12345000},    {u"1,00005", 10000},       {u"0,0001", 1},
        {u"(1.234,50 €)", -12345000},   {u"1,00015", 10002},       {u",5", 5000},
        {u"1.234.567,89", 12345678900}, {u"1,000051", 10001}};
    // The digits past the fourth decimal round halves to even.
    for (const auto& [raw, units] : cases) {
        const QString text = QString::fromUtf16(raw);
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(Money::parse(text, Italian), Money::fromRaw(units));
        EXPECT_EQ(Money::tryParse(text, Italian), Money::fromRaw(units));
    }
    // Where the locale groups with a blank any blank will do; an ASCII apostrophe stands for the Swiss one.
    EXPECT_EQ(Money::parse(QStringLiteral("1 234,50 €"), QLocale(QLocale::French, QLocale::France)),
              Money::fromRaw(12345000));
    EXPECT_EQ(Money::parse(QStringLiteral("CHF 1'234.50"), QLocale(QLocale::German, QLocale::Switzerland)),
              Money::fromRaw(12345000));
}

TEST(MoneyTest, RejectsMalformedOrOutOfRangeText)
{
    const auto expectError = [](const char16_t* raw, int error) {
        const QString text = QString::fromUtf16(raw);
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(errorNumberOf([&] { Money::parse(text, Italian); }), error);
        EXPECT_FALSE(Money::tryParse(text, Italian));
    };
    for (const char16_t* text : {u"", u"€", u"12a", u"2.", u"1.2345", u"1..234", u"1 234", u"1,2,3",
                                 u"2.50,1", u"1.23.45", u"--5", u"€ 5 €", u"5 $", u"(5"})
        expectError(text, TypeMismatch);
    // One unit inside the range is read, one unit outside it overflows.
    EXPECT_EQ(Money::parse(QStringLiteral("922.337.203.685.477,5807"), Italian), Money::fromRaw(MaxRaw));
    expectError(u"922.337.203.685.477,5808", Overflow);
    EXPECT_EQ(Money::parse(QStringLiteral("-922337203685477,5808 €"), Italian), Money::fromRaw(MinRaw));
    expectError(u"-922337203685477,5809 €", Overflow);
}

TEST(MoneyTest, ParsesWhatStaffType)
{
    const std::pair<const char16_t*, qint64> cases[] = {
        {u"2,50", 25000},       {u"2.50", 25000},           {u"2.5", 25000},         {u"12.34", 123400},
        {u"-2.50", -25000},     {u"2.50 €", 25000},         {u"2.50€", 25000},       {u"€2.50", 25000},
        {u"€ 2,50", 25000},     {u" 2,50 € ", 25000},       {u"1.234,50", 12345000}, {u"1.234", 12340000},
        {u"1.234 €", 12340000}, {u"1.234.567", 12345670000}};
    for (const auto& [raw, units] : cases) {
        const QString text = QString::fromUtf16(raw);
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(Money::parse(text, Italian), Money::fromRaw(units));
    }
}

// The lone decimal point is read without a pattern: it must take exactly ASCII digits, one point and one or
// two ASCII digits, and leave everything else to the locale's own reading.
TEST(MoneyTest, LoneDecimalPointIsReadOnlyWhenNothingElseCouldBeMeant)
{
    const std::pair<const char16_t*, qint64> read[] = {
        {u"0.5", 5000},         {u"-0.05", -500},    {u"(2.50)", -25000},     {u"+2.50", 25000},
        {u"2.50-", -25000},     {u"EUR 2.50", 25000}, {u"\t2.50\n", 25000},  {u"002.50", 25000},
        {u"2.500", 25000000},   {u"12.345 €", 123450000}};
    for (const auto& [raw, units] : read) {
        const QString text = QString::fromUtf16(raw);
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(Money::parse(text, Italian), Money::fromRaw(units));
    }
    for (const char16_t* raw : {u".50", u"2.", u"2.5.0", u"2. 50", u"2 .50", u"2.5a", u"\u0662.50",
                                u"2.\u0665\u0660", u"2.50.", u"-.5", u"2,5.0", u"2.50\u00a0\u00a0x"}) {
        const QString text = QString::fromUtf16(raw);
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(errorNumberOf([&] { Money::parse(text, Italian); }), TypeMismatch);
    }
}

// What is read depends on the locale passed, also when another locale was read just before.
TEST(MoneyTest, EachLocaleReadsItsOwnSignsWhateverCameBefore)
{
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    const QLocale swiss(QLocale::German, QLocale::Switzerland);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(Money::parse(QStringLiteral("1.234,50 €"), Italian), Money::fromRaw(12345000));
        EXPECT_EQ(Money::parse(QStringLiteral("$1,234.50"), english), Money::fromRaw(12345000));
        EXPECT_EQ(Money::parse(QStringLiteral("1.234"), english), Money::fromRaw(12340));
        EXPECT_EQ(errorNumberOf([&] { Money::parse(QStringLiteral("$1,234.50"), Italian); }), TypeMismatch);
        EXPECT_EQ(Money::parse(QStringLiteral("CHF 1'234.50"), swiss), Money::fromRaw(12345000));
        EXPECT_EQ(errorNumberOf([&] { Money::parse(QStringLiteral("1.234,50 €"), english); }), TypeMismatch);
    }
}

TEST(MoneyTest, CurrencyTextRoundsHalvesAwayFromZeroAndReadsBack)
{
    const std::pair<qint64, const char16_t*> cases[] = {{12345000, u"1.234,50\u00a0€"},
                                                        {MaxRaw, u"922.337.203.685.477,58\u00a0€"},
                                                        {-12345000, u"-1.234,50\u00a0€"},
                                                        {MinRaw, u"-922.337.203.685.477,58\u00a0€"},
                                                        {99999950, u"10.000,00\u00a0€"},
                                                        {9850, u"0,99\u00a0€"},
                                                        {-9850, u"-0,99\u00a0€"},
                                                        {12350, u"1,24\u00a0€"},
                                                        {12250, u"1,23\u00a0€"},
                                                        {-50, u"-0,01\u00a0€"},
                                                        {49, u"0,00\u00a0€"},
                                                        {-49, u"0,00\u00a0€"}};
    for (const auto& [raw, text] : cases) {
        SCOPED_TRACE(raw);
        EXPECT_EQ(Money::fromRaw(raw).toCurrencyText(Italian), QString::fromUtf16(text));
        const Money shown = Money::fromRaw(raw % 100 == 0 ? raw : raw / 100 * 100);
        EXPECT_EQ(Money::parse(shown.toCurrencyText()), shown); // the default locale of the test run
    }
    EXPECT_EQ(Money::fromRaw(-12345000).toCurrencyText(QLocale(QLocale::English, QLocale::UnitedStates)),
              u"($1,234.50)");
}

// The layout is kept between calls: each locale must still get its own symbol, sign, digits and order,
// whichever came before it.
TEST(MoneyTest, CurrencyTextFollowsEachLocaleInTurn)
{
    const QLocale locales[] = {Italian,
                               QLocale(QLocale::English, QLocale::UnitedStates),
                               QLocale(QLocale::French, QLocale::France),
                               QLocale(QLocale::Arabic, QLocale::Egypt),
                               QLocale(QLocale::German, QLocale::Switzerland),
                               Italian};
    for (const QLocale& locale : locales) {
        for (const double amount : {1234.5, -0.25, 7.0}) {
            SCOPED_TRACE((locale.name() + ' ' + QString::number(amount)).toStdString());
            EXPECT_EQ(Money::fromDouble(amount).toCurrencyText(locale), locale.toCurrencyString(amount, QString(), 2));
        }
    }
}

TEST(MoneyTest, DecimalText)
{
    const std::tuple<const char*, qint64, bool> cases[] = {
        {"1234.5000", 12345000, true}, {"922337203685477.5807", MaxRaw, true},
        {"-0.0001", -1, true},         {"-922337203685477.5808", MinRaw, true},
        {" +3 ", 30000, false},        {".5", 5000, false}};
    for (const auto& [text, raw, canonical] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Money::fromDecimalText(QLatin1String(text)), Money::fromRaw(raw));
        if (canonical) {
            EXPECT_EQ(Money::fromRaw(raw).toDecimalText(), QLatin1String(text));
        }
    }
    for (const char* text : {"", ".", "1,5", "1.2.3", "NaN", "--1", "1 000"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(errorNumberOf([&] { Money::fromDecimalText(QLatin1String(text)); }), TypeMismatch);
    }
    EXPECT_EQ(errorNumberOf([] { Money::fromDecimalText(QStringLiteral("922337203685477.5808")); }),
              Overflow);
}

TEST(MoneyTest, DoublesAreReadAsTheirShortestDecimalRoundedHalvesToEven)
{
    const std::tuple<qint64, double, qint64> cases[] = {
        {10000, 0.1, 1000},        {10000, 1.00005, 10000}, {10000, 1.00015, 10002},
        {10000, -2.50005, -25000}, {-15, 0.1, -2},          {1, 1e-30, 0},
        {123, 1e4, 1230000},       {MinRaw, 1.0, MinRaw},   {10000, 922337203685477.0, 9223372036854770000}};
    for (const auto& [raw, factor, expected] : cases) {
        SCOPED_TRACE(testing::Message() << raw << " * " << factor);
        EXPECT_EQ(Money::fromRaw(raw) * factor, Money::fromRaw(expected));
        if (raw == Money::Scale) {
            EXPECT_EQ(Money::fromDouble(factor), Money::fromRaw(expected));
        }
    }
    for (const double factor : {1e15, -1e300, std::nan(""), std::numeric_limits<double>::infinity()}) {
        SCOPED_TRACE(factor);
        EXPECT_EQ(errorNumberOf([&] { Money::fromDouble(factor); }), Overflow);
    }
    EXPECT_EQ(errorNumberOf([] { Money::fromRaw(MinRaw) * -1.0; }), Overflow);
    EXPECT_DOUBLE_EQ(Money::fromRaw(12345).toDouble(), 1.2345);
}

TEST(MoneyTest, ArithmeticIsExactAndChecked)
{
    EXPECT_EQ(Money::fromInteger(5).raw(), 50000);
    EXPECT_EQ(Money::fromRaw(1) + Money::fromRaw(2), Money::fromRaw(3));
    EXPECT_EQ(Money::fromRaw(1) - Money::fromRaw(3), -Money::fromRaw(2));
    EXPECT_EQ(errorNumberOf([] { Money::fromInteger(MaxRaw / Money::Scale + 1); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { Money::fromRaw(MaxRaw) + Money::fromRaw(1); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { Money::fromRaw(MinRaw) - Money::fromRaw(1); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { -Money::fromRaw(MinRaw); }), Overflow);
}

} // namespace
