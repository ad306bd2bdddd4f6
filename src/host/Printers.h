// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class QPagedPaintDevice;

namespace xv::host {

// A document on its way to one of the system's printers: the device its pages are painted on, and what
// only the printer can tell once the painter is done.
class PrinterJob
{
public:
    virtual ~PrinterJob() = default;
    virtual QPagedPaintDevice& device() = 0;
    // The printer ended the job in error: it took nothing, whatever the painter says.
    virtual bool failed() const = 0;
};

// The system's printers. The windows put the real ones in place at start-up; a program without them (a
// tool, a test that does not ask for them) sees no printer and writes its documents as PDF files.
class Printers
{
public:
    virtual ~Printers() = default;
    // The system's default printer; empty when none is.
    virtual QString defaultPrinter() const = 0;
    virtual QStringList installed() const = 0;
    virtual std::unique_ptr<PrinterJob> open(const QString& printerName, const QString& documentName) = 0;

    static void install(std::unique_ptr<Printers> printers);
    // The installed printers; null when there are none to ask.
    static Printers* system();
};

} // namespace xv::host
