// SPDX-License-Identifier: MIT
#pragma once

#include <QSqlDatabase>

struct sqlite3;
struct pg_conn;

namespace xv::data {

// The engine's own connection under a Qt one, for the work done through the engine's interface; null when
// the connection is of another engine or not open. The drivers name the handle by the structure's tag.
sqlite3* sqliteHandle(const QSqlDatabase& db);
pg_conn* postgresHandle(const QSqlDatabase& db);

} // namespace xv::data
