// SPDX-License-Identifier: MIT
#include "Totals.h"

#include "common/Conversions.h"
#include "common/RuntimeError.h"

#include <QLocale>

#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace xv::lines {

namespace {

using common::Money;
using common::RuntimeError;

// Percentages have always been read as single precision; their rounding error shows in the tax text.
float toSingle(double value)
{
    if (std::fabs(value) > std::numeric_limits<float>::max())
        throw RuntimeError::overflow();
    return static_cast<float>(value);
}

float percentage(const QString& text)
{
    return toSingle(common::numericValue(text));
}

// Fifteen significant digits without exponent or grouping, so that the currency reading of the cell
// takes the text back whatever its size.
QString plainDecimalText(double value, const QLocale& locale)
{
    if (value == 0)
        return QStringLiteral("0");
    char buffer[64];
    const auto written =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific, 14);
    std::string_view text(buffer, written.ptr - buffer);
    const bool negative = text.front() == '-';
    if (negative)
        text.remove_prefix(1);
    const std::size_t e = text.find('e');
    QString digits;
    for (char c : text.substr(0, e)) {
        if (c != '.')
            digits += QLatin1Char(c);
    }
    while (digits.size() > 1 && digits.endsWith(u'0'))
        digits.chop(1);
    int exponent = 0;
    const std::string_view exponentText = text.substr(e + 1);
    std::from_chars(exponentText.data() + (exponentText.front() == '+' ? 1 : 0),
                    exponentText.data() + exponentText.size(), exponent);

    const int wholeDigits = exponent + 1;
    QString result;
    if (wholeDigits <= 0)
        result = QStringLiteral("0") + locale.decimalPoint() + QString(-wholeDigits, u'0') + digits;
    else if (wholeDigits >= digits.size())
        result = digits + QString(wholeDigits - digits.size(), u'0');
    else
        result = digits.left(wholeDigits) + locale.decimalPoint() + digits.mid(wholeDigits);
    return negative ? locale.negativeSign() + result : result;
}

Money discount(Money gross, const QString& percent)
{
    return Money::fromDouble(gross.toDouble() * static_cast<double>(percentage(percent)) / 100.0);
}

} // namespace

QString lineAmountText(double quantity, Money price)
{
    const double amount = price.toDouble() * quantity;
    if (!std::isfinite(amount))
        throw RuntimeError::overflow();
    return Money::fromDouble(amount).toCurrencyText();
}

LineAmounts newLineAmounts(const QString& lineAmountText, const QString& sconto1, const QString& sconto2,
                           const QString& percentuale)
{
    LineAmounts amounts;
    amounts.gross = Money::parse(Money::parse(lineAmountText).toCurrencyText());
    const Money net = amounts.gross - discount(amounts.gross, sconto1) - discount(amounts.gross, sconto2);
    amounts.imponibile = net.toCurrencyText();
    const Money taxable = Money::parse(amounts.imponibile);
    const double tax = static_cast<double>(percentage(percentuale)) * taxable.toDouble() / 100.0;
    amounts.imposta = plainDecimalText(tax, QLocale());
    amounts.totale = taxable.toCurrencyText();
    return amounts;
}

Money orderTotal(const QStringList& imponibileCells)
{
    Money total;
    for (const QString& cell : imponibileCells) {
        if (!cell.trimmed().isEmpty())
            total += Money::parse(cell);
    }
    return total;
}

qint32 quantityTotal(const QStringList& qtaCells)
{
    qint32 total = 0;
    for (const QString& cell : qtaCells)
        total = common::toInt32(static_cast<double>(total) + common::numericValue(cell));
    return total;
}

QString quantityTotalText(qint32 total)
{
    return QStringLiteral("Tot.Q.tà: ") + QString::number(total);
}

} // namespace xv::lines
