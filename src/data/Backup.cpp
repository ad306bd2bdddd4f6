// SPDX-License-Identifier: MIT
#include "Backup.h"

#include "common/PrivateFiles.h"
#include "common/RuntimeError.h"
#include "data/NativeHandle.h"
#include "data/Schema.h"
#include "data/SqliteFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QSqlQuery>
#include <QThread>

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace xv::data {

using common::ErrorNumber;
using common::RuntimeError;

namespace {

constexpr mode_t kPrivateFile = 0600;

// The tables every version of the schema has; a file without one of them is not this program's database.
const char* const kOurTables[] = {"versione_schema", "movimenti", "numeratori",   "controparti",   "med",
                                  "Produzione",      "Utenti",    "impostazioni", "blocchi_record"};

[[noreturn]] void fail(const QString& text)
{
    throw RuntimeError(ErrorNumber::DatabaseError, text);
}

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

QByteArray nativePath(const QString& path)
{
    return QFile::encodeName(path);
}

// A new empty file only its owner can read, whatever the umask: the engine or a tool then writes into it
// and keeps its mode.
void createPrivateFile(const QString& path)
{
    ::unlink(nativePath(path).constData());
    const int fd =
        ::open(nativePath(path).constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kPrivateFile);
    if (fd < 0)
        fail(QStringLiteral("Impossibile creare il file %1: %2").arg(path, systemError()));
    const bool privateMode = ::fchmod(fd, kPrivateFile) == 0;
    ::close(fd);
    if (!privateMode)
        fail(QStringLiteral("Impossibile rendere privato il file %1: %2").arg(path, systemError()));
}

void syncPath(const QString& path, bool folder)
{
    const int fd =
        ::open(nativePath(path).constData(), (folder ? O_RDONLY | O_DIRECTORY : O_RDWR) | O_CLOEXEC);
    if (fd < 0)
        fail(QStringLiteral("Impossibile aprire %1: %2").arg(path, systemError()));
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    if (!synced)
        fail(QStringLiteral("Impossibile scrivere su disco %1: %2").arg(path, systemError()));
}

// The finished file takes the target's name in one step, and the name change itself is made durable.
void renameDurably(const QString& from, const QString& to)
{
    syncPath(from, false);
    if (::chmod(nativePath(from).constData(), kPrivateFile) != 0 ||
        ::rename(nativePath(from).constData(), nativePath(to).constData()) != 0) {
        const QString why = systemError();
        QFile::remove(from);
        fail(QStringLiteral("Impossibile scrivere %1: %2").arg(to, why));
    }
    syncPath(QFileInfo(to).absolutePath(), true);
}

QString sqliteMessage(sqlite3* handle, int rc)
{
    return handle ? QString::fromUtf8(sqlite3_errmsg(handle)) : QString::fromUtf8(sqlite3_errstr(rc));
}

// A connection of the engine's own on one file, closed however the caller leaves.
class SqliteFile
{
public:
    SqliteFile(const QString& path, int flags)
    {
        m_rc = sqlite3_open_v2(nativePath(path).constData(), &m_handle, flags, nullptr);
        if (m_handle)
            sqlite3_busy_timeout(m_handle, 5000);
    }
    ~SqliteFile() { sqlite3_close_v2(m_handle); }
    SqliteFile(const SqliteFile&) = delete;
    SqliteFile& operator=(const SqliteFile&) = delete;

    bool opened() const { return m_rc == SQLITE_OK; }
    sqlite3* handle() const { return m_handle; }
    QString error() const { return sqliteMessage(m_handle, m_rc); }

    // The first column of every row; an error of the engine is answered in `error`.
    QStringList column(const char* sql, QString& error) const
    {
        QStringList values;
        sqlite3_stmt* statement = nullptr;
        int rc = sqlite3_prepare_v2(m_handle, sql, -1, &statement, nullptr);
        if (rc == SQLITE_OK) {
            while ((rc = sqlite3_step(statement)) == SQLITE_ROW) {
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
                values << (text ? QString::fromUtf8(text) : QString());
            }
        }
        if (rc != SQLITE_DONE)
            error = QString::fromUtf8(sqlite3_errmsg(m_handle));
        sqlite3_finalize(statement);
        return values;
    }

private:
    sqlite3* m_handle = nullptr;
    int m_rc = SQLITE_OK;
};

QProcessEnvironment postgresEnvironment(const ConnectionConfig& config)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PGHOST"), config.host);
    environment.insert(QStringLiteral("PGPORT"), QString::number(config.port));
    environment.insert(QStringLiteral("PGDATABASE"), config.databaseName);
    if (!config.user.isEmpty())
        environment.insert(QStringLiteral("PGUSER"), config.user);
    if (config.password.isEmpty())
        environment.remove(QStringLiteral("PGPASSWORD"));
    else
        environment.insert(QStringLiteral("PGPASSWORD"), config.password);
    return environment;
}

struct ToolRun
{
    bool ok = false;
    QByteArray output;
    QString error;
};

ToolRun runTool(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    ToolRun run;
    if (!process.waitForStarted()) {
        run.error = QStringLiteral("impossibile avviare %1 (%2): installare il pacchetto postgresql-client")
                        .arg(program, process.errorString());
        return run;
    }
    process.closeWriteChannel();
    // A dump or a restore of a large shop takes as long as it takes.
    process.waitForFinished(-1);
    run.output = process.readAllStandardOutput();
    run.error = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
    run.ok = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    if (!run.ok && run.error.isEmpty())
        run.error = QStringLiteral("%1 è terminato con il codice %2").arg(program).arg(process.exitCode());
    return run;
}

} // namespace

QString backupFileName(const QDate& day, Engine engine)
{
    return QStringLiteral("xvelario-%1.%2")
        .arg(day.toString(QStringLiteral("yyyy-MM-dd")),
             engine == Engine::SQLite ? QStringLiteral("db") : QStringLiteral("dump"));
}

void makePrivateFolder(const QString& folder)
{
    if (!common::makePrivateFolder(folder))
        fail(QStringLiteral("Impossibile creare la cartella privata %1: %2").arg(folder, systemError()));
}

QStringList rotateBackups(const QString& folder, Engine engine, int keep)
{
    const QRegularExpression name(
        QStringLiteral("^xvelario-\\d{4}-\\d{2}-\\d{2}\\.%1$")
            .arg(engine == Engine::SQLite ? QStringLiteral("db") : QStringLiteral("dump")));
    QStringList copies;
    for (const QString& file : QDir(folder).entryList(QDir::Files, QDir::Name)) {
        if (name.match(file).hasMatch())
            copies << file;
    }
    // The names carry the date year first, so their order is the days' order.
    QStringList removed;
    const qsizetype excess = copies.size() - std::max(keep, 1);
    for (qsizetype i = 0; i < excess; ++i) {
        const QString path = QDir(folder).filePath(copies.at(i));
        if (QFile::remove(path))
            removed << path;
    }
    return removed;
}

namespace {

// The pages of an open database into target, through a private partial file renamed when complete.
void copySqlite(sqlite3* source, const QString& sourcePath, const QString& target)
{
    const QString partial = target + QStringLiteral(".parziale");
    createPrivateFile(partial);
    {
        SqliteFile copy(partial, SQLITE_OPEN_READWRITE);
        if (!copy.opened()) {
            QFile::remove(partial);
            fail(QStringLiteral("Impossibile scrivere la copia %1: %2").arg(partial, copy.error()));
        }
        sqlite3_backup* backup = sqlite3_backup_init(copy.handle(), "main", source, "main");
        if (!backup) {
            const QString why = sqliteMessage(copy.handle(), SQLITE_ERROR);
            QFile::remove(partial);
            fail(QStringLiteral("Impossibile iniziare la copia di %1: %2").arg(sourcePath, why));
        }
        // All the pages in one step: the copy is read in one read transaction, so it is one moment of the
        // database whatever other processes commit meanwhile. A writer holding the file for a moment (a
        // checkpoint, a recovery) is waited for.
        int rc = SQLITE_OK;
        for (int attempt = 0; attempt < 200; ++attempt) {
            rc = sqlite3_backup_step(backup, -1);
            if (rc != SQLITE_BUSY && rc != SQLITE_LOCKED)
                break;
            QThread::msleep(50);
        }
        sqlite3_backup_finish(backup);
        QString why;
        if (rc == SQLITE_DONE) {
            // The source works with a write-ahead log; the copy must be one file a shop can carry away.
            copy.column("PRAGMA journal_mode=DELETE", why);
        } else {
            why = QString::fromUtf8(sqlite3_errstr(rc));
        }
        if (!why.isEmpty()) {
            QFile::remove(partial);
            fail(QStringLiteral("Copia di %1 non riuscita: %2").arg(sourcePath, why));
        }
    }
    renameDurably(partial, target);
}

} // namespace

void backupSqlite(Database& db, const QString& target)
{
    sqlite3* source = sqliteHandle(db.handle());
    if (!source)
        fail(QStringLiteral("La copia con il motore SQLite vale solo per un database SQLite aperto"));
    copySqlite(source, db.config().sqlitePath, target);
}

void backupSqliteFile(const QString& databasePath, const QString& target)
{
    // A connection of the copy's own: it may run on any thread, beside the program's work. It only reads,
    // but is opened for writing so that it can share the write-ahead log's index with the others.
    SqliteFile source(databasePath, SQLITE_OPEN_READWRITE);
    if (!source.opened())
        fail(QStringLiteral("Impossibile aprire %1 per la copia: %2").arg(databasePath, source.error()));
    copySqlite(source.handle(), databasePath, target);
}

QString sqliteBackupProblem(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("Il file %1 non esiste").arg(path);
    // What the program itself would refuse to open (not SQLite, unreadable, another program's) is refused
    // with the same words; an empty file is no copy of anything.
    if (const QString foreign = foreignFileReason(path); !foreign.isEmpty())
        return foreign;
    if (info.size() == 0)
        return QStringLiteral("Il file %1 è vuoto").arg(path);

    const SqliteFile candidate(path, SQLITE_OPEN_READONLY);
    if (!candidate.opened())
        return QStringLiteral("Impossibile aprire il file %1: %2").arg(path, candidate.error());
    QString error;
    const QStringList integrity = candidate.column("PRAGMA integrity_check", error);
    if (!error.isEmpty())
        return QStringLiteral("Il file %1 è danneggiato: %2").arg(path, error);
    if (integrity != QStringList{QStringLiteral("ok")})
        return QStringLiteral("Il file %1 è danneggiato: %2")
            .arg(path, QStringList(integrity.mid(0, 3)).join(QStringLiteral("; ")));

    const QStringList tables = candidate.column("select name from sqlite_master where type = 'table'", error);
    for (const char* table : kOurTables) {
        if (!tables.contains(QLatin1String(table), Qt::CaseInsensitive))
            return QStringLiteral("Il file %1 non è un database di xVELARIO: manca la tabella %2")
                .arg(path, QLatin1String(table));
    }
    const QStringList version = candidate.column("select max(versione) from versione_schema", error);
    bool numeric = false;
    const int number = version.value(0).toInt(&numeric);
    if (!error.isEmpty() || !numeric || number < 1)
        return QStringLiteral("Il file %1 non dice la versione dei suoi dati").arg(path);
    if (number > latestSchemaVersion())
        return QStringLiteral("Il file %1 è di una versione più recente del programma (%2 > %3)")
            .arg(path)
            .arg(number)
            .arg(latestSchemaVersion());
    return {};
}

UseMark::~UseMark()
{
    // Closing the file lets the lock go.
    ::close(m_fd);
}

QString UseMark::markPath(const QString& databasePath)
{
    return databasePath + QStringLiteral(".in-uso");
}

std::unique_ptr<UseMark> UseMark::take(const QString& databasePath, Kind kind)
{
    const QString path = markPath(databasePath);
    const int fd = ::open(nativePath(path).constData(), O_CREAT | O_RDWR | O_CLOEXEC, kPrivateFile);
    if (fd < 0)
        fail(QStringLiteral("Impossibile creare il file %1: %2").arg(path, systemError()));
    ::fchmod(fd, kPrivateFile);
    if (::flock(fd, (kind == Kind::Shared ? LOCK_SH : LOCK_EX) | LOCK_NB) != 0) {
        const int why = errno;
        ::close(fd);
        if (why == EWOULDBLOCK)
            return nullptr;
        errno = why;
        fail(QStringLiteral("Impossibile bloccare il file %1: %2").arg(path, systemError()));
    }
    return std::unique_ptr<UseMark>(new UseMark(fd));
}

QString restoreSqlite(const QString& backup, const QString& databasePath, const QDateTime& now)
{
    const auto mark = UseMark::take(databasePath, UseMark::Kind::Exclusive);
    if (!mark)
        fail(QStringLiteral("xVELARIO è aperto sul database %1: chiudere il programma su questa postazione "
                            "prima del ripristino. Il database non è stato modificato.")
                 .arg(databasePath));
    const QString unchanged = QStringLiteral(" Il database non è stato modificato.");
    if (!QFileInfo(backup).isFile())
        fail(QStringLiteral("Copia rifiutata. Il file %1 non esiste.").arg(backup) + unchanged);

    // The copy is checked where it will be used, so that what passed is the very file that takes the
    // database's place; the file named is only read.
    const QString incoming = databasePath + QStringLiteral(".ripristino");
    const auto dropCheckLeftovers = [&incoming] {
        // Opening a file that works with a write-ahead log, even to read it, leaves an empty log and its
        // index beside it.
        QFile::remove(incoming + QStringLiteral("-wal"));
        QFile::remove(incoming + QStringLiteral("-shm"));
    };
    createPrivateFile(incoming);
    {
        QFile from(backup);
        QFile to(incoming);
        if (!from.open(QIODevice::ReadOnly) || !to.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            QFile::remove(incoming);
            fail(QStringLiteral("Impossibile copiare %1 in %2.").arg(backup, incoming) + unchanged);
        }
        while (!from.atEnd()) {
            const QByteArray block = from.read(1 << 20);
            if (block.isEmpty() || to.write(block) != block.size()) {
                QFile::remove(incoming);
                fail(QStringLiteral("Impossibile copiare %1 in %2: %3.")
                         .arg(backup, incoming, to.errorString()) +
                     unchanged);
            }
        }
    }
    QString problem = sqliteBackupProblem(incoming);
    dropCheckLeftovers();
    if (!problem.isEmpty()) {
        QFile::remove(incoming);
        fail(QStringLiteral("Copia rifiutata. %1.").arg(problem.replace(incoming, backup)) + unchanged);
    }
    syncPath(incoming, false);

    QString kept;
    const QByteArray database = nativePath(databasePath);
    if (QFileInfo::exists(databasePath)) {
        kept =
            databasePath + QStringLiteral(".sostituito-") + now.toString(QStringLiteral("yyyyMMdd-HHmmss"));
        // The replaced file keeps its name until the new one takes it, so the database is never missing;
        // what its log still held goes with it, or it would be played over the restored file.
        if (::link(database.constData(), nativePath(kept).constData()) != 0) {
            const QString why = systemError();
            QFile::remove(incoming);
            fail(QStringLiteral("Impossibile conservare %1 come %2: %3.").arg(databasePath, kept, why) +
                 unchanged);
        }
        const QString log = databasePath + QStringLiteral("-wal");
        if (QFileInfo::exists(log) && ::rename(nativePath(log).constData(),
                                               nativePath(kept + QStringLiteral("-wal")).constData()) != 0) {
            const QString why = systemError();
            QFile::remove(kept);
            QFile::remove(incoming);
            fail(QStringLiteral("Impossibile spostare %1: %2.").arg(log, why) + unchanged);
        }
        QFile::remove(databasePath + QStringLiteral("-shm"));
    }
    renameDurably(incoming, databasePath);
    return kept;
}

void dumpPostgres(const ConnectionConfig& config, const QString& target)
{
    const QString partial = target + QStringLiteral(".parziale");
    createPrivateFile(partial);
    QStringList arguments{QStringLiteral("--format=custom"), QStringLiteral("--file=") + partial};
    // A schema named for the shop is its whole data; the other schemas of the database belong to others.
    if (!config.schema.isEmpty())
        arguments << QStringLiteral("--schema=") + config.schema;
    const ToolRun run = runTool(QStringLiteral("pg_dump"), arguments, postgresEnvironment(config));
    if (!run.ok) {
        QFile::remove(partial);
        fail(QStringLiteral("Copia di %1 non riuscita: %2").arg(config.describe(), run.error));
    }
    renameDurably(partial, target);
}

QString postgresDumpProblem(const QString& path)
{
    if (!QFileInfo(path).isFile())
        return QStringLiteral("Il file %1 non esiste").arg(path);
    const ToolRun run = runTool(QStringLiteral("pg_restore"), {QStringLiteral("--list"), path},
                                QProcessEnvironment::systemEnvironment());
    if (!run.ok)
        return QStringLiteral("Il file %1 non è una copia di PostgreSQL leggibile: %2").arg(path, run.error);
    // A table's entry in the list reads "<id>; <oid> <oid> TABLE <schema> <name> <owner>".
    const QString list = QString::fromUtf8(run.output);
    for (const char* table : kOurTables) {
        const QRegularExpression entry(
            QStringLiteral("\\sTABLE \\S+ %1 ").arg(QString::fromLatin1(table).toLower()),
            QRegularExpression::CaseInsensitiveOption);
        if (!entry.match(list).hasMatch())
            return QStringLiteral("Il file %1 non è una copia di xVELARIO: manca la tabella %2")
                .arg(path, QLatin1String(table));
    }
    return {};
}

void restorePostgres(const ConnectionConfig& config, const QString& dump)
{
    const QString unchanged = QStringLiteral(" Il database non è stato modificato.");
    if (const QString problem = postgresDumpProblem(dump); !problem.isEmpty())
        fail(QStringLiteral("Copia rifiutata. %1.").arg(problem) + unchanged);
    {
        Database target(config);
        QStringList names;
        for (const char* table : kOurTables)
            names << QString::fromLatin1(table).toLower();
        QSqlQuery found = target.executeBound(
            QStringLiteral(
                "select count(*) from pg_tables where schemaname = coalesce(nullif(cast(? as text), ''), "
                "current_schema()) and lower(tablename) = any(string_to_array(cast(? as text), ','))"),
            {config.schema, names.join(QLatin1Char(','))});
        if (!found.next() || found.value(0).toInt() != 0)
            fail(
                QStringLiteral("Il database %1 contiene già i dati di xVELARIO: il ripristino va fatto in un "
                               "database vuoto.")
                    .arg(config.describe()) +
                unchanged);
        // A copy of one schema leaves out the extension its search indexes use, which lives in the shared
        // schema; the program makes it there in the same way.
        target.executeBound(QStringLiteral("create extension if not exists pg_trgm with schema public"));
    }
    const ToolRun run =
        runTool(QStringLiteral("pg_restore"),
                {QStringLiteral("--single-transaction"), QStringLiteral("--exit-on-error"),
                 QStringLiteral("--no-owner"), QStringLiteral("--dbname=") + config.databaseName, dump},
                postgresEnvironment(config));
    if (!run.ok)
        fail(QStringLiteral("Ripristino in %1 non riuscito: %2.").arg(config.describe(), run.error) +
             unchanged);
    // pg_restore leaves the planner without the tables' figures until autovacuum comes by.
    Database restored(config);
    refreshPlannerStatistics(restored);
}

} // namespace xv::data
