// SPDX-License-Identifier: MIT
#include "app/aMAIN.h"
#include "app/mINIT_MODULO.h"
#include "hostui/HostWindows.h"

#include <QApplication>
#include <QLocale>
#include <QLoggingCategory>
#include <QWidget>

int main(int argc, char** argv)
{
    // Our own chatter stays off unless asked for with QT_LOGGING_RULES (for example "xv.host.debug=true").
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        QLoggingCategory::setFilterRules(QStringLiteral("xv.*.debug=false\nxv.*.info=false"));
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("xVELARIO"));
    // The shop works in Italian: dates day first, money in euro, whatever the machine is set to.
    QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));

    xv::hostui::installHostWindows();
    xv::app::Main();
    if (xv::app::programEndRequested())
        return 1;
    QWidget* form = xv::app::programForm();
    if (!form || !form->isVisible())
        return 0;
    form->setAttribute(Qt::WA_DeleteOnClose);
    return QApplication::exec();
}
