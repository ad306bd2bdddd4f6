// SPDX-License-Identifier: MIT
#include "PrintOutput.h"

#include "common/RuntimeError.h"
#include "host/Dialogs.h"
#include "host/IHost.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QPrinter>
#include <QPrinterInfo>
#include <QRegularExpression>

namespace xv::host {

namespace {

const QString kSection = QStringLiteral("STAMPA");
const QString kStore = QStringLiteral("eKELA");

// A name that is safe as a file name on every system the shop may copy it to.
QString fileNameFor(const QString& documentName)
{
    QString name = documentName.trimmed();
    static const QRegularExpression unsafe(QStringLiteral("[^\\w\\-]+"));
    name.replace(unsafe, QStringLiteral("_"));
    if (name.isEmpty())
        name = QStringLiteral("stampa");
    return name.left(80);
}

QString freePath(const QString& folder, const QString& base)
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString path = folder + base + QLatin1Char('_') + stamp + QStringLiteral(".pdf");
    // Two prints within the same second must not overwrite each other.
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = folder + base + QLatin1Char('_') + stamp + QLatin1Char('-') + QString::number(n) +
               QStringLiteral(".pdf");
    return path;
}

} // namespace

QString pdfFolder(IHost& host)
{
    QString folder = host.GetSetting(kSection, QStringLiteral("CartellaPDF"), QString(), kStore).trimmed();
    if (folder.isEmpty())
        folder = host.GetDataPath() + QStringLiteral("stampe");
    folder = QDir::cleanPath(folder) + QLatin1Char('/');
    if (!QDir().mkpath(folder))
        throw common::RuntimeError(common::ErrorNumber::PathNotFound,
                                   QStringLiteral("Impossibile creare la cartella delle stampe %1")
                                       .arg(QDir::toNativeSeparators(folder)));
    return folder;
}

PrintOutput::PrintOutput(IHost& host, const QString& documentName)
    : m_printer(std::make_unique<QPrinter>(QPrinter::HighResolution))
{
    m_printer->setDocName(documentName);
    const QString wanted = host.GetSetting(kSection, QStringLiteral("Stampante"), QString(), kStore).trimmed();
    m_pdfAskedFor = wanted.compare(QLatin1String("PDF"), Qt::CaseInsensitive) == 0;
    if (!m_pdfAskedFor) {
        const QPrinterInfo info =
            wanted.isEmpty() ? QPrinterInfo::defaultPrinter() : QPrinterInfo::printerInfo(wanted);
        if (!info.isNull()) {
            m_printerName = info.printerName();
            m_printer->setPrinterName(m_printerName);
            return;
        }
        m_missingPrinter = wanted;
        if (wanted.isEmpty())
            m_installed = QPrinterInfo::availablePrinterNames();
    }
    m_pdfPath = freePath(pdfFolder(host), fileNameFor(documentName));
    m_printer->setOutputFormat(QPrinter::PdfFormat);
    m_printer->setOutputFileName(m_pdfPath);
}

PrintOutput::~PrintOutput() = default;

QString PrintOutput::notice() const
{
    if (!toPdf())
        return {};
    const QString where = QDir::toNativeSeparators(m_pdfPath);
    if (m_pdfAskedFor)
        return QStringLiteral("Il documento è stato salvato come PDF in:\n") + where;
    if (m_missingPrinter.isEmpty() && !m_installed.isEmpty())
        return QStringLiteral("Nessuna stampante è impostata come predefinita (installate: %1): il documento è "
                              "stato salvato come PDF in:\n")
                   .arg(m_installed.join(QStringLiteral(", "))) +
               where;
    if (m_missingPrinter.isEmpty())
        return QStringLiteral("Nessuna stampante installata: il documento è stato salvato come PDF in:\n") +
               where;
    return QStringLiteral("La stampante \"%1\" non è installata: il documento è stato salvato come PDF in:\n")
               .arg(m_missingPrinter) +
           where;
}

void tellWherePrinted(IHost& host, const QString& notice, const QString& pdfInsteadOfPrinter)
{
    if (notice.isEmpty())
        return;
    if (pdfInsteadOfPrinter.isEmpty()) {
        Dialogs::message(notice, Buttons::Ok, Icon::Information, host.GetAppTitle());
        return;
    }
    if (Dialogs::message(notice + QStringLiteral("\n\nAprire il documento?"), Buttons::YesNo, Icon::Question,
                         host.GetAppTitle()) == Answer::Yes)
        Dialogs::openDocument(pdfInsteadOfPrinter);
}

} // namespace xv::host
