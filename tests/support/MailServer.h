// SPDX-License-Identifier: MIT
#pragma once

#include "host/HostInterface.h"

#include <QMap>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

namespace xv::test {

// A message as the mail server took it, decoded by the server's own mail parser.
struct ReceivedMail
{
    QString mailFrom;       // the envelope's sender
    QStringList recipients; // the envelope's recipients
    QString login;          // the user that logged in, empty for none
    bool tls = false;       // the message came over TLS
    QString subject;
    QString body;
    QMap<QString, QString> headers;
    bool crlfLines = false; // every line of the message as sent ended in CR LF
    bool dateValid = false; // the Date header reads as a date
};

// A mail server of one test's own (tests/support/smtp_server.py, on Debian's python3-aiosmtpd) on a free
// loopback port, stopped when the test ends. With a user it takes mail only after that user's login;
// it refuses the recipients named. With TLS its certificate is signed by a CA made for it alone.
class MailServer
{
public:
    enum class Tls {
        None,
        StartTls, // wanted before anything else
        Implicit, // from the first byte
    };
    struct Options
    {
        QString user;
        QString password;
        QStringList refused;
        Tls tls = Tls::None;
    };
    MailServer() : MailServer(Options{}) {}
    explicit MailServer(const Options& options);
    ~MailServer();
    MailServer(const MailServer&) = delete;
    MailServer& operator=(const MailServer&) = delete;

    // False, with the reason, when the server could not be started.
    bool available() const { return m_port > 0; }
    const QString& reason() const { return m_reason; }
    int port() const { return m_port; }
    // The PEM file of the CA that signed the server's certificate; empty without TLS.
    QString caFile() const { return m_caFile; }

    // The messages taken so far, oldest first.
    QVector<ReceivedMail> received() const;

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    int m_port = 0;
    QString m_caFile;
    QString m_reason;
};

// A loopback port of the test's own: connections to it are refused until listen(), after which they are
// taken by the system and never answered, as by a server that has hung.
class SilentListener
{
public:
    SilentListener();
    ~SilentListener();
    SilentListener(const SilentListener&) = delete;
    SilentListener& operator=(const SilentListener&) = delete;
    int port() const { return m_port; }
    bool listen();

private:
    int m_socket = -1;
    int m_port = 0;
};

// A loopback port on which nobody listens.
int closedPort();

// Points the host's mail settings at a server on loopback, plain SMTP, with the sender given.
void useMailServer(host::IHost& h, int port, const QString& user = {}, const QString& password = {},
                   const QString& sender = QStringLiteral("negozio@esempio.it"));

// The mail tests need the server: scripts/test installs what it runs on.
#define XV_REQUIRE_MAIL_SERVER(server)                                                                       \
    do {                                                                                                     \
        if (!(server).available())                                                                           \
            FAIL() << (server).reason().toStdString();                                                       \
    } while (false)

} // namespace xv::test
