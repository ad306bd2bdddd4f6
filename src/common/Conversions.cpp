// SPDX-License-Identifier: MIT
#include "Conversions.h"

#include "RuntimeError.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

namespace xv::common {

namespace {

bool isAsciiDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

double radixValue(QStringView digits, int radix)
{
    double value = 0;
    for (QChar c : digits) {
        const char16_t lower = c.toLower().unicode();
        const int digit =
            isAsciiDigit(c) ? lower - u'0' : (lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1);
        if (digit < 0 || digit >= radix)
            break;
        value = value * radix + digit;
    }
    return value;
}

// Decimal exponent of the first significant digit, enough to tell an overflow from an underflow.
int leadingExponent(const std::string& mantissa, int exponent)
{
    const std::size_t first = mantissa.find_first_not_of("-0.");
    const std::size_t point = mantissa.find('.');
    if (first == std::string::npos)
        return std::numeric_limits<int>::min();
    const std::size_t end = point == std::string::npos ? mantissa.size() : point;
    const auto position = static_cast<long>(end) - static_cast<long>(first) - (first < end ? 1 : 0);
    return static_cast<int>(position) + exponent;
}

double roundHalfToEven(double value)
{
    const double floor = std::floor(value);
    const double fraction = value - floor;
    if (fraction > 0.5 || (fraction == 0.5 && std::fmod(floor, 2.0) != 0))
        return floor + 1;
    return floor;
}

template <typename T> T roundedInto(double value)
{
    const double rounded = roundHalfToEven(value);
    if (!(rounded >= std::numeric_limits<T>::min() && rounded <= std::numeric_limits<T>::max()))
        throw RuntimeError::overflow();
    return static_cast<T>(rounded);
}

std::optional<bool> booleanWord(const QString& trimmed)
{
    for (const auto word : {u"true", u"vero"}) {
        if (trimmed.compare(QStringView(word), Qt::CaseInsensitive) == 0)
            return true;
    }
    for (const auto word : {u"false", u"falso"}) {
        if (trimmed.compare(QStringView(word), Qt::CaseInsensitive) == 0)
            return false;
    }
    return std::nullopt;
}

// The locale's way first, so that "1.234" is a thousand in Italy; a '.' decimal point as a fallback,
// without grouping, because data pasted from elsewhere writes numbers that way.
double numberFromText(const QString& trimmed, const QLocale& locale)
{
    bool ok = false;
    double value = locale.toDouble(trimmed, &ok);
    if (!ok && !std::isinf(value)) {
        QLocale pointDecimal = QLocale::c();
        pointDecimal.setNumberOptions(QLocale::RejectGroupSeparator);
        value = pointDecimal.toDouble(trimmed, &ok);
    }
    if (!ok && std::isinf(value))
        throw RuntimeError::overflow();
    if (!ok || !std::isfinite(value))
        throw RuntimeError::typeMismatch(trimmed);
    return value;
}

template <typename T> T wholeNumberFromText(const QString& text, const QLocale& locale)
{
    const QString trimmed = text.trimmed();
    if (const auto word = booleanWord(trimmed))
        return *word ? -1 : 0;
    return roundedInto<T>(numberFromText(trimmed, locale));
}

} // namespace

double numericValue(const QString& text)
{
    qsizetype at = 0;
    while (at < text.size() && text[at].isSpace())
        ++at;
    const QStringView rest = QStringView(text).mid(at);
    if (rest.size() >= 2 && rest[0] == u'&') {
        const QChar kind = rest[1].toUpper();
        if (kind == u'H')
            return radixValue(rest.mid(2), 16);
        if (kind == u'O')
            return radixValue(rest.mid(2), 8);
    }

    std::string number;
    qsizetype i = 0;
    const auto takeDigits = [&] {
        for (; i < rest.size() && isAsciiDigit(rest[i]); ++i)
            number += static_cast<char>(rest[i].unicode());
    };
    if (i < rest.size() && (rest[i] == u'-' || rest[i] == u'+'))
        number += rest[i++] == u'-' ? "-" : "";
    takeDigits();
    if (i < rest.size() && rest[i] == u'.') {
        number += '.';
        ++i;
        takeDigits();
    }
    if (number.find_first_of("0123456789") == std::string::npos)
        return 0.0;

    int exponent = 0;
    if (i + 1 < rest.size() && (rest[i] == u'e' || rest[i] == u'E')) {
        qsizetype j = i + 1;
        const bool negativeExponent = rest[j] == u'-';
        if (rest[j] == u'-' || rest[j] == u'+')
            ++j;
        for (; j < rest.size() && isAsciiDigit(rest[j]); ++j) {
            if (exponent < 100000)
                exponent = exponent * 10 + rest[j].digitValue();
        }
        if (negativeExponent)
            exponent = -exponent;
    }

    const std::string full = number + 'e' + std::to_string(exponent);
    double value = 0;
    const auto result = std::from_chars(full.data(), full.data() + full.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        if (leadingExponent(number, exponent) > 0)
            throw RuntimeError::overflow();
        return 0.0;
    }
    return value + 0.0; // no negative zero for "-0"
}

qint16 toInt16(double value)
{
    return roundedInto<qint16>(value);
}

qint32 toInt32(double value)
{
    return roundedInto<qint32>(value);
}

quint8 toByte(double value)
{
    return roundedInto<quint8>(value);
}

quint8 toByte(qint16 value)
{
    return toByte(static_cast<qint32>(value));
}

quint8 toByte(qint32 value)
{
    if (value < 0 || value > 255)
        throw RuntimeError::overflow();
    return static_cast<quint8>(value);
}

qint16 toInt16(const QString& text, const QLocale& locale)
{
    return wholeNumberFromText<qint16>(text, locale);
}

qint32 toInt32(const QString& text, const QLocale& locale)
{
    return wholeNumberFromText<qint32>(text, locale);
}

bool toBool(const QString& text, const QLocale& locale)
{
    const QString trimmed = text.trimmed();
    if (const auto word = booleanWord(trimmed))
        return *word;
    return numberFromText(trimmed, locale) != 0;
}

} // namespace xv::common
