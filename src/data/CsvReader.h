// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QChar>
#include <QString>
#include <QStringList>
#include <QVector>

namespace xv::data {

// How the bytes of a file a spreadsheet saved as CSV were read.
enum class TextEncoding { Utf8, Utf8WithBom, Windows1252 };

// Something wrong in the file itself: its line (1 is the first; 0 for the whole file), the field's
// position in its record (0 is the first; -1 for the whole record) and why, in words for the operator.
struct CsvFault
{
    int line = 0;
    int field = -1;
    QString why;
};

// One record: the line it starts on, which a quoted line break makes differ from its position.
struct CsvRecord
{
    int line = 0;
    QStringList fields;
};

struct CsvText
{
    TextEncoding encoding = TextEncoding::Utf8;
    QChar separator = u';';
    // The header first; records whose fields are all empty (rows a spreadsheet kept for their format)
    // are left out.
    QVector<CsvRecord> records;
    QVector<CsvFault> faults;
};

// Reads the CSV a spreadsheet writes (RFC 4180): fields in double quotes may hold the separator, doubled
// quotes and line breaks. The separator is the one a first line "sep=X" names, as Excel reads it, or else
// the one of ';' and ',' that the first line uses more, outside quotes (';' where Italian spreadsheets
// write decimal commas). The bytes are UTF-8 with or without its byte-order mark, or else Windows-1252;
// bytes that fit neither are faults of their line and field, never read as something else.
CsvText readCsv(const QByteArray& bytes);

QString encodingName(TextEncoding encoding);

} // namespace xv::data
