// SPDX-License-Identifier: MIT
#include "data/CsvReader.h"

#include <gtest/gtest.h>

#include <ostream>

// One text a line in a failure message, found by the test framework next to the list it prints.
static void PrintTo(const QStringList& list, std::ostream* os)
{
    *os << "\n  " << list.join(QStringLiteral("\n  ")).toStdString();
}

namespace {

using namespace xv::data;

struct ReadCase
{
    const char* name;
    QByteArray bytes;
    QChar separator;
    TextEncoding encoding;
    // Each record as its line and its fields joined by '|'.
    QStringList records;
};

QStringList shown(const CsvText& csv)
{
    QStringList out;
    for (const CsvRecord& record : csv.records)
        out << QString::number(record.line) + QLatin1Char(':') + record.fields.join(QLatin1Char('|'));
    return out;
}

class CsvReadTest : public ::testing::TestWithParam<ReadCase>
{
};

TEST_P(CsvReadTest, ReadsTheRecordsAsASpreadsheetWroteThem)
{
    const ReadCase& c = GetParam();
    const CsvText csv = readCsv(c.bytes);
    EXPECT_TRUE(csv.faults.isEmpty()) << csv.faults.value(0).why.toStdString();
    EXPECT_EQ(csv.separator, c.separator);
    EXPECT_EQ(csv.encoding, c.encoding);
    EXPECT_EQ(shown(csv), c.records);
}

INSTANTIATE_TEST_SUITE_P(
    Files, CsvReadTest,
    ::testing::Values(
        ReadCase{"Semicolons", "a;b\n1;2\n", u';', TextEncoding::Utf8, {"1:a|b", "2:1|2"}},
        ReadCase{"CommasWithQuotedDecimalComma",
                 "codice,prezzo\r\nX,\"1.234,50\"\r\n",
                 u',',
                 TextEncoding::Utf8,
                 {"1:codice|prezzo", "2:X|1.234,50"}},
        // A comma in a header's quoted name does not count towards the separator.
        ReadCase{"SeparatorCountedOutsideQuotes",
                 "\"a,b,c\";d\n1;2\n",
                 u';',
                 TextEncoding::Utf8,
                 {"1:a,b,c|d", "2:1|2"}},
        ReadCase{"QuotesDoubledAndSeparatorInside",
                 "a;b\n\"say \"\"hi\"\"; bye\";x\n",
                 u';',
                 TextEncoding::Utf8,
                 {"1:a|b", "2:say \"hi\"; bye|x"}},
        // The record after a quoted line break starts on the line it is on in the file.
        ReadCase{"LineBreakInsideQuotes",
                 "a;b\n\"one\ntwo\";x\ny;z\n",
                 u';',
                 TextEncoding::Utf8,
                 {"1:a|b", "2:one\ntwo|x", "4:y|z"}},
        ReadCase{"NoFinalLineBreakAndEmptyLastField", "a;b\n1;", u';', TextEncoding::Utf8, {"1:a|b", "2:1|"}},
        // Rows a spreadsheet kept only for their format, and blank lines, are no records; they still count.
        ReadCase{"EmptyRowsLeftOut", "a;b\n;\n\n1;2\n", u';', TextEncoding::Utf8, {"1:a|b", "4:1|2"}},
        ReadCase{"Utf8WithByteOrderMark",
                 "\xEF\xBB\xBF"
                 "codice;descrizione\nP1;Perl\xC3\xA9 d'\xE2\x82\xAC\n",
                 u';',
                 TextEncoding::Utf8WithBom,
                 {"1:codice|descrizione", QString::fromUtf8("2:P1|Perlé d'€")}},
        ReadCase{"Windows1252",
                 "codice;descrizione\nP1;Perl\xE9 \x80 \x93ok\x94\n",
                 u';',
                 TextEncoding::Windows1252,
                 {"1:codice|descrizione", QString::fromUtf8("2:P1|Perlé € “ok”")}},
        // The separator Excel's first line names wins over the one the header would suggest.
        ReadCase{"SeparatorNamedOnTheFirstLine",
                 "sep=,\r\na;b,c\r\n1;2,3\r\n",
                 u',',
                 TextEncoding::Utf8,
                 {"2:a;b|c", "3:1;2|3"}},
        ReadCase{"OldMacLineEnds", "a;b\r1;2\r", u';', TextEncoding::Utf8, {"1:a|b", "2:1|2"}}),
    [](const ::testing::TestParamInfo<ReadCase>& p) { return std::string(p.param.name); });

struct FaultCase
{
    const char* name;
    QByteArray bytes;
    // Each fault as "line:field".
    QStringList faults;
};

class CsvFaultTest : public ::testing::TestWithParam<FaultCase>
{
};

TEST_P(CsvFaultTest, ReportsTheFaultWhereItIs)
{
    const CsvText csv = readCsv(GetParam().bytes);
    QStringList faults;
    for (const CsvFault& fault : csv.faults) {
        faults << QStringLiteral("%1:%2").arg(fault.line).arg(fault.field);
        EXPECT_FALSE(fault.why.isEmpty());
    }
    EXPECT_EQ(faults, GetParam().faults);
}

INSTANTIATE_TEST_SUITE_P(
    Files, CsvFaultTest,
    ::testing::Values(
        // UTF-8 on most lines, one cell saved as Windows-1252: that cell is refused, not misread.
        FaultCase{"MixedEncodings", "a;b\nx;Perl\xC3\xA9\nPerl\xE9;y\nz;w\n", {"3:0"}},
        FaultCase{"InvalidBytesAfterUtf8ByteOrderMark",
                  "\xEF\xBB\xBF"
                  "a;b\nx;\xE9\n",
                  {"2:1"}},
        // 0x81 has no character in Windows-1252.
        FaultCase{"ByteUndefinedInWindows1252", "a;b\nx;\xE9\ny;\x81\n", {"3:1"}},
        FaultCase{"Utf16",
                  QByteArray("\xFF\xFE"
                             "a\0;\0b\0",
                             8),
                  {"0:-1"}},
        FaultCase{"QuoteNeverClosed", "a;b\n1;2\n3;\"four\n5;6\n", {"3:1"}},
        FaultCase{"TextAfterClosingQuote", "a;b\n\"x\"y;2\n", {"2:0"}}),
    [](const ::testing::TestParamInfo<FaultCase>& p) { return std::string(p.param.name); });

} // namespace
