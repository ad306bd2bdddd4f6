// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include "common/Dates.h"

#include <QApplication>
#include <QLocale>

int main(int argc, char** argv)
{
    QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
    // The grid benchmarks need widgets; no screen is needed to measure them.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // As the program does at start.
    xv::common::readLocalTimeZoneOnce();
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
