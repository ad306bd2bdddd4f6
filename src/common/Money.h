// SPDX-License-Identifier: MIT
#pragma once

#include <QLocale>
#include <QString>
#include <QtGlobal>

#include <compare>
#include <optional>

namespace xv::common {

// An amount of money held as an integer count of ten-thousandths, so that sums of prices never drift the
// way binary floating point does. Every operation that could leave the 64-bit range throws Overflow.
class Money
{
public:
    static constexpr qint64 Scale = 10000;

    constexpr Money() = default;

    static constexpr Money fromRaw(qint64 raw) { return Money(raw); }
    static Money fromInteger(qint64 units);
    // A double is read as the shortest decimal that converts back to it, so 0.1 means one tenth and the
    // fifth decimal rounds halves to even the way a person would expect from the printed number.
    static Money fromDouble(double value);

    // Currency text of the locale: symbol or ISO code on either side, with or without blanks around them,
    // a leading or trailing sign or parentheses for negatives, grouping only in whole groups of three
    // digits. A lone point followed by one or two digits is read as the decimal separator ("2.50").
    static Money parse(const QString& text, const QLocale& locale = QLocale());
    static std::optional<Money> tryParse(const QString& text, const QLocale& locale = QLocale());

    // Plain '.'-decimal text with all four decimals, the form the database stores and logs show.
    static Money fromDecimalText(const QString& text);
    static std::optional<Money> tryParseDecimalText(const QString& text);
    QString toDecimalText() const;

    // Two decimals, halves rounded away from zero ("0,985" shows "0,99", "-0,985" shows "-0,99"); an
    // amount that rounds to zero shows no minus sign.
    QString toCurrencyText(const QLocale& locale = QLocale()) const;

    constexpr qint64 raw() const { return m_raw; }
    double toDouble() const;

    Money operator-() const;
    Money& operator+=(Money other);
    Money& operator-=(Money other);
    friend Money operator+(Money a, Money b) { return a += b; }
    friend Money operator-(Money a, Money b) { return a -= b; }
    // The factor is read as its shortest decimal, as in fromDouble; the product rounds halves to even.
    friend Money operator*(Money amount, double factor);
    friend Money operator*(double factor, Money amount) { return amount * factor; }

    friend constexpr bool operator==(Money, Money) = default;
    friend constexpr std::strong_ordering operator<=>(Money, Money) = default;

private:
    constexpr explicit Money(qint64 raw) : m_raw(raw) {}

    qint64 m_raw = 0;
};

} // namespace xv::common
