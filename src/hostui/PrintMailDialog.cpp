// SPDX-License-Identifier: MIT
#include "PrintMailDialog.h"

#include "hostui/HostWindows.h"

#include "host/Dialogs.h"
#include "host/HostInterface.h"
#include "host/Services.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPrinterInfo>
#include <QPushButton>
#include <QVBoxLayout>

namespace xv::hostui {

namespace {

const QString kTitle = QStringLiteral("Impostazioni stampa e posta");
const QString kDefaultPrinter = QStringLiteral("(stampante predefinita del sistema)");
const QString kPdf = QStringLiteral("PDF");

QLineEdit* lineEdit(QWidget* parent, const char* name)
{
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(QString::fromLatin1(name));
    return edit;
}

// The label's text is the control's accessible name, so a screen reader says what the eye reads.
void addRow(QFormLayout* form, const QString& caption, QWidget* field, QWidget* button = nullptr)
{
    field->setAccessibleName(caption);
    auto* label = new QLabel(caption + QLatin1Char(':'));
    label->setBuddy(field);
    if (!button) {
        form->addRow(label, field);
        return;
    }
    auto* row = new QHBoxLayout;
    row->addWidget(field, 1);
    row->addWidget(button);
    form->addRow(label, row);
}

QPushButton* browseButton(QWidget* parent, const QString& what)
{
    auto* button = new QPushButton(QStringLiteral("..."), parent);
    button->setAccessibleName(QStringLiteral("Sfoglia ") + what);
    button->setAutoDefault(false);
    button->setFixedWidth(button->fontMetrics().horizontalAdvance(QStringLiteral("....")) + 16);
    return button;
}

} // namespace

PrintMailDialog::PrintMailDialog(host::IHost& host, QWidget* parent) : QDialog(parent), m_host(host)
{
    setObjectName(QStringLiteral("PrintMailDialog"));
    setWindowTitle(kTitle);

    auto* printBox = new QGroupBox(QStringLiteral("Stampa"), this);
    auto* printForm = new QFormLayout(printBox);
    m_printer = new QComboBox(printBox);
    m_printer->setObjectName(QStringLiteral("cmb_Stampante"));
    m_printer->addItem(kDefaultPrinter, QString());
    for (const QString& name : QPrinterInfo::availablePrinterNames())
        m_printer->addItem(name, name);
    m_printer->addItem(kPdf, kPdf);
    addRow(printForm, QStringLiteral("Stampante"), m_printer);
    m_pdfFolder = lineEdit(printBox, "txt_CartellaPDF");
    m_pdfFolder->setPlaceholderText(QStringLiteral("cartella \"stampe\" dei dati"));
    QPushButton* pdfBrowse = browseButton(printBox, QStringLiteral("Cartella PDF"));
    addRow(printForm, QStringLiteral("Cartella PDF"), m_pdfFolder, pdfBrowse);
    m_imageFolder = lineEdit(printBox, "txt_CartellaImmagini");
    m_imageFolder->setPlaceholderText(QStringLiteral("cartella \"immagini\" dei dati"));
    QPushButton* imageBrowse = browseButton(printBox, QStringLiteral("Cartella immagini"));
    addRow(printForm, QStringLiteral("Cartella immagini"), m_imageFolder, imageBrowse);

    auto* mailBox = new QGroupBox(QStringLiteral("Posta"), this);
    auto* mailForm = new QFormLayout(mailBox);
    m_sender = lineEdit(mailBox, "txt_EMAIL_FROM");
    m_sender->setPlaceholderText(QStringLiteral("negozio@esempio.it"));
    addRow(mailForm, QStringLiteral("Mittente"), m_sender);
    m_server = lineEdit(mailBox, "txt_Server");
    m_server->setPlaceholderText(QStringLiteral("vuoto: le mail restano nella cartella outbox"));
    addRow(mailForm, QStringLiteral("Server"), m_server);
    m_port = lineEdit(mailBox, "txt_Porta");
    m_port->setPlaceholderText(QStringLiteral("25, 587 con STARTTLS, 465 con TLS"));
    addRow(mailForm, QStringLiteral("Porta"), m_port);
    m_security = new QComboBox(mailBox);
    m_security->setObjectName(QStringLiteral("cmb_Sicurezza"));
    m_security->addItems({QStringLiteral("nessuna"), QStringLiteral("STARTTLS"), QStringLiteral("TLS")});
    addRow(mailForm, QStringLiteral("Sicurezza"), m_security);
    m_user = lineEdit(mailBox, "txt_Utente");
    m_user->setPlaceholderText(QStringLiteral("vuoto: nessun accesso"));
    addRow(mailForm, QStringLiteral("Utente"), m_user);
    m_password = lineEdit(mailBox, "txt_Password");
    m_password->setEchoMode(QLineEdit::Password);
    addRow(mailForm, QStringLiteral("Password"), m_password);
    m_plainPassword =
        new QCheckBox(QStringLiteral("Consenti la password su connessione non cifrata"), mailBox);
    m_plainPassword->setObjectName(QStringLiteral("chk_PasswordInChiaro"));
    m_plainPassword->setAccessibleName(m_plainPassword->text());
    mailForm->addRow(QString(), m_plainPassword);
    m_caCertificate = lineEdit(mailBox, "txt_CertificatoCA");
    m_caCertificate->setPlaceholderText(QStringLiteral("vuoto: i certificati riconosciuti dal sistema"));
    QPushButton* caBrowse = browseButton(mailBox, QStringLiteral("Certificato CA"));
    addRow(mailForm, QStringLiteral("Certificato CA"), m_caCertificate, caBrowse);
    m_connectTimeout = lineEdit(mailBox, "txt_TimeoutConnessione");
    m_connectTimeout->setPlaceholderText(QStringLiteral("10"));
    addRow(mailForm, QStringLiteral("Attesa connessione (secondi)"), m_connectTimeout);
    m_transferTimeout = lineEdit(mailBox, "txt_TimeoutInvio");
    m_transferTimeout->setPlaceholderText(QStringLiteral("60"));
    addRow(mailForm, QStringLiteral("Attesa invio (secondi)"), m_transferTimeout);
    m_signature = new QPlainTextEdit(mailBox);
    m_signature->setObjectName(QStringLiteral("txt_Firma"));
    // Tab moves on, as in every other field; Enter starts a new line of the signature.
    m_signature->setTabChangesFocus(true);
    m_signature->setFixedHeight(m_signature->fontMetrics().lineSpacing() * 4 + 12);
    addRow(mailForm, QStringLiteral("Firma"), m_signature);

    auto* testMail = new QPushButton(QStringLiteral("Invia mail di prova"), this);
    testMail->setObjectName(QStringLiteral("cmd_MailProva"));
    auto* testPage = new QPushButton(QStringLiteral("Stampa pagina di prova"), this);
    testPage->setObjectName(QStringLiteral("cmd_StampaProva"));
    auto* saveButton = new QPushButton(QStringLiteral("Salva"), this);
    saveButton->setObjectName(QStringLiteral("cmd_Salva"));
    auto* cancelButton = new QPushButton(QStringLiteral("Annulla"), this);
    cancelButton->setObjectName(QStringLiteral("cmd_Annulla"));
    for (QPushButton* button : {testMail, testPage, cancelButton})
        button->setAutoDefault(false);
    saveButton->setDefault(true);

    connect(pdfBrowse, &QPushButton::clicked, this, [this] { chooseFolder(m_pdfFolder); });
    connect(imageBrowse, &QPushButton::clicked, this, [this] { chooseFolder(m_imageFolder); });
    connect(caBrowse, &QPushButton::clicked, this, [this] { chooseCertificate(); });
    connect(testMail, &QPushButton::clicked, this, [this] { sendTestMail(); });
    connect(testPage, &QPushButton::clicked, this, [this] { printTestPage(); });
    connect(saveButton, &QPushButton::clicked, this, [this] {
        if (save())
            accept();
    });
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(testMail);
    buttons->addWidget(testPage);
    buttons->addStretch(1);
    buttons->addWidget(saveButton);
    buttons->addWidget(cancelButton);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(printBox);
    layout->addWidget(mailBox);
    layout->addLayout(buttons);
    resize(620, sizeHint().height());

    showSettings(host::readPrintMailSettings(m_host));
}

void PrintMailDialog::run()
{
    PrintMailDialog dialog(host::host(), boxParent());
    dialog.exec();
}

void PrintMailDialog::showSettings(const host::PrintMailSettings& s)
{
    int printer = m_printer->findData(s.printer, Qt::UserRole, Qt::MatchFixedString);
    if (printer < 0) {
        // A printer no longer installed stays chosen, so the shop sees why its paper comes out as PDF.
        m_printer->addItem(s.printer + QStringLiteral(" (non installata)"), s.printer);
        printer = m_printer->count() - 1;
    }
    m_printer->setCurrentIndex(printer);
    m_pdfFolder->setText(s.pdfFolder);
    m_imageFolder->setText(s.imageFolder);
    m_sender->setText(s.sender);
    m_server->setText(s.server);
    m_port->setText(s.port);
    int security = m_security->findText(s.security.isEmpty() ? QStringLiteral("nessuna") : s.security);
    if (security < 0) {
        // Shown as written, so that saving tells the operator it is not understood.
        m_security->addItem(s.security);
        security = m_security->count() - 1;
    }
    m_security->setCurrentIndex(security);
    m_user->setText(s.user);
    m_passwordStored = s.passwordStored;
    m_password->clear();
    m_password->setPlaceholderText(
        s.passwordStored ? QStringLiteral("(salvata: scriverla solo per cambiarla)") : QString());
    m_plainPassword->setChecked(s.plainPassword);
    m_caCertificate->setText(s.caCertificate);
    m_connectTimeout->setText(s.connectTimeout);
    m_transferTimeout->setText(s.transferTimeout);
    m_signature->setPlainText(s.signature);
}

host::PrintMailSettings PrintMailDialog::values() const
{
    host::PrintMailSettings s;
    s.printer = m_printer->currentData().toString();
    s.pdfFolder = m_pdfFolder->text();
    s.imageFolder = m_imageFolder->text();
    s.server = m_server->text();
    s.port = m_port->text();
    s.security = m_security->currentText();
    s.user = m_user->text();
    // An empty field keeps the stored password: it is never read back into the window.
    if (!m_password->text().isEmpty())
        s.password = m_password->text();
    s.passwordStored = m_passwordStored || s.password.has_value();
    s.connectTimeout = m_connectTimeout->text();
    s.transferTimeout = m_transferTimeout->text();
    s.signature = m_signature->toPlainText();
    s.caCertificate = m_caCertificate->text();
    s.plainPassword = m_plainPassword->isChecked();
    s.sender = m_sender->text();
    return s;
}

bool PrintMailDialog::save()
{
    const host::PrintMailSettings s = values();
    const QString problem = host::printMailSettingsProblem(s);
    if (!problem.isEmpty()) {
        tell(problem, true);
        return false;
    }
    try {
        host::savePrintMailSettings(m_host, s);
    } catch (...) {
        m_host.ReportError(QStringLiteral("PrintMailDialog.save"), QString(), true);
        return false;
    }
    return true;
}

void PrintMailDialog::sendTestMail()
{
    const std::optional<QString> recipient = host::Dialogs::input(
        QStringLiteral("Le impostazioni della finestra vengono salvate prima della prova.\n"
                       "Indirizzo a cui inviare la mail di prova:"),
        kTitle, m_sender->text().trimmed());
    if (!recipient || recipient->trimmed().isEmpty() || !save())
        return;
    try {
        tell(host::sendTestMail(m_host, recipient->trimmed()), false);
    } catch (...) {
        m_host.ReportError(QStringLiteral("PrintMailDialog.sendTestMail"), QString(), true);
    }
}

void PrintMailDialog::printTestPage()
{
    // The page goes where the window says, so what is in it is saved first.
    if (!save())
        return;
    try {
        const QString notice = host::printTestPage(m_host);
        tell(QStringLiteral("Le impostazioni sono state salvate.\n") +
                 (notice.isEmpty() ? QStringLiteral("La pagina di prova è stata inviata alla stampante.")
                                   : notice),
             false);
    } catch (...) {
        m_host.ReportError(QStringLiteral("PrintMailDialog.printTestPage"), QString(), true);
    }
}

void PrintMailDialog::chooseFolder(QLineEdit* target)
{
    const QString folder = QFileDialog::getExistingDirectory(this, target->accessibleName(), target->text());
    if (!folder.isEmpty())
        target->setText(QDir::toNativeSeparators(folder));
}

void PrintMailDialog::chooseCertificate()
{
    const QString file =
        QFileDialog::getOpenFileName(this, m_caCertificate->accessibleName(), m_caCertificate->text(),
                                     QStringLiteral("Certificati (*.pem *.crt *.cer);;Tutti i file (*)"));
    if (!file.isEmpty())
        m_caCertificate->setText(QDir::toNativeSeparators(file));
}

void PrintMailDialog::tell(const QString& text, bool problem)
{
    host::Dialogs::message(text, host::Buttons::Ok,
                           problem ? host::Icon::Exclamation : host::Icon::Information, kTitle);
}

} // namespace xv::hostui
