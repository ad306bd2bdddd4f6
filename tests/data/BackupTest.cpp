// SPDX-License-Identifier: MIT
#include "FileModes.h"
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Backup.h"
#include "data/Database.h"
#include "data/Schema.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSqlQuery>

#include <sys/stat.h>

namespace {

using namespace xv;
using data::Database;
using data::Engine;

const QDateTime kRestoredAt{QDate(2026, 11, 25), QTime(9, 30, 5)};

int modeOf(const QString& path)
{
    struct stat info
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return -1;
    return static_cast<int>(info.st_mode & 0777);
}

QByteArray digest(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

// An order as rows of movimenti, one a line.
void writeOrder(Database& db, int number, int lines)
{
    for (int line = 1; line <= lines; ++line)
        db.executeBound(
            QStringLiteral("insert into movimenti (numero, serie, documento, Nominativo, Descrizione1) "
                           "values (?, '2026', 'COMM', ?, ?)"),
            {QString::number(number), QStringLiteral("Rossi Anna"),
             QStringLiteral("Confetti riga %1").arg(line)});
}

qint64 linesOf(Database& db, int number)
{
    QSqlQuery query = db.executeBound(QStringLiteral("select count(*) from movimenti where numero = ?"),
                                      {QString::number(number)});
    return query.next() ? query.value(0).toLongLong() : -1;
}

TEST(BackupNames, TheDaysCopyIsNamedByItsDateYearFirst)
{
    EXPECT_EQ(data::backupFileName(QDate(2026, 3, 5), Engine::SQLite), "xvelario-2026-03-05.db");
    EXPECT_EQ(data::backupFileName(QDate(2027, 12, 31), Engine::PostgreSQL), "xvelario-2027-12-31.dump");
}

TEST(BackupRotation, OnlyTheOldestCopiesOfTheEngineBeyondThoseKeptAreRemoved)
{
    const QStringList files{"xvelario-2026-01-15.db",
                            "xvelario-2026-10-09.db",
                            "xvelario-2025-12-31.db",
                            "xvelario-2026-02-01.db",
                            "xvelario-2026-03-03.dump",
                            "xvelario-2026-01-03.dump",
                            "xvelario.db",
                            "note.txt",
                            "xvelario-2026-1-01.db",
                            "xvelario-2026-01-01.db.parziale"};
    const struct
    {
        Engine engine;
        int keep;
        QStringList removed;
    } cases[] = {
        {Engine::SQLite, 2, {"xvelario-2025-12-31.db", "xvelario-2026-01-15.db"}},
        {Engine::SQLite, 14, {}},
        {Engine::SQLite, 0, {"xvelario-2025-12-31.db", "xvelario-2026-01-15.db", "xvelario-2026-02-01.db"}},
        {Engine::PostgreSQL, 1, {"xvelario-2026-01-03.dump"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.keep);
        QTemporaryDir dir;
        for (const QString& name : files) {
            QFile file(dir.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
        QStringList removed;
        for (const QString& path : data::rotateBackups(dir.path(), c.engine, c.keep))
            removed << QFileInfo(path).fileName();
        EXPECT_EQ(removed, c.removed);
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), files.size() - c.removed.size());
    }
}

TEST(BackupModes, APrivateFolderIsTheOwnersAloneWhateverTheUmask)
{
    const test::Umask open(0);
    QTemporaryDir dir;
    const QString folder = dir.filePath("backup");
    ASSERT_TRUE(QDir().mkpath(folder));
    ::chmod(QFile::encodeName(folder).constData(), 0777);
    data::makePrivateFolder(folder);
    EXPECT_EQ(modeOf(folder), 0700);
    data::makePrivateFolder(folder + "/nuova");
    EXPECT_EQ(modeOf(folder + "/nuova"), 0700);
}

class SqliteRestoreTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Database db(m_database.config());
        data::migrate(db);
        writeOrder(db, 7, 3);
        data::backupSqlite(db, m_copy);
    }
    QString databasePath() const { return m_database.config().sqlitePath; }

    // Whatever the umask, the copy, the restored database and the mark of its use are the owner's alone.
    const test::Umask m_open{0};
    test::TestDatabase m_database{Engine::SQLite};
    QString m_copy = m_database.dataPath() + "copia.db";
};

TEST_F(SqliteRestoreTest, ARestoreBringsBackAnOrderDeletedAfterTheCopyAndKeepsTheReplacedFile)
{
    {
        Database db(m_database.config());
        db.executeBound("delete from movimenti where numero = '7'");
        writeOrder(db, 8, 2);
        ASSERT_EQ(linesOf(db, 7), 0);
    }
    // A copy of a database in use, as a shop may bring one: it works with a write-ahead log.
    Database(data::ConnectionConfig::fromText("sqlite:" + m_copy)).executeBound("PRAGMA journal_mode=WAL");
    const QString kept = data::restoreSqlite(m_copy, databasePath(), kRestoredAt);
    EXPECT_EQ(kept, databasePath() + ".sostituito-20261125-093005");
    const QStringList left = QDir(m_database.dataPath()).entryList({"test.db*"}, QDir::Files, QDir::Name);
    EXPECT_EQ(left, QStringList({"test.db", "test.db.in-uso", "test.db.sostituito-20261125-093005"}));
    for (const QString& file : {m_copy, databasePath(), data::UseMark::markPath(databasePath())})
        EXPECT_EQ(modeOf(file), 0600) << file.toStdString();
    {
        Database db(m_database.config());
        EXPECT_EQ(linesOf(db, 7), 3);
        EXPECT_EQ(linesOf(db, 8), 0);
    }
    const data::ConnectionConfig replaced = data::ConnectionConfig::fromText("sqlite:" + kept);
    Database old(replaced);
    EXPECT_EQ(linesOf(old, 7), 0);
    EXPECT_EQ(linesOf(old, 8), 2);
}

TEST_F(SqliteRestoreTest, ACopyThatIsNotAWholeDatabaseOfThisProgramIsRefusedAndTheDatabaseLeftUntouched)
{
    struct Case
    {
        const char* what;
        std::function<void(const QString&)> spoil;
        const char* reason;
    };
    const Case cases[] = {
        {"damaged pages",
         [](const QString& path) {
             QFile file(path);
             ASSERT_TRUE(file.open(QIODevice::ReadWrite));
             const qint64 size = file.size();
             ASSERT_GT(size, 8192);
             // Every page after the first two overwritten: the tables' trees point at nonsense.
             file.seek(8192);
             file.write(QByteArray(size - 8192, '\x5a'));
         },
         "danneggiato"},
        {"not a database",
         [](const QString& path) {
             QFile file(path);
             ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
             file.write("numero;cliente\n7;Rossi\n");
         },
         "non è un database SQLite"},
        {"another program's",
         [](const QString& path) {
             QFile::remove(path);
             Database other(data::ConnectionConfig::fromText("sqlite:" + path));
             other.executeBound("create table clienti (nome text)");
         },
         "di un altro programma"},
        {"a newer version",
         [](const QString& path) {
             Database newer(data::ConnectionConfig::fromText("sqlite:" + path));
             newer.executeBound("insert into versione_schema (versione) values (?)",
                                {data::latestSchemaVersion() + 1});
             newer.executeBound("PRAGMA journal_mode=DELETE");
         },
         "più recente"},
        {"missing", [](const QString& path) { QFile::remove(path); }, "non esiste"},
    };
    {
        // The current database is in use as the form leaves it: with its write-ahead log.
        Database db(m_database.config());
        writeOrder(db, 9, 4);
    }
    const QByteArray before = digest(databasePath());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QString spoilt = m_database.dataPath() + "rovinata.db";
        QFile::remove(spoilt);
        ASSERT_TRUE(QFile::copy(m_copy, spoilt));
        c.spoil(spoilt);
        try {
            data::restoreSqlite(spoilt, databasePath(), kRestoredAt);
            ADD_FAILURE() << "the copy was taken";
        } catch (const common::RuntimeError& e) {
            EXPECT_TRUE(e.description().contains(QString::fromUtf8(c.reason)))
                << e.description().toStdString();
            EXPECT_TRUE(e.description().contains("non è stato modificato")) << e.description().toStdString();
        }
        EXPECT_EQ(digest(databasePath()), before);
        const QStringList left = QDir(m_database.dataPath()).entryList({"test.db.*"}, QDir::Files);
        EXPECT_EQ(left, QStringList{"test.db.in-uso"});
    }
    Database db(m_database.config());
    EXPECT_EQ(linesOf(db, 9), 4);
}

TEST_F(SqliteRestoreTest, ARestoreIsRefusedWhileAProgramHoldsTheDatabaseAndAProgramCannotOpenItMeanwhile)
{
    const QByteArray before = digest(databasePath());
    {
        const auto program = data::UseMark::take(databasePath(), data::UseMark::Kind::Shared);
        ASSERT_NE(program, nullptr);
        const auto another = data::UseMark::take(databasePath(), data::UseMark::Kind::Shared);
        EXPECT_NE(another, nullptr) << "two workstations on one file both hold it";
        try {
            data::restoreSqlite(m_copy, databasePath(), kRestoredAt);
            ADD_FAILURE() << "restored under a running program";
        } catch (const common::RuntimeError& e) {
            EXPECT_TRUE(e.description().contains("è aperto")) << e.description().toStdString();
        }
        EXPECT_EQ(digest(databasePath()), before);
    }
    const auto restore = data::UseMark::take(databasePath(), data::UseMark::Kind::Exclusive);
    ASSERT_NE(restore, nullptr);
    EXPECT_EQ(data::UseMark::take(databasePath(), data::UseMark::Kind::Shared), nullptr);
}

// A database of its own on the test server, dropped at the end.
class ScratchDatabase
{
public:
    explicit ScratchDatabase(const data::ConnectionConfig& server) : m_admin(server)
    {
        m_name = QStringLiteral("xv_ripristino_%1").arg(QRandomGenerator::global()->generate(), 0, 16);
        m_admin.executeBound("create database " + m_name);
    }
    ~ScratchDatabase() { m_admin.executeBound("drop database if exists " + m_name + " with (force)"); }
    ScratchDatabase(const ScratchDatabase&) = delete;
    ScratchDatabase& operator=(const ScratchDatabase&) = delete;
    const QString& name() const { return m_name; }

private:
    Database m_admin;
    QString m_name;
};

class PostgresBackupTest : public test::EngineTest
{
protected:
    // The program's schema holding order 7 of three lines, dumped.
    QString dumpOfOrder7()
    {
        Database db(database().config());
        data::migrate(db);
        writeOrder(db, 7, 3);
        data::dumpPostgres(database().config(), m_dump);
        return m_dump;
    }
    QTemporaryDir m_dir;
    QString m_dump = m_dir.filePath("negozio.dump");
};

TEST_P(PostgresBackupTest, ARestoreIntoAnEmptyDatabaseBringsBackAnOrderDeletedAfterTheDump)
{
    // Whatever the umask, what the backups write is its owner's alone.
    const test::Umask open(0);
    const QString dump = dumpOfOrder7();
    const data::ConnectionConfig config = database().config();
    Database(config).executeBound("delete from movimenti where numero = '7'");
    EXPECT_EQ(modeOf(dump), 0600);
    EXPECT_EQ(data::postgresDumpProblem(dump), QString());

    data::ConnectionConfig server = config;
    server.schema.clear();
    const ScratchDatabase scratch(server);
    data::ConnectionConfig target = config;
    target.databaseName = scratch.name();
    data::restorePostgres(target, dump);
    Database restored(target);
    EXPECT_EQ(linesOf(restored, 7), 3);
    EXPECT_EQ(data::schemaVersion(restored), data::latestSchemaVersion());
    // The search indexes came back with the extension they use.
    QSqlQuery found = restored.executeBound("select count(*) from pg_indexes where indexname = ?",
                                            {QStringLiteral("ix_movimenti_nominativo_trgm")});
    ASSERT_TRUE(found.next());
    EXPECT_EQ(found.value(0).toInt(), 1);
}

TEST_P(PostgresBackupTest, ARestoreOverTheProgramsDataOrFromAFileThatIsNoDumpOfItIsRefused)
{
    const QString dump = dumpOfOrder7();
    const data::ConnectionConfig config = database().config();
    try {
        data::restorePostgres(config, dump);
        ADD_FAILURE() << "restored over the program's data";
    } catch (const common::RuntimeError& e) {
        EXPECT_TRUE(e.description().contains("contiene già")) << e.description().toStdString();
    }
    Database db(config);
    EXPECT_EQ(linesOf(db, 7), 3);

    const QString text = m_dir.filePath("note.dump");
    QFile file(text);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("non una copia\n");
    file.close();
    EXPECT_TRUE(data::postgresDumpProblem(text).contains("non è una copia di PostgreSQL"));
    const QString foreign = m_dir.filePath("altro.dump");
    data::ConnectionConfig other = config;
    db.executeBound("create schema " + config.schema + "_altro");
    db.executeBound("create table " + config.schema + "_altro.clienti (x integer)");
    other.schema = config.schema + "_altro";
    data::dumpPostgres(other, foreign);
    db.executeBound("drop schema " + other.schema + " cascade");
    EXPECT_TRUE(data::postgresDumpProblem(foreign).contains("manca la tabella versione_schema"))
        << data::postgresDumpProblem(foreign).toStdString();
}

INSTANTIATE_TEST_SUITE_P(PostgreSQL, PostgresBackupTest, ::testing::Values(Engine::PostgreSQL),
                         test::engineName);

} // namespace
