// SPDX-License-Identifier: MIT
#include "OrderSearch.h"

#include "data/SqlText.h"

namespace xv::orders {

using data::sqlEscape;

namespace {

// A pattern that finds the text as typed inside a longer one, on both engines: a % or _ typed is a
// character sought, not a wildcard, and PostgreSQL would otherwise take a backslash for an escape.
QString containing(const QString& text)
{
    QString pattern = text;
    pattern.replace(QLatin1Char('!'), QLatin1String("!!"));
    pattern.replace(QLatin1Char('%'), QLatin1String("!%"));
    pattern.replace(QLatin1Char('_'), QLatin1String("!_"));
    return QStringLiteral("'%") + sqlEscape(pattern) + QStringLiteral("%' escape '!'");
}

} // namespace

QString orderSearchSql(const QString& filterText, int limit)
{
    QString condition;
    if (!filterText.isEmpty()) {
        condition = QStringLiteral(" where numero='") + sqlEscape(filterText) +
                    QStringLiteral("' or lower(Nominativo) like ") + containing(filterText.toLower());
    }
    return QStringLiteral("select numero, serie, DataComm, Nominativo, Cerimonia, DataCerimonia, NomeFesteggiato, "
                          "[STATO COMMISSIONE], Totale, documento from Doc_Commissioni_testate") +
           condition + QStringLiteral(" order by serie desc, val(numero) desc limit ") + QString::number(limit);
}

} // namespace xv::orders
