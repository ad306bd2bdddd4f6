// SPDX-License-Identifier: MIT
#include "MailServer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace xv::test {

namespace {

// Debian's interpreter, which has the packaged aiosmtpd, before any other one on the PATH.
QString python()
{
    const QString chosen = qEnvironmentVariable("XV_TEST_PYTHON");
    if (!chosen.isEmpty())
        return chosen;
    return QFileInfo::exists(QStringLiteral("/usr/bin/python3")) ? QStringLiteral("/usr/bin/python3")
                                                                 : QStringLiteral("python3");
}

} // namespace

MailServer::MailServer(const Options& options)
{
    QStringList arguments{QStringLiteral(XV_SMTP_SERVER_SCRIPT), m_dir.path()};
    if (!options.user.isEmpty())
        arguments << QStringLiteral("--user") << options.user << QStringLiteral("--password")
                  << options.password;
    for (const QString& refused : options.refused)
        arguments << QStringLiteral("--refuse") << refused;
    if (options.tls != Tls::None)
        arguments << QStringLiteral("--tls")
                  << QLatin1String(options.tls == Tls::StartTls ? "starttls" : "tls");
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
    m_process.start(python(), arguments);
    if (!m_process.waitForStarted(10000)) {
        m_reason = QStringLiteral("Impossibile avviare %1: %2").arg(python(), m_process.errorString());
        return;
    }
    QByteArray line;
    while (!line.endsWith('\n') && m_process.waitForReadyRead(15000))
        line += m_process.readLine();
    if (line.startsWith("PORT "))
        m_port = line.mid(5).trimmed().toInt();
    if (m_port > 0 && options.tls != Tls::None)
        m_caFile = m_dir.filePath(QStringLiteral("ca.pem"));
    if (m_port <= 0)
        m_reason = QStringLiteral("Il server di posta di prova non è partito (serve python3-aiosmtpd e, "
                                  "per TLS, python3-cryptography): %1")
                       .arg(QString::fromLocal8Bit(line + m_process.readAllStandardError()));
}

MailServer::~MailServer()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    // Closing its input stops the server; a kill makes sure.
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(5000)) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
}

QVector<ReceivedMail> MailServer::received() const
{
    QVector<ReceivedMail> mails;
    const QDir dir(m_dir.path());
    for (const QString& name : dir.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        QFile file(dir.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QJsonObject o = QJsonDocument::fromJson(file.readAll()).object();
        ReceivedMail mail;
        mail.mailFrom = o.value(QLatin1String("mail_from")).toString();
        for (const QJsonValue& r : o.value(QLatin1String("rcpt_tos")).toArray())
            mail.recipients << r.toString();
        mail.login = o.value(QLatin1String("login")).toString();
        mail.tls = o.value(QLatin1String("tls")).toBool();
        mail.subject = o.value(QLatin1String("subject")).toString();
        mail.body = o.value(QLatin1String("body")).toString();
        for (const QJsonValue& h : o.value(QLatin1String("headers")).toArray())
            mail.headers.insert(h.toArray().at(0).toString(), h.toArray().at(1).toString());
        mail.crlfLines = o.value(QLatin1String("raw_lines_crlf")).toBool();
        mail.dateValid = o.value(QLatin1String("date_valid")).toBool();
        mails << mail;
    }
    return mails;
}

SilentListener::SilentListener()
{
    m_socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (m_socket < 0 || ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        ::getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return;
    m_port = ntohs(address.sin_port);
}

SilentListener::~SilentListener()
{
    if (m_socket >= 0)
        ::close(m_socket);
}

bool SilentListener::listen()
{
    return m_socket >= 0 && ::listen(m_socket, 8) == 0;
}

int closedPort()
{
    // Bound and never listening: a connection to it is refused at once.
    static SilentListener bound;
    return bound.port();
}

void useMailServer(host::IHost& h, int port, const QString& user, const QString& password,
                   const QString& sender)
{
    const QString store = QStringLiteral("eKELA");
    h.SaveSetting(QStringLiteral("MAIL"), QStringLiteral("Server"), QStringLiteral("127.0.0.1"), store);
    h.SaveSetting(QStringLiteral("MAIL"), QStringLiteral("Porta"), QString::number(port), store);
    h.SaveSetting(QStringLiteral("MAIL"), QStringLiteral("Sicurezza"), QStringLiteral("nessuna"), store);
    h.SaveSetting(QStringLiteral("MAIL"), QStringLiteral("Utente"), user, store);
    h.SaveSetting(QStringLiteral("MAIL"), QStringLiteral("Password"), password, store);
    h.SaveSetting(QStringLiteral("DOCS"), QStringLiteral("EMAIL_FROM"), sender, store);
}

} // namespace xv::test
