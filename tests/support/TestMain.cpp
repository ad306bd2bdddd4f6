// SPDX-License-Identifier: MIT
#include "host/Services.h"
#include "hostui/HostWindows.h"
#include "hostui/ListWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLocale>

int main(int argc, char** argv)
{
    // The program speaks Italian whatever the machine says: dates and money read the same everywhere.
    QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    // The real list windows, answered by the scripted handlers; message boxes stay scripted per test.
    xv::host::setListWindowFactory(
        []() -> std::unique_ptr<xv::host::IListWindow> { return std::make_unique<xv::hostui::ListWindow>(); });
    // The system's printers, the progress bar and the wait cursor, as the program has them.
    xv::hostui::installSystemServices();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
