// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace xv::host {

class IHost;

// The settings of printing and mail as the operator edits them in one window: every value as text, as it
// is stored in table "impostazioni" (store "eKELA"), so that what the window does not touch is written back
// exactly as it was.
struct PrintMailSettings
{
    // Section "STAMPA".
    QString printer;     // "Stampante": empty for the system's default printer, "PDF", or a printer's name
    QString pdfFolder;   // "CartellaPDF"
    QString imageFolder; // "CartellaImmagini"
    // Section "MAIL".
    QString server;   // "Server"
    QString port;     // "Porta": empty for the usual port of the security chosen
    QString security; // "Sicurezza": "nessuna", "STARTTLS" or "TLS"
    QString user;     // "Utente"
    // "Password": never read back into the window; nothing leaves the stored one as it is.
    std::optional<QString> password;
    bool passwordStored = false; // whether there is one, so the window can say it is kept
    QString connectTimeout;      // "TimeoutConnessione": empty for the default
    QString transferTimeout;     // "TimeoutInvio": empty for the default
    QString signature;           // "Firma"
    QString caCertificate;       // "CertificatoCA"
    bool plainPassword = false;  // "PasswordInChiaro": "1" when set, "" otherwise
    // "EMAIL_FROM" of section "DOCS".
    QString sender;
};

PrintMailSettings readPrintMailSettings(IHost& host);

// What is wrong with the values, as the operator is told it; empty when they can be saved.
QString printMailSettingsProblem(const PrintMailSettings& settings);

// Writes the values that differ from those stored. Throws a RuntimeError with the problem, writing
// nothing, when the values are not right.
void savePrintMailSettings(IHost& host, const PrintMailSettings& settings);

// Prints one page (the shop, the date, where it went) where printed documents go; what to tell the
// operator about it, empty when it went to a printer.
QString printTestPage(IHost& host);

// Sends a short mail with the stored settings; the outcome as the host's mail gives it.
QString sendTestMail(IHost& host, const QString& recipient);

// The window that edits these settings belongs to the host's windows; the form opens it through here.
void setPrintMailWindow(std::function<void()> open);
void openPrintMailWindow();

} // namespace xv::host
