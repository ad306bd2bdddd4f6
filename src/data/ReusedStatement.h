// SPDX-License-Identifier: MIT
#pragma once

#include "data/SqlDialect.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QString>
#include <QVariant>

#include <memory>

namespace xv::data {

// A statement of our own, native to the engine, prepared once and run again and again with other values:
// the insert of each line of an order. On SQLite the values are bound through the engine's own interface,
// as the driver would bind them: the driver's binding of sixty values costs about as much as the insert.
class ReusedStatement
{
public:
    // Nothing, with the engine's error, when the text cannot be prepared.
    static std::unique_ptr<ReusedStatement> prepare(const QSqlDatabase& db, Engine engine,
                                                    const QString& nativeSql, QSqlError& error);
    virtual ~ReusedStatement() = default;

    // Runs it with the values, one for each placeholder in order; false with the engine's error. key is the
    // row key an insert added: SQLite's own, or on PostgreSQL the first value the statement gives back
    // ("returning rowid"); nothing otherwise.
    virtual bool run(const QVariantList& values, QVariant& key, QSqlError& error) = 0;
};

} // namespace xv::data
