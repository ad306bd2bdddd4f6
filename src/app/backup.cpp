// SPDX-License-Identifier: MIT
// xvelario-backup: a copy of the shop's database on demand, or the database brought back from one.
//   xvelario-backup                 today's copy in the data folder's backup/, the oldest beyond those kept
//                                   removed
//   xvelario-backup FILE            a copy into FILE
//   xvelario-backup --restore FILE  the database replaced by the copy in FILE
// The database is the program's own: XVELARIO_DATA, XVELARIO_DB and xvelario.conf name it as for the form.
#include "data/Backup.h"
#include "common/PrivateFiles.h"
#include "common/RuntimeError.h"
#include "data/SqliteFile.h"
#include "host/Host.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStringList>

#include <cstdio>

using namespace xv;

namespace {

constexpr int kUsageError = 2;

void say(FILE* stream, const QString& text)
{
    std::fprintf(stream, "%s\n", text.toLocal8Bit().constData());
}

int usage()
{
    say(stderr,
        QStringLiteral("uso: xvelario-backup [FILE]\n"
                       "     xvelario-backup --restore FILE\n"
                       "Senza FILE la copia va nella cartella backup/ dei dati, con la data di oggi."));
    return kUsageError;
}

int takeBackup(const host::HostOptions& options, const data::ConnectionConfig& config, QString target)
{
    const bool daily = target.isEmpty();
    const QString folder = host::backupFolder(options);
    if (daily) {
        data::makePrivateFolder(folder);
        target = folder + QLatin1Char('/') + data::backupFileName(QDate::currentDate(), config.engine);
    }
    int keep = 0;
    if (config.engine == data::Engine::SQLite) {
        const QFileInfo file(config.sqlitePath);
        if (!file.isFile() || file.size() == 0)
            throw common::RuntimeError(common::ErrorNumber::PathNotFound,
                                       QStringLiteral("Il database %1 non esiste").arg(config.sqlitePath));
        if (const QString refusal = data::foreignFileReason(config.sqlitePath); !refusal.isEmpty())
            throw common::RuntimeError(common::ErrorNumber::DatabaseError, refusal);
        data::Database db(config);
        data::backupSqlite(db, target);
        if (daily)
            keep = host::backupsToKeep(db);
    } else {
        data::dumpPostgres(config, target);
        if (daily) {
            data::Database db(config);
            keep = host::backupsToKeep(db);
        }
    }
    say(stdout, QStringLiteral("Copia di %1 scritta in %2").arg(config.describe(), target));
    if (daily) {
        for (const QString& removed : data::rotateBackups(folder, config.engine, keep))
            say(stdout, QStringLiteral("Rimossa la copia più vecchia %1").arg(removed));
    }
    return 0;
}

int restore(const data::ConnectionConfig& config, const QString& file)
{
    if (config.engine == data::Engine::SQLite) {
        // A new machine gets its data folder from the restore, as private as the program makes it.
        const QString folder = QFileInfo(config.sqlitePath).absolutePath();
        if (!QFileInfo::exists(folder))
            data::makePrivateFolder(folder);
        const QString kept = data::restoreSqlite(file, config.sqlitePath, QDateTime::currentDateTime());
        say(stdout, QStringLiteral("Database %1 ripristinato dalla copia %2").arg(config.sqlitePath, file));
        if (!kept.isEmpty())
            say(stdout, QStringLiteral("Il database sostituito è conservato in %1").arg(kept));
    } else {
        data::restorePostgres(config, file);
        say(stdout, QStringLiteral("Database %1 ripristinato dalla copia %2").arg(config.describe(), file));
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    // A copy holds every customer of the shop: the owner's alone, whatever the session's umask.
    xv::common::restrictNewFilesToOwner();
    // Only what the operator must read reaches the terminal, unless QT_LOGGING_RULES asks for more.
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        QLoggingCategory::setFilterRules(QStringLiteral("xv.*.debug=false\nxv.*.info=false"));
    QCoreApplication app(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.contains(QStringLiteral("--help")) || arguments.contains(QStringLiteral("-h"))) {
        usage();
        return 0;
    }
    const bool restoring = !arguments.isEmpty() && arguments.first() == QLatin1String("--restore");
    if (restoring)
        arguments.removeFirst();
    if (arguments.size() > 1 || (restoring && arguments.isEmpty()) ||
        (!arguments.isEmpty() && arguments.first().startsWith(QLatin1Char('-'))))
        return usage();
    try {
        const host::HostOptions options = host::HostOptions::fromEnvironment();
        const data::ConnectionConfig config = options.connection();
        const QString file =
            arguments.isEmpty() ? QString() : QFileInfo(arguments.first()).absoluteFilePath();
        return restoring ? restore(config, file) : takeBackup(options, config, file);
    } catch (...) {
        say(stderr, QStringLiteral("xvelario-backup: %1")
                        .arg(common::describe(std::current_exception()).description));
        return 1;
    }
}
