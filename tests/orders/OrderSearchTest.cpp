// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "common/Money.h"
#include "data/Database.h"
#include "data/Recordset.h"
#include "data/SqlDialect.h"
#include "orders/OrderSearch.h"

#include <QRegularExpression>

#include <QSqlQuery>
#include <functional>
#include <optional>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using data::Engine;
using data::Recordset;

// The search window must cost the same on a shop of ten orders and one of a million: its query walks the
// index kept in the list's order and stops at the page, instead of grouping every order first.
class OrderSearchTest : public test::SchemaTest
{
protected:
    void SetUp() override
    {
        SchemaTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        db().execute("insert into numeratori (codtipodoc, tipodocumento, serie, numero) values ('CO', 'COMM', "
                     "'2026', 0), ('CF', 'DDTF', '2026', 0)");
        // 1500 orders of two lines each over three years, and a delivery note sharing a number.
        db().executeBound(
            "insert into movimenti (documento, serie, numero, datadocumento, Nominativo, attrib04, totale, "
            "prezzo2) with recursive n(i) as (select 1 union all select i + 1 from n where i < 3000) "
            "select 'COMM', cast(2024 + ((i + 1) / 2) % 3 as text), cast((i + 1) / 2 as text), "
            "'2026-01-01 00:00:00', "
            "case when ((i + 1) / 2) % 250 = 1 then 'Greco 50%_\\ Lucia' else 'Rossi Maria' end, "
            "case when ((i + 1) / 2) % 7 = 0 then 'Battesimo' else 'Matrimonio' end, 10, 1 from n");
        db().executeBound("insert into movimenti (documento, serie, numero, Nominativo) values "
                          "('DDTF', '2026', '1499', 'Rossi Maria')");
        db().executeBound(GetParam() == Engine::SQLite ? "analyze" : "analyze movimenti");
        // A table this small is read whole and sorted more cheaply, which PostgreSQL knows; what matters
        // here is that the index gives the rows in the list's order, which it chooses on a large shop.
        if (GetParam() == Engine::PostgreSQL) {
            db().executeBound("set enable_seqscan = off");
            db().executeBound("set enable_sort = off");
        }
    }

    QStringList plan(const QString& filterText) { return planOf(orders::orderSearchSql("CO", filterText, 20)); }

    // The orders a text finds, the same whichever way it is sought: walking the orders, and the way the
    // database chooses for it (on SQLite, for a text of three letters or more, its name index).
    int foundBothWays(const QString& typed)
    {
        const auto keys = [&](orders::NameLookup lookup) {
            QStringList found;
            for (Recordset page = Recordset::open(db(), orders::orderSearchSql("CO", typed, 20, lookup));
                 !page.eof(); page.moveNext())
                found << page.text("serie") + "/" + page.text("numero");
            return found;
        };
        const QStringList walked = keys(orders::NameLookup::WalkOrders);
        EXPECT_EQ(keys(orders::nameLookupFor(db(), typed)), walked) << typed.toStdString();
        return static_cast<int>(walked.size());
    }

    QStringList planOf(const QString& text)
    {
        const QString sql = data::rewriteSql(text, GetParam());
        QSqlQuery query = db().executeBound(
            (GetParam() == Engine::SQLite ? QStringLiteral("explain query plan ") : QStringLiteral("explain ")) +
            sql);
        QStringList lines;
        const int detail = GetParam() == Engine::SQLite ? 3 : 0;
        while (query.next())
            lines << query.value(detail).toString();
        return lines;
    }
};

TEST_P(OrderSearchTest, TheNewestOrdersComeFromTheIndexInTheirOrderWithoutGroupingEveryOrder)
{
    for (const QString& text : {QString(), QStringLiteral("rossi")}) {
        const QString lines = plan(text).join('\n');
        if (GetParam() == Engine::SQLite) {
            EXPECT_TRUE(lines.contains("SCAN movimenti USING COVERING INDEX ix_movimenti_ordine")) << lines.toStdString();
            EXPECT_FALSE(lines.contains("TEMP B-TREE FOR GROUP BY")) << lines.toStdString();
        } else if (text.isEmpty()) {
            EXPECT_TRUE(lines.contains(QRegularExpression("Index (Only )?Scan Backward using ix_movimenti_ordine")))
                << lines.toStdString();
        }
    }
    EXPECT_TRUE(plan("1234").join('\n').contains(GetParam() == Engine::SQLite ? "INDEX ix_movimenti_numero"
                                                                             : "ix_movimenti_numero"))
        << plan("1234").join('\n').toStdString();
}

TEST_P(OrderSearchTest, APageHoldsTheNewestOrdersWithTheirTotalsAndATypedTextFindsNameCeremonyOrNumber)
{
    Recordset page = Recordset::open(db(), orders::orderSearchSql("CO", {}, 3));
    QStringList keys;
    for (; !page.eof(); page.moveNext())
        keys << page.text("serie") + "/" + page.text("numero") + "/" + page.text("documento") + "/" +
                    page.money("Totale").toCurrencyText();
    const QString twenty = common::Money::fromDouble(20).toCurrencyText();
    EXPECT_EQ(keys, QStringList({"2026/1499/COMM/" + twenty, "2026/1496/COMM/" + twenty,
                                 "2026/1493/COMM/" + twenty}));

    const struct
    {
        const char* typed;
        int found;
    } cases[] = {{"50%_\\", 6}, {"50%_x", 0}, {"GRECO", 6}, {"battes", 20}, {"1499", 1},
                 {"149", 1},    {"o 5", 6},   {"a\"b", 0},  {"ss", 20},     {"'", 0}};
    for (const auto& c : cases)
        EXPECT_EQ(foundBothWays(c.typed), c.found) << c.typed;
}

// A text that few rows carry is sought through the name index on SQLite, which answers at once wherever the
// orders are in the archive; a common one walks the orders, where it fills a page among the newest.
TEST_P(OrderSearchTest, AFewRowsTextIsSoughtThroughTheNameIndexAndACommonOneWalksTheOrders)
{
    using orders::NameLookup;
    const bool sqlite = GetParam() == Engine::SQLite;
    const struct
    {
        const char* typed;
        NameLookup onSQLite;
    } cases[] = {{"greco", NameLookup::NameIndex},
                 {"rossi", NameLookup::WalkOrders},
                 {"gr", NameLookup::WalkOrders},
                 {"1499", NameLookup::WalkOrders},
                 {"zzz", NameLookup::NameIndex}};
    for (const auto& c : cases)
        EXPECT_EQ(orders::nameLookupFor(db(), c.typed, 100), sqlite ? c.onSQLite : NameLookup::WalkOrders)
            << c.typed;
    if (!sqlite)
        return;
    const QString lines = planOf(orders::orderSearchSql("CO", "greco", 20, NameLookup::NameIndex)).join('\n');
    EXPECT_TRUE(lines.contains("VIRTUAL TABLE")) << lines.toStdString();
    EXPECT_FALSE(lines.contains("ix_movimenti_ordine")) << lines.toStdString();
    const QString choice =
        planOf(orders::orderChoiceSql("CO", "EMESSO", "greco", 20, NameLookup::NameIndex)).join('\n');
    EXPECT_TRUE(choice.contains("VIRTUAL TABLE")) << choice.toStdString();
}

// A name with accents is found whatever the case it was typed or stored in, on an order of any year; an
// accent is a letter of its own, so a name typed without it is another name.
TEST_P(OrderSearchTest, ANameWithAccentsIsFoundInAnyCaseOnOrdersOfAnyYear)
{
    db().executeBound("insert into movimenti (documento, serie, numero, Nominativo, attrib04) values "
                      "('COMM', '2024', '9001', 'ÈRCOLI NICOLÒ', 'Comunione'), "
                      "('COMM', '2026', '9002', 'èrcoli nicolò', 'Cresima di Zoë')");
    const struct
    {
        const char* typed;
        int found;
    } cases[] = {{"èrcoli", 2}, {"ÈRCOLI", 2}, {"Nicolò", 2}, {"NICOLÒ", 2}, {"ercoli", 0}, {"ZOË", 1}};
    for (const auto& c : cases)
        EXPECT_EQ(foundBothWays(QString::fromUtf8(c.typed)), c.found) << c.typed;
}

// A page that follows another starts just after the last order of the one before: read page by page, the
// list is the one read at once, for the search window and for the choice in bulk, with and without a text.
TEST_P(OrderSearchTest, PagesReadOneAfterAnotherMakeTheListReadAtOnce)
{
    using Sql = std::function<QString(int limit, const std::optional<orders::OrderKey>& after)>;
    const auto keyText = [](const Recordset& row) {
        return row.text("serie") + "/" + row.text("numero") + "/" + row.text("documento");
    };
    const struct
    {
        const char* what;
        Sql sql;
        std::optional<orders::OrderKey> (*keyOf)(const QVariantList&);
    } lists[] = {
        {"search",
         [](int limit, const auto& after) {
             return orders::orderSearchSql("CO", {}, limit, orders::NameLookup::WalkOrders, after);
         },
         orders::searchRowKey},
        {"search for a text",
         [](int limit, const auto& after) {
             return orders::orderSearchSql("CO", "greco", limit, orders::NameLookup::WalkOrders, after);
         },
         orders::searchRowKey},
        {"choice",
         [](int limit, const auto& after) {
             return orders::orderChoiceSql("CO", {}, {}, limit, orders::NameLookup::WalkOrders, after);
         },
         orders::choiceRowKey},
    };
    for (const auto& list : lists) {
        SCOPED_TRACE(list.what);
        QStringList whole;
        for (Recordset all = Recordset::open(db(), list.sql(5000, std::nullopt)); !all.eof(); all.moveNext())
            whole << keyText(all);
        ASSERT_GT(whole.size(), 5);
        QStringList paged;
        std::optional<orders::OrderKey> after;
        for (int pages = 0; pages < 1000; ++pages) {
            Recordset page = Recordset::open(db(), list.sql(250, after));
            QVariantList last;
            for (; !page.eof(); page.moveNext()) {
                paged << keyText(page);
                last.clear();
                for (int i = 0; i < page.fieldCount(); ++i)
                    last << page.value(i);
            }
            if (page.recordCount() < 250)
                break;
            after = list.keyOf(last);
            ASSERT_TRUE(after);
        }
        EXPECT_EQ(paged, whole);
    }
    EXPECT_FALSE(orders::searchRowKey({"1", "2026"})) << "a row too short to name an order";
}

// Every row of a recordset as its fields' texts, with the field names first.
QStringList table(Recordset rows)
{
    QStringList names;
    for (int i = 0; i < rows.fieldCount(); ++i)
        names << rows.fieldName(i);
    QStringList lines{names.join('|')};
    for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
        QStringList cells;
        for (int i = 0; i < rows.fieldCount(); ++i)
            cells << data::variantText(rows.value(i));
        lines << cells.join('|');
    }
    return lines;
}

// The windows that choose orders in bulk read pages of the newest orders instead of the whole view: a page
// must hold exactly the view's rows, columns and totals, and cost the same on any size of archive.
TEST_P(OrderSearchTest, APageOfOrdersInAStateHoldsTheViewsRowsNewestFirstWithoutGroupingEveryOrder)
{
    // The view is compared whole here, which the fixture's planner settings would make needlessly slow.
    if (GetParam() == Engine::PostgreSQL)
        db().executeBound("reset enable_seqscan; reset enable_sort");
    // Orders whose number ends in 0 to 3 are collected.
    db().executeBound("update movimenti set StatoRiga = case when cast(numero as integer) % 10 < 4 then "
                      "'RITIRATO' else 'EMESSO' end, telefono = '06 ' || numero, prezzo2 = cast(numero as integer)");
    const QString newest = " order by serie desc, length(numero) desc, numero desc, documento desc";
    const auto view = [&](const QString& state) {
        const QString where = state.isEmpty() ? "" : " where [STATO COMMISSIONE]='" + state + "'";
        return table(Recordset::open(
            db(), data::rewriteSql("select * from Doc_Commissioni_testate" + where + newest, GetParam())));
    };
    for (const QString state : {"EMESSO", "RITIRATO", ""}) {
        SCOPED_TRACE(state.toStdString());
        const QStringList rows = view(state);
        ASSERT_GT(rows.size(), 31);
        EXPECT_EQ(table(Recordset::open(db(), orders::orderChoiceSql("CO", state, {}, 30))), rows.mid(0, 31));
        EXPECT_EQ(table(Recordset::open(db(), orders::orderChoiceSql("CO", state, {}, 5000))), rows);

        if (GetParam() == Engine::SQLite) {
            const QString lines = planOf(orders::orderChoiceSql("CO", state, {}, 20)).join('\n');
            EXPECT_TRUE(lines.contains("ix_movimenti_ordine")) << lines.toStdString();
            EXPECT_FALSE(lines.contains("TEMP B-TREE FOR GROUP BY")) << lines.toStdString();
        }
    }
    const Recordset found = Recordset::open(db(), orders::orderChoiceSql("CO", "RITIRATO", "greco", 20));
    EXPECT_EQ(table(found).mid(1).join('\n').count("Greco"), 6) << table(found).join('\n').toStdString();
    // The orders offered are those of the kind the module is set to, which the change of state then takes.
    EXPECT_EQ(Recordset::open(db(), orders::orderChoiceSql("ALTRO", {}, {}, 30)).recordCount(), 0);
    EXPECT_EQ(Recordset::open(db(), orders::orderSearchSql("ALTRO", {}, 30)).recordCount(), 0);

    // Order 1490, collected, got a line back in the issued state: it is listed in both, each time with
    // the state and the totals of the whole order, so that either state's rows can still be moved.
    db().executeBound("update movimenti set StatoRiga = 'EMESSO' where rowid = (select max(rowid) from "
                      "movimenti where numero = '1490')");
    for (const QString state : {"EMESSO", "RITIRATO"}) {
        const QStringList page = table(Recordset::open(db(), orders::orderChoiceSql("CO", state, {}, 5000)));
        const QStringList order = page.filter(QRegularExpression("^1490\\|"));
        ASSERT_EQ(order.size(), 1) << state.toStdString();
        EXPECT_TRUE(order[0].contains("|" + state + "|")) << order[0].toStdString();
        EXPECT_EQ(order[0].section('|', -2), view({}).filter(QRegularExpression("^1490\\|")).value(0).section('|', -2));
    }
}

XV_INSTANTIATE_FOR_ENGINES(OrderSearchTest);

} // namespace
