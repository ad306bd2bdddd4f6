// SPDX-License-Identifier: MIT
#include "OrderSearch.h"

#include "data/Database.h"
#include "data/Schema.h"
#include "data/SqlText.h"

#include <QSqlQuery>

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

// The text as one phrase of the full-text index's query language, which the trigram tokenizer reads as
// every three letters of it in a row: a part of a name, whatever the characters typed.
QString phrase(const QString& text)
{
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

bool usesNameIndex(const QString& filterText, NameLookup lookup)
{
    return lookup == NameLookup::NameIndex && nameIndexCanServe(filterText);
}

// The rows a text is sought in. Through the name index, those it finds (and those whose number is the text)
// are the rows, and the table's own indexes are kept out of the way: SQLite would otherwise walk the
// index of orders from the newest, testing each row against the few found.
QString rowsSought(const QString& filterText, NameLookup lookup)
{
    return usesNameIndex(filterText, lookup) ? QStringLiteral(" from movimenti not indexed")
                                             : QStringLiteral(" from movimenti");
}

QString filterCondition(const QString& filterText, NameLookup lookup)
{
    if (filterText.isEmpty())
        return {};
    if (allDigits(filterText))
        return QStringLiteral(" and numero='") + sqlEscape(filterText) + QLatin1Char('\'');
    const QString lowered = filterText.toLower();
    const QString pattern = containing(lowered);
    // The index only narrows the rows: whether a row matches is still decided by the same comparison as
    // without it, so both ways find the same orders.
    const QString narrowed = usesNameIndex(filterText, lookup)
                                 ? QStringLiteral(" and rowid in (select rowid from %1 where %1 match '%2' "
                                                  "union all select rowid from movimenti where numero='%3')")
                                       .arg(QLatin1String(data::kNameIndexTable), sqlEscape(phrase(lowered)),
                                            sqlEscape(filterText))
                                 : QString();
    return narrowed + QStringLiteral(" and (numero='") + sqlEscape(filterText) +
           QStringLiteral("' or lower(Nominativo) like ") + pattern +
           QStringLiteral(" or lower(attrib04) like ") + pattern + QLatin1Char(')');
}

QString newestFirst(const QString& table)
{
    return QStringLiteral(" order by %1serie desc, length(%1numero) desc, %1numero desc, %1documento desc")
        .arg(table);
}

// The orders that follow the given one in the list's order: the index walked from just past it.
QString following(const std::optional<OrderKey>& after)
{
    if (!after)
        return {};
    return QStringLiteral(" and (serie, length(numero), numero, documento) < ('%1', %2, '%3', '%4')")
        .arg(sqlEscape(after->serie), QString::number(after->numero.size()), sqlEscape(after->numero),
             sqlEscape(after->documento));
}

// The keys of the newest orders whose rows meet the condition, at most limit of them, and when asked the
// first of those rows as primo.
QString newestKeys(const QString& orderKind, const QString& rows, const QString& condition, int limit,
                   bool withFirstRow = false)
{
    return QStringLiteral("select documento, serie, numero") +
           (withFirstRow ? QStringLiteral(", min(rowid) as primo") : QString()) + rows +
           QStringLiteral(
               " where documento & '' in (select tipodocumento from numeratori where codtipodoc='") +
           sqlEscape(orderKind) + QStringLiteral("')") + condition +
           QStringLiteral(" group by serie, length(numero), numero, documento") + newestFirst({}) +
           QStringLiteral(" limit ") + QString::number(limit);
}

// One order's rows, for a subquery that sums or counts them.
QString rowsOf(const QString& alias)
{
    return QStringLiteral(" from movimenti %1 where %1.documento=k.documento and %1.serie=k.serie and "
                          "%1.numero=k.numero)")
        .arg(alias);
}

} // namespace

// Two steps, so that the work follows the rows shown and not the size of the archive: the newest orders'
// keys come first, walking the index kept in that order (newest year, then longest and greatest number)
// and stopping at the limit; only those orders are then read and totalled. The order type is compared
// through "& ''" on purpose: a plain comparison would lead SQLite into the index by document type, which
// must then sort every order before the first one can be shown. A customer name or a ceremony is never
// all digits, so such a text looks for the order number alone, straight through its index.
QString orderSearchSql(const QString& orderKind, const QString& filterText, int limit, NameLookup lookup,
                       const std::optional<OrderKey>& after)
{
    // The first row and the total are looked up per key before the join, so that each engine reaches the
    // first row by its key instead of testing every row against a subquery.
    const QString firstRows =
        QStringLiteral("select k.documento as documento, k.serie as serie, k.numero as numero, "
                       "(select min(f.rowid)") +
        rowsOf(QStringLiteral("f")) + QStringLiteral(" as primo, (select sum(s.totale)") +
        rowsOf(QStringLiteral("s")) + QStringLiteral(" as totale from (") +
        newestKeys(orderKind, rowsSought(filterText, lookup),
                   filterCondition(filterText, lookup) + following(after), limit) +
        QStringLiteral(") k");
    return QStringLiteral("select k.numero as numero, k.serie as serie, m.datadocumento as DataComm, "
                          "m.Nominativo as Nominativo, m.attrib04 as Cerimonia, m.attrib05 as DataCerimonia, "
                          "m.attrib06 as NomeFesteggiato, m.StatoRiga as [STATO COMMISSIONE], "
                          "k.totale as Totale, k.documento as documento from (") +
           firstRows + QStringLiteral(") k inner join movimenti m on m.rowid = k.primo") +
           newestFirst(QStringLiteral("k."));
}

// The same two steps with every column of the order-header view. For a state, the keys are those of orders
// with rows in it and each order shows the first of those rows: an order is listed in its state, as in
// the view, and one whose rows were left in two states (lines added after a change of state) is listed in
// both, so that its rows in either can still be moved. A condition on the first row of each order instead
// would leave the engine unable to tell how far down the index a page ends, and PostgreSQL then sorts
// every order in the state before showing the first.
QString orderChoiceSql(const QString& orderKind, const QString& state, const QString& filterText, int limit,
                       NameLookup lookup, const std::optional<OrderKey>& after)
{
    QString condition = filterCondition(filterText, lookup) + following(after);
    if (!state.isEmpty())
        condition += QStringLiteral(" and StatoRiga='") + sqlEscape(state) + QLatin1Char('\'');
    const QString firstRows =
        QStringLiteral(
            "select k.documento as documento, k.serie as serie, k.numero as numero, k.primo as primo, "
            "(select sum(s.totale)") +
        rowsOf(QStringLiteral("s")) + QStringLiteral(" as totale, (select sum(a.prezzo2)") +
        rowsOf(QStringLiteral("a")) + QStringLiteral(" as acconto, (select count(*)") +
        rowsOf(QStringLiteral("c")) + QStringLiteral(" as righe from (") +
        newestKeys(orderKind, rowsSought(filterText, lookup), condition, limit, true) + QStringLiteral(") k");
    return QStringLiteral("select k.numero as numero, k.serie as serie, k.documento as documento, "
                          "m.datadocumento as DataComm, m.Nominativo as Nominativo, "
                          "m.codenominativo as codenominativo, m.rowid_controparti as rowid_controparti, "
                          "m.telefono as telefono, m.Cellulare as Cellulare, m.Email as Email, "
                          "m.Datadal as DataRitiro, m.Dataal as DataRitiro2, m.attrib04 as Cerimonia, "
                          "m.attrib05 as DataCerimonia, m.attrib06 as NomeFesteggiato, m.attrib07 as Note, "
                          "m.attrib08 as Dicitura, m.attrib00 as Biglietti, m.attrib01 as Amuleto, "
                          "m.StatoRiga as [STATO COMMISSIONE], k.totale as Totale, k.acconto as Acconto, "
                          "k.righe as Righe from (") +
           firstRows + QStringLiteral(") k inner join movimenti m on m.rowid = k.primo") +
           newestFirst(QStringLiteral("k."));
}

bool nameIndexCanServe(const QString& filterText)
{
    return !filterText.isEmpty() && !allDigits(filterText) && filterText.toUcs4().size() >= 3;
}

QString nameIndexCountSql(const QString& filterText, int cap)
{
    return QStringLiteral("select count(*) from (select 1 from %1 where %1 match '%2' limit %3)")
        .arg(QLatin1String(data::kNameIndexTable), sqlEscape(phrase(filterText.toLower())),
             QString::number(cap));
}

// Counting stops at the cap, so the question costs little however common the text: the index hands its
// rows over in rowid order, not in the list's, and sorting many thousands of them costs more than walking
// the index of orders, where a common text fills a page within the newest orders.
NameLookup nameLookupFor(data::Database& db, const QString& filterText, int fewRows)
{
    if (db.engine() != data::Engine::SQLite || !nameIndexCanServe(filterText))
        return NameLookup::WalkOrders;
    QSqlQuery count = db.executeBound(nameIndexCountSql(filterText, fewRows));
    return count.next() && count.value(0).toInt() < fewRows ? NameLookup::NameIndex : NameLookup::WalkOrders;
}

namespace {

std::optional<OrderKey> keyAt(const QVariantList& row, int numero, int serie, int documento)
{
    if (row.size() <= std::max({numero, serie, documento}))
        return std::nullopt;
    return OrderKey{row.at(documento).toString(), row.at(numero).toString(), row.at(serie).toString()};
}

} // namespace

std::optional<OrderKey> searchRowKey(const QVariantList& row)
{
    return keyAt(row, Search_numero, Search_serie, Search_documento);
}

std::optional<OrderKey> choiceRowKey(const QVariantList& row)
{
    // numero, serie, documento lead every row of the choice list.
    return keyAt(row, 0, 1, 2);
}

} // namespace xv::orders
