// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QString>

#include <cstdio>

namespace xv::app {

// How the command-line tools end: what a script that runs them can tell apart.
inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;

// Written at once, so that progress shown on a terminal is not held back in a buffer.
inline void say(FILE* stream, const QString& message)
{
    std::fputs(qUtf8Printable(message), stream);
    std::fflush(stream);
}

// A wrong command line: what is wrong, under the tool's own name, and where to look.
inline int usageError(const QString& message)
{
    say(stderr,
        QStringLiteral("%1: %2\nProvare --help.\n").arg(QCoreApplication::applicationName(), message));
    return kExitUsage;
}

} // namespace xv::app
