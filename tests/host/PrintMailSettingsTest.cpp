// SPDX-License-Identifier: MIT
// The print and mail settings as the window reads, checks and writes them (stored as HostTest stores any
// setting, on both engines).
#include "PdfText.h"
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "host/PrintMailSettings.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using namespace xv;
using host::PrintMailSettings;

class PrintMailSettingsTest : public test::HostedTest
{
protected:
    int storedRows() { return h().OpenRecordset("select count(*) as n from impostazioni").value(0).toInt(); }
};

TEST_P(PrintMailSettingsTest, WritesOnlyWhatChangedAndKeepsThePasswordUnlessRetyped)
{
    const int before = storedRows();
    const QString footer = h().GetMailFooter();
    host::savePrintMailSettings(h(), host::readPrintMailSettings(h()));
    // Nothing changed, nothing written: a missing key keeps meaning its default.
    EXPECT_EQ(storedRows(), before);
    EXPECT_EQ(h().GetMailFooter(), footer);

    PrintMailSettings s = host::readPrintMailSettings(h());
    s.printer = "PDF";
    s.pdfFolder = " /srv/stampe ";
    s.server = "smtp.esempio.it";
    s.port = "587";
    s.security = "STARTTLS";
    s.user = "negozio@esempio.it";
    s.password = " segreta";
    s.plainPassword = true;
    s.sender = "negozio@esempio.it";
    host::savePrintMailSettings(h(), s);
    h().RefreshSettings();
    EXPECT_EQ(h().GetSetting("stampa", "stampante", "", "ekela"), "PDF");
    EXPECT_EQ(h().GetSetting("STAMPA", "CartellaPDF", "", "eKELA"), "/srv/stampe");
    EXPECT_EQ(h().GetSetting("MAIL", "Password", "", "eKELA"), " segreta");
    EXPECT_EQ(h().GetSetting("MAIL", "PasswordInChiaro", "", "eKELA"), "1");
    EXPECT_EQ(h().GetSetting("DOCS", "EMAIL_FROM", "", "eKELA"), "negozio@esempio.it");

    PrintMailSettings again = host::readPrintMailSettings(h());
    EXPECT_FALSE(again.password.has_value());
    EXPECT_TRUE(again.passwordStored);
    EXPECT_EQ(again.port, "587");
    EXPECT_TRUE(again.plainPassword);
    again.plainPassword = false;
    host::savePrintMailSettings(h(), again);
    h().RefreshSettings();
    EXPECT_EQ(h().GetSetting("MAIL", "Password", "", "eKELA"), " segreta");
    EXPECT_FALSE(host::readPrintMailSettings(h()).plainPassword);

    again.port = "0";
    again.server = "altro.esempio.it";
    EXPECT_THROW(host::savePrintMailSettings(h(), again), common::RuntimeError);
    h().RefreshSettings();
    EXPECT_EQ(h().GetSetting("MAIL", "Server", "", "eKELA"), "smtp.esempio.it");
}

TEST_P(PrintMailSettingsTest, TheTestPageAndTheTestMailGoWhereTheSettingsSay)
{
    QTemporaryDir pdfs;
    h().SaveSetting("STAMPA", "Stampante", "PDF", "eKELA");
    h().SaveSetting("STAMPA", "CartellaPDF", pdfs.path(), "eKELA");
    const QString notice = host::printTestPage(h());
    const QStringList files = QDir(pdfs.path()).entryList({"*.pdf"}, QDir::Files);
    ASSERT_EQ(files.size(), 1);
    EXPECT_TRUE(notice.contains(files.first())) << notice.toStdString();
    const QString page = test::pdfLayoutLines(pdfs.filePath(files.first())).join('\n');
    EXPECT_TRUE(page.contains("Pagina di prova")) << page.toStdString();
    EXPECT_TRUE(page.contains(h().GetDataName())) << page.toStdString();

    // No server: the mail waits in the outbox, and the operator is told so.
    const QString result = host::sendTestMail(h(), "luca@esempio.it");
    const QStringList outbox = QDir(h().GetDataPath() + "outbox").entryList({"*.eml"}, QDir::Files);
    ASSERT_EQ(outbox.size(), 1) << result.toStdString();
    EXPECT_TRUE(result.contains("outbox")) << result.toStdString();
}

XV_INSTANTIATE_ON_SQLITE(PrintMailSettingsTest);

TEST(PrintMailSettingsCheck, RefusesBadPortsTimeoutsSecurityAndSenders)
{
    // Each field's values, each with the start of the problem it is, empty when the value is right.
    using Values = std::vector<std::pair<const char*, const char*>>;
    const std::pair<QString PrintMailSettings::*, Values> fields[] = {
        {&PrintMailSettings::port,
         {{"", ""},
          {"465", ""},
          {"65535", ""},
          {"0", "La porta \"0\" non è valida"},
          {"65536", "La porta \"65536\""},
          {"25a", "La porta \"25a\""},
          {"-25", "La porta \"-25\""}}},
        {&PrintMailSettings::connectTimeout,
         {{"", ""}, {"30", ""}, {"0", "Il tempo massimo di connessione \"0\""}}},
        {&PrintMailSettings::transferTimeout,
         {{"1,5", "Il tempo massimo di invio \"1,5\""}, {"-60", "Il tempo massimo di invio \"-60\""}}},
        {&PrintMailSettings::security, {{"SMTPS", ""}, {"SSH", "La sicurezza \"SSH\""}}},
        {&PrintMailSettings::sender,
         {{"", ""},
          {"negozio@esempio.it", ""},
          {"negozio", "Il mittente \"negozio\" non è un indirizzo e-mail"},
          {"negozio@esempio", "Il mittente"},
          {"a b@esempio.it", "Il mittente"}}}};
    for (const auto& [field, values] : fields) {
        for (const auto& [value, expected] : values) {
            SCOPED_TRACE(std::string(value) + " -> " + expected);
            PrintMailSettings s;
            s.security = "nessuna";
            s.*field = QString::fromUtf8(value);
            const QString problem = host::printMailSettingsProblem(s);
            if (*expected == '\0')
                EXPECT_EQ(problem, "");
            else
                EXPECT_TRUE(problem.startsWith(QString::fromUtf8(expected))) << problem.toStdString();
        }
    }
}

} // namespace
