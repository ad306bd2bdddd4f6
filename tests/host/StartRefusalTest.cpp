// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "host/Host.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <cctype>
#include <functional>
#include <future>
#include <thread>

namespace {

using namespace xv;

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray randomBytes(int size)
{
    QRandomGenerator dice(7);
    QByteArray bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(dice.bounded(256));
    return bytes;
}

void anotherProgramsDatabase(const QString& path)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "altro-programma");
        db.setDatabaseName(path);
        ASSERT_TRUE(db.open());
        QSqlQuery q(db);
        ASSERT_TRUE(q.exec("create table clienti (id integer primary key, nome text)"));
        ASSERT_TRUE(q.exec("insert into clienti (nome) values ('Rossi')"));
        ASSERT_TRUE(q.exec("create table fatture (id integer primary key, totale real)"));
        db.close();
    }
    QSqlDatabase::removeDatabase("altro-programma");
}

struct ForeignFile
{
    const char* name;
    std::function<void(const QString& path)> make;
    const char* reason;
};

const ForeignFile kForeignFiles[] = {
    {"a text file", [](const QString& p) { writeFile(p, "Elenco clienti\nRossi;Verdi\n"); }, "non è un database SQLite"},
    {"random bytes", [](const QString& p) { writeFile(p, randomBytes(8192)); }, "non è un database SQLite"},
    {"a damaged SQLite file",
     [](const QString& p) { writeFile(p, QByteArray("SQLite format 3\0", 16) + randomBytes(8176)); },
     "danneggiato"},
    {"another program's SQLite database", anotherProgramsDatabase, "altro programma (tabelle: clienti, fatture)"},
};

class StartRefusalTest : public ::testing::TestWithParam<ForeignFile>
{
};

TEST_P(StartRefusalTest, TheStartIsRefusedWithItsReasonAndTheFileIsLeftAsItWas)
{
    // Where the embedded database should be, and a file named by the configuration.
    for (const bool named : {false, true}) {
        SCOPED_TRACE(named ? "named file" : "embedded database");
        QTemporaryDir dir;
        const QString path = dir.path() + (named ? "/negozio.db" : "/xvelario.db");
        GetParam().make(path);
        QFile original(path);
        ASSERT_TRUE(original.open(QIODevice::ReadOnly));
        const QByteArray bytes = original.readAll();
        original.close();

        host::HostOptions options;
        options.dataPath = dir.path();
        if (named)
            options.connectionText = "sqlite:" + path;
        host::Host h(options);
        testing::internal::CaptureStderr();
        EXPECT_FALSE(h.Initialize());
        const QString printed = QString::fromStdString(testing::internal::GetCapturedStderr());

        ASSERT_TRUE(original.open(QIODevice::ReadOnly));
        EXPECT_EQ(original.readAll(), bytes) << "the file must not change";
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList({path.section('/', -1), "xvelario.log"}))
            << "nothing may be created beside it";
        EXPECT_TRUE(printed.contains(GetParam().reason)) << printed.toStdString();
        EXPECT_TRUE(test::logOf(h).contains(GetParam().reason));
    }
}

INSTANTIATE_TEST_SUITE_P(Files, StartRefusalTest, ::testing::ValuesIn(kForeignFiles),
                         [](const ::testing::TestParamInfo<ForeignFile>& file) {
                             std::string name;
                             for (const char c : std::string(file.param.name))
                                 if (std::isalnum(static_cast<unsigned char>(c)))
                                     name += c;
                             return name;
                         });

TEST(EmptyDatabaseFileTest, AnEmptyFileLeftByAFailedStartIsSetUpAsANewDatabase)
{
    QTemporaryDir dir;
    writeFile(dir.path() + "/negozio.db", QByteArray());
    host::HostOptions options;
    options.dataPath = dir.path();
    options.connectionText = "sqlite:" + dir.path() + "/negozio.db";
    options.fillDemoData = false;
    host::Host h(options);
    ASSERT_TRUE(h.Initialize());
    EXPECT_EQ(h.OpenSchema(4, "movimenti").recordCount(), 61);
}

TEST(BusyDatabaseFileTest, AWorkstationStartingWhileAnotherHoldsTheFileWaitsInsteadOfCallingItDamaged)
{
    QTemporaryDir dir;
    host::HostOptions options;
    options.dataPath = dir.path();
    options.connectionText = "sqlite:" + dir.path() + "/negozio.db";
    options.fillDemoData = false;
    {
        host::Host first(options);
        ASSERT_TRUE(first.Initialize());
    }
    // Another workstation holds the whole file for a moment, as one opening it after a crash does.
    std::promise<void> held;
    std::thread other([&] {
        {
            QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "altra-postazione");
            db.setDatabaseName(dir.path() + "/negozio.db");
            db.open();
            QSqlQuery q(db);
            q.exec("PRAGMA locking_mode=EXCLUSIVE");
            q.exec("select count(*) from numeratori");
            held.set_value();
            QThread::msleep(300);
            db.close();
        }
        QSqlDatabase::removeDatabase("altra-postazione");
    });
    held.get_future().wait();
    host::Host second(options);
    EXPECT_TRUE(second.Initialize()) << test::logOf(second).toStdString();
    other.join();
}

} // namespace
