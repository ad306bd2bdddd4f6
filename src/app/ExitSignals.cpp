// SPDX-License-Identifier: MIT
#include "ExitSignals.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcExit, "xv.app.exit")

namespace xv::app {

namespace {

// The handler may only write to a descriptor; the event loop reads the other end and does the rest.
int g_pipe[2] = {-1, -1};
volatile std::sig_atomic_t g_signalled = 0;

void onSignal(int)
{
    g_signalled = 1;
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[0], &byte, 1);
}

} // namespace

bool exitSignalled()
{
    return g_signalled != 0;
}

void installExitSignals()
{
    if (g_pipe[0] >= 0)
        return;
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_pipe) != 0) {
        qCWarning(lcExit) << "no socket pair: SIGTERM and SIGINT keep their default action";
        return;
    }
    // A burst of signals must never block the handler on a full socket.
    ::fcntl(g_pipe[0], F_SETFL, ::fcntl(g_pipe[0], F_GETFL) | O_NONBLOCK);

    auto* notifier = new QSocketNotifier(g_pipe[1], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [notifier] {
        notifier->setEnabled(false);
        char byte = 0;
        [[maybe_unused]] const ssize_t got = ::read(g_pipe[1], &byte, 1);
        qCInfo(lcExit) << "ending on a signal";
        QCoreApplication::exit(0);
    });

    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}

} // namespace xv::app
