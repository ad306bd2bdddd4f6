// SPDX-License-Identifier: MIT
#include "OrderSearch.h"

#include "data/SqlText.h"

namespace xv::orders {

using data::sqlEscape;

QString orderSearchSql(const QString& filterText, int limit)
{
    QString condition;
    if (!filterText.isEmpty()) {
        condition = QStringLiteral(" where numero='") + sqlEscape(filterText) +
                    QStringLiteral("' or lower(Nominativo) like '%") + sqlEscape(filterText.toLower()) +
                    QStringLiteral("%'");
    }
    return QStringLiteral("select numero, serie, DataComm, Nominativo, Cerimonia, DataCerimonia, NomeFesteggiato, "
                          "[STATO COMMISSIONE], Totale, documento from Doc_Commissioni_testate") +
           condition + QStringLiteral(" order by serie desc, val(numero) desc limit ") + QString::number(limit);
}

} // namespace xv::orders
