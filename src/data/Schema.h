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

// The columns of a table or view in their order, with the type codes the program acts on.
QVector<ColumnInfo> tableColumns(Database& db, const QString& table);

// Brings the database to the newest schema; returns the version it was at before (0 for a new one).
int migrate(Database& db);
int schemaVersion(Database& db);
int latestSchemaVersion();

} // namespace xv::data
