// SPDX-License-Identifier: MIT
#include "PdfText.h"
#include "QtPrinters.h"

#include "common/Money.h"
#include "common/RuntimeError.h"
#include "printing/Statement.h"

#include <gtest/gtest.h>

#include <QPrinter>
#include <QTemporaryDir>

namespace {

using namespace xv;

int padTo(const QString& text, int width)
{
    return std::max(0, width - static_cast<int>(text.size()));
}

printing::StatementInput order(int lines)
{
    printing::StatementInput input{
        "xVELA", "0",        "7", "42", QDate(2026, 6, 20), QTime(18, 5, 32), "Rossi Maria", {},
        "10",    "1.000,00", 14,  {}};
    for (int i = 1; i <= lines; ++i)
        input.rows.append(
            {QStringLiteral("ART%1").arg(i, 4, 10, QLatin1Char('0')), "Articolo", "1", "1,00", "1,00"});
    return input;
}

// Printed as the form prints it, to a PDF file; the printable area of its pages, in points.
QRectF printToPdf(const printing::StatementInput& input, const QString& path)
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(path);
    printing::printStatement(printing::buildStatement(input, padTo), printer);
    return printer.pageRect(QPrinter::Point);
}

TEST(StatementTest, emphasisSizeBelowSixIsFourteen)
{
    const std::pair<const char*, int> cases[] = {{"14", 14}, {"5", 14},  {"abc", 14}, {"", 14},
                                                 {"6", 6},   {"20", 20}, {"7,9", 7},  {"-3", 14}};
    for (const auto& [setting, size] : cases)
        EXPECT_EQ(printing::emphasisPointSize(QString::fromUtf8(setting)), size) << setting;
}

TEST(StatementTest, anErrorNamesTheGridRowItCameFrom)
{
    int calls = 0;
    int row = -1;
    const auto failingOnThirdLine = [&calls](const QString& text, int width) {
        if (text == " = " && ++calls == 3)
            throw common::RuntimeError::invalidPropertyValue();
        return padTo(text, width);
    };
    EXPECT_THROW(printing::buildStatement(order(3), failingOnThirdLine, &row), common::RuntimeError);
    EXPECT_EQ(row, 4);
    printing::StatementInput input = order(3);
    input.deposit = "dieci";
    EXPECT_THROW(printing::buildStatement(input, padTo, &row), common::RuntimeError);
    EXPECT_EQ(row, 5); // after the last article line
}

TEST(StatementTest, aThousandLinesPrintOverSeveralPagesInTheirSizes)
{
    QTemporaryDir dir;
    printing::StatementInput input = order(1000);
    input.emphasisSize = 20;
    const QString path = dir.filePath("estratto.pdf");
    printToPdf(input, path);

    const QStringList text = test::pdfLayoutLines(path);
    for (const char* code : {"ART0001", "ART0500", "ART1000", "FIRMA:"})
        EXPECT_EQ(text.filter(code).size(), 1) << code;
    const QVector<test::PdfLine> lines = test::pdfLines(path);
    const int pages = lines.last().page;
    EXPECT_GT(pages, 10);
    const auto line = [&lines](const QString& start) { return test::pdfLineStarting(lines, start); };
    // A line is as tall as its font: the ratio of two sizes holds whatever fixed-pitch face the system has.
    EXPECT_NEAR(line("SPETT.LE:").height / line("ORA DI STAMPA:").height, 20.0 / 12, 0.02);
    EXPECT_NEAR(line("xVELA - FASE:").height / line("ORA DI STAMPA:").height, 5.0 / 12, 0.02);
    EXPECT_EQ(line("ART1000").text, "ART1000      Articolo                          1  x 1,00  = 1,00");
    EXPECT_EQ(line(QString(37, ' ') + "FIRMA:").page, pages);
}

TEST(StatementTest, amountsUpToAMillionPrintWithinThePrintableArea)
{
    QTemporaryDir dir;
    const QString most = common::Money::parse("999999,99").toCurrencyText();
    printing::StatementInput input = order(0);
    input.rows.append({"ABCDEFGHIJKL", QString(30, 'D'), "1000", most, most});
    input.deposit = most;
    input.total = most;
    const QString path = dir.filePath("estratto.pdf");
    const QRectF printable = printToPdf(input, path);

    const QVector<test::PdfWord> words = test::pdfWords(path);
    ASSERT_FALSE(words.isEmpty());
    double widest = 0;
    for (const test::PdfWord& word : words) {
        EXPECT_TRUE(word.box.left() >= printable.left() && word.box.right() <= printable.right())
            << word.text.toStdString() << " at " << word.box.left() << ".." << word.box.right();
        widest = std::max(widest, word.box.right());
    }
    // Made only as small as it must: the widest line still reaches across most of the page.
    EXPECT_GT(widest, printable.right() - printable.width() / 10);
    // Whatever size it takes, the line says all it said.
    const QString amount = QString(most).replace(QChar(0xA0), ' ');
    EXPECT_EQ(test::pdfLineStarting(test::pdfLines(path), "ABCDEFGHIJKL").text,
              "ABCDEFGHIJKL " + QString(30, 'D') + "    1000 x " + amount + QString(9, ' ') + " = " + amount);
}

TEST(StatementTest, aStatementOfSeveralPagesNumbersThemAndNamesTheOrderOnTheFollowingOnes)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("estratto.pdf");
    printToPdf(order(60), path);

    ASSERT_EQ(test::pdfPageCount(path), 2);
    const QVector<test::PdfLine> lines = test::pdfLines(path);
    const auto onPage = [&lines](int page) {
        QStringList texts;
        for (const test::PdfLine& line : lines)
            if (line.page == page)
                texts << line.text.trimmed();
        return texts;
    };
    const QStringList first = onPage(1);
    const QStringList second = onPage(2);
    EXPECT_TRUE(first.first().startsWith("xVELA - FASE:")) << first.first().toStdString();
    EXPECT_EQ(first.last(), QString("Pagina 1 di 2"));
    EXPECT_EQ(second.first(), QString("Commissione N° 42 - Rossi Maria"));
    EXPECT_EQ(second.last(), QString("Pagina 2 di 2"));
}

} // namespace
