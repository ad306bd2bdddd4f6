// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

class QSqlDatabase;
struct sqlite3;

namespace xv::data {

enum class Engine { SQLite, PostgreSQL };

// The program's SQL texts keep the old desktop database's dialect, so that they read as they always
// have; this turns one of them into a text the engine accepts. Literals, quoted identifiers and comments
// are copied untouched; "[Name With Blanks]" becomes the lower-case quoted name on PostgreSQL (where the
// tables are created that way), a bare "now" becomes "now()" and "&" becomes "||". val(), year() and
// DateValue() are left as calls: each engine gets them as functions of its own (see below).
QString rewriteSql(const QString& sql, Engine engine);

// Teaches an open QSQLITE connection val(x), year(x), datevalue(text) and now(). Must be called on
// every new connection, since SQLite keeps application functions per connection.
// Throws xv::common::RuntimeError when the connection is not an open SQLite one.
void registerSqliteFunctions(const QSqlDatabase& db);
// The same on a connection opened through the sqlite3 C API.
void registerSqliteFunctions(sqlite3* connection);

// The statements creating the same functions on PostgreSQL, in the first schema of the search path.
// Safe to run again on an existing schema.
QStringList postgresFunctionDefinitions();
// Changes whenever any of those definitions does: what the database keeps to tell whether to replace them.
QString postgresFunctionsFingerprint();

} // namespace xv::data
