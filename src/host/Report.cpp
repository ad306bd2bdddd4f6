// SPDX-License-Identifier: MIT
#include "Report.h"

#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "data/Recordset.h"
#include "host/Dialogs.h"
#include "host/Feedback.h"
#include "host/HostInterface.h"
#include "host/PrintOutput.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QImage>
#include <QLoggingCategory>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QRegularExpression>

#include <algorithm>
#include <optional>

Q_LOGGING_CATEGORY(lcReport, "xv.host.report")

namespace xv::host {

namespace {

const QString kTitle = QStringLiteral("COMANDA DI CONTROLLO");
const QString kSlipsRefused = QStringLiteral("La stampante non ha accettato le comande di controllo");
constexpr int kDeviceUnavailable = 68; // the suite's "device unavailable"
constexpr int kPrinterError = 482;      // the suite's "printer error"

// The names the shop reads on the slip for the columns its reports select; any other column shows
// under its own name.
QString labelFor(const QString& column)
{
    static const QHash<QString, QString> labels = {
        {QStringLiteral("numero"), QStringLiteral("Commissione N°")},
        {QStringLiteral("datadocumento"), QStringLiteral("Data")},
        {QStringLiteral("codice_med"), QStringLiteral("Articolo")},
        {QStringLiteral("descrizione1"), QStringLiteral("Descrizione")},
        {QStringLiteral("quantita"), QStringLiteral("Quantità")},
        {QStringLiteral("dataritiro"), QStringLiteral("Ritiro riga")},
        {QStringLiteral("dataritiro1"), QStringLiteral("1° ritiro")},
        {QStringLiteral("dataritiro2"), QStringLiteral("2° ritiro")},
        {QStringLiteral("rowid_controparti"), QStringLiteral("Id cliente")},
        {QStringLiteral("nominativo"), QStringLiteral("Cliente")},
        {QStringLiteral("codenominativo"), QStringLiteral("Cod. cliente")},
    };
    return labels.value(column.toLower(), column);
}

// Dates the database gives back as text ("2026-06-20 00:00:00") read as the shop writes them.
QString slipValue(const QVariant& value)
{
    static const QRegularExpression isoDate(QStringLiteral("^\\d{4}-\\d{2}-\\d{2}([ T]|$)"));
    switch (value.metaType().id()) {
    case QMetaType::QDateTime:
        return common::shortDate(value.toDateTime().date());
    case QMetaType::QDate:
        return common::shortDate(value.toDate());
    default:
        break;
    }
    const QString text = data::variantText(value).trimmed();
    if (isoDate.match(text).hasMatch()) {
        if (const auto when = common::parseDateAndTime(text))
            return common::shortDate(when->date);
    }
    return text;
}

double toDevice(const QPaintDevice& printer, double mm)
{
    return mm * printer.logicalDpiX() / 25.4;
}

void paintSlip(QPainter& painter, const QPaintDevice& printer, const QRectF& box, const ControlSlip& slip)
{
    const double pad = toDevice(printer, 3);
    painter.setPen(QPen(Qt::black, toDevice(printer, 0.3)));
    painter.drawRect(box);
    const QRectF inner = box.adjusted(pad, pad, -pad, -pad);

    // The picture takes a square at the right; without one its place stays blank.
    const double side = inner.height();
    const QRectF pictureBox(inner.right() - side, inner.top(), side, side);
    if (!slip.picturePath.isEmpty()) {
        const QImage picture(slip.picturePath);
        if (!picture.isNull()) {
            const QSizeF fitted = QSizeF(picture.size()).scaled(pictureBox.size(), Qt::KeepAspectRatio);
            const QRectF target(pictureBox.center() - QPointF(fitted.width() / 2, fitted.height() / 2),
                                fitted);
            painter.drawImage(target, picture);
        }
    }
    const QRectF textBox(inner.left(), inner.top(), inner.width() - side - pad, inner.height());

    QFont font(QStringLiteral("Sans Serif"));
    font.setPointSizeF(11);
    font.setBold(true);
    painter.setFont(font);
    const double titleHeight = painter.fontMetrics().height() * 1.3;
    painter.drawText(QRectF(textBox.left(), textBox.top(), textBox.width(), titleHeight),
                     Qt::AlignLeft | Qt::AlignVCenter, kTitle);

    font.setPointSizeF(9);
    const QFontMetricsF metrics(font, painter.device());
    const double labelWidth = toDevice(printer, 30);
    const double rowHeight = std::min(metrics.height() * 1.2, (textBox.height() - titleHeight) /
                                                                  std::max<qsizetype>(1, slip.fields.size()));
    double top = textBox.top() + titleHeight;
    for (const ControlSlip::Field& field : slip.fields) {
        font.setBold(false);
        painter.setFont(font);
        painter.drawText(QRectF(textBox.left(), top, labelWidth, rowHeight), Qt::AlignLeft | Qt::AlignVCenter,
                         field.label + QLatin1Char(':'));
        font.setBold(true);
        painter.setFont(font);
        const double valueWidth = textBox.width() - labelWidth;
        painter.drawText(
            QRectF(textBox.left() + labelWidth, top, valueWidth, rowHeight), Qt::AlignLeft | Qt::AlignVCenter,
            QFontMetricsF(font, painter.device()).elidedText(field.value, Qt::ElideRight, valueWidth));
        top += rowHeight;
    }
}

} // namespace

QVector<ControlSlip> controlSlips(data::Recordset& rows, const QString& picturesFolder)
{
    const QString pictureColumn = QString::fromLatin1(kPictureColumn);
    QVector<ControlSlip> slips;
    slips.reserve(rows.recordCount());
    for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
        ControlSlip slip;
        for (int column = 0; column < rows.fieldCount(); ++column) {
            const QString name = rows.fieldName(column);
            if (name.compare(pictureColumn, Qt::CaseInsensitive) == 0) {
                const QString file = data::variantText(rows.value(column)).trimmed();
                const QString path = picturesFolder + file;
                // A name that leaves the folder is no picture of the shop's.
                if (!file.isEmpty() && !file.contains(QLatin1String("..")) && QFileInfo(path).isFile())
                    slip.picturePath = path;
                continue;
            }
            slip.fields.push_back({labelFor(name), slipValue(rows.value(column))});
        }
        slips.push_back(std::move(slip));
    }
    return slips;
}

QString picturesFolder(IHost& host)
{
    QString folder = host.GetSetting(QStringLiteral("STAMPA"), QStringLiteral("CartellaImmagini"), QString(),
                                     QStringLiteral("eKELA"))
                         .trimmed();
    if (folder.isEmpty())
        return host.GetDataPath() + QStringLiteral("immagini/");
    return QDir::cleanPath(folder) + QLatin1Char('/');
}

void printControlSlips(QPagedPaintDevice& printer, const QVector<ControlSlip>& slips,
                       const std::function<void(int done)>& progress)
{
    printer.setPageOrientation(QPageLayout::Portrait);
    printer.setPageSize(QPageSize(QPageSize::A4));
    QPainter painter;
    if (!painter.begin(&printer))
        throw common::RuntimeError(
            kDeviceUnavailable, QStringLiteral("Impossibile avviare la stampa delle comande di controllo"));
    const QRectF page = printer.pageLayout().paintRectPixels(printer.logicalDpiX());
    const QRectF area(0, 0, page.width(), page.height());
    const double gap = toDevice(printer, 6);
    const double height = (area.height() - gap * (kSlipsPerPage - 1)) / kSlipsPerPage;
    for (int i = 0; i < slips.size(); ++i) {
        const int place = i % kSlipsPerPage;
        if (i > 0 && place == 0 && !printer.newPage())
            throw common::RuntimeError(kPrinterError, QStringLiteral("Impossibile iniziare una nuova pagina"));
        const QRectF box(area.left(), area.top() + place * (height + gap), area.width(), height);
        paintSlip(painter, printer, box, slips[i]);
        if (place < kSlipsPerPage - 1 && i + 1 < slips.size()) {
            painter.setPen(QPen(Qt::gray, toDevice(printer, 0.2), Qt::DashLine));
            const double y = box.bottom() + gap / 2;
            painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
        }
        if (progress)
            progress(i + 1);
    }
    if (!painter.end())
        throw common::RuntimeError(kPrinterError, kSlipsRefused);
}

namespace {

// The slips of the rows of an SQL text: nothing when it gives no rows.
QVector<ControlSlip> slipsOf(IHost& host, const QString& sql)
{
    data::Recordset rows;
    try {
        rows = host.OpenRecordset(sql);
    } catch (const common::RuntimeError& error) {
        qCWarning(lcReport) << "Testo della stampa non eseguibile:" << error.description() << sql;
        throw BadSelection(error.description());
    }
    return controlSlips(rows, picturesFolder(host));
}

const QString kSlipsTitle = QStringLiteral("Comande di controllo");

} // namespace

BadSelection::BadSelection(const QString& reason)
    : common::RuntimeError(common::ErrorNumber::DatabaseError, reason)
{
}

int printReport(IHost& host, const QString& sql)
{
    const QVector<ControlSlip> slips = slipsOf(host, sql);
    if (slips.isEmpty())
        return 0;
    QString notice;
    QString pdf;
    {
        PrintOutput output(host, kSlipsTitle);
        Progress progress(QStringLiteral("Stampa delle comande di controllo..."),
                          static_cast<int>(slips.size()));
        printControlSlips(output.device(), slips, [&progress](int done) { progress(done); });
        // A job the printer refused is no slip printed: the operator must know the workshop got nothing.
        output.finish(kSlipsRefused);
        notice = output.notice();
        pdf = output.pdfInsteadOfPrinter();
    }
    tellWherePrinted(host, notice, pdf);
    return static_cast<int>(slips.size());
}

int previewReport(IHost& host, const QString& sql)
{
    const QVector<ControlSlip> slips = slipsOf(host, sql);
    if (slips.isEmpty())
        return 0;
    Dialogs::preview(kSlipsTitle, [&slips](QPagedPaintDevice& device) { printControlSlips(device, slips); });
    return static_cast<int>(slips.size());
}

} // namespace xv::host
