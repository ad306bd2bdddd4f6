// SPDX-License-Identifier: MIT
#include "Mail.h"

#include "common/Conversions.h"
#include "common/PrivateFiles.h"
#include "common/RuntimeError.h"
#include "host/Feedback.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSaveFile>
#include <QUuid>

#include <curl/curl.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>

Q_LOGGING_CATEGORY(lcMail, "xv.mail")

namespace xv::host {

namespace {

constexpr int kFileAccessError = 75;
// RFC 2047 words are at most 75 characters: "=?UTF-8?B?" and "?=" leave 63 for the base64 of 45 bytes.
constexpr qsizetype kBytesPerWord = 45;
constexpr qsizetype kQpLineLength = 76;

QString setting(const MailSettings::SettingReader& getter, const char* key, const QString& defaultValue = {})
{
    return getter(QStringLiteral("MAIL"), QString::fromLatin1(key), defaultValue).trimmed();
}

// A number of seconds, the default when the text is no positive number.
int seconds(const QString& text, int defaultValue)
{
    const double value = common::numericValue(text);
    return value >= 1 ? static_cast<int>(std::min(value, 3600.0)) : defaultValue;
}

// "1", "sì"/"si", "true" in any case; anything else, or nothing, is no.
bool isYes(const QString& text)
{
    const QString word = text.toLower();
    return word == QLatin1String("1") || word == QStringLiteral("sì") || word == QLatin1String("si") ||
           word == QLatin1String("true");
}

QByteArray rfc5322Date(const QDateTime& when)
{
    const int offsetMinutes = when.offsetFromUtc() / 60;
    const QChar sign = offsetMinutes < 0 ? QLatin1Char('-') : QLatin1Char('+');
    const int absolute = std::abs(offsetMinutes);
    // Day and month names in English whatever the machine's language: the standard wants them so.
    return (QLocale::c().toString(when, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss ")) + sign +
            QStringLiteral("%1%2")
                .arg(absolute / 60, 2, 10, QLatin1Char('0'))
                .arg(absolute % 60, 2, 10, QLatin1Char('0')))
        .toLatin1();
}

// "To: a@x.it, b@y.it", folded before an address that would take the line past 78 characters.
QByteArray addressHeader(const char* name, const QStringList& addresses)
{
    QByteArray out;
    QByteArray line = QByteArray(name) + ':';
    for (qsizetype i = 0; i < addresses.size(); ++i) {
        const QByteArray piece = addresses[i].toUtf8() + (i + 1 < addresses.size() ? "," : "");
        if (i > 0 && line.size() + 1 + piece.size() > 78) {
            out += line + "\r\n";
            line.clear();
        }
        line += ' ' + piece;
    }
    return out + line + "\r\n";
}

bool isPlainHeaderText(const QString& text)
{
    if (text.size() > 60 || text.contains(QLatin1String("=?")))
        return false;
    return std::all_of(text.cbegin(), text.cend(),
                       [](QChar c) { return c.unicode() >= 0x20 && c.unicode() < 0x7F; });
}

// Name or address of one mailbox, without blanks, controls, angle brackets or a second '@'.
bool isAddress(const QString& address)
{
    static const QRegularExpression shape(QStringLiteral("^[^\\s<>@,;\"]+@[^\\s<>@,;\"]+$"));
    return shape.match(address).hasMatch();
}

struct Upload
{
    const QByteArray* data;
    qsizetype offset = 0;
};

size_t readUpload(char* buffer, size_t size, size_t items, void* user)
{
    auto* upload = static_cast<Upload*>(user);
    const qsizetype wanted = static_cast<qsizetype>(size * items);
    const qsizetype count = std::min(wanted, upload->data->size() - upload->offset);
    std::copy_n(upload->data->constData() + upload->offset, count, buffer);
    upload->offset += count;
    return static_cast<size_t>(count);
}

void initialiseCurl()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

MailFailure classify(CURLcode code, const QString& detail, long responseCode)
{
    switch (code) {
    case CURLE_OK:
        return MailFailure::None;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_OPERATION_TIMEDOUT:
        return MailFailure::Unreachable;
    case CURLE_LOGIN_DENIED:
        return MailFailure::LoginRefused;
    case CURLE_PEER_FAILED_VERIFICATION:
        return MailFailure::Untrusted;
    case CURLE_SEND_ERROR:
        // The mail library says which command the server answered with an error.
        if (detail.startsWith(QLatin1String("RCPT")))
            return MailFailure::RecipientRefused;
        // 530: the server wants a login before it takes any mail.
        if (responseCode == 530)
            return MailFailure::LoginRefused;
        return MailFailure::Other;
    default:
        return MailFailure::Other;
    }
}

} // namespace

std::optional<MailSecurity> parseMailSecurity(const QString& text)
{
    const QString word = text.trimmed().toUpper();
    if (word.isEmpty() || word == QLatin1String("NESSUNA") || word == QLatin1String("NO"))
        return MailSecurity::None;
    if (word == QLatin1String("STARTTLS"))
        return MailSecurity::StartTls;
    if (word == QLatin1String("TLS") || word == QLatin1String("SSL") || word == QLatin1String("SMTPS"))
        return MailSecurity::Tls;
    return std::nullopt;
}

MailSettings MailSettings::read(const SettingReader& getter)
{
    MailSettings s;
    s.server = setting(getter, "Server");
    s.port = static_cast<int>(std::clamp(common::numericValue(setting(getter, "Porta")), 0.0, 65535.0));
    s.securityText = setting(getter, "Sicurezza");
    s.security = parseMailSecurity(s.securityText);
    s.user = setting(getter, "Utente");
    // A password may well begin or end with a blank: it is taken as stored.
    s.password = getter(QStringLiteral("MAIL"), QStringLiteral("Password"), QString());
    s.plainPassword = isYes(setting(getter, "PasswordInChiaro"));
    s.caFile = setting(getter, "CertificatoCA");
    s.connectTimeoutSeconds = seconds(setting(getter, "TimeoutConnessione"), 10);
    s.transferTimeoutSeconds = seconds(setting(getter, "TimeoutInvio"), 60);
    s.sender = getter(QStringLiteral("DOCS"), QStringLiteral("EMAIL_FROM"), QString()).trimmed();
    return s;
}

int MailSettings::effectivePort() const
{
    if (port > 0)
        return port;
    switch (security.value_or(MailSecurity::None)) {
    case MailSecurity::StartTls:
        return 587;
    case MailSecurity::Tls:
        return 465;
    case MailSecurity::None:
        break;
    }
    return 25;
}

QString MailSettings::url() const
{
    QString host = server;
    // An IPv6 address is written in brackets in a URL.
    if (host.contains(QLatin1Char(':')) && !host.startsWith(QLatin1Char('[')))
        host = QLatin1Char('[') + host + QLatin1Char(']');
    const QLatin1String scheme(security == MailSecurity::Tls ? "smtps" : "smtp");
    return QStringLiteral("%1://%2:%3").arg(scheme, host).arg(effectivePort());
}

QStringList splitAddresses(const QString& text)
{
    QStringList addresses;
    for (const QString& part : text.split(QRegularExpression(QStringLiteral("[;,]")))) {
        if (!part.trimmed().isEmpty())
            addresses << part.trimmed();
    }
    return addresses;
}

QByteArray encodeHeaderText(const QString& text)
{
    if (isPlainHeaderText(text))
        return text.toLatin1();
    QList<QByteArray> words;
    QByteArray chunk;
    for (const uint codePoint : text.toUcs4()) {
        const QByteArray bytes = QString::fromUcs4(reinterpret_cast<const char32_t*>(&codePoint), 1).toUtf8();
        // A character's bytes stay in one word: a mail reader decodes each word on its own.
        if (chunk.size() + bytes.size() > kBytesPerWord) {
            words << chunk;
            chunk.clear();
        }
        chunk += bytes;
    }
    if (!chunk.isEmpty() || words.isEmpty())
        words << chunk;
    QByteArray out;
    for (const QByteArray& word : words) {
        if (!out.isEmpty())
            out += "\r\n ";
        out += "=?UTF-8?B?" + word.toBase64() + "?=";
    }
    return out;
}

QByteArray quotedPrintable(const QString& text)
{
    QString normalised = text;
    normalised.replace(QLatin1String("\r\n"), QLatin1String("\n"))
        .replace(QLatin1Char('\r'), QLatin1Char('\n'));
    QByteArray out;
    for (const QString& line : normalised.split(QLatin1Char('\n'))) {
        const QByteArray bytes = line.toUtf8();
        qsizetype length = 0;
        for (qsizetype i = 0; i < bytes.size(); ++i) {
            const auto c = static_cast<unsigned char>(bytes[i]);
            const bool last = i + 1 == bytes.size();
            QByteArray token;
            // A blank at the end of a line would be lost on the way: it is written encoded.
            if ((c >= 33 && c <= 126 && c != '=') || ((c == ' ' || c == '\t') && !last))
                token = QByteArray(1, static_cast<char>(c));
            else
                token = '=' + QByteArray(1, static_cast<char>(c)).toHex().toUpper();
            // Room is left for the '=' of a soft line break.
            if (length + token.size() > kQpLineLength - 1) {
                out += "=\r\n";
                length = 0;
            }
            out += token;
            length += token.size();
        }
        out += "\r\n";
    }
    return out;
}

QByteArray composeMessage(const MailMessage& mail, const QDateTime& when)
{
    QByteArray out;
    out += "Date: " + rfc5322Date(when) + "\r\n";
    if (!mail.from.isEmpty())
        out += addressHeader("From", {mail.from});
    out += addressHeader("To", mail.to);
    if (!mail.cc.isEmpty())
        out += addressHeader("Cc", mail.cc);
    out += "Subject: " + encodeHeaderText(mail.subject) + "\r\n";
    const qsizetype at = mail.from.lastIndexOf(QLatin1Char('@'));
    const QString domain = at >= 0 ? mail.from.mid(at + 1) : QStringLiteral("xvelario.local");
    out += "Message-ID: <" + QUuid::createUuid().toString(QUuid::WithoutBraces).toLatin1() + '@' +
           domain.toUtf8() + ">\r\n";
    out += "MIME-Version: 1.0\r\n";
    out += "Content-Type: text/plain; charset=UTF-8\r\n";
    out += "Content-Transfer-Encoding: quoted-printable\r\n";
    out += "\r\n";
    out += quotedPrintable(mail.body);
    return out;
}

TransferResult transfer(const MailSettings& settings, const QString& from, const QStringList& recipients,
                        const QByteArray& message)
{
    initialiseCurl();
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
    if (!curl)
        return {MailFailure::Other, QStringLiteral("impossibile preparare l'invio")};
    curl_slist* list = nullptr;
    for (const QString& recipient : recipients)
        list =
            curl_slist_append(list, (QLatin1Char('<') + recipient + QLatin1Char('>')).toUtf8().constData());
    std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> rcpt(list, curl_slist_free_all);

    const QByteArray url = settings.url().toUtf8();
    const QByteArray mailFrom = (QLatin1Char('<') + from + QLatin1Char('>')).toUtf8();
    const QByteArray user = settings.user.toUtf8();
    const QByteArray password = settings.password.toUtf8();
    const QByteArray caFile = QFile::encodeName(settings.caFile);
    char error[CURL_ERROR_SIZE] = {};
    Upload upload{&message};
    CURL* c = curl.get();
    curl_easy_setopt(c, CURLOPT_URL, url.constData());
    curl_easy_setopt(c, CURLOPT_MAIL_FROM, mailFrom.constData());
    curl_easy_setopt(c, CURLOPT_MAIL_RCPT, rcpt.get());
    if (settings.security == MailSecurity::StartTls)
        curl_easy_setopt(c, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    if (!caFile.isEmpty()) {
        curl_easy_setopt(c, CURLOPT_CAINFO, caFile.constData());
        // The system's folder of CAs would be searched as well: the shop's CA is to be the only one.
        curl_easy_setopt(c, CURLOPT_CAPATH, nullptr);
    }
    if (!user.isEmpty()) {
        curl_easy_setopt(c, CURLOPT_USERNAME, user.constData());
        curl_easy_setopt(c, CURLOPT_PASSWORD, password.constData());
    }
    curl_easy_setopt(c, CURLOPT_CONNECTTIMEOUT, static_cast<long>(settings.connectTimeoutSeconds));
    curl_easy_setopt(c, CURLOPT_TIMEOUT, static_cast<long>(settings.transferTimeoutSeconds));
    // Signals cannot be used for time outs off the main thread.
    curl_easy_setopt(c, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(c, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(c, CURLOPT_READFUNCTION, &readUpload);
    curl_easy_setopt(c, CURLOPT_READDATA, &upload);
    curl_easy_setopt(c, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(message.size()));
    curl_easy_setopt(c, CURLOPT_ERRORBUFFER, error);

    const CURLcode code = curl_easy_perform(c);
    long responseCode = 0;
    curl_easy_getinfo(c, CURLINFO_RESPONSE_CODE, &responseCode);
    QString detail = QString::fromUtf8(error).trimmed();
    if (detail.isEmpty() && code != CURLE_OK)
        detail = QString::fromUtf8(curl_easy_strerror(code));
    return {classify(code, detail, responseCode), detail};
}

TransferResult transferWaiting(const MailSettings& settings, const QString& from,
                               const QStringList& recipients, const QByteArray& message)
{
    if (!QCoreApplication::instance())
        return transfer(settings, from, recipients, message);
    initialiseCurl();
    QEventLoop loop;
    TransferResult result;
    std::thread worker([&] {
        result = transfer(settings, from, recipients, message);
        // Queued: it reaches the loop even when the exchange ends before the loop has started.
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    {
        const Busy wait;
        // The window keeps painting, but nothing typed or clicked reaches the form while the mail goes.
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    worker.join();
    return result;
}

QString writeToOutbox(const QString& folder, const QByteArray& message)
{
    QDir dir(folder);
    if (!common::makePrivateFolder(folder))
        throw common::RuntimeError(
            kFileAccessError,
            QStringLiteral("impossibile creare la cartella %1").arg(QDir::toNativeSeparators(folder)));
    const QString stem = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss-zzz"));
    QString path = dir.filePath(stem + QStringLiteral(".eml"));
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = dir.filePath(QStringLiteral("%1-%2.eml").arg(stem).arg(n));
    // The target made first, the owner's alone: the saved file keeps its mode.
    QSaveFile file(path);
    if (!common::makePrivateFile(path) || !file.open(QIODevice::WriteOnly) ||
        file.write(message) != message.size() || !file.commit())
        throw common::RuntimeError(kFileAccessError,
                                   QStringLiteral("impossibile scrivere %1: %2")
                                       .arg(QDir::toNativeSeparators(path), file.errorString()));
    return path;
}

QString sendMail(const MailSettings& settings, const QString& outboxFolder, const MailMessage& mail)
{
    if (mail.to.isEmpty())
        return QStringLiteral("Mail non inviata: manca l'indirizzo del destinatario.");
    const QStringList recipients = mail.to + mail.cc + mail.bcc;
    for (const QString& address : recipients) {
        if (!isAddress(address))
            return QStringLiteral("Mail non inviata: l'indirizzo \"%1\" non è valido.").arg(address);
    }
    const QByteArray message = composeMessage(mail, QDateTime::currentDateTime());
    if (settings.server.isEmpty()) {
        try {
            const QString path = writeToOutbox(outboxFolder, message);
            qCInfo(lcMail) << "no mail server configured; message left in" << path;
            return QStringLiteral("Server di posta non configurato: la mail NON è stata inviata.\n"
                                  "È stata salvata in %1, da dove si può spedire con un programma "
                                  "di posta.")
                .arg(QDir::toNativeSeparators(path));
        } catch (const common::RuntimeError& e) {
            return QStringLiteral(
                       "Server di posta non configurato: la mail NON è stata inviata né salvata (%1).")
                .arg(e.description());
        }
    }
    if (!settings.security)
        return QStringLiteral("Mail non inviata: l'impostazione MAIL/Sicurezza \"%1\" non è valida "
                              "(scrivere nessuna, STARTTLS o TLS).")
            .arg(settings.securityText);
    if (!isAddress(mail.from))
        return QStringLiteral("Mail non inviata: manca un indirizzo valido del mittente "
                              "(impostazione EMAIL_FROM della sezione DOCS).");
    const bool secured = settings.security != MailSecurity::None;
    // Anyone on the way could read a password sent in the clear: only the shop can decide to allow it.
    if (!secured && !settings.user.isEmpty() && !settings.password.isEmpty() && !settings.plainPassword)
        return QStringLiteral("Mail non inviata: la password non viene inviata su una connessione non "
                              "protetta; impostare MAIL/Sicurezza a STARTTLS o TLS, oppure "
                              "MAIL/PasswordInChiaro a 1.");
    if (secured && !settings.caFile.isEmpty() && !QFileInfo(settings.caFile).isReadable())
        return QStringLiteral("Mail non inviata: il file del certificato CA \"%1\" (impostazione "
                              "MAIL/CertificatoCA) non esiste o non si può leggere.")
            .arg(QDir::toNativeSeparators(settings.caFile));

    const TransferResult result = transferWaiting(settings, mail.from, recipients, message);
    const QString server = settings.url();
    // Neither here nor anywhere else does the password go into the log.
    qCInfo(lcMail) << "mail to" << recipients << "via" << server
                   << "ended:" << static_cast<int>(result.failure) << result.detail;
    switch (result.failure) {
    case MailFailure::None:
        return QStringLiteral("Mail inviata a %1").arg(recipients.join(QStringLiteral(", ")));
    case MailFailure::Unreachable:
        return QStringLiteral(
                   "Mail NON inviata: il server di posta %1 non è raggiungibile o non risponde (%2).")
            .arg(server, result.detail);
    case MailFailure::LoginRefused:
        if (settings.user.isEmpty())
            return QStringLiteral("Mail NON inviata: il server di posta %1 chiede l'accesso con utente e "
                                  "password (impostazioni MAIL/Utente e MAIL/Password).")
                .arg(server);
        return QStringLiteral("Mail NON inviata: il server di posta %1 ha rifiutato l'accesso dell'utente "
                              "%2; controllare utente e password (%3).")
            .arg(server, settings.user, result.detail);
    case MailFailure::RecipientRefused:
        return QStringLiteral("Mail NON inviata: il server di posta ha rifiutato il destinatario %1 (%2).")
            .arg(recipients.join(QStringLiteral(", ")), result.detail);
    case MailFailure::Untrusted:
        return QStringLiteral("Mail NON inviata: il certificato del server di posta %1 non è affidabile "
                              "(non è firmato da un'autorità riconosciuta o è di un altro server). Se il "
                              "negozio usa un proprio certificato CA, indicarne il file nell'impostazione "
                              "MAIL/CertificatoCA (%2).")
            .arg(server, result.detail);
    case MailFailure::Other:
        break;
    }
    return QStringLiteral("Mail NON inviata: errore nell'invio tramite %1 (%2).").arg(server, result.detail);
}

} // namespace xv::host
