// SPDX-License-Identifier: MIT
#include "SqlText.h"

namespace xv::data {

QString sqlEscape(const QString& value)
{
    QString escaped = value;
    escaped.replace(QLatin1Char('\''), QLatin1String("''"));
    return escaped;
}

QString sqlQuoted(const QString& value)
{
    return QLatin1Char('\'') + sqlEscape(value) + QLatin1Char('\'');
}

} // namespace xv::data
