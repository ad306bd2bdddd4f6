// SPDX-License-Identifier: MIT
#pragma once

#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVector>

namespace xv::test {

// What a printed PDF says, read back with poppler's tools as anyone checking a print would.

// The text as pdftotext -layout gives it, one entry per printed line, trailing blanks and empty lines
// removed; pages follow one another.
QStringList pdfLayoutLines(const QString& path);

// Every printed word, its box in points from the page's top left corner (pdftotext -bbox).
struct PdfWord
{
    QString text;
    QRectF box;
    int page = 1;
};
QVector<PdfWord> pdfWords(const QString& path);

// The lines of a document printed in a fixed-pitch font, rebuilt from the place of every word
// (pdftotext -bbox): each word at its own character column, so the blanks between words are exactly those
// printed (trailing ones are not seen). height is that of the line's words, which is their font's.
struct PdfLine
{
    QString text;
    double height = 0;
    int page = 1;
};
QVector<PdfLine> pdfLines(const QString& path);
// The first line that starts with the text; an empty line when there is none.
PdfLine pdfLineStarting(const QVector<PdfLine>& lines, const QString& start);

// The PDF files in a folder, oldest first.
QStringList pdfFiles(const QString& folder);

// The whole text as pdftotext -layout gives it.
QString pdfLayoutText(const QString& path);
// How many pictures are drawn in the file.
int pdfImageCount(const QString& path);
int pdfPageCount(const QString& path);

} // namespace xv::test
