// SPDX-License-Identifier: MIT
#include "HostWindows.h"

#include "host/Dialogs.h"
#include "host/Feedback.h"
#include "host/Printers.h"
#include "host/Services.h"
#include "hostui/ListWindow.h"
#include "hostui/PrintMailDialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDesktopServices>
#include <QInputDialog>
#include <QMessageBox>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProgressDialog>
#include <QUrl>

namespace xv::hostui {

namespace {

host::Answer showMessageBox(const host::MessageRequest& request)
{
    QMessageBox box(boxParent());
    box.setWindowTitle(request.title);
    box.setText(request.text);
    switch (request.icon) {
    case host::Icon::Critical:
        box.setIcon(QMessageBox::Critical);
        break;
    case host::Icon::Question:
        box.setIcon(QMessageBox::Question);
        break;
    case host::Icon::Exclamation:
        box.setIcon(QMessageBox::Warning);
        break;
    case host::Icon::Information:
        box.setIcon(QMessageBox::Information);
        break;
    case host::Icon::None:
        break;
    }
    switch (request.buttons) {
    case host::Buttons::Ok:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    case host::Buttons::OkCancel:
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        break;
    case host::Buttons::YesNo:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        break;
    case host::Buttons::YesNoCancel:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        break;
    }
    const std::pair<QMessageBox::StandardButton, QString> captions[] = {
        {QMessageBox::Yes, QStringLiteral("Sì")},
        {QMessageBox::No, QStringLiteral("No")},
        {QMessageBox::Cancel, QStringLiteral("Annulla")},
    };
    for (const auto& [which, caption] : captions) {
        if (QAbstractButton* button = box.button(which))
            button->setText(caption);
    }
    switch (box.exec()) {
    case QMessageBox::Yes:
        return host::Answer::Yes;
    case QMessageBox::No:
        return host::Answer::No;
    case QMessageBox::Cancel:
        return host::Answer::Cancel;
    default:
        return host::defaultAnswer(request.buttons);
    }
}


std::optional<QString> showInputBox(const host::InputRequest& request)
{
    bool ok = false;
    const QString answer = QInputDialog::getText(boxParent(), request.title, request.prompt,
                                                 QLineEdit::Normal, request.proposed, &ok);
    if (!ok)
        return std::nullopt;
    return answer;
}

// Qt's preview window: the pages as they will print, zoom, page set-up, and printing from it through the
// print dialog (printer, copies).
void showPreview(const host::PreviewRequest& request)
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(request.title);
    QPrintPreviewDialog dialog(&printer, boxParent());
    dialog.setWindowTitle(QStringLiteral("Anteprima - ") + request.title);
    // A document that cannot be painted is the caller's error to report, not one to lose in the window's
    // event loop.
    std::exception_ptr failure;
    QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog,
                     [&request, &failure, &dialog](QPrinter* target) {
                         try {
                             request.paint(*target);
                         } catch (...) {
                             failure = std::current_exception();
                             QMetaObject::invokeMethod(&dialog, &QDialog::reject, Qt::QueuedConnection);
                         }
                     });
    dialog.exec();
    if (failure)
        std::rethrow_exception(failure);
}

// A job on one of the system's printers: Qt's printer is the device, and its state after the painter is
// done tells whether the printer took the job.
class QtPrinterJob : public host::PrinterJob
{
public:
    QtPrinterJob(const QString& printerName, const QString& documentName)
        : m_printer(QPrinter::HighResolution)
    {
        m_printer.setPrinterName(printerName);
        m_printer.setDocName(documentName);
    }
    QPagedPaintDevice& device() override { return m_printer; }
    bool failed() const override { return m_printer.printerState() == QPrinter::Error; }

private:
    QPrinter m_printer;
};

class QtPrinters : public host::Printers
{
public:
    QString defaultPrinter() const override { return QPrinterInfo::defaultPrinterName(); }
    QStringList installed() const override { return QPrinterInfo::availablePrinterNames(); }
    std::unique_ptr<host::PrinterJob> open(const QString& printerName, const QString& documentName) override
    {
        return std::make_unique<QtPrinterJob>(printerName, documentName);
    }
};

// A modal bar under the form; it shows only when the work lasts more than half a second.
class ProgressWindow : public host::ProgressView
{
public:
    ProgressWindow(const QString& label, int total) : m_dialog(label, QString(), 0, total, boxParent())
    {
        m_dialog.setWindowModality(Qt::WindowModal);
        m_dialog.setCancelButton(nullptr);
        m_dialog.setMinimumDuration(500);
    }
    void setValue(int done) override { m_dialog.setValue(done); }

private:
    QProgressDialog m_dialog;
};

} // namespace

QWidget* boxParent()
{
    return qobject_cast<QWidget*>(host::Dialogs::parent());
}

void installSystemServices()
{
    host::Printers::install(std::make_unique<QtPrinters>());
    host::setProgressFactory([](const QString& label, int total) -> std::unique_ptr<host::ProgressView> {
        return std::make_unique<ProgressWindow>(label, total);
    });
    host::Busy::setHandlers([] { QApplication::setOverrideCursor(QCursor(Qt::WaitCursor)); },
                            [] { QApplication::restoreOverrideCursor(); });
}

void installHostWindows()
{
    installSystemServices();
    host::Dialogs::setMessageHandler(showMessageBox);
    host::Dialogs::setInputHandler(showInputBox);
    host::Dialogs::setPreviewHandler(showPreview);
    host::setPrintMailWindow([] { PrintMailDialog::run(); });
    host::Dialogs::setOpenHandler(
        [](const QString& path) { QDesktopServices::openUrl(QUrl::fromLocalFile(path)); });
    host::setListWindowFactory([]() -> std::unique_ptr<host::IListWindow> { return std::make_unique<ListWindow>(); });
}

} // namespace xv::hostui
