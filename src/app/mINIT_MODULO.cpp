// SPDX-License-Identifier: MIT
#include "mINIT_MODULO.h"

#include "app/mINIZIALIZZA.h"
#include "common/Conversions.h"
#include "host/Services.h"

#include <QApplication>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace xv::app {

namespace {

bool g_endRequested = false;

const QString kSuiteStore = QStringLiteral("eKELA");

} // namespace

void setMousePointer(int pointer)
{
    constexpr int kHourglass = 11;
    if (pointer == kHourglass) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        return;
    }
    while (QApplication::overrideCursor())
        QApplication::restoreOverrideCursor();
}

bool programEndRequested()
{
    return g_endRequested;
}

void clearProgramEndRequest()
{
    g_endRequested = false;
}

QPoint centredPosition(const QSize& screen, const QSize& window, int dpiY)
{
    constexpr int kTwipsAboveCentre = 160;
    constexpr int kTwipsPerInch = 1440;
    const int lift = (kTwipsAboveCentre * dpiY + kTwipsPerInch / 2) / kTwipsPerInch;
    return {screen.width() / 2 - window.width() / 2, screen.height() / 2 - window.height() / 2 - lift};
}

bool InitModulo(QWidget*& form, bool maximise, bool centre, bool keepCaption)
{
    bool result = false;
    try {
        setMousePointer(11);
        if (form->y() < 0)
            form->move(form->x(), 0);
        if (form->x() < 0)
            form->move(0, form->y());
        form->setVisible(false);
        // Whatever the caller asked, the window is centred exactly when it is not maximised.
        centre = !maximise;

        if (!Inizializza()) {
            host::host().Terminate();
            g_endRequested = true;
            return false;
        }
        host::IHost& h = host::host();
        AltairEnabled = common::numericValue(h.GetSetting(QStringLiteral("KELA"), QStringLiteral("faltair"),
                                                          QStringLiteral("1"), kSuiteStore)) != 0.0;
        AutoMail = common::toBool(
            h.GetSetting(QStringLiteral("MAIL"), QStringLiteral("automail"), QStringLiteral("False"), kSuiteStore));

        if (!form->isVisible()) {
            QCoreApplication::processEvents();
            form->show();
        }
        form->setEnabled(false);
        form->setWindowState(Qt::WindowNoState);

        ConnectionText = h.GetAppTitle() + QStringLiteral(" - Connesso ai dati ") + h.GetDataName();
        if (!keepCaption)
            form->setWindowTitle(ConnectionText + QLatin1Char('(') + h.GetCaptionDetail() + QLatin1Char(')'));

        form->move(0, 0);
        if (centre) {
            const QScreen* screen = form->screen() ? form->screen() : QGuiApplication::primaryScreen();
            form->move(centredPosition(screen->geometry().size(), form->frameGeometry().size(),
                                       static_cast<int>(screen->logicalDotsPerInchY())));
        } else {
            form->setWindowState(Qt::WindowMaximized);
        }

        form->setEnabled(true);
        GMenu = common::toInt16(common::numericValue(
            h.GetSetting(QStringLiteral("mainmenu"), QStringLiteral("gmenu"), QStringLiteral("1"), kSuiteStore)));
        CircleMenuButton = common::toInt16(common::numericValue(h.GetSetting(
            QStringLiteral("mainmenu"), QStringLiteral("circlemenubutton"), QStringLiteral("1"), kSuiteStore)));
        CircleMenuButton2 = h.GetSetting(QStringLiteral("mainmenu"), QStringLiteral("circlemenubutton2"),
                                         QStringLiteral("KELA"), kSuiteStore);
        result = true;

        // Qt widgets keep their own backing store, so the persistent redraw of old needs nothing here.
        form = qobject_cast<QWidget*>(h.AttachForm(form, true));
        setMousePointer(0);
        return result;
    } catch (...) {
        host::host().ReportError(QStringLiteral("mINIT_MODULO.InitModulo"), QString(), true);
        return result;
    }
}

} // namespace xv::app
