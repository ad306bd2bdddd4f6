// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QLocale>

int main(int argc, char** argv)
{
    QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
