// SPDX-License-Identifier: MIT
#include "PrivateServer.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace xv::test {

namespace {

QString postgresBin()
{
    const QString given = qEnvironmentVariable("XV_TEST_PG_BIN");
    if (!given.isEmpty())
        return given;
    QStringList versions =
        QDir(QStringLiteral("/usr/lib/postgresql")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    std::sort(versions.begin(), versions.end(),
              [](const QString& a, const QString& b) { return a.toDouble() < b.toDouble(); });
    return versions.isEmpty() ? QString() : QStringLiteral("/usr/lib/postgresql/%1/bin").arg(versions.last());
}

// A port nobody listens on now: the kernel picks it, and the server takes it a moment later.
int freePort()
{
    const int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    int port = 0;
    if (s >= 0 && ::bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        ::getsockname(s, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        port = ntohs(address.sin_port);
    if (s >= 0)
        ::close(s);
    return port;
}

} // namespace

PrivateServer::PrivateServer() : m_bin(postgresBin())
{
    if (m_bin.isEmpty() || !QFile::exists(m_bin + QStringLiteral("/initdb"))) {
        m_reason = QStringLiteral("no PostgreSQL programs (initdb) to start a server of the test's own");
        return;
    }
    // The server refuses to run as root: as the test script does, it runs as the user postgres.
    if (::geteuid() == 0) {
        const passwd* postgres = ::getpwnam("postgres");
        if (!postgres ||
            ::chown(QFile::encodeName(m_dir.path()).constData(), postgres->pw_uid, postgres->pw_gid) != 0) {
            m_reason = QStringLiteral("running as root without a user postgres to run the server as");
            return;
        }
    }
    m_port = freePort();
    if (!m_dir.isValid() || m_port == 0) {
        m_reason = QStringLiteral("no temporary folder or free port for a server of the test's own");
        return;
    }
    if (!run(QStringLiteral("initdb"),
             {QStringLiteral("-D"), m_dir.filePath(QStringLiteral("data")), QStringLiteral("-A"),
              QStringLiteral("trust"), QStringLiteral("-U"), QStringLiteral("postgres"), QStringLiteral("-E"),
              QStringLiteral("UTF8"), QStringLiteral("--no-sync")}))
        return;
    start();
}

PrivateServer::~PrivateServer()
{
    if (m_running)
        run(QStringLiteral("pg_ctl"),
            {QStringLiteral("-D"), m_dir.filePath(QStringLiteral("data")), QStringLiteral("-m"),
             QStringLiteral("immediate"), QStringLiteral("stop")});
}

QString PrivateServer::connectionText() const
{
    return QStringLiteral("host=127.0.0.1 port=%1 user=postgres dbname=postgres").arg(m_port);
}

bool PrivateServer::start()
{
    const QString options = QStringLiteral("-p %1 -k %2 -c listen_addresses=127.0.0.1 -c fsync=off")
                                .arg(m_port)
                                .arg(m_dir.path());
    m_running = run(QStringLiteral("pg_ctl"),
                    {QStringLiteral("-D"), m_dir.filePath(QStringLiteral("data")), QStringLiteral("-l"),
                     m_dir.filePath(QStringLiteral("server.log")), QStringLiteral("-w"), QStringLiteral("-t"),
                     QStringLiteral("60"), QStringLiteral("-o"), options, QStringLiteral("start")});
    return m_running;
}

bool PrivateServer::stop()
{
    // A fast stop ends every session, as a server shut down for maintenance does.
    const bool stopped =
        run(QStringLiteral("pg_ctl"),
            {QStringLiteral("-D"), m_dir.filePath(QStringLiteral("data")), QStringLiteral("-m"),
             QStringLiteral("fast"), QStringLiteral("-w"), QStringLiteral("stop")});
    m_running = !stopped;
    return stopped;
}

bool PrivateServer::run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    QString executable = m_bin + QLatin1Char('/') + program;
    QStringList args = arguments;
    if (::geteuid() == 0) {
        args =
            QStringList{QStringLiteral("-u"), QStringLiteral("postgres"), QStringLiteral("--"), executable} +
            args;
        executable = QStringLiteral("runuser");
    }
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(executable, args);
    if (!process.waitForFinished(90000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        QFile log(m_dir.filePath(QStringLiteral("server.log")));
        m_reason =
            QStringLiteral("%1 %2 failed: %3%4")
                .arg(program, arguments.join(QLatin1Char(' ')), QString::fromLocal8Bit(process.readAll()),
                     log.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(log.readAll()) : QString());
        return false;
    }
    return true;
}

} // namespace xv::test
