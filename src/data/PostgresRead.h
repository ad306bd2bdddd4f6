// SPDX-License-Identifier: MIT
#pragma once

#include "data/SqliteRead.h"

namespace xv::data {

// Runs a read on an open QPSQL connection through libpq and gives back what the driver would (the same
// names, column types and values, as its high-precision reads give them), without the driver's
// row-at-a-time fetch and copies of every value. False with nothing read, and error invalid, when the
// connection is in the middle of another statement's rows: the caller then reads through the driver,
// which first discards them. False with the engine's error when the statement fails.
bool readPostgresRows(const QSqlDatabase& db, const QString& nativeSql, ReadRows& out, QSqlError& error);

} // namespace xv::data
