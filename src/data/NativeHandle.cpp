// SPDX-License-Identifier: MIT
#include "NativeHandle.h"

#include <QSqlDriver>
#include <QVariant>

namespace xv::data {

namespace {

template <typename Handle> Handle* handleOf(const QSqlDatabase& db, std::initializer_list<const char*> names)
{
    const QSqlDriver* driver = db.driver();
    const QVariant handle = driver ? driver->handle() : QVariant();
    if (!handle.isValid())
        return nullptr;
    for (const char* name : names) {
        if (qstrcmp(handle.typeName(), name) == 0)
            return *static_cast<Handle* const*>(handle.constData());
    }
    return nullptr;
}

} // namespace

sqlite3* sqliteHandle(const QSqlDatabase& db)
{
    return handleOf<sqlite3>(db, {"sqlite3*"});
}

pg_conn* postgresHandle(const QSqlDatabase& db)
{
    return handleOf<pg_conn>(db, {"pg_conn*", "PGconn*"});
}

} // namespace xv::data
