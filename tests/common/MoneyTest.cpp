// SPDX-License-Identifier: MIT
#include "common/Money.h"
#include "ErrorNumberOf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

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
const QLocale American(QLocale::English, QLocale::UnitedStates);

TEST(MoneyTest, ParsesCurrencyText)
{
    const QLocale french(QLocale::French, QLocale::France);
    const QLocale swiss(QLocale::German, QLocale::Switzerland);
    const struct
    {
        const char16_t* text;
        qint64 raw;
        const QLocale& locale;
    } cases[] = {
        {u"1.234,50 €", 12345000, Italian},
        {u"€ 1.234,50", 12345000, Italian},
        {u"€1.234,50", 12345000, Italian},
        {u"-1.234,50 €", -12345000, Italian},
        {u"- € 1.234,50", -12345000, Italian},
        {u"€ -1.234,50", -12345000, Italian},
        {u"(1.234,50 €)", -12345000, Italian},
        {u"1.234,50-", -12345000, Italian},
        {u"1234,5", 12345000, Italian},
        {u"1.234", 12340000, Italian},
        {u"12", 120000, Italian},
        {u"0,0001", 1, Italian},
        {u",5", 5000, Italian},
        {u"1.234.567,89 €", 12345678900, Italian},
        {u"1.234,50\u00a0€", 12345000, Italian},
        {u"€\u202f1.234,50", 12345000, Italian},
        {u"\u00a0 12 EUR ", 120000, Italian},
        {u"eur-3", -30000, Italian},
        {u"1,00005", 10000, Italian},
        {u"1,00015", 10002, Italian},
        {u"1,000051", 10001, Italian},
        {u"-0,00005", 0, Italian},
        {u"922.337.203.685.477,5807", MaxRaw, Italian},
        {u"-922337203685477,5808 €", MinRaw, Italian},
        {u"($1,234.50)", -12345000, American},
        {u"1\u202f234,50\u00a0€", 12345000, french},
        {u"1 234,50 €", 12345000, french},
        {u"CHF 1'234.50", 12345000, swiss},
    };
    for (const auto& c : cases) {
        const QString text = QString::fromUtf16(c.text);
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(Money::parse(text, c.locale), Money::fromRaw(c.raw));
        EXPECT_EQ(Money::tryParse(text, c.locale), Money::fromRaw(c.raw));
    }
}

TEST(MoneyTest, RejectsMalformedOrOutOfRangeText)
{
    const auto expectError = [](const char16_t* raw, int error) {
        const QString text = QString::fromUtf16(raw);
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(errorNumberOf([&] { Money::parse(text, Italian); }), error);
        EXPECT_FALSE(Money::tryParse(text, Italian));
    };
    for (const char16_t* text :
         {u"", u"   ", u"€", u"-", u"abc", u"12a", u"1.23,00", u"12.34", u"1.2345", u"1..234", u"1,2,3",
          u"--5", u"(-5)", u"€ 5 €", u"5 $", u"1 234", u".234", u"(5"})
        expectError(text, TypeMismatch);
    for (const char16_t* text :
         {u"922.337.203.685.477,5808", u"-922337203685477,5809", u"99999999999999999999999"})
        expectError(text, Overflow);
}

TEST(MoneyTest, CurrencyTextRoundsHalvesToEvenAndReadsBack)
{
    const struct
    {
        qint64 raw;
        const char16_t* text;
    } cases[] = {
        {0, u"0,00\u00a0€"},
        {12345000, u"1.234,50\u00a0€"},
        {-12345000, u"-1.234,50\u00a0€"},
        {12345, u"1,23\u00a0€"},
        {12350, u"1,24\u00a0€"},
        {12250, u"1,22\u00a0€"},
        {12251, u"1,23\u00a0€"},
        {-50, u"0,00\u00a0€"},
        {-150, u"-0,02\u00a0€"},
        {99999950, u"10.000,00\u00a0€"},
        {MaxRaw, u"922.337.203.685.477,58\u00a0€"},
        {MinRaw, u"-922.337.203.685.477,58\u00a0€"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.raw);
        EXPECT_EQ(Money::fromRaw(c.raw).toCurrencyText(Italian), QString::fromUtf16(c.text));
        const Money shown = Money::fromRaw(c.raw % 100 == 0 ? c.raw : c.raw / 100 * 100);
        EXPECT_EQ(Money::parse(shown.toCurrencyText()), shown); // the default locale of the test run
    }
    EXPECT_EQ(Money::fromRaw(-12345000).toCurrencyText(American), u"($1,234.50)");
}

TEST(MoneyTest, DecimalText)
{
    const struct
    {
        const char* text;
        qint64 raw;
        bool canonical;
    } cases[] = {
        {"0.0000", 0, true},
        {"1234.5000", 12345000, true},
        {"-0.0001", -1, true},
        {"12", 120000, false},
        {"+3", 30000, false},
        {" 7.25 ", 72500, false},
        {".5", 5000, false},
        {"1.00015", 10002, false},
        {"-2.50005", -25000, false},
        {"922337203685477.5807", MaxRaw, true},
        {"-922337203685477.5808", MinRaw, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(Money::fromDecimalText(QLatin1String(c.text)), Money::fromRaw(c.raw));
        if (c.canonical) {
            EXPECT_EQ(Money::fromRaw(c.raw).toDecimalText(), QLatin1String(c.text));
        }
    }
    for (const char* text : {"", "abc", "1,5", "1.2.3", "NaN", "--1", ".", "1 000"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(errorNumberOf([&] { Money::fromDecimalText(QLatin1String(text)); }), TypeMismatch);
    }
    EXPECT_EQ(errorNumberOf([] { Money::fromDecimalText(QStringLiteral("922337203685477.5808")); }),
              Overflow);
}

TEST(MoneyTest, DoublesAreReadAsTheirShortestDecimalRoundedHalvesToEven)
{
    const struct
    {
        qint64 raw;
        double factor;
        qint64 expected;
    } cases[] = {
        {10000, 0.1, 1000},
        {10000, 1.00005, 10000},
        {10000, 1.00015, 10002},
        {10000, -2.50005, -25000},
        {5, 0.1, 0},
        {15, 0.1, 2},
        {-15, 0.1, -2},
        {3, 0.5, 2},
        {1, 1e-30, 0},
        {123, 1e4, 1230000},
        {7, 0.0, 0},
        {MinRaw, 1.0, MinRaw},
        {10000, 922337203685477.0, 9223372036854770000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.raw << " * " << c.factor);
        EXPECT_EQ(Money::fromRaw(c.raw) * c.factor, Money::fromRaw(c.expected));
        if (c.raw == Money::Scale) {
            EXPECT_EQ(Money::fromDouble(c.factor), Money::fromRaw(c.expected));
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
    EXPECT_LT(Money::fromRaw(-1), Money());
    EXPECT_GT(Money::fromInteger(1), Money::fromRaw(9999));
    EXPECT_EQ(errorNumberOf([] { Money::fromInteger(MaxRaw / Money::Scale + 1); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { Money::fromRaw(MaxRaw) + Money::fromRaw(1); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { Money::fromRaw(MinRaw) - Money::fromRaw(1); }), Overflow);
    EXPECT_EQ(errorNumberOf([] { -Money::fromRaw(MinRaw); }), Overflow);
}

} // namespace
