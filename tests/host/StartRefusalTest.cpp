// SPDX-License-Identifier: MIT
#include "host/Host.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <functional>
#include <unistd.h>

namespace {

using namespace xv;

// What the program writes on its standard error while this lives.
class StderrCapture
{
public:
    StderrCapture()
    {
        std::fflush(stderr);
        m_saved = ::dup(STDERR_FILENO);
        m_file = std::tmpfile();
        ::dup2(::fileno(m_file), STDERR_FILENO);
    }
    ~StderrCapture()
    {
        restore();
        std::fclose(m_file);
    }
    QString text()
    {
        restore();
        std::rewind(m_file);
        QByteArray bytes;
        char buffer[512];
        for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, m_file)) > 0;)
            bytes.append(buffer, static_cast<qsizetype>(n));
        return QString::fromUtf8(bytes);
    }

private:
    void restore()
    {
        if (m_saved < 0)
            return;
        std::fflush(stderr);
        ::dup2(m_saved, STDERR_FILENO);
        ::close(m_saved);
        m_saved = -1;
    }
    int m_saved = -1;
    std::FILE* m_file = nullptr;
};

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
        StderrCapture err;
        EXPECT_FALSE(h.Initialize());
        const QString printed = err.text();

        ASSERT_TRUE(original.open(QIODevice::ReadOnly));
        EXPECT_EQ(original.readAll(), bytes) << "the file must not change";
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList({path.section('/', -1), "xvelario.log"}))
            << "nothing may be created beside it";
        EXPECT_TRUE(printed.contains(GetParam().reason)) << printed.toStdString();
        QFile log(h.logFilePath());
        ASSERT_TRUE(log.open(QIODevice::ReadOnly));
        EXPECT_TRUE(QString::fromUtf8(log.readAll()).contains(GetParam().reason));
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

} // namespace
