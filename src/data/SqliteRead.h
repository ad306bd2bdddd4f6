// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaType>
#include <QSqlDatabase>
#include <QSqlError>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

namespace xv::data {

// The columns and rows of a read, each value as the driver gives it.
struct ReadRows
{
    QStringList names;
    QVector<QMetaType> types;
    QVector<QVector<QVariant>> rows;
};

// Runs a read on an open QSQLITE connection through the engine's own interface and gives back what the
// driver would (the same names, column types and values, a null as a null text), without the driver's
// copies of every value and field on the way: a short read costs about twice the engine's own time
// through the driver. False with the engine's error when it cannot run.
bool readSqliteRows(const QSqlDatabase& db, const QString& nativeSql, ReadRows& out, QSqlError& error);

} // namespace xv::data
