// SPDX-License-Identifier: MIT
#include "PdfText.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace xv::test {

namespace {

QByteArray run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        throw std::runtime_error((program + QLatin1Char(' ') + arguments.join(QLatin1Char(' ')) +
                                  QStringLiteral(" failed: ") +
                                  QString::fromLocal8Bit(process.readAllStandardError()))
                                     .toStdString());
    return process.readAllStandardOutput();
}

} // namespace

QString pdfLayoutText(const QString& path)
{
    return QString::fromUtf8(
        run(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path, QStringLiteral("-")}));
}

int pdfImageCount(const QString& path)
{
    const QStringList lines = QString::fromUtf8(run(QStringLiteral("pdfimages"), {QStringLiteral("-list"), path}))
                                  .split(u'\n', Qt::SkipEmptyParts);
    return static_cast<int>(lines.size()) - 2; // two heading lines
}

int pdfPageCount(const QString& path)
{
    for (const QString& line : QString::fromUtf8(run(QStringLiteral("pdfinfo"), {path})).split(u'\n')) {
        if (line.startsWith(QLatin1String("Pages:")))
            return line.mid(6).trimmed().toInt();
    }
    return -1;
}

QStringList pdfLayoutLines(const QString& path)
{
    QStringList lines;
    static const QRegularExpression trailing(QStringLiteral("\\s+$"));
    static const QRegularExpression breaks(QStringLiteral("[\\n\\f]"));
    const QString text = pdfLayoutText(path);
    for (QString line : text.split(breaks)) {
        line.remove(trailing);
        if (!line.isEmpty())
            lines << line;
    }
    return lines;
}

QVector<PdfWord> pdfWords(const QString& path)
{
    QVector<PdfWord> words;
    QXmlStreamReader xml(
        run(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), path, QStringLiteral("-")}));
    int page = 0;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("page")) {
            ++page;
        } else if (xml.name() == QLatin1String("word")) {
            const QXmlStreamAttributes a = xml.attributes();
            const auto number = [&a](const char* name) { return a.value(QLatin1String(name)).toDouble(); };
            const QRectF box(QPointF(number("xMin"), number("yMin")),
                             QPointF(number("xMax"), number("yMax")));
            words.append({xml.readElementText(), box, page});
        }
    }
    return words;
}

QVector<PdfLine> pdfLines(const QString& path)
{
    // Words by page and by the top of their line, which the words of one printed line share.
    QMap<std::pair<int, qint64>, QVector<PdfWord>> rows;
    double left = std::numeric_limits<double>::max();
    for (const PdfWord& word : pdfWords(path)) {
        left = std::min(left, word.box.left());
        rows[{word.page, std::llround(word.box.top() * 100)}].append(word);
    }
    QVector<PdfLine> lines;
    for (auto row = rows.cbegin(); row != rows.cend(); ++row) {
        double pitch = 0;
        qsizetype longest = 0;
        for (const PdfWord& word : *row) {
            if (word.text.size() > longest) {
                longest = word.text.size();
                pitch = word.box.width() / static_cast<double>(word.text.size());
            }
        }
        PdfLine line;
        line.page = row.key().first;
        for (const PdfWord& word : *row) {
            const auto column = static_cast<qsizetype>(std::lround((word.box.left() - left) / pitch));
            if (line.text.size() < column)
                line.text += QString(column - line.text.size(), QLatin1Char(' '));
            else if (!line.text.isEmpty())
                line.text += QLatin1Char(' ');
            line.text += word.text;
            line.height = std::max(line.height, word.box.height());
        }
        lines << line;
    }
    return lines;
}

PdfLine pdfLineStarting(const QVector<PdfLine>& lines, const QString& start)
{
    for (const PdfLine& line : lines)
        if (line.text.startsWith(start))
            return line;
    return {};
}

QStringList pdfFiles(const QString& folder)
{
    QStringList paths;
    const QFileInfoList files =
        QDir(folder).entryInfoList({QStringLiteral("*.pdf")}, QDir::Files, QDir::Time | QDir::Reversed);
    for (const QFileInfo& file : files)
        paths << file.absoluteFilePath();
    return paths;
}

} // namespace xv::test
