// SPDX-License-Identifier: MIT
#include "Money.h"

#include "RuntimeError.h"


#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace xv::common {

namespace {

// Wide enough for a 64-bit amount times a 17-digit decimal mantissa, so products are exact before rounding.
__extension__ typedef __int128 Wide;

constexpr Wide NegativeLimit = Wide(1) << 63; // magnitude of the most negative amount
constexpr Wide PositiveLimit = NegativeLimit - 1;
constexpr int MaxDivisorExponent = 37; // 10^37 still fits in Wide

Wide powerOfTen(int exponent)
{
    Wide result = 1;
    for (int i = 0; i < exponent; ++i)
        result *= 10;
    return result;
}

Wide divideHalfToEven(Wide value, Wide divisor)
{
    const Wide quotient = value / divisor;
    const Wide twiceRemainder = (value % divisor) * 2;
    if (twiceRemainder > divisor || (twiceRemainder == divisor && quotient % 2 != 0))
        return quotient + 1;
    return quotient;
}

// Shop staff and the regional currency format round a half cent up in size, whatever its sign.
Wide divideHalfAwayFromZero(Wide magnitude, Wide divisor)
{
    const Wide quotient = magnitude / divisor;
    return (magnitude % divisor) * 2 >= divisor ? quotient + 1 : quotient;
}

std::optional<qint64> signedAmount(bool negative, Wide magnitude)
{
    if (magnitude > (negative ? NegativeLimit : PositiveLimit))
        return std::nullopt;
    return static_cast<qint64>(negative ? -magnitude : magnitude);
}

// Raw units of a decimal written as ASCII digits; the digits past the fourth decimal only round.
std::optional<qint64> unitsFromDigits(bool negative, QStringView intDigits, QStringView fracDigits)
{
    Wide magnitude = 0;
    for (QChar c : intDigits) {
        magnitude = magnitude * 10 + (c.unicode() - '0');
        if (magnitude > NegativeLimit)
            return std::nullopt;
    }
    for (qsizetype i = 0; i < 4; ++i)
        magnitude = magnitude * 10 + (i < fracDigits.size() ? fracDigits[i].unicode() - '0' : 0);
    if (fracDigits.size() > 4) {
        const int first = fracDigits[4].unicode() - '0';
        bool beyondHalf = first > 5;
        for (qsizetype i = 5; first == 5 && !beyondHalf && i < fracDigits.size(); ++i)
            beyondHalf = fracDigits[i] != u'0';
        if (beyondHalf || (first == 5 && magnitude % 2 != 0))
            ++magnitude;
    }
    return signedAmount(negative, magnitude);
}

Wide magnitudeOf(qint64 raw)
{
    return raw < 0 ? -Wide(raw) : Wide(raw);
}

bool isAsciiDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

// Plain text with an optional sign and '.' decimals; nothing else is tolerated.
std::optional<qint64> parseDecimal(QStringView text, bool* overflow)
{
    text = text.trimmed();
    bool negative = false;
    if (!text.isEmpty() && (text.front() == u'-' || text.front() == u'+')) {
        negative = text.front() == u'-';
        text = text.mid(1);
    }
    qsizetype point = text.indexOf(u'.');
    const QStringView intDigits = point < 0 ? text : text.left(point);
    const QStringView fracDigits = point < 0 ? QStringView() : text.mid(point + 1);
    const auto allDigits = [](QStringView v) { return std::all_of(v.begin(), v.end(), isAsciiDigit); };
    if (intDigits.size() + fracDigits.size() == 0 || !allDigits(intDigits) || !allDigits(fracDigits))
        return std::nullopt;
    auto units = unitsFromDigits(negative, intDigits, fracDigits);
    *overflow = !units;
    return units;
}

qsizetype prefixLength(QStringView text, const QStringList& candidates)
{
    for (const QString& candidate : candidates) {
        if (!candidate.isEmpty() && text.startsWith(candidate, Qt::CaseInsensitive))
            return candidate.size();
    }
    return 0;
}

qsizetype suffixLength(QStringView text, const QStringList& candidates)
{
    for (const QString& candidate : candidates) {
        if (!candidate.isEmpty() && text.endsWith(candidate, Qt::CaseInsensitive))
            return candidate.size();
    }
    return 0;
}

// What currency text is read by depends only on the locale. Parsing runs for every amount of every line of
// an order being saved, so the locale's symbols and signs are looked up once per locale and thread, not on
// every call.
struct CurrencySigns
{
    QLocale locale;
    QStringList symbols;
    QStringList minusSigns;
    QStringList plusSigns;
    QString group;
    QString decimal;
};

const CurrencySigns& currencySigns(const QLocale& locale)
{
    thread_local CurrencySigns signs;
    thread_local bool filled = false;
    if (!filled || signs.locale != locale) {
        signs.locale = locale;
        signs.symbols = {locale.currencySymbol(QLocale::CurrencyIsoCode),
                         locale.currencySymbol(QLocale::CurrencySymbol)};
        signs.minusSigns = {locale.negativeSign(), QStringLiteral("-"), QStringLiteral("\u2212")};
        signs.plusSigns = {locale.positiveSign(), QStringLiteral("+")};
        signs.group = locale.groupSeparator();
        signs.decimal = locale.decimalPoint();
        filled = true;
    }
    return signs;
}

// Where a locale groups with a blank, people type whichever blank their keyboard gives; an ASCII
// apostrophe likewise stands for the typographic one.
qsizetype groupSeparatorAt(QStringView text, qsizetype at, const QString& group)
{
    const QChar c = text[at];
    if (group.size() == 1 && group[0].isSpace() && c.isSpace())
        return 1;
    if (group == QStringView(u"\u2019") && c == u'\'')
        return 1;
    return text.mid(at).startsWith(group) ? group.size() : 0;
}

// Digits, grouping in whole groups of three and the locale's decimal separator, or nothing.
bool readLocaleNumber(QStringView core, const CurrencySigns& signs, QString* intDigits, QString* fracDigits)
{
    const QString& group = signs.group;
    const QString& decimal = signs.decimal;
    qsizetype at = 0;
    int run = 0;
    bool grouped = false;
    while (at < core.size()) {
        if (core[at].isDigit()) {
            intDigits->append(QChar(u'0' + core[at].digitValue()));
            ++run;
            ++at;
        } else if (qsizetype length = intDigits->isEmpty() ? 0 : groupSeparatorAt(core, at, group)) {
            if (grouped ? run != 3 : run > 3)
                return false;
            grouped = true;
            run = 0;
            at += length;
        } else {
            break;
        }
    }
    if (grouped && run != 3)
        return false;
    if (at < core.size() && core.mid(at).startsWith(decimal)) {
        for (at += decimal.size(); at < core.size() && core[at].isDigit(); ++at)
            fracDigits->append(QChar(u'0' + core[at].digitValue()));
    }
    return at == core.size() && !(intDigits->isEmpty() && fracDigits->isEmpty());
}

// Staff type "2.50" for two euros fifty where the locale writes "2,50": a lone point followed by one or two
// digits can only be a decimal point, since grouping puts three digits after it ("1.234" stays grouped).
// The text comes trimmed, so ASCII digits, one point and one or two ASCII digits must fill all of it.
bool readLoneDecimalPoint(QStringView core, const CurrencySigns& signs, QString* intDigits, QString* fracDigits)
{
    if (signs.decimal == QLatin1String("."))
        return false;
    const qsizetype point = core.indexOf(u'.');
    const qsizetype fraction = core.size() - point - 1;
    if (point < 1 || fraction < 1 || fraction > 2)
        return false;
    const auto asciiDigits = [](QStringView v) { return std::all_of(v.begin(), v.end(), isAsciiDigit); };
    if (!asciiDigits(core.left(point)) || !asciiDigits(core.mid(point + 1)))
        return false;
    *intDigits = core.left(point).toString();
    *fracDigits = core.mid(point + 1).toString();
    return true;
}

std::optional<qint64> parseCurrency(QStringView text, const QLocale& locale, bool* overflow)
{
    const CurrencySigns& signs = currencySigns(locale);
    const QStringList& symbols = signs.symbols;
    const QStringList& minusSigns = signs.minusSigns;
    const QStringList& plusSigns = signs.plusSigns;

    QStringView rest = text.trimmed();
    bool negative = false;
    bool signSeen = false;
    if (rest.size() >= 2 && rest.front() == u'(' && rest.back() == u')') {
        negative = signSeen = true;
        rest = rest.mid(1, rest.size() - 2);
    }
    bool symbolSeen = false;
    // Sign and symbol may come in either order on either side, but each only once.
    const auto strip = [&](auto lengthOf, bool atFront) {
        for (;;) {
            rest = rest.trimmed();
            qsizetype length = 0;
            if (!signSeen && (length = lengthOf(rest, minusSigns))) {
                negative = signSeen = true;
            } else if (!signSeen && (length = lengthOf(rest, plusSigns))) {
                signSeen = true;
            } else if (!symbolSeen && (length = lengthOf(rest, symbols))) {
                symbolSeen = true;
            } else {
                return;
            }
            rest = atFront ? rest.mid(length) : rest.chopped(length);
        }
    };
    strip(prefixLength, true);
    strip(suffixLength, false);

    QString intDigits;
    QString fracDigits;
    if (!readLoneDecimalPoint(rest, signs, &intDigits, &fracDigits) &&
        !readLocaleNumber(rest, signs, &intDigits, &fracDigits))
        return std::nullopt;
    auto units = unitsFromDigits(negative, intDigits, fracDigits);
    *overflow = !units;
    return units;
}

// The locale's currency layout with the number left as a hole, so the digits can be built exactly.
QString currencyPattern(const QLocale& locale, bool negative)
{
    QString pattern = locale.toCurrencyString(negative ? -7.0 : 7.0, QString(), 0);
    const QString seven = locale.toString(7);
    const qsizetype at = pattern.indexOf(seven);
    return at < 0 ? pattern : pattern.replace(at, seven.size(), QStringLiteral("%1"));
}

// Every amount of every line shown is written in the locale's layout: its parts around the number are
// found once per locale and thread, not on every call.
struct CurrencyLayout
{
    QLocale locale;
    // Indexed by whether the amount is negative.
    QString before[2];
    QString after[2];
    bool hole[2] = {false, false};
    QString decimal;
    bool asciiDigits = false;
};

const CurrencyLayout& currencyLayout(const QLocale& locale)
{
    thread_local CurrencyLayout layout;
    thread_local bool filled = false;
    if (!filled || layout.locale != locale) {
        layout.locale = locale;
        for (int negative = 0; negative < 2; ++negative) {
            const QString pattern = currencyPattern(locale, negative == 1);
            const qsizetype at = pattern.indexOf(QLatin1String("%1"));
            layout.hole[negative] = at >= 0;
            layout.before[negative] = at < 0 ? pattern : pattern.left(at);
            layout.after[negative] = at < 0 ? QString() : pattern.mid(at + 2);
        }
        layout.decimal = locale.decimalPoint();
        layout.asciiDigits = locale.toString(0) == QLatin1String("0") && locale.toString(9) == QLatin1String("9");
        filled = true;
    }
    return layout;
}

} // namespace

Money Money::fromInteger(qint64 units)
{
    qint64 raw = 0;
    if (__builtin_mul_overflow(units, Scale, &raw))
        throw RuntimeError::overflow();
    return Money(raw);
}

Money Money::fromDouble(double value)
{
    return fromInteger(1) * value;
}

Money Money::parse(const QString& text, const QLocale& locale)
{
    bool overflow = false;
    if (auto units = parseCurrency(text, locale, &overflow))
        return Money(*units);
    if (overflow)
        throw RuntimeError::overflow();
    throw RuntimeError::typeMismatch(text);
}

std::optional<Money> Money::tryParse(const QString& text, const QLocale& locale)
{
    bool overflow = false;
    if (auto units = parseCurrency(text, locale, &overflow))
        return Money(*units);
    return std::nullopt;
}

Money Money::fromDecimalText(const QString& text)
{
    bool overflow = false;
    if (auto units = parseDecimal(text, &overflow))
        return Money(*units);
    if (overflow)
        throw RuntimeError::overflow();
    throw RuntimeError::typeMismatch(text);
}

std::optional<Money> Money::tryParseDecimalText(const QString& text)
{
    bool overflow = false;
    if (auto units = parseDecimal(text, &overflow))
        return Money(*units);
    return std::nullopt;
}

QString Money::toDecimalText() const
{
    const Wide magnitude = magnitudeOf(m_raw);
    const auto whole = static_cast<quint64>(magnitude / Scale);
    const auto fraction = static_cast<quint64>(magnitude % Scale);
    // Put together by hand: a save writes five amounts for every line of an order.
    QString text = m_raw < 0 ? QStringLiteral("-") : QString();
    text += QString::number(whole);
    text += u'.';
    const qsizetype at = text.size();
    text.resize(at + 4);
    auto rest = fraction;
    for (qsizetype i = at + 3; i >= at; --i, rest /= 10)
        text[i] = QChar(u'0' + static_cast<char16_t>(rest % 10));
    return text;
}

QString Money::toCurrencyText(const QLocale& locale) const
{
    const Wide cents = divideHalfAwayFromZero(magnitudeOf(m_raw), Scale / 100);
    const auto whole = static_cast<qint64>(cents / 100);
    const int fraction = static_cast<int>(cents % 100);
    const CurrencyLayout& layout = currencyLayout(locale);
    const int negative = m_raw < 0 && cents != 0 ? 1 : 0;
    if (!layout.hole[negative])
        return layout.before[negative];
    QString text = layout.before[negative] + locale.toString(whole) + layout.decimal;
    if (layout.asciiDigits) {
        text += QChar(u'0' + fraction / 10);
        text += QChar(u'0' + fraction % 10);
    } else {
        text += locale.toString(fraction / 10) + locale.toString(fraction % 10);
    }
    return text + layout.after[negative];
}

double Money::toDouble() const
{
    return static_cast<double>(m_raw) / Scale;
}

Money Money::operator-() const
{
    if (m_raw == std::numeric_limits<qint64>::min())
        throw RuntimeError::overflow();
    return Money(-m_raw);
}

Money& Money::operator+=(Money other)
{
    if (__builtin_add_overflow(m_raw, other.m_raw, &m_raw))
        throw RuntimeError::overflow();
    return *this;
}

Money& Money::operator-=(Money other)
{
    if (__builtin_sub_overflow(m_raw, other.m_raw, &m_raw))
        throw RuntimeError::overflow();
    return *this;
}

Money operator*(Money amount, double factor)
{
    if (!std::isfinite(factor))
        throw RuntimeError::overflow();
    // Shortest scientific form: at most 17 mantissa digits and a decimal exponent.
    char buffer[64];
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, factor, std::chars_format::scientific);
    const std::string_view text(buffer, written.ptr - buffer);
    const std::size_t e = text.find('e');
    Wide mantissa = 0;
    int fractionDigits = 0;
    bool inFraction = false;
    for (char c : text.substr(0, e)) {
        if (c == '.') {
            inFraction = true;
        } else if (c != '-') {
            mantissa = mantissa * 10 + (c - '0');
            fractionDigits += inFraction ? 1 : 0;
        }
    }
    int exponent = 0;
    std::from_chars(text.data() + e + (text[e + 1] == '+' ? 2 : 1), text.data() + text.size(), exponent);
    exponent -= fractionDigits;

    Wide product = magnitudeOf(amount.m_raw) * mantissa;
    for (; exponent > 0 && product != 0; --exponent) {
        product *= 10;
        if (product > NegativeLimit)
            throw RuntimeError::overflow();
    }
    if (exponent < 0)
        product = -exponent > MaxDivisorExponent ? 0 : divideHalfToEven(product, powerOfTen(-exponent));
    const bool negative = (amount.m_raw < 0) != (factor < 0);
    if (auto raw = signedAmount(negative, product))
        return Money(*raw);
    throw RuntimeError::overflow();
}

} // namespace xv::common
