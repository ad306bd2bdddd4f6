// SPDX-License-Identifier: MIT
#include "SqlText.h"

namespace xv::data {

QString sqlEscape(const QString& value)
{
    QString escaped = value;
    escaped.replace(QLatin1Char('\''), QLatin1String("''"));
    // A NUL ends the statement there on both engines, and no stored text holds one (saving refuses it):
    // left out, a lookup with one finds what it would without it instead of failing.
    escaped.remove(QChar(u'\0'));
    return escaped;
}

QString sqlQuoted(const QString& value)
{
    return QLatin1Char('\'') + sqlEscape(value) + QLatin1Char('\'');
}

} // namespace xv::data
