// SPDX-License-Identifier: MIT
#include "OrderSearch.h"

#include "data/SqlText.h"

#include <algorithm>

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

bool allDigits(const QString& text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.isDigit(); });
}

} // namespace

// Two steps, so that the work follows the rows shown and not the size of the archive: the newest orders'
// keys come first, walking the index kept in that order (newest year, then longest and greatest number)
// and stopping at the limit; only those orders are then read and totalled. The order type is compared
// through "& ''" on purpose: a plain comparison would lead SQLite into the index by document type, which
// must then sort every order before the first one can be shown. A customer name or a ceremony is never
// all digits, so such a text looks for the order number alone, straight through its index.
QString orderSearchSql(const QString& filterText, int limit)
{
    QString condition;
    if (!filterText.isEmpty()) {
        if (allDigits(filterText)) {
            condition = QStringLiteral(" and numero='") + sqlEscape(filterText) + QLatin1Char('\'');
        } else {
            const QString pattern = containing(filterText.toLower());
            condition = QStringLiteral(" and (numero='") + sqlEscape(filterText) +
                        QStringLiteral("' or lower(Nominativo) like ") + pattern +
                        QStringLiteral(" or lower(attrib04) like ") + pattern + QLatin1Char(')');
        }
    }
    const auto newestFirst = [](const QString& table) {
        return QStringLiteral(" order by %1serie desc, length(%1numero) desc, %1numero desc, %1documento desc")
            .arg(table);
    };
    const QString keys =
        QStringLiteral("select documento, serie, numero from movimenti "
                       "where documento & '' in (select tipodocumento from numeratori where codtipodoc='CO')") +
        condition + QStringLiteral(" group by serie, length(numero), numero, documento") + newestFirst({}) +
        QStringLiteral(" limit ") + QString::number(limit);
    // The first row and the total are looked up per key before the join, so that each engine reaches the
    // first row by its key instead of testing every row against a subquery.
    const QString firstRows =
        QStringLiteral("select k.documento as documento, k.serie as serie, k.numero as numero, "
                       "(select min(f.rowid) from movimenti f where f.documento=k.documento and "
                       "f.serie=k.serie and f.numero=k.numero) as primo, "
                       "(select sum(s.totale) from movimenti s where s.documento=k.documento and "
                       "s.serie=k.serie and s.numero=k.numero) as totale from (") +
        keys + QStringLiteral(") k");
    return QStringLiteral("select k.numero as numero, k.serie as serie, m.datadocumento as DataComm, "
                          "m.Nominativo as Nominativo, m.attrib04 as Cerimonia, m.attrib05 as DataCerimonia, "
                          "m.attrib06 as NomeFesteggiato, m.StatoRiga as [STATO COMMISSIONE], "
                          "k.totale as Totale, k.documento as documento from (") +
           firstRows + QStringLiteral(") k inner join movimenti m on m.rowid = k.primo") +
           newestFirst(QStringLiteral("k."));
}

} // namespace xv::orders
