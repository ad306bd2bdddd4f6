// SPDX-License-Identifier: MIT
#include "Statement.h"

#include "common/Conversions.h"
#include "common/Money.h"
#include "common/RuntimeError.h"

#include <QFontMetricsF>
#include <QImage>
#include <QLocale>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace xv::printing {

namespace {

constexpr int kTitleSize = 5;
constexpr int kBodySize = 12;
constexpr int kBannerSize = 14;
constexpr int kRoomUnderPicture = 9;
constexpr double kTwipsPerInch = 1440.0;
constexpr double kMmPerInch = 25.4;
// The shop's widest lines (65 columns in 14 points, 75 in 12) are 193 mm wide: on A4 they keep their size
// with up to 8 mm each side, and 7 mm keeps them clear of what most printers cannot reach.
constexpr double kSideMarginMm = 7;
constexpr int kFooterSize = 10;
constexpr double kSmallestSize = 1;
// The suite's number for a printer that refuses the job, and for a picture that cannot be read.
constexpr int kPrinterError = 482;
constexpr int kInvalidPicture = 481;

QString blanks(qsizetype count)
{
    return QString(std::max<qsizetype>(0, count), QLatin1Char(' '));
}

QString rule(int length)
{
    return QString(length, QLatin1Char('_'));
}

// The widths are the shop's own and do not all line up with the heading: the code's gap counts the whole
// code, not the part printed, so a long code pushes the rest of its line right. Both are deliberate.
QString articleLine(const StatementRow& row, const PadWidthFn& padWidth)
{
    const QString description = row.description.left(30);
    return row.code.left(12) + blanks(std::abs(12 - row.code.size())) + QLatin1Char(' ') + description +
           blanks(std::abs(30 - description.size())) + QStringLiteral("    ") + row.quantity +
           blanks(std::abs(3 - row.quantity.size())) + QStringLiteral("x ") + row.price +
           blanks(std::abs(3 - row.price.size())) + QStringLiteral(" = ") +
           blanks(padWidth(QStringLiteral(" = "), 3)) + row.total + blanks(std::abs(4 - row.total.size()));
}

QString amountLine(const QString& label, const common::Money& amount, const PadWidthFn& padWidth)
{
    const QString text = amount.toCurrencyText();
    return label + blanks(padWidth(label, 20)) + text + blanks(padWidth(text, static_cast<int>(text.size())));
}

// Where the lines go, in the painter's coordinates: the printable area, narrowed where the printer keeps
// less than kSideMarginMm of paper at a side.
QRectF textArea(const QPagedPaintDevice& printer)
{
    const QPageLayout layout = printer.pageLayout();
    const int dpi = printer.logicalDpiX();
    const QRectF printable = layout.paintRectPixels(dpi);
    const QRectF paper = layout.fullRectPixels(dpi);
    const double side = kSideMarginMm / kMmPerInch * dpi;
    QRectF area = printable;
    area.setLeft(std::max(printable.left(), paper.left() + side));
    area.setRight(std::min(printable.right(), paper.right() - side));
    return area.translated(-printable.topLeft());
}

// Trailing blanks paint nothing: only the text they follow has to fit.
QString inkedText(const QString& text)
{
    qsizetype end = text.size();
    while (end > 0 && text.at(end - 1) == QLatin1Char(' '))
        --end;
    return text.left(end);
}

// The line's own font, or, when its text would pass the width, the same face just small enough.
QFont fittingFont(const StatementLine& line, double width, QPaintDevice* device)
{
    QFont font = statementFont(line);
    const QString text = inkedText(line.text);
    const double needed = QFontMetricsF(font, device).horizontalAdvance(text);
    if (needed <= width)
        return font;
    // A fixed-pitch face widens in step with its size; the steps down absorb the rounding of its metrics.
    for (double size = std::floor(line.pointSize * width / needed * 10) / 10;; size -= 0.1) {
        font.setPointSizeF(std::max(size, kSmallestSize));
        if (size <= kSmallestSize || QFontMetricsF(font, device).horizontalAdvance(text) <= width)
            return font;
    }
}

// A line painted from its top, on the baseline of its own size even when it is painted smaller.
void paintLine(QPainter& painter, const StatementLine& line, const QRectF& area, double top)
{
    if (line.text.isEmpty())
        return;
    painter.setFont(fittingFont(line, area.width(), painter.device()));
    painter.drawText(
        QPointF(area.left(), top + QFontMetricsF(statementFont(line), painter.device()).ascent()), line.text);
}

struct PlacedLine
{
    int page = 0;
    double top = 0;
};

// Each line under the one before, as high as its font; the next page when it would pass the bottom, after
// the page heading's room on every page but the first. A line taller than a page still gets one of its own.
QVector<PlacedLine> layOut(const QVector<StatementLine>& lines,
                           const std::function<double(const StatementLine&)>& height, double bottom,
                           double headingRoom)
{
    QVector<PlacedLine> placed;
    placed.reserve(lines.size());
    int page = 0;
    double top = 0;
    double y = top;
    for (const StatementLine& line : lines) {
        const double h = height(line);
        if (y > top && y + h > bottom) {
            ++page;
            top = headingRoom;
            y = top;
        }
        placed.append({page, y});
        y += h;
    }
    return placed;
}

} // namespace

int emphasisPointSize(const QString& setting)
{
    const qint32 size = common::toInt32(common::numericValue(setting));
    return size < 6 ? 14 : size;
}

QString longDateText(const QDate& date)
{
    return QLocale(QLocale::Italian, QLocale::Italy).toString(date, QStringLiteral("dddd, dd MMMM yyyy"));
}

QString timeText(const QTime& time, const QLocale& locale)
{
    QString format = locale.timeFormat(QLocale::LongFormat);
    static const QRegularExpression zone(QStringLiteral("\\s*t+\\s*"));
    format.replace(zone, QString());
    return locale.toString(time, format.trimmed());
}

Statement buildStatement(const StatementInput& input, const PadWidthFn& padWidth, int* row)
{
    int unused = 0;
    int& counter = row ? *row : unused;
    counter = 0;
    Statement statement;
    statement.picturePath = input.picturePath;
    QVector<StatementLine>& lines = statement.lines;
    const auto add = [&lines](const QString& text, int size, bool bold = false) {
        lines.append({text, size, bold});
    };

    add(QString(), kBannerSize);
    add(input.appTitle + QStringLiteral(" - FASE: ") + input.phase +
            QStringLiteral(" - ESTRATTO COMMISSIONE - OPERATORE: ") + input.operatorText,
        kTitleSize);
    for (int i = 0; i < kRoomUnderPicture; ++i)
        add(QString(), kTitleSize);
    add(QStringLiteral("COMMISSIONE  : ") + input.number + QStringLiteral(" di ") +
            longDateText(input.orderDate),
        kBodySize);
    add(QStringLiteral("ORA DI STAMPA: ") + timeText(input.printTime), kBodySize);
    add(QStringLiteral("SPETT.LE: ") + input.customer, input.emphasisSize, true);
    add(rule(65), kBannerSize);
    add(QStringLiteral("    ESTRATTO COMMISSIONE --- --- --- ELENCO ARTICOLI E PREZZI    "), kBannerSize);
    add(rule(65), kBannerSize);
    add(QString(), kBannerSize);
    add(QStringLiteral("CODICE               DESCRIZIONE          QU.TA x PREZZO"), kBodySize);
    lines.reserve(lines.size() + input.rows.size() + 10);
    for (counter = kFirstArticleRow; counter < kFirstArticleRow + input.rows.size(); ++counter)
        add(articleLine(input.rows[counter - kFirstArticleRow], padWidth), kBodySize);
    add(rule(75), kBodySize);

    const common::Money deposit = common::Money::parse(input.deposit);
    const common::Money total = common::Money::parse(input.total);
    add(amountLine(QStringLiteral("ACCONTO: "), deposit, padWidth), input.emphasisSize, true);
    add(amountLine(QStringLiteral("TOTALE: "), total, padWidth), input.emphasisSize, true);
    add(amountLine(QStringLiteral("DIFFERENZA: "), total - deposit, padWidth), input.emphasisSize, true);
    add(rule(65), kBannerSize);
    add(QString(), kBannerSize);
    add(QString(), kBannerSize);
    add(blanks(37) + QStringLiteral("FIRMA:") + rule(22), kBannerSize);
    statement.pageHeading = {
        QStringLiteral("Commissione N° ") + input.number +
            (input.customer.isEmpty() ? QString() : QStringLiteral(" - ") + input.customer),
        kBodySize, true};
    return statement;
}

QFont statementFont(const StatementLine& line)
{
    QFont font(Statement::kFontFamily);
    // Columns are made of blanks: where the face is missing, any fixed-pitch one keeps them straight.
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    font.setPointSize(line.pointSize);
    font.setBold(line.bold);
    return font;
}

void printStatement(const Statement& statement, QPagedPaintDevice& printer, const QString& destination)
{
    QImage picture;
    if (!statement.picturePath.isEmpty() && !picture.load(statement.picturePath))
        throw common::RuntimeError(kInvalidPicture,
                                   QStringLiteral("Immagine non valida: ") + statement.picturePath);
    QPainter painter;
    if (!painter.begin(&printer))
        throw common::RuntimeError(
            kPrinterError, QStringLiteral("Impossibile avviare la stampa") +
                               (destination.isEmpty() ? QString() : QStringLiteral(" su ") + destination));
    if (!picture.isNull()) {
        const double scale = printer.logicalDpiX() / kTwipsPerInch;
        const QRect& at = statement.pictureTwips;
        painter.drawImage(QRectF(at.x() * scale, at.y() * scale, at.width() * scale, at.height() * scale),
                          picture);
    }
    const QRectF area = textArea(printer);
    const auto height = [&printer](const StatementLine& line) {
        return QFontMetricsF(statementFont(line), &printer).height();
    };
    const StatementLine footer{QString(), kFooterSize};
    const double headingRoom = statement.pageHeading.text.isEmpty() ? 0 : 2 * height(statement.pageHeading);
    // The page numbers take room only when there is more than one page to number.
    QVector<PlacedLine> placed = layOut(statement.lines, height, area.height(), headingRoom);
    if (!placed.isEmpty() && placed.last().page > 0)
        placed = layOut(statement.lines, height, area.height() - 2 * height(footer), headingRoom);
    const int pages = placed.isEmpty() ? 1 : placed.last().page + 1;

    qsizetype next = 0;
    for (int page = 0; page < pages; ++page) {
        if (page > 0) {
            if (!printer.newPage())
                throw common::RuntimeError(kPrinterError,
                                           QStringLiteral("Impossibile iniziare una nuova pagina"));
            paintLine(painter, statement.pageHeading, area, 0);
        }
        for (; next < placed.size() && placed[next].page == page; ++next)
            paintLine(painter, statement.lines[next], area, placed[next].top);
        if (pages > 1) {
            const QString number = QStringLiteral("Pagina %1 di %2").arg(page + 1).arg(pages);
            const QFont font = statementFont(footer);
            const QFontMetricsF metrics(font, &printer);
            painter.setFont(font);
            painter.drawText(QPointF(area.center().x() - metrics.horizontalAdvance(number) / 2,
                                     area.bottom() - metrics.descent()),
                             number);
        }
    }
    if (!painter.end())
        throw common::RuntimeError(kPrinterError, QString::fromUtf8(kStatementRefused));
}

} // namespace xv::printing
