// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace xv::test {

// The PDF files written into a folder, oldest name first.
inline QStringList pdfFilesIn(const QString& folder)
{
    QStringList files;
    for (const QString& name : QDir(folder).entryList({QStringLiteral("*.pdf")}, QDir::Files, QDir::Name))
        files << QDir(folder).filePath(name);
    return files;
}

// The output of one of poppler's tools on a PDF file ("pdftotext -layout file -", "pdfimages -list file").
inline QString popplerOutput(const QString& tool, const QStringList& arguments)
{
    QProcess process;
    process.start(tool, arguments);
    if (!process.waitForFinished(30000))
        return QStringLiteral("<%1 did not run>").arg(tool);
    return QString::fromUtf8(process.readAllStandardOutput());
}

inline QString pdfLayoutText(const QString& path)
{
    return popplerOutput(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path, QStringLiteral("-")});
}

// How many pictures are drawn in the file.
inline int pdfImageCount(const QString& path)
{
    const QStringList lines = popplerOutput(QStringLiteral("pdfimages"), {QStringLiteral("-list"), path})
                                  .split(u'\n', Qt::SkipEmptyParts);
    return static_cast<int>(lines.size()) - 2; // two heading lines
}

inline int pdfPageCount(const QString& path)
{
    for (const QString& line : popplerOutput(QStringLiteral("pdfinfo"), {path}).split(u'\n')) {
        if (line.startsWith(QLatin1String("Pages:")))
            return line.mid(6).trimmed().toInt();
    }
    return -1;
}

} // namespace xv::test
