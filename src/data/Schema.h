// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVector>

namespace xv::data {

class Database;

struct ColumnInfo
{
    QString name;
    int typeCode = 0;
};

// On SQLite, the full-text index of the customers' names and the ceremonies of `movimenti` (one entry per
// row, under the row's rowid); PostgreSQL has none.
inline constexpr const char* kNameIndexTable = "movimenti_nomi";

// The columns of a table or view in their order, with the type codes the program acts on.
QVector<ColumnInfo> tableColumns(Database& db, const QString& table);

// Brings the database to the newest schema; returns the version it was at before (0 for a new one).
int migrate(Database& db);

// After rows are written in bulk (a demo shop, an import, a restore): the server's planner gets the tables'
// figures now instead of when autovacuum next comes by; until then it plans for the empty tables it last
// saw, and opening an order costs several times what it should. The tables named, or all of them. SQLite
// plans well without figures, and the program's queries are written for that, so there it does nothing.
void refreshPlannerStatistics(Database& db, const QStringList& tables = {});
int schemaVersion(Database& db);
int latestSchemaVersion();

} // namespace xv::data
