// SPDX-License-Identifier: MIT
#include "Statement.h"

#include "common/Conversions.h"
#include "common/Money.h"
#include "common/RuntimeError.h"

#include <QFontMetricsF>
#include <QImage>
#include <QLocale>
#include <QPainter>
#include <QPrinter>
#include <QRegularExpression>

#include <algorithm>
#include <cstdlib>

namespace xv::printing {

namespace {

constexpr int kTitleSize = 5;
constexpr int kBodySize = 12;
constexpr int kBannerSize = 14;
constexpr int kRoomUnderPicture = 9;
constexpr double kTwipsPerInch = 1440.0;
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

void printStatement(const Statement& statement, QPrinter& printer)
{
    QImage picture;
    if (!statement.picturePath.isEmpty() && !picture.load(statement.picturePath))
        throw common::RuntimeError(kInvalidPicture,
                                   QStringLiteral("Immagine non valida: ") + statement.picturePath);
    QPainter painter;
    if (!painter.begin(&printer))
        throw common::RuntimeError(
            kPrinterError,
            QStringLiteral("Impossibile avviare la stampa su ") +
                (printer.outputFileName().isEmpty() ? printer.printerName() : printer.outputFileName()));
    if (!picture.isNull()) {
        const double scale = printer.resolution() / kTwipsPerInch;
        const QRect& at = statement.pictureTwips;
        painter.drawImage(QRectF(at.x() * scale, at.y() * scale, at.width() * scale, at.height() * scale),
                          picture);
    }
    const double pageHeight = printer.height();
    double y = 0;
    for (const StatementLine& line : statement.lines) {
        const QFont font = statementFont(line);
        const QFontMetricsF metrics(font, &printer);
        if (y > 0 && y + metrics.height() > pageHeight) {
            if (!printer.newPage())
                throw common::RuntimeError(kPrinterError,
                                           QStringLiteral("Impossibile iniziare una nuova pagina"));
            y = 0;
        }
        if (!line.text.isEmpty()) {
            painter.setFont(font);
            painter.drawText(QPointF(0, y + metrics.ascent()), line.text);
        }
        y += metrics.height();
    }
    if (!painter.end() || printer.printerState() == QPrinter::Error)
        throw common::RuntimeError(kPrinterError,
                                   QStringLiteral("La stampante non ha accettato il documento"));
}

} // namespace xv::printing
