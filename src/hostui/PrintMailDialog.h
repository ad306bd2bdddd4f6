// SPDX-License-Identifier: MIT
#pragma once

#include "host/PrintMailSettings.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace xv::host {
class IHost;
}

namespace xv::hostui {

// "Impostazioni stampa e posta": where documents print and how mail goes out, without writing SQL.
class PrintMailDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PrintMailDialog(host::IHost& host, QWidget* parent = nullptr);

    // Shows the window over the host's windows until the operator closes it.
    static void run();

    // The values as the window holds them.
    host::PrintMailSettings values() const;

private:
    void showSettings(const host::PrintMailSettings& settings);
    // Checks and saves the window's values; false, with the operator told why, when they are not right.
    bool save();
    void sendTestMail();
    void printTestPage();
    void chooseFolder(QLineEdit* target);
    void chooseCertificate();
    void tell(const QString& text, bool problem);

    host::IHost& m_host;
    QComboBox* m_printer;
    QLineEdit* m_pdfFolder;
    QLineEdit* m_imageFolder;
    QLineEdit* m_server;
    QLineEdit* m_port;
    QComboBox* m_security;
    QLineEdit* m_user;
    QLineEdit* m_password;
    QLineEdit* m_connectTimeout;
    QLineEdit* m_transferTimeout;
    QPlainTextEdit* m_signature;
    QLineEdit* m_caCertificate;
    QCheckBox* m_plainPassword;
    QLineEdit* m_sender;
    bool m_passwordStored = false;
};

} // namespace xv::hostui
