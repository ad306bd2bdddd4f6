// SPDX-License-Identifier: MIT
#pragma once

#include <QLocale>
#include <QString>
#include <QtGlobal>

namespace xv::common {

// The leading number of the text read with a '.' decimal point whatever the locale, the way stored codes
// and quantities written by older data are read: leading blanks skipped, reading stops at the first
// character that cannot continue the number, no number at all is 0. "&H" and "&O" prefixes read hex and
// octal. Throws Overflow when the number is too large for a double.
double numericValue(const QString& text);

// Whole-number conversions round halves to even and throw Overflow when the rounded value does not fit.
qint16 toInt16(double value);
qint32 toInt32(double value);
quint8 toByte(double value);
quint8 toByte(qint16 value);
quint8 toByte(qint32 value); // so that a plain int literal picks neither of the other two ambiguously

// Text must be a whole number as the user writes it (locale decimal separator and grouping, or a '.'
// decimal point) or a Boolean word (True/Vero give -1, False/Falso give 0); anything else is a TypeMismatch.
qint16 toInt16(const QString& text, const QLocale& locale = QLocale());
qint32 toInt32(const QString& text, const QLocale& locale = QLocale());

// True/False and Vero/Falso in any case, or any number (non-zero is true); anything else is a TypeMismatch.
bool toBool(const QString& text, const QLocale& locale = QLocale());

// Stored flags and older interfaces keep true as -1 (all bits set).
constexpr qint16 toVbBool(bool value)
{
    return value ? -1 : 0;
}

constexpr bool fromVbBool(qint16 value)
{
    return value != 0;
}

} // namespace xv::common
