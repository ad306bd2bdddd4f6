// SPDX-License-Identifier: MIT
#include "PrintMailSettings.h"

#include "common/RuntimeError.h"
#include "host/HostInterface.h"
#include "host/Mail.h"
#include "host/PrintOutput.h"

#include <QDateTime>
#include <QFont>
#include <QLocale>
#include <QLoggingCategory>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QRegularExpression>
#include <QStringList>

Q_LOGGING_CATEGORY(lcPrintMail, "xv.host.settings")

namespace xv::host {

namespace {

const QString kStore = QStringLiteral("eKELA");
const QString kPrint = QStringLiteral("STAMPA");
const QString kMail = QStringLiteral("MAIL");
const QString kDocs = QStringLiteral("DOCS");

std::function<void()>& windowOpener()
{
    static std::function<void()> open;
    return open;
}

// A whole number from min to max, written without sign or blanks.
bool isWholeNumber(const QString& text, qint64 min, qint64 max)
{
    static const QRegularExpression digits(QStringLiteral("^[0-9]{1,9}$"));
    if (!digits.match(text).hasMatch())
        return false;
    const qint64 value = text.toLongLong();
    return value >= min && value <= max;
}

struct Entry
{
    QString section;
    const char* key;
    QString value;
};

QVector<Entry> entriesOf(const PrintMailSettings& s)
{
    QVector<Entry> entries = {
        {kPrint, "Stampante", s.printer.trimmed()},
        {kPrint, "CartellaPDF", s.pdfFolder.trimmed()},
        {kPrint, "CartellaImmagini", s.imageFolder.trimmed()},
        {kMail, "Server", s.server.trimmed()},
        {kMail, "Porta", s.port.trimmed()},
        {kMail, "Sicurezza", s.security.trimmed()},
        {kMail, "Utente", s.user.trimmed()},
        {kMail, "TimeoutConnessione", s.connectTimeout.trimmed()},
        {kMail, "TimeoutInvio", s.transferTimeout.trimmed()},
        // The signature's line breaks and blanks are the shop's own layout.
        {kMail, "Firma", s.signature},
        {kMail, "CertificatoCA", s.caCertificate.trimmed()},
        {kMail, "PasswordInChiaro", s.plainPassword ? QStringLiteral("1") : QString()},
        {kDocs, "EMAIL_FROM", s.sender.trimmed()},
    };
    // A password may begin or end with a blank, as the mail takes it.
    if (s.password)
        entries.push_back({kMail, "Password", *s.password});
    return entries;
}

} // namespace

PrintMailSettings readPrintMailSettings(IHost& host)
{
    auto get = [&host](const QString& section, const char* key) {
        return host.GetSetting(section, QString::fromLatin1(key), QString(), kStore);
    };
    PrintMailSettings s;
    s.printer = get(kPrint, "Stampante").trimmed();
    s.pdfFolder = get(kPrint, "CartellaPDF");
    s.imageFolder = get(kPrint, "CartellaImmagini");
    s.server = get(kMail, "Server");
    s.port = get(kMail, "Porta");
    s.security = get(kMail, "Sicurezza").trimmed();
    // The other spellings the mail accepts are shown as the one it means.
    if (const std::optional<MailSecurity> security = parseMailSecurity(s.security)) {
        if (*security == MailSecurity::None)
            s.security = QStringLiteral("nessuna");
        else if (*security == MailSecurity::StartTls)
            s.security = QStringLiteral("STARTTLS");
        else
            s.security = QStringLiteral("TLS");
    }
    s.user = get(kMail, "Utente");
    s.passwordStored = !get(kMail, "Password").isEmpty();
    s.connectTimeout = get(kMail, "TimeoutConnessione");
    s.transferTimeout = get(kMail, "TimeoutInvio");
    s.signature = get(kMail, "Firma");
    s.caCertificate = get(kMail, "CertificatoCA");
    const QString plain = get(kMail, "PasswordInChiaro").trimmed();
    s.plainPassword = !plain.isEmpty() && plain != QLatin1String("0");
    s.sender = get(kDocs, "EMAIL_FROM");
    return s;
}

QString printMailSettingsProblem(const PrintMailSettings& s)
{
    const QString port = s.port.trimmed();
    if (!port.isEmpty() && !isWholeNumber(port, 1, 65535))
        return QStringLiteral(
                   "La porta \"%1\" non è valida: scrivere un numero da 1 a 65535, o lasciarla vuota "
                   "per la porta usuale.")
            .arg(port);
    if (!parseMailSecurity(s.security))
        return QStringLiteral("La sicurezza \"%1\" non è valida: scegliere nessuna, STARTTLS o TLS.")
            .arg(s.security);
    const std::pair<QString, QString> timeouts[] = {
        {QStringLiteral("di connessione"), s.connectTimeout.trimmed()},
        {QStringLiteral("di invio"), s.transferTimeout.trimmed()},
    };
    for (const auto& [which, text] : timeouts) {
        if (!text.isEmpty() && !isWholeNumber(text, 1, 86400))
            return QStringLiteral(
                       "Il tempo massimo %1 \"%2\" non è valido: scrivere un numero intero di secondi "
                       "maggiore di zero.")
                .arg(which, text);
    }
    static const QRegularExpression address(
        QStringLiteral("^[^@\\s;,<>\"]+@[^@\\s;,<>\"]+\\.[^@\\s;,<>\".]+$"));
    const QString sender = s.sender.trimmed();
    if (!sender.isEmpty() && !address.match(sender).hasMatch())
        return QStringLiteral("Il mittente \"%1\" non è un indirizzo e-mail (nome@dominio.it).").arg(sender);
    return {};
}

void savePrintMailSettings(IHost& host, const PrintMailSettings& settings)
{
    const QString problem = printMailSettingsProblem(settings);
    if (!problem.isEmpty())
        throw common::RuntimeError(common::ErrorNumber::InvalidPropertyValue, problem);
    QStringList changed;
    for (const Entry& entry : entriesOf(settings)) {
        const QString key = QString::fromLatin1(entry.key);
        // A key left as it was is not written, so a missing one keeps meaning its default.
        const QString stored = host.GetSetting(entry.section, key, QString(), kStore);
        if (stored == entry.value)
            continue;
        // "nessuna" is what an empty one means, and "SSL" what "TLS" does: no need to write either.
        if (key == QLatin1String("Sicurezza") && parseMailSecurity(stored) == parseMailSecurity(entry.value))
            continue;
        host.SaveSetting(entry.section, key, entry.value, kStore);
        changed << entry.section + QLatin1Char('/') + key;
    }
    // Names only: the values include the password.
    qCInfo(lcPrintMail).noquote() << "settings saved:"
                                  << (changed.isEmpty() ? QStringLiteral("none")
                                                        : changed.join(QStringLiteral(", ")));
}

QString printTestPage(IHost& host)
{
    PrintOutput output(host, QStringLiteral("Pagina di prova"));
    QPagedPaintDevice& printer = output.device();
    QPainter painter;
    if (!painter.begin(&printer))
        throw common::RuntimeError(
            common::ErrorNumber::InvalidProcedureCall,
            QStringLiteral("Impossibile stampare su \"%1\"").arg(output.destination()));
    const QRect page = printer.pageLayout().paintRectPixels(printer.logicalDpiX());
    QFont font(QStringLiteral("Sans Serif"), 16);
    painter.setFont(font);
    const QString where = output.toPdf() ? QStringLiteral("PDF") : output.printerName();
    const QString text =
        QStringList{
            QStringLiteral("Pagina di prova"),
            host.GetAppTitle() + QStringLiteral(" - ") + host.GetDataName(),
            QLocale().toString(QDateTime::currentDateTime(), QStringLiteral("dd/MM/yyyy HH:mm")),
            QStringLiteral("Stampante: ") + where,
        }
            .join(QLatin1Char('\n'));
    painter.drawText(page.adjusted(0, 0, 0, 0), Qt::AlignLeft | Qt::AlignTop, text);
    painter.end();
    output.finish(QStringLiteral("La stampante non ha accettato la pagina di prova"));
    return output.notice();
}

QString sendTestMail(IHost& host, const QString& recipient)
{
    QString result;
    host.SendMail(recipient, QStringLiteral("Mail di prova"),
                  QStringLiteral("Questa è una mail di prova: la posta di ") + host.GetAppTitle() +
                      QStringLiteral(" funziona.") + host.GetMailFooter(),
                  QString(), QString(), result);
    return result;
}

void setPrintMailWindow(std::function<void()> open)
{
    windowOpener() = std::move(open);
}

void openPrintMailWindow()
{
    if (windowOpener())
        windowOpener()();
    else
        qCWarning(lcPrintMail) << "no window for the print and mail settings";
}

} // namespace xv::host
