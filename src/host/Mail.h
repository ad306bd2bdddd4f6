// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace xv::host {

enum class MailSecurity {
    None,     // plain SMTP, for a server on the shop's own network
    StartTls, // plain connection turned to TLS before the login (usually port 587)
    Tls,      // TLS from the first byte, "smtps" (usually port 465)
};

// "nessuna" (or empty), "STARTTLS", "TLS"/"SSL"/"SMTPS", in any case; nothing for any other text.
std::optional<MailSecurity> parseMailSecurity(const QString& text);

// How the shop's mail server is reached. All but the sender live in section "MAIL" of store "eKELA".
struct MailSettings
{
    QString server;       // "Server": empty means mails go to the outbox folder, unsent
    int port = 0;         // "Porta": 0 or empty, the usual port of the security chosen
    QString securityText; // "Sicurezza", as written, for the message when it is not understood
    std::optional<MailSecurity> security = MailSecurity::None;
    QString user;                    // "Utente": empty, no login
    QString password;                // "Password"; never written to any log
    bool plainPassword = false;      // "PasswordInChiaro" 1, sì or true: a login even with no security
    QString caFile;                  // "CertificatoCA": PEM of the only CAs trusted; empty, the system's
    int connectTimeoutSeconds = 10;  // "TimeoutConnessione": a server that does not answer is given up
    int transferTimeoutSeconds = 60; // "TimeoutInvio": the whole exchange, login to last byte
    QString sender;                  // "EMAIL_FROM" of section "DOCS" of store "eKELA"

    // getter(section, key, default): the stored text, or the default.
    using SettingReader =
        std::function<QString(const QString& section, const QString& key, const QString& defaultValue)>;
    static MailSettings read(const SettingReader& getter);

    int effectivePort() const;
    // "smtp://server:port" or "smtps://server:port".
    QString url() const;
};

struct MailMessage
{
    QString from;
    QStringList to;
    QStringList cc;
    QStringList bcc; // goes into the envelope only, never into the headers
    QString subject;
    QString body;
};

// Addresses as the suite writes them in one text: separated by ';' or ',', blanks around them dropped.
QStringList splitAddresses(const QString& text);

// The message as it travels: RFC 5322 headers, a UTF-8 text body in quoted-printable, CRLF line ends.
QByteArray composeMessage(const MailMessage& mail, const QDateTime& when);

// A header text as RFC 2047 encoded words when it is not plain ASCII.
QByteArray encodeHeaderText(const QString& text);
// Text as quoted-printable, lines ending in CRLF, none longer than 76 characters.
QByteArray quotedPrintable(const QString& text);

enum class MailFailure {
    None,
    Unreachable,      // no answer: name not found, connection refused, time out
    LoginRefused,     // the server refused the user and password, or wants a login and got none
    RecipientRefused, // the server would not take a recipient
    Untrusted,        // the server's certificate does not chain to a trusted CA or names another host
    Other,
};

struct TransferResult
{
    MailFailure failure = MailFailure::None;
    QString detail; // the mail library's own words on the failure
};

// Hands the message to the server and waits for its answer; safe to call from any thread.
TransferResult transfer(const MailSettings& settings, const QString& from, const QStringList& recipients,
                        const QByteArray& message);
// The same off the calling thread, which keeps painting its windows (not taking input) under a wait
// cursor until the exchange has ended.
TransferResult transferWaiting(const MailSettings& settings, const QString& from,
                               const QStringList& recipients, const QByteArray& message);

// Writes the message as a new .eml file in the folder (made when missing); the file's path. Throws a
// RuntimeError with the reason when it cannot be written.
QString writeToOutbox(const QString& folder, const QByteArray& message);

// Sends the mail, or with no server configured leaves it in the outbox folder; the text to show the
// operator, which says plainly whether the mail went.
QString sendMail(const MailSettings& settings, const QString& outboxFolder, const MailMessage& mail);

} // namespace xv::host
