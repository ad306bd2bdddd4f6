// SPDX-License-Identifier: MIT
#include "PrintOutput.h"

#include "common/PrivateFiles.h"
#include "common/RuntimeError.h"
#include "host/Dialogs.h"
#include "host/HostInterface.h"
#include "host/Printers.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>
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

std::unique_ptr<Printers>& installedPrinters()
{
    static std::unique_ptr<Printers> printers;
    return printers;
}

} // namespace

void Printers::install(std::unique_ptr<Printers> printers)
{
    installedPrinters() = std::move(printers);
}

Printers* Printers::system()
{
    return installedPrinters().get();
}

QString pdfFolder(IHost& host)
{
    QString folder = host.GetSetting(kSection, QStringLiteral("CartellaPDF"), QString(), kStore).trimmed();
    // The shop's own folder may be one it shares on purpose (with a print shop, a second office): its mode
    // is the shop's to choose. Ours, in the data folder, is private; the files are private either way.
    const bool ours = folder.isEmpty();
    if (ours)
        folder = host.GetDataPath() + QStringLiteral("stampe");
    folder = QDir::cleanPath(folder) + QLatin1Char('/');
    if (!(ours ? common::makePrivateFolder(folder) : QDir().mkpath(folder)))
        throw common::RuntimeError(common::ErrorNumber::PathNotFound,
                                   QStringLiteral("Impossibile creare la cartella delle stampe %1")
                                       .arg(QDir::toNativeSeparators(folder)));
    return folder;
}

std::unique_ptr<QPdfWriter> pdfWriter(const QString& path, const QString& documentName)
{
    common::makePrivateFile(path);
    auto writer = std::make_unique<QPdfWriter>(path);
    writer->setTitle(documentName);
    writer->setCreator(QStringLiteral("xVELARIO"));
    writer->setResolution(1200);
    // The margins a printer's own page has, so that a document looks the same on paper and in the file.
    writer->setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                                      QMarginsF(10, 10, 10, 10), QPageLayout::Point));
    return writer;
}

PrintOutput::PrintOutput(IHost& host, const QString& documentName)
{
    const QString wanted = host.GetSetting(kSection, QStringLiteral("Stampante"), QString(), kStore).trimmed();
    m_pdfAskedFor = wanted.compare(QLatin1String("PDF"), Qt::CaseInsensitive) == 0;
    if (!m_pdfAskedFor) {
        Printers* printers = Printers::system();
        const QStringList installed = printers ? printers->installed() : QStringList();
        const QString name = wanted.isEmpty() ? (printers ? printers->defaultPrinter() : QString()) : wanted;
        if (!name.isEmpty() && installed.contains(name)) {
            m_job = printers->open(name, documentName);
            m_printerName = name;
            return;
        }
        m_missingPrinter = wanted;
        if (wanted.isEmpty())
            m_installed = installed;
    }
    m_pdfPath = freePath(pdfFolder(host), fileNameFor(documentName));
    m_pdf = pdfWriter(m_pdfPath, documentName);
}

PrintOutput::~PrintOutput() = default;

QPagedPaintDevice& PrintOutput::device()
{
    if (m_job)
        return m_job->device();
    return *m_pdf;
}

QString PrintOutput::destination() const
{
    return toPdf() ? QDir::toNativeSeparators(m_pdfPath) : m_printerName;
}

void PrintOutput::finish(const QString& refusal) const
{
    constexpr int kPrinterError = 482; // the suite's "printer error"
    if (m_job && m_job->failed())
        throw common::RuntimeError(kPrinterError, refusal);
}

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
