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

QStringList shown(const CsvText& csv)
{
    QStringList out;
    for (const CsvRecord& record : csv.records)
        out << QString::number(record.line) + QLatin1Char(':') + record.fields.join(QLatin1Char('|'));
    return out;
}

TEST(CsvReaderTest, ReadsTheRecordsAsASpreadsheetWroteThem)
{
    const struct
    {
        QByteArray bytes;
        // Each record as its line and its fields joined by '|'.
        QStringList records;
        QChar separator = u';';
        TextEncoding encoding = TextEncoding::Utf8;
    } cases[] = {
        {"a;b\n1;2\n", {"1:a|b", "2:1|2"}},
        {"codice,prezzo\r\nX,\"1.234,50\"\r\n", {"1:codice|prezzo", "2:X|1.234,50"}, u','},
        // A comma in a header's quoted name does not count towards the separator.
        {"\"a,b,c\";d\n1;2\n", {"1:a,b,c|d", "2:1|2"}},
        {"a;b\n\"say \"\"hi\"\"; bye\";x\n", {"1:a|b", "2:say \"hi\"; bye|x"}},
        // The record after a quoted line break starts on the line it is on in the file.
        {"a;b\n\"one\ntwo\";x\ny;z\n", {"1:a|b", "2:one\ntwo|x", "4:y|z"}},
        {"a;b\n1;", {"1:a|b", "2:1|"}},
        // Rows a spreadsheet kept only for their format, and blank lines, are no records; they still count.
        {"a;b\n;\n\n1;2\n", {"1:a|b", "4:1|2"}},
        {"\xEF\xBB\xBF"
         "codice;descrizione\nP1;Perl\xC3\xA9 d'\xE2\x82\xAC\n",
         {"1:codice|descrizione", QString::fromUtf8("2:P1|Perlé d'€")},
         u';',
         TextEncoding::Utf8WithBom},
        {"codice;descrizione\nP1;Perl\xE9 \x80 \x93ok\x94\n",
         {"1:codice|descrizione", QString::fromUtf8("2:P1|Perlé € “ok”")},
         u';',
         TextEncoding::Windows1252},
        // The separator Excel's first line names wins over the one the header would suggest.
        {"sep=,\r\na;b,c\r\n1;2,3\r\n", {"2:a;b|c", "3:1;2|3"}, u','},
        {"a;b\r1;2\r", {"1:a|b", "2:1|2"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.toStdString());
        const CsvText csv = readCsv(c.bytes);
        EXPECT_TRUE(csv.faults.isEmpty()) << csv.faults.value(0).why.toStdString();
        EXPECT_EQ(csv.separator, c.separator);
        EXPECT_EQ(csv.encoding, c.encoding);
        EXPECT_EQ(shown(csv), c.records);
    }
}

TEST(CsvReaderTest, ReportsTheFaultWhereItIs)
{
    const struct
    {
        QByteArray bytes;
        // Each fault as "line:field".
        QStringList faults;
    } cases[] = {
        // UTF-8 on most lines, one cell saved as Windows-1252: that cell is refused, not misread.
        {"a;b\nx;Perl\xC3\xA9\nPerl\xE9;y\nz;w\n", {"3:0"}},
        {"\xEF\xBB\xBF"
         "a;b\nx;\xE9\n",
         {"2:1"}},
        // 0x81 has no character in Windows-1252.
        {"a;b\nx;\xE9\ny;\x81\n", {"3:1"}},
        {QByteArray("\xFF\xFE"
                    "a\0;\0b\0",
                    8),
         {"0:-1"}},
        {"a;b\n1;2\n3;\"four\n5;6\n", {"3:1"}},
        {"a;b\n\"x\"y;2\n", {"2:0"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.toStdString());
        QStringList faults;
        for (const CsvFault& fault : readCsv(c.bytes).faults) {
            faults << QStringLiteral("%1:%2").arg(fault.line).arg(fault.field);
            EXPECT_FALSE(fault.why.isEmpty());
        }
        EXPECT_EQ(faults, c.faults);
    }
}

} // namespace
