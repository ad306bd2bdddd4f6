// SPDX-License-Identifier: MIT
#include "PdfText.h"
#include "QtPrinters.h"

#include "common/Money.h"
#include "common/RuntimeError.h"
#include "printing/Statement.h"

#include <gtest/gtest.h>

#include <QPrinter>
#include <QTemporaryDir>

namespace xv::printing {
inline void PrintTo(const StatementLine& line, std::ostream* os)
{
    *os << '{' << '"' << line.text.toStdString() << "\", " << line.pointSize << (line.bold ? ", bold}" : "}");
}
} // namespace xv::printing

namespace {

using namespace xv;
using printing::StatementLine;

// The shop's currency text of an amount in cents, as the grid and the total fields show it.
QString eur(qint64 cents)
{
    return common::Money::fromRaw(cents * 100).toCurrencyText();
}

int padTo(const QString& text, int width)
{
    return std::max(0, width - static_cast<int>(text.size()));
}

printing::StatementInput knownOrder()
{
    printing::StatementInput input;
    input.appTitle = QStringLiteral("xVELA");
    input.phase = QStringLiteral("0");
    input.operatorText = QStringLiteral("7");
    input.number = QStringLiteral("42");
    input.orderDate = QDate(2026, 6, 20);
    input.printTime = QTime(18, 5, 32);
    input.customer = QStringLiteral("Rossi Maria");
    input.rows = {{QStringLiteral("BOM001"), QStringLiteral("Bomboniera in porcellana"), QStringLiteral("2"),
                   eur(8000), eur(16000)}};
    input.deposit = QStringLiteral("10");
    input.total = eur(16000);
    return input;
}

TEST(StatementTest, knownOrderGivesEveryLineInItsSizeAndWeight)
{
    const printing::Statement statement = printing::buildStatement(knownOrder(), padTo);
    QVector<StatementLine> expected = {
        {"", 14, false},
        {"xVELA - FASE: 0 - ESTRATTO COMMISSIONE - OPERATORE: 7", 5, false}};
    for (int i = 0; i < 9; ++i)
        expected.append({"", 5, false});
    const QString rule65(65, QLatin1Char('_'));
    expected += QVector<StatementLine>{
        {"COMMISSIONE  : 42 di sabato, 20 giugno 2026", 12, false},
        {"ORA DI STAMPA: 18:05:32", 12, false},
        {"SPETT.LE: Rossi Maria", 14, true},
        {rule65, 14, false},
        {"    ESTRATTO COMMISSIONE --- --- --- ELENCO ARTICOLI E PREZZI    ", 14, false},
        {rule65, 14, false},
        {"", 14, false},
        {"CODICE               DESCRIZIONE          QU.TA x PREZZO", 12, false},
        {"BOM001       Bomboniera in porcellana          2  x " + eur(8000) + "     = " + eur(16000) + "    ", 12,
         false},
        {QString(75, QLatin1Char('_')), 12, false},
        {"ACCONTO:            " + eur(1000), 14, true},
        {"TOTALE:             " + eur(16000), 14, true},
        {"DIFFERENZA:         " + eur(15000), 14, true},
        {rule65, 14, false},
        {"", 14, false},
        {"", 14, false},
        {"                                     FIRMA:______________________", 14, false}};
    EXPECT_EQ(statement.lines, expected);
    EXPECT_EQ(statement.pictureTwips, QRect(4000, 40, 4200, 1300));
}

struct ArticleCase
{
    const char* name;
    printing::StatementRow row;
    const char* line;
};

class ArticleLineTest : public ::testing::TestWithParam<ArticleCase>
{
};

TEST_P(ArticleLineTest, padsEachPieceAsTheShopAlwaysHas)
{
    printing::StatementInput input = knownOrder();
    input.rows = {GetParam().row};
    const printing::Statement statement = printing::buildStatement(input, padTo);
    EXPECT_EQ(statement.lines[19].text, QString::fromUtf8(GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(
    Pieces, ArticleLineTest,
    ::testing::Values(
        // The gap after a long code counts the whole code: three blanks after the twelve printed.
        ArticleCase{"codeOf15", {"ABCDEFGHIJKLMNO", "Nastro", "1", "2", "2"},
                    "ABCDEFGHIJKL    Nastro                            1  x 2   = 2   "},
        ArticleCase{"descriptionOf31", {"A1", "1234567890123456789012345678901", "1", "2", "2"},
                    "A1           123456789012345678901234567890    1  x 2   = 2   "},
        ArticleCase{"quantityAndPriceLongerThan3", {"A1", "D", "1000", "12,50", "12.500,00"},
                    "A1           D                                 1000 x 12,50   = 12.500,00     "},
        ArticleCase{"emptyCells", {"", "", "", "", ""},
                    "                                                  x     =     "}),
    [](const auto& param) { return std::string(param.param.name); });

TEST(StatementTest, gapAfterTheEqualsSignIsTheHostsPadding)
{
    printing::StatementInput input = knownOrder();
    const printing::Statement statement =
        printing::buildStatement(input, [](const QString& text, int width) { return text == " = " ? 2 : padTo(text, width); });
    EXPECT_TRUE(statement.lines[19].text.endsWith(" =   " + eur(16000) + "    ")) << statement.lines[19].text.toStdString();
}

TEST(StatementTest, emphasisSizeReplacesAnythingBelowSixWithFourteen)
{
    const struct
    {
        const char* setting;
        int size;
    } cases[] = {{"14", 14}, {"5", 14}, {"abc", 14}, {"", 14}, {"6", 6}, {"20", 20}, {"7,9", 7}, {"-3", 14}};
    for (const auto& c : cases)
        EXPECT_EQ(printing::emphasisPointSize(QString::fromUtf8(c.setting)), c.size) << c.setting;
}

TEST(StatementTest, emptyDepositShowsZeroAndDifferenceIsTheTotal)
{
    printing::StatementInput input = knownOrder();
    input.deposit = QStringLiteral("0");
    input.emphasisSize = 6;
    const printing::Statement statement = printing::buildStatement(input, padTo);
    const int n = static_cast<int>(statement.lines.size());
    EXPECT_EQ(statement.lines[n - 7], (StatementLine{"ACCONTO:            " + eur(0), 6, true}));
    EXPECT_EQ(statement.lines[n - 5], (StatementLine{"DIFFERENZA:         " + eur(16000), 6, true}));
    EXPECT_EQ(statement.lines[13], (StatementLine{"SPETT.LE: Rossi Maria", 6, true}));
}

TEST(StatementTest, errorNamesTheGridRowItCameFrom)
{
    printing::StatementInput input = knownOrder();
    input.rows.append(input.rows.first());
    input.rows.append(input.rows.first());
    int calls = 0;
    int row = -1;
    const auto failingOnThirdLine = [&calls](const QString& text, int width) {
        if (text == " = " && ++calls == 3)
            throw common::RuntimeError::invalidPropertyValue();
        return padTo(text, width);
    };
    EXPECT_THROW(printing::buildStatement(input, failingOnThirdLine, &row), common::RuntimeError);
    EXPECT_EQ(row, 4);
    input.deposit = QStringLiteral("dieci");
    EXPECT_THROW(printing::buildStatement(input, padTo, &row), common::RuntimeError);
    EXPECT_EQ(row, 5);
}

TEST(StatementTest, collectedStatusGoesBySeriesAndNumberQuoted)
{
    EXPECT_EQ(printing::collectedStatusSql(2026, QStringLiteral("4'2")),
              QStringLiteral("update movimenti set statoriga='RITIRATO' where serie='2026' and numero='4''2'"));
}

TEST(StatementTest, thousandLinesPrintOnSeveralPagesInTheirSizes)
{
    QTemporaryDir dir;
    printing::StatementInput input = knownOrder();
    for (int i = 1; i < 1000; ++i)
        input.rows.append({QStringLiteral("ART%1").arg(i, 4, 10, QLatin1Char('0')), QStringLiteral("Articolo"),
                           QStringLiteral("1"), eur(100), eur(100)});
    input.emphasisSize = 20;
    const QString path = dir.filePath(QStringLiteral("estratto.pdf"));
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(path);
    printing::printStatement(printing::buildStatement(input, padTo), printer);

    const QStringList text = test::pdfLayoutLines(path);
    for (const char* code : {"BOM001", "ART0001", "ART0500", "ART0999", "FIRMA:"})
        EXPECT_EQ(text.filter(QString::fromLatin1(code)).size(), 1) << code;
    const int pages = test::pdfPages(path);
    EXPECT_GT(pages, 10);
    const QVector<test::PdfLine> lines = test::pdfLines(path);
    // A line is as tall as its font: the ratio of two sizes holds whatever fixed-pitch face the system has.
    const double body = test::pdfLineStarting(lines, QStringLiteral("ORA DI STAMPA:")).height;
    EXPECT_NEAR(test::pdfLineStarting(lines, QStringLiteral("SPETT.LE:")).height / body, 20.0 / 12, 0.02);
    EXPECT_NEAR(test::pdfLineStarting(lines, QStringLiteral("xVELA - FASE:")).height / body, 5.0 / 12, 0.02);
    EXPECT_EQ(test::pdfLineStarting(lines, QStringLiteral("ART0999")).text,
              "ART0999      Articolo                          1  x " + eur(100).replace(QChar(0xA0), ' ') +
                  "    = " + eur(100).replace(QChar(0xA0), ' '));
    EXPECT_EQ(test::pdfLineStarting(lines, QString(37, QLatin1Char(' ')) + "FIRMA:").page, pages);
}

} // namespace
