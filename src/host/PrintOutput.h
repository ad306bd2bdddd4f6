// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class QPagedPaintDevice;
class QPdfWriter;

namespace xv::host {

class IHost;
class PrinterJob;

// Where a printed document goes. Setting "Stampante" of section "STAMPA" (store "eKELA") names it:
// empty for the system's default printer, "PDF" for a PDF file, or a printer's own name. When the
// printer asked for is not installed, the document is written as a PDF file in the folder of setting
// "CartellaPDF" (default: the "stampe" folder of the data folder), so that a shop without a printer
// still gets its paper, and the operator is told where it is.
class PrintOutput
{
public:
    // documentName: the job's name in the printer's queue, and the start of the PDF file's name.
    PrintOutput(IHost& host, const QString& documentName);
    ~PrintOutput();
    PrintOutput(const PrintOutput&) = delete;
    PrintOutput& operator=(const PrintOutput&) = delete;

    // The device the pages are painted on: the printer's, or the PDF file's.
    QPagedPaintDevice& device();
    bool toPdf() const { return !m_pdfPath.isEmpty(); }
    // The file being written; empty when the document goes to a printer.
    const QString& pdfPath() const { return m_pdfPath; }
    // The printer's name; empty for a PDF file.
    const QString& printerName() const { return m_printerName; }
    // The printer or the file, as the operator knows it.
    QString destination() const;
    // Once the pages are painted: throws the printer's error when it ended the job in error, so that a
    // document nobody got is never taken for printed.
    void finish(const QString& refusal) const;
    // What to tell the operator once the document is done: where the PDF file is, and why it is not on
    // paper. Empty when the document went to a printer.
    QString notice() const;
    // The PDF file written because the printer was not there (not because a PDF was asked for).
    QString pdfInsteadOfPrinter() const { return m_pdfAskedFor ? QString() : m_pdfPath; }

private:
    std::unique_ptr<PrinterJob> m_job;
    std::unique_ptr<QPdfWriter> m_pdf;
    QString m_pdfPath;
    QString m_printerName;
    QString m_missingPrinter; // the printer asked for that is not installed ("" for the default one)
    // The printers there are when none is the system's default: the operator is told to choose one.
    QStringList m_installed;
    bool m_pdfAskedFor = false;
};

// A PDF file with the page the shop's documents are laid out on (A4, upright, as a printer's).
std::unique_ptr<QPdfWriter> pdfWriter(const QString& path, const QString& documentName);

// Tells the operator where a finished document went when it is not on paper. A PDF written because the
// printer was not there is offered to be opened at once: the shop may still want it on paper today.
void tellWherePrinted(IHost& host, const QString& notice, const QString& pdfInsteadOfPrinter);

// The folder PDF files are written into, ending in a separator; made when missing.
QString pdfFolder(IHost& host);

} // namespace xv::host
