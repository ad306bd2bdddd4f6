// SPDX-License-Identifier: MIT
#pragma once

#include "data/Database.h"

#include <QDate>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <memory>

namespace xv::data {

// Every failure below throws a common::RuntimeError whose text the operator or the shop's technician can
// act on, in Italian; a refused restore says that nothing was changed.

// The name of the day's copy in the backup folder: xvelario-2026-11-25.db on SQLite, .dump on PostgreSQL.
QString backupFileName(const QDate& day, Engine engine);

// The backup folder, made if missing and readable by its owner only (0700) whatever the umask.
void makePrivateFolder(const QString& folder);

// Removes the oldest copies of the given engine's kind from the folder so that `keep` are left (at least
// one: the newest is never removed). Only files named as backupFileName names them are looked at. Answers
// the paths removed.
QStringList rotateBackups(const QString& folder, Engine engine, int keep);

// A consistent copy of the open SQLite database, taken with the engine's online backup while other
// connections and processes go on writing: it holds what was committed when it began. It is written beside
// the target, made durable and renamed over it, so the target is either the old copy or the whole new one;
// the copy is a single file (no write-ahead log) readable by its owner only.
void backupSqlite(Database& db, const QString& target);
// The same from the database's file, through a connection of the copy's own, so that it can run on a thread
// of its own while the program goes on with its work.
void backupSqliteFile(const QString& databasePath, const QString& target);

// Why the SQLite file cannot be taken for this program's database, read without changing it; empty when it
// can: it passes the engine's integrity check and holds this program's tables at a schema version this
// program knows.
QString sqliteBackupProblem(const QString& path);

// A sign left beside an SQLite database while the program works on it (an advisory lock on the file
// `<database>.in-uso`): the program holds it shared, a restore exclusively, so that a restore never
// replaces the file under a running program and a program never opens a file being replaced.
class UseMark
{
public:
    ~UseMark();
    UseMark(const UseMark&) = delete;
    UseMark& operator=(const UseMark&) = delete;

    enum class Kind { Shared, Exclusive };
    // Null when another holds the mark in a way that excludes this kind. A mark file that cannot be made
    // (a read-only folder) throws.
    static std::unique_ptr<UseMark> take(const QString& databasePath, Kind kind);
    static QString markPath(const QString& databasePath);

private:
    explicit UseMark(int fd) : m_fd(fd) {}
    int m_fd = -1;
};

// Replaces the SQLite database at databasePath with the copy in `backup`, after checking the copy as
// sqliteBackupProblem does. Refused while a program holds the database's use mark. The replaced file is
// kept beside it as `<database>.sostituito-<yyyyMMdd-HHmmss>` (with its write-ahead log, if it had one);
// answers that path, empty when there was no database to replace. The database file is never missing nor
// half-written: the checked copy is made durable beside it and renamed over it.
QString restoreSqlite(const QString& backup, const QString& databasePath, const QDateTime& now);

// PostgreSQL: the database (only the configured schema when one is named) written by pg_dump in its custom
// format to target, through a file beside it renamed when complete. The connection goes to pg_dump in its
// environment, so the password never shows on a command line.
void dumpPostgres(const ConnectionConfig& config, const QString& target);

// Why the file cannot be restored on PostgreSQL: not a pg_dump archive in the custom format, or one without
// this program's tables. Empty when it can.
QString postgresDumpProblem(const QString& path);

// Restores a dump made by dumpPostgres into the configured database, which must not hold this program's
// tables yet (in the configured schema, or the default one); all of it or nothing, in one transaction.
void restorePostgres(const ConnectionConfig& config, const QString& dump);

} // namespace xv::data
