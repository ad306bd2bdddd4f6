// SPDX-License-Identifier: MIT
#include "app/ExitSignals.h"
#include "app/ReadyProbe.h"
#include "app/aMAIN.h"
#include "app/mINIT_MODULO.h"
#include "common/Dates.h"
#include "common/PrivateFiles.h"
#include "demo/DemoData.h"
#include "form/frm_Commissioni.h"
#include "host/Host.h"
#include "host/Services.h"
#include "hostui/HostWindows.h"

#include <QApplication>
#include <QLocale>
#include <QLoggingCategory>
#include <QWidget>

Q_LOGGING_CATEGORY(lcApp, "xv.app")

namespace {

// The form and the host's services hold widgets and database connections: they must go while the
// application object still exists, on every way out of main, or the exit crashes in Qt's teardown.
struct ReleaseBeforeTheApplication
{
    ReleaseBeforeTheApplication() = default;
    ReleaseBeforeTheApplication(const ReleaseBeforeTheApplication&) = delete;
    ReleaseBeforeTheApplication& operator=(const ReleaseBeforeTheApplication&) = delete;
    ~ReleaseBeforeTheApplication()
    {
        xv::app::releaseProgramForm();
        xv::host::resetServices();
    }
};

} // namespace

int main(int argc, char** argv)
{
    xv::common::restrictNewFilesToOwner();
    // Our own chatter stays off unless asked for with QT_LOGGING_RULES (for example "xv.host.debug=true").
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        QLoggingCategory::setFilterRules(QStringLiteral("xv.*.debug=false\nxv.*.info=false"));
    xv::common::readLocalTimeZoneOnce();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("xVELARIO"));
    // The desktop entry the package installs (xvelario.desktop): its icon and name go with the window.
    QApplication::setDesktopFileName(QStringLiteral("xvelario"));
    // The shop works in Italian: dates day first, money in euro, whatever the machine is set to.
    QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
    const ReleaseBeforeTheApplication release;
    xv::app::installExitSignals();

    xv::hostui::installHostWindows();
    // A first start on the program's own database shows a working shop, not an empty window.
    xv::host::setDemoShopFiller([](xv::data::Database& db) {
        const xv::demo::DemoSummary summary = xv::demo::fillDemoData(db, xv::demo::DemoOptions());
        qCInfo(lcApp) << "demo data:" << summary.orders << "orders," << summary.movimentiRows << "rows";
    });
    xv::app::Main();
    if (xv::app::programEndRequested())
        return 1;
    QWidget* form = xv::app::programForm();
    if (!form || !form->isVisible() || xv::app::exitSignalled())
        return 0;
    form->setAttribute(Qt::WA_DeleteOnClose);
    qCInfo(lcApp) << "the order form is open";
    if (auto* orders = qobject_cast<xv::form::frm_Commissioni*>(form))
        xv::app::startReadyProbe(*orders);
    return QApplication::exec();
}
