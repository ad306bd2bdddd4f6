// SPDX-License-Identifier: MIT
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
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
