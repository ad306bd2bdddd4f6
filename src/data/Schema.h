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

// After rows are written in bulk (a demo shop, an import, a restore): the engine's planner gets the tables'
// figures now. PostgreSQL would otherwise plan for the empty tables it last saw until autovacuum next comes
// by, and opening an order costs several times what it should; SQLite, without figures, guesses at every
// join, and the article panel's agents (a query the shop may write itself) then walks every movement of the
// article instead of its few suppliers. The tables named, or all of them.
void refreshPlannerStatistics(Database& db, const QStringList& tables = {});
int schemaVersion(Database& db);
int latestSchemaVersion();

} // namespace xv::data
