// SPDX-License-Identifier: MIT
#include "../common/ErrorNumberOf.h"

#include "data/Recordset.h"
#include "lines/ArticleInfo.h"
#include "lines/GridColumns.h"

#include <gtest/gtest.h>

#include <QMap>

#include <tuple>

namespace {

using namespace xv::lines;
using xv::common::Money;
using xv::data::Recordset;

TEST(ArticleInfoTest, EveryCodeIsQuotedInThePanelsQueries)
{
    for (const QString& sql : {articleSql("O'Neil"), agentSql(kDefaultAgentSql, "O'Neil"), lastLoadSql("O'Neil"),
                               lastSaleSql("O'Neil")})
        EXPECT_TRUE(sql.contains("codice='O''Neil'")) << sql.toStdString();
    // A shop's own agent query gets the article's condition after its own.
    EXPECT_EQ(agentSql("select ragsoc, email from agenti where 1=1", "x'); drop table med; --"),
              "select ragsoc, email from agenti where 1=1 and righe.codice='x''); drop table med; --'");
}

TEST(ArticleInfoTest, AnArticleWithoutAvailableStockShowsZero)
{
    Recordset rs = Recordset::fromRows({"rowid", "descrizione", "prezzo_vendita", "quantita_reale",
                                        "quantita_disponibile", "quantita_ordinata", "quantita_impegnata"},
                                       {{7, "Cuore d'argento", 12.5, 5.0, QVariant(), 2.0, 1.5},
                                        {8, "Vasetto", 3, 0.0, 4.0, QVariant(), 0.0}});
    const auto first = readArticle(rs);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->rowid, "7");
    EXPECT_EQ(first->descrizione, "Cuore d'argento");
    EXPECT_EQ(first->prezzo, Money::fromRaw(125000));
    EXPECT_EQ(first->quantitaReale, "5");
    EXPECT_EQ(first->quantitaDisponibile, "0");
    EXPECT_EQ(first->quantitaOrdinata, "2");
    EXPECT_EQ(first->quantitaImpegnata, "1.5");
    rs.moveNext();
    EXPECT_EQ(readArticle(rs)->quantitaDisponibile, "4");
    EXPECT_EQ(readArticle(rs)->quantitaOrdinata, "");
    rs.moveNext();
    EXPECT_FALSE(readArticle(rs));
}

TEST(ArticleInfoTest, AMovementShowsItsQuantityFirst)
{
    Recordset rs = Recordset::fromRows({"qta", "datadocumento"},
                                       {{120, QDateTime(QDate(2025, 3, 12), QTime())}, {30, QVariant()}});
    EXPECT_EQ(movementText(rs), "120 del 12/03/2025");
    rs.moveNext();
    EXPECT_EQ(movementText(rs), "30");
    rs.moveNext();
    EXPECT_EQ(movementText(rs), "");
}

TEST(ArticleInfoTest, AQuantityAtOrBelowTheThresholdIsRed)
{
    const std::tuple<const char*, qint16, xv::host::Colour> cases[] = {
        {"0", 0, kStockLow},
        {"1", 0, kStockGood},
        {"", 0, kStockLow},
        {"5", 5, kStockLow},
        {"5.5", 5, kStockGood},
        {"-2", 0, kStockLow},
        {"120 del 12/03/2025", 5, kStockGood},
        {"abc", 5, kStockLow},
    };
    for (const auto& [text, threshold, colour] : cases)
        EXPECT_EQ(stockColour(text, threshold), colour) << text << " against " << threshold;
}

TEST(ArticleInfoTest, TheStockCheckAsksOnlyWhenSwitchedOnAndShort)
{
    struct Case
    {
        const char* setting;
        const char* quantity;
        const char* real;
        bool mailAllowed;
        bool ask;
        float missing;
    };
    const Case cases[] = {
        {"1", "8", "5", true, true, 3},     {"1", "5", "5", true, false, 0},
        {"1", "4", "5", false, false, 0},   {"2", "8", "5", false, false, 0},
        {"0", "8", "5", false, false, 0},   {"", "8", "5", false, false, 0},
        {"1.0", "8", "5", true, true, 3},   {"1", "", "5", false, false, 0},
        {"1", "0", "", false, false, 0},    {"1", "3", "", true, true, 3},
        {"1", "2.5", "1", true, true, 1.5}, {"1 ", "6", "0", true, true, 6},
        {"1", "abc", "0", true, false, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << "setting " << c.setting << ", asked " << c.quantity << ", real " << c.real);
        const StockCheck check = checkStock(c.setting, c.quantity, c.real);
        EXPECT_EQ(check.mailAllowed, c.mailAllowed);
        EXPECT_EQ(check.ask, c.ask);
        EXPECT_EQ(check.missing, c.missing);
    }
}

TEST(ArticleInfoTest, TheReorderQuestionIsLaidOutLineByLine)
{
    const QString text = reorderQuestion("5", "8", 3, "Bianchi Luca", "luca@esempio.it");
    EXPECT_EQ(text, "ATTENZIONE!!\r\n"
                    "\r\n"
                    "La quantità inserita non è sufficiente!!\r\n"
                    "Sarebbe necessario un riordine della quantità mancante. \r\n"
                    "\r\n"
                    "Di seguito i dettagli      : \r\n"
                    "\r\n"
                    "- QUANTITA' A MAGAZZINO    : 5\r\n"
                    "- QUANTITA' IN COMMISSIONE : 8\r\n"
                    "- QUANTITA' DA ORDINARE    : 3\r\n"
                    "\r\n"
                    "NOMINATIVO Bianchi Luca\r\n"
                    "E-MAIL     luca@esempio.it\r\n"
                    "Inviare una Mail per la fornitura ?");
    const std::pair<float, const char*> missing[] = {{1.5f, "1,5"}, {0.1f, "0,1"}, {1234567, "1234567"}};
    for (const auto& [value, shown] : missing)
        EXPECT_EQ(missingText(value), shown);
}

TEST(ArticleInfoTest, TheSameArticleIsFoundByItsCodeWithoutBlanksCaseCounting)
{
    QMap<std::pair<int, int>, QString> cells;
    auto line = [&cells](int row, const char* code, const char* rowidMed) {
        cells[{row, Col_codice_med}] = code;
        cells[{row, Col_rowid_med}] = rowidMed;
    };
    // Row 0 and 1 hold the column names and types, never a line.
    line(0, "A1", "99");
    line(2, "B7", "12");
    line(3, "A1  ", "31");
    line(4, "A1", "44");
    line(5, " a2", "9");
    const CellReader read = [&cells](int row, int col) { return cells.value({row, col}); };
    struct Case
    {
        bool on;
        const char* typed;
        qint16 row;
        qint32 rowidMed;
    };
    const Case cases[] = {
        {true, "A1", 3, 31}, {true, " A1 ", 3, 31}, {true, "a1", 0, 0},
        {true, "A2", 0, 0},  {true, "a2", 5, 9},    {true, "B7", 2, 12},
        {true, "", 0, 0},    {false, "A1", 0, 0},   {false, "B7", 0, 0},
    };
    for (const Case& c : cases) {
        const ExistingLine found = findExistingLine(c.on, c.typed, 6, read);
        EXPECT_EQ(found.row, c.row) << c.typed << (c.on ? " on" : " off");
        EXPECT_EQ(found.rowidMed, c.rowidMed) << c.typed << (c.on ? " on" : " off");
    }
    // A tab is part of a code.
    cells[{2, Col_codice_med}] = "\tB7";
    EXPECT_EQ(findExistingLine(true, "B7", 6, read).row, 0);
}

} // namespace
