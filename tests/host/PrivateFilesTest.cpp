// SPDX-License-Identifier: MIT
// What the program writes in its data folder holds a shop's customers: the owner's alone, whatever umask
// the session that runs it has.
#include "FileModes.h"

#include "common/PrivateFiles.h"
#include "host/Host.h"
#include "host/PrintOutput.h"
#include "host/Services.h"

#include <QFileInfo>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using test::openToOthers;

TEST(PrivateFilesTest, WhatTheHostWritesInTheDataFolderIsTheOwnersAloneUnderAnOpenUmask)
{
    const test::Umask open(0);
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString data = dir.filePath("dati/");
    host::HostOptions options;
    options.dataPath = data;
    options.fillDemoData = false;
    {
        host::Host h(options);
        ASSERT_TRUE(h.Initialize());
        // The log, the outbox of a mail with no server, a document printed as PDF, the window settings.
        h.SaveSetting("STAMPA", "Stampante", "PDF", "eKELA");
        try {
            throw std::runtime_error("prova");
        } catch (...) {
            h.ReportError("PrivateFilesTest", "errore di prova", false);
        }
        QString result;
        h.SendMail("cliente@esempio.it", "Oggetto", "Testo", "", "", result);
        {
            host::PrintOutput output(h, "Documento");
            QPainter painter(&output.device());
            painter.drawText(100, 100, "Rossi Maria");
        }
        host::IniFormSettings(data + "xvelario-finestre.ini").SaveSetting("frm_Commissioni", "Top", "10");
        h.Terminate();
    }
    for (const char* written : {"xvelario.db", "xvelario.log", "outbox", "stampe", "xvelario-finestre.ini"})
        EXPECT_TRUE(QFileInfo::exists(data + written)) << written;
    EXPECT_EQ(QDir(data + "outbox").entryList(QDir::Files).size(), 1);
    EXPECT_EQ(QDir(data + "stampe").entryList(QDir::Files).size(), 1);
    EXPECT_EQ(openToOthers(data), QStringList());
}

TEST(PrivateFilesTest, AFileMadePrivateKeepsItsContentsAndAnExistingFolderIsClosed)
{
    const test::Umask open(0);
    QTemporaryDir dir;
    const QString folder = dir.filePath("aperta");
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(QFile::setPermissions(folder, QFileDevice::Permissions(0x7777)));
    QFile file(folder + "/clienti.txt");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("Rossi Maria");
    file.close();
    ASSERT_FALSE(openToOthers(folder).isEmpty());

    EXPECT_TRUE(common::makePrivateFolder(folder));
    EXPECT_TRUE(common::makePrivateFile(file.fileName()));
    EXPECT_EQ(openToOthers(folder), QStringList());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "Rossi Maria");
    EXPECT_FALSE(common::makePrivateFile(dir.filePath("manca/file.txt")));
}

} // namespace
