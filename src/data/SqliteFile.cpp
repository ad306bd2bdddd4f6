// SPDX-License-Identifier: MIT
#include "SqliteFile.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <sqlite3.h>

namespace xv::data {

namespace {

// Tables are listed, read only: opening the file for our own use would already change its header
// (the journal mode), and creating our tables in it would mix two programs' data.
QString tablesOf(const QString& path, QStringList& tables)
{
    sqlite3* handle = nullptr;
    const int opened = sqlite3_open_v2(path.toUtf8().constData(), &handle, SQLITE_OPEN_READONLY, nullptr);
    QString error;
    if (opened == SQLITE_OK) {
        // Another workstation writing to the file, or opening it after a crash, holds it for a moment:
        // waited for as the connection itself waits, rather than taken for a damaged file.
        sqlite3_busy_timeout(handle, 5000);
        sqlite3_stmt* statement = nullptr;
        int rc = sqlite3_prepare_v2(handle,
                                    "select name from sqlite_master where type = 'table' "
                                    "and name not like 'sqlite\\_%' escape '\\' order by name",
                                    -1, &statement, nullptr);
        if (rc == SQLITE_OK) {
            while ((rc = sqlite3_step(statement)) == SQLITE_ROW)
                tables << QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
        }
        if (rc != SQLITE_DONE)
            error = QString::fromUtf8(sqlite3_errmsg(handle));
        sqlite3_finalize(statement);
    } else {
        error = handle ? QString::fromUtf8(sqlite3_errmsg(handle)) : QString::fromUtf8(sqlite3_errstr(opened));
    }
    sqlite3_close_v2(handle);
    return error;
}

} // namespace

QString foreignFileReason(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return {};
    if (!info.isFile())
        return QStringLiteral("%1 non è un file di dati").arg(path);
    if (info.size() == 0)
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("Impossibile leggere il file di dati %1: %2").arg(path, file.errorString());
    static const QByteArray kHeader("SQLite format 3\0", 16);
    if (file.read(kHeader.size()) != kHeader)
        return QStringLiteral("Il file %1 non è un database SQLite: non viene usato né modificato").arg(path);
    file.close();

    QStringList tables;
    const QString error = tablesOf(path, tables);
    if (!error.isEmpty())
        return QStringLiteral("Il database %1 è danneggiato o illeggibile (%2): non viene usato né modificato")
            .arg(path, error);
    if (tables.isEmpty() || tables.contains(QStringLiteral("versione_schema"), Qt::CaseInsensitive))
        return {};
    constexpr int kNamesShown = 5;
    QString names = QStringList(tables.mid(0, kNamesShown)).join(QStringLiteral(", "));
    if (tables.size() > kNamesShown)
        names += QStringLiteral(", ...");
    return QStringLiteral("Il file %1 è il database di un altro programma (tabelle: %2): non viene usato né "
                          "modificato")
        .arg(path, names);
}

} // namespace xv::data
