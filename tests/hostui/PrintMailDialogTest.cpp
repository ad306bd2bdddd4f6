// SPDX-License-Identifier: MIT
// The print and mail settings window, driven offscreen.
#include "ScriptedDialogs.h"
#include "TestDatabase.h"

#include "hostui/PrintMailDialog.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using namespace xv;

class PrintMailDialogTest : public test::HostedTest
{
protected:
    QString stored(const char* section, const char* key)
    {
        h().RefreshSettings();
        return h().GetSetting(section, key, "", "eKELA");
    }
};

TEST_P(PrintMailDialogTest, ShowsTheStoredValuesSavesOnEnterOnlyWhenRightAndNeverShowsThePassword)
{
    h().SaveSetting("STAMPA", "Stampante", "PDF", "eKELA");
    h().SaveSetting("MAIL", "Server", "smtp.esempio.it", "eKELA");
    h().SaveSetting("MAIL", "Porta", "587", "eKELA");
    h().SaveSetting("MAIL", "Password", "segreta", "eKELA");
    test::ScriptedDialogs dialogs;

    {
        hostui::PrintMailDialog dialog(h());
        dialog.show();
        EXPECT_EQ(dialog.findChild<QComboBox*>("cmb_Stampante")->currentData().toString(), "PDF");
        EXPECT_EQ(dialog.findChild<QLineEdit*>("txt_Porta")->text(), "587");
        auto* password = dialog.findChild<QLineEdit*>("txt_Password");
        EXPECT_EQ(password->echoMode(), QLineEdit::Password);
        for (const QLineEdit* edit : dialog.findChildren<QLineEdit*>()) {
            EXPECT_FALSE(edit->text().contains("segreta")) << edit->objectName().toStdString();
            EXPECT_FALSE(edit->accessibleName().isEmpty()) << edit->objectName().toStdString();
        }
        auto* server = dialog.findChild<QLineEdit*>("txt_Server");
        server->setText("altro.esempio.it");
        QTest::keyClick(server, Qt::Key_Escape);
        EXPECT_EQ(dialog.result(), QDialog::Rejected);
    }
    EXPECT_EQ(stored("MAIL", "Server"), "smtp.esempio.it");

    hostui::PrintMailDialog dialog(h());
    dialog.show();
    auto* server = dialog.findChild<QLineEdit*>("txt_Server");
    auto* port = dialog.findChild<QLineEdit*>("txt_Porta");
    server->setText("altro.esempio.it");
    port->setText("70000");
    dialogs.expectMessage("La porta \"70000\" non è valida");
    QTest::mouseClick(dialog.findChild<QPushButton*>("cmd_Salva"), Qt::LeftButton);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(stored("MAIL", "Server"), "smtp.esempio.it");
    EXPECT_EQ(stored("MAIL", "Porta"), "587");

    port->setText("2525");
    QTest::keyClick(port, Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(stored("MAIL", "Server"), "altro.esempio.it");
    EXPECT_EQ(stored("MAIL", "Porta"), "2525");
    EXPECT_EQ(stored("MAIL", "Password"), "segreta");
}

XV_INSTANTIATE_ON_SQLITE(PrintMailDialogTest);

} // namespace
