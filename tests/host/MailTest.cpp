// SPDX-License-Identifier: MIT
// The host's mail, sent to a real mail server on loopback with the settings stored in the database (the
// settings themselves are HostTest's, on both engines).
#include "MailServer.h"
#include "TestDatabase.h"

#include "host/Host.h"
#include "host/Mail.h"

#include <QCursor>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QMap>
#include <QRegularExpression>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using test::MailServer;

const QString kTo = QStringLiteral("luca@esempio.it");

class MailTest : public test::HostedTest
{
protected:
    QString send(const QString& to, const QString& subject = QStringLiteral("Riordino Articolo: BOM001"),
                 const QString& body = QStringLiteral("Salve"), const QString& cc = {},
                 const QString& bcc = {})
    {
        QString result;
        h().SendMail(to, subject, body, cc, bcc, result);
        return result;
    }
    QStringList outbox() { return QDir(h().GetDataPath() + "outbox").entryList({"*.eml"}, QDir::Files); }
    void setMail(const char* key, const QString& value) { h().SaveSetting("MAIL", key, value, "eKELA"); }
};

TEST_P(MailTest, TheMessageArrivesWithItsSubjectBodyAndRecipientsIntact)
{
    MailServer server;
    XV_REQUIRE_MAIL_SERVER(server);
    test::useMailServer(h(), server.port());
    // Long enough to need several encoded words, with letters that are not ASCII split across them.
    const QString subject =
        "Riordino Articolo: Confetti più belli — una confezione àèìòù molto lunga davvero";
    const QStringList lines = {
        "Salve Sig. Bianchi Luca, ",
        "Richiediamo il Riordino delle quantità mancanti per l'articolo in oggetto",
        "",
        ".una riga che comincia con un punto",
        "=?UTF-8?Q?non_una_parola?= e 100% = cento",
        QString("perché ").repeated(30) + "fine\tcon blanchi   ",
        "Cordiali Saluti,",
    };
    const QString body = lines.join("\r\n");

    EXPECT_EQ(send(kTo, subject, body, "anna@esempio.it; piero@esempio.it", "archivio@esempio.it"),
              "Mail inviata a luca@esempio.it, anna@esempio.it, piero@esempio.it, archivio@esempio.it");

    const QVector<test::ReceivedMail> received = server.received();
    ASSERT_EQ(received.size(), 1);
    const test::ReceivedMail& mail = received.first();
    EXPECT_EQ(mail.subject, subject);
    // The last line break belongs to the message's framing, whatever the text ended with.
    EXPECT_EQ(mail.body, body + "\r\n");
    EXPECT_EQ(mail.mailFrom, "negozio@esempio.it");
    EXPECT_EQ(mail.recipients,
              QStringList({"luca@esempio.it", "anna@esempio.it", "piero@esempio.it", "archivio@esempio.it"}));
    EXPECT_EQ(mail.headers.value("From"), "negozio@esempio.it");
    EXPECT_EQ(mail.headers.value("To"), kTo);
    EXPECT_EQ(mail.headers.value("Cc"), "anna@esempio.it, piero@esempio.it");
    EXPECT_FALSE(mail.headers.contains("Bcc")) << "a blind copy is blind";
    EXPECT_EQ(mail.headers.value("MIME-Version"), "1.0");
    // As the server's parser writes the header back.
    EXPECT_EQ(mail.headers.value("Content-Type"), "text/plain; charset=\"UTF-8\"");
    // In English whatever the machine's language, as the standard wants.
    EXPECT_TRUE(mail.dateValid);
    EXPECT_TRUE(
        QRegularExpression(
            "^(Mon|Tue|Wed|Thu|Fri|Sat|Sun), \\d\\d "
            "(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) \\d{4} \\d\\d:\\d\\d:\\d\\d [+-]\\d{4}$")
            .match(mail.headers.value("Date"))
            .hasMatch())
        << mail.headers.value("Date").toStdString();
    EXPECT_FALSE(mail.headers.value("Message-ID").isEmpty());
    EXPECT_TRUE(mail.crlfLines);
    EXPECT_TRUE(outbox().isEmpty());
}

TEST_P(MailTest, EachKindOfRefusalHasItsOwnText)
{
    struct Case
    {
        const char* name;
        MailServer::Options server;
        QString user;
        QString password;
        bool closed;       // nobody listens on the port
        QString expected;  // %1 is the server's address
        const char* login; // who the server let in, for the one mail taken
    };
    const QString userRefused =
        "Mail NON inviata: il server di posta %1 ha rifiutato l'accesso dell'utente negozio; "
        "controllare utente e password (";
    const MailServer::Options login{"negozio", "segreta", {}, MailServer::Tls::None};
    const MailServer::Options refusesLuca{{}, {}, {kTo}, MailServer::Tls::None};
    const QString needsLogin =
        "Mail NON inviata: il server di posta %1 chiede l'accesso con utente e password "
        "(impostazioni MAIL/Utente e MAIL/Password).";
    const QString recipientRefused = "Mail NON inviata: il server di posta ha rifiutato il destinatario "
                                     "luca@esempio.it (RCPT failed: 550).";
    const QString unreachable = "Mail NON inviata: il server di posta %1 non è raggiungibile o non risponde "
                                "(Failed to connect to 127.0.0.1 port %2";
    const Case cases[] = {
        {"login accepted", login, "negozio", "segreta", false, "Mail inviata a luca@esempio.it", "negozio"},
        {"wrong password", login, "negozio", "sbagliata", false, userRefused, nullptr},
        {"no login given", login, "", "", false, needsLogin, nullptr},
        {"recipient refused", refusesLuca, "", "", false, recipientRefused, nullptr},
        {"nobody listening", {}, "", "", true, unreachable, nullptr}};
    // The test server is on loopback, where a plain login is harmless.
    setMail("PasswordInChiaro", "1");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MailServer server(c.server);
        XV_REQUIRE_MAIL_SERVER(server);
        const int port = c.closed ? test::closedPort() : server.port();
        test::useMailServer(h(), port, c.user, c.password);
        const QString result = send(kTo);
        EXPECT_TRUE(result.startsWith(QString(c.expected)
                                          .replace("%1", "smtp://127.0.0.1:" + QString::number(port))
                                          .replace("%2", QString::number(port))))
            << result.toStdString();
        const QVector<test::ReceivedMail> received = server.received();
        ASSERT_EQ(received.size(), c.login ? 1 : 0);
        if (c.login) {
            EXPECT_EQ(received.first().login, c.login);
        }
    }
    EXPECT_TRUE(outbox().isEmpty()) << "only a shop without a server keeps mails in the outbox";
}

TEST_P(MailTest, AServerThatNeverAnswersIsGivenUpWhileTheWindowKeepsGoing)
{
    test::SilentListener hung;
    ASSERT_TRUE(hung.listen());
    test::useMailServer(h(), hung.port());
    setMail("TimeoutInvio", "1");
    bool waitedWithCursor = false;
    QTimer::singleShot(50, [&] {
        const QCursor* cursor = QGuiApplication::overrideCursor();
        waitedWithCursor = cursor && cursor->shape() == Qt::WaitCursor;
    });
    const QString result = send(kTo);
    EXPECT_TRUE(result.startsWith("Mail NON inviata: il server di posta smtp://127.0.0.1:" +
                                  QString::number(hung.port()) + " non è raggiungibile o non risponde"))
        << result.toStdString();
    EXPECT_TRUE(waitedWithCursor) << "events went on being handled, under a wait cursor";
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_P(MailTest, WithNoServerTheMailIsKeptInTheOutboxAndSaidUnsent)
{
    const QString result = send(kTo, "Riordino Articolo: BOM001", "Richiediamo il Riordino delle quantità");
    const QStringList files = outbox();
    ASSERT_EQ(files.size(), 1);
    const QString path = QDir(h().GetDataPath() + "outbox").filePath(files.first());
    EXPECT_EQ(result, "Server di posta non configurato: la mail NON è stata inviata.\nÈ stata salvata in " +
                          QDir::toNativeSeparators(path) +
                          ", da dove si può spedire con un programma di posta.");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray eml = file.readAll();
    EXPECT_TRUE(eml.contains("\r\nTo: luca@esempio.it\r\n")) << eml.constData();
    EXPECT_TRUE(eml.contains("\r\nSubject: Riordino Articolo: BOM001\r\n"));
    EXPECT_TRUE(eml.contains("\r\n\r\nRichiediamo il Riordino delle quantit=C3=A0\r\n"));
}

TEST_P(MailTest, BadMailSettingsOrAddressesSendNothingAndSaySo)
{
    MailServer server;
    XV_REQUIRE_MAIL_SERVER(server);
    struct Case
    {
        const char* to;
        const char* sicurezza;
        const char* sender;
        QString expected;
    };
    const Case cases[] = {
        {"", "nessuna", "negozio@esempio.it", "Mail non inviata: manca l'indirizzo del destinatario."},
        {" ; ", "nessuna", "negozio@esempio.it", "Mail non inviata: manca l'indirizzo del destinatario."},
        {"luca esempio.it", "nessuna", "negozio@esempio.it",
         "Mail non inviata: l'indirizzo \"luca esempio.it\" non è valido."},
        {"luca@esempio.it", "SSL3", "negozio@esempio.it",
         "Mail non inviata: l'impostazione MAIL/Sicurezza \"SSL3\" non è valida (scrivere nessuna, STARTTLS "
         "o TLS)."},
        {"luca@esempio.it", "nessuna", "",
         "Mail non inviata: manca un indirizzo valido del mittente (impostazione EMAIL_FROM della sezione "
         "DOCS)."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.to);
        test::useMailServer(h(), server.port(), {}, {}, c.sender);
        setMail("Sicurezza", c.sicurezza);
        EXPECT_EQ(send(c.to), c.expected);
    }
    EXPECT_TRUE(server.received().isEmpty());
    EXPECT_TRUE(outbox().isEmpty());
}

TEST_P(MailTest, OverTlsTheMailGoesOnlyToAServerWhoseCertificateChainsToTheCaNamed)
{
    struct Case
    {
        const char* sicurezza;
        MailServer::Tls tls;
        const char* scheme;
    };
    const Case cases[] = {{"STARTTLS", MailServer::Tls::StartTls, "smtp"},
                          {"TLS", MailServer::Tls::Implicit, "smtps"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sicurezza);
        MailServer server({"negozio", "segreta", {}, c.tls});
        XV_REQUIRE_MAIL_SERVER(server);
        test::useMailServer(h(), server.port(), "negozio", "segreta");
        setMail("Sicurezza", c.sicurezza);

        setMail("CertificatoCA", {});
        const QString untrusted = send(kTo);
        EXPECT_TRUE(untrusted.startsWith(QString("Mail NON inviata: il certificato del server di posta "
                                                 "%1://127.0.0.1:%2 non è affidabile")
                                             .arg(c.scheme)
                                             .arg(server.port())))
            << untrusted.toStdString();

        setMail("CertificatoCA", server.caFile() + ".mancante");
        EXPECT_EQ(send(kTo),
                  "Mail non inviata: il file del certificato CA \"" + server.caFile() +
                      ".mancante\" (impostazione MAIL/CertificatoCA) non esiste o non si può leggere.");
        EXPECT_TRUE(server.received().isEmpty());

        setMail("CertificatoCA", server.caFile());
        EXPECT_EQ(send(kTo, "Riordino Articolo: BOM001", "Salve\r\nCordiali Saluti,"),
                  "Mail inviata a luca@esempio.it");
        const QVector<test::ReceivedMail> received = server.received();
        ASSERT_EQ(received.size(), 1);
        EXPECT_TRUE(received.first().tls);
        EXPECT_EQ(received.first().login, "negozio");
        EXPECT_EQ(received.first().mailFrom, "negozio@esempio.it");
        EXPECT_EQ(received.first().recipients, QStringList{kTo});
        EXPECT_EQ(received.first().subject, "Riordino Articolo: BOM001");
        EXPECT_EQ(received.first().body, "Salve\r\nCordiali Saluti,\r\n");
    }
}

TEST_P(MailTest, APasswordGoesOverAPlainConnectionOnlyWhenTheShopAllowsIt)
{
    MailServer server({"negozio", "segreta", {}, MailServer::Tls::None});
    XV_REQUIRE_MAIL_SERVER(server);
    test::useMailServer(h(), server.port(), "negozio", "segreta");
    EXPECT_EQ(send(kTo), "Mail non inviata: la password non viene inviata su una connessione non protetta; "
                         "impostare MAIL/Sicurezza a STARTTLS o TLS, oppure MAIL/PasswordInChiaro a 1.");
    EXPECT_TRUE(server.received().isEmpty());
    setMail("PasswordInChiaro", "Sì");
    EXPECT_EQ(send(kTo), "Mail inviata a luca@esempio.it");
    ASSERT_EQ(server.received().size(), 1);
    EXPECT_EQ(server.received().first().login, "negozio");
}

QStringList* g_messages = nullptr;

TEST_P(MailTest, EveryOutcomeLeavesItsLineInTheLogAndThePasswordNowhere)
{
    const QString password = "Pw-7q!segretissima";
    MailServer server({"negozio", password, {"ignoto@esempio.it"}, MailServer::Tls::None});
    XV_REQUIRE_MAIL_SERVER(server);
    test::useMailServer(h(), server.port(), "negozio", password);
    setMail("PasswordInChiaro", "1");
    QStringList messages;
    g_messages = &messages;
    QLoggingCategory::setFilterRules("xv.*=true");
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { g_messages->append(text); });
    const QString sent = send(kTo);
    const QString refused = send("ignoto@esempio.it");
    qInstallMessageHandler(previous);
    QLoggingCategory::setFilterRules({});
    g_messages = nullptr;

    const QStringList lines = test::logOf(h()).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2) << lines.join('\n').toStdString();
    const QRegularExpression shape("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\tMail\t([^\t]+)\t(.+)$");
    const QRegularExpressionMatch first = shape.match(lines[0]);
    const QRegularExpressionMatch second = shape.match(lines[1]);
    ASSERT_TRUE(first.hasMatch() && second.hasMatch()) << lines.join('\n').toStdString();
    EXPECT_EQ(first.captured(1), kTo);
    EXPECT_EQ(first.captured(2), sent);
    EXPECT_EQ(second.captured(1), "ignoto@esempio.it");
    EXPECT_EQ(second.captured(2), refused);
    EXPECT_TRUE(refused.startsWith("Mail NON inviata")) << refused.toStdString();
    EXPECT_FALSE(messages.isEmpty()) << "the mail's own category was heard";
    EXPECT_FALSE(lines.join('\n').contains(password));
    EXPECT_FALSE(messages.join('\n').contains(password)) << messages.join('\n').toStdString();
}

XV_INSTANTIATE_ON_SQLITE(MailTest);

// The settings as read from these values of the section's keys, every other key empty.
host::MailSettings readMail(const QMap<QString, QString>& values)
{
    return host::MailSettings::read(
        [&](const QString&, const QString& key, const QString&) { return values.value(key); });
}

TEST(MailSettingsTest, OnlyAPlainYesLetsThePasswordGoInTheClear)
{
    const std::pair<const char*, bool> cases[] = {{"1", true},      {"sì", true}, {"SI", true},
                                                  {" true ", true}, {"", false},  {"0", false},
                                                  {"no", false},    {"2", false}, {"sii", false}};
    for (const auto& [value, allowed] : cases)
        EXPECT_EQ(readMail({{"PasswordInChiaro", value}}).plainPassword, allowed) << value;
}

TEST(MailSettingsTest, TheSecurityChosenGivesTheSchemeAndTheUsualPort)
{
    struct Case
    {
        const char* server;
        const char* sicurezza;
        const char* porta;
        const char* url; // empty: the security is not understood
    };
    const Case cases[] = {
        {"posta.esempio.it", "", "", "smtp://posta.esempio.it:25"},
        {"posta.esempio.it", "nessuna", "2525", "smtp://posta.esempio.it:2525"},
        {"posta.esempio.it", "starttls", "", "smtp://posta.esempio.it:587"},
        {"posta.esempio.it", " TLS ", "", "smtps://posta.esempio.it:465"},
        {"::1", "SSL", "4650", "smtps://[::1]:4650"},
        {"posta.esempio.it", "SSL3", "", ""},
    };
    for (const Case& c : cases) {
        const host::MailSettings s =
            readMail({{"Server", c.server}, {"Sicurezza", c.sicurezza}, {"Porta", c.porta}});
        EXPECT_EQ(s.security ? s.url() : QString(), c.url) << c.sicurezza;
        if (QString(c.sicurezza).contains("tls", Qt::CaseInsensitive)) {
            EXPECT_EQ(s.security == host::MailSecurity::StartTls, QString(c.sicurezza).contains("start"))
                << c.sicurezza;
        }
    }
}

} // namespace
