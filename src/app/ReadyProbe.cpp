// SPDX-License-Identifier: MIT
#include "ReadyProbe.h"

#include "form/frm_Commissioni.h"
#include "lines/FlexGrid.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QTimer>

#include <cstdio>

namespace xv::app {

namespace {

// The search window runs its query a moment after the last key; this leaves it time to do so.
constexpr int kSearchSettleMs = 1500;

void processEventsFor(int ms)
{
    const QDeadlineTimer deadline(ms);
    while (!deadline.hasExpired())
        QApplication::processEvents(QEventLoop::AllEvents, 20);
}

// The window is modal: it is driven from inside its own event loop, then closed unchosen. Until it shows
// (the list is read first) the probe looks again.
void driveSearchWindow(QObject* context, const QString& text)
{
    QTimer::singleShot(10, context, [context, text] {
        auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!window) {
            driveSearchWindow(context, text);
            return;
        }
        if (auto* filter = window->findChild<QLineEdit*>())
            filter->setText(text);
        processEventsFor(kSearchSettleMs);
        window->reject();
    });
}

void useSearchWindow(form::frm_Commissioni& form, const QString& text)
{
    driveSearchWindow(&form, text);
    form.Documento_Trova();
}

void finish(form::frm_Commissioni& form)
{
    const QString order = qEnvironmentVariable("XVELARIO_OPEN_ORDER");
    if (!order.isEmpty()) {
        form.findChild<QLineEdit*>(QStringLiteral("txt_numeroCommissione"))->setText(order);
        form.Documento_TrovaNumero();
    }
    if (qEnvironmentVariableIsSet("XVELARIO_SEARCH"))
        useSearchWindow(form, qEnvironmentVariable("XVELARIO_SEARCH"));
    QApplication::processEvents();
    std::fprintf(stderr, "xVELARIO ready; peak memory %ld kB; lines %d\n", peakMemoryKb(),
                 form.grid() ? form.grid()->rows() - 2 : 0);
    std::fflush(stderr);
    QCoreApplication::exit(0);
}

} // namespace

bool startReadyProbe(form::frm_Commissioni& form)
{
    if (qEnvironmentVariable("XVELARIO_EXIT_WHEN_READY") != QLatin1String("1"))
        return false;
    // Queued behind the events of the first showing, so that "ready" means painted and taking keys.
    QTimer::singleShot(0, &form, [&form] { finish(form); });
    return true;
}

long peakMemoryKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').constFirst().toLong();
    }
    return 0;
}

} // namespace xv::app
