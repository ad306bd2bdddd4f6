// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"
#include "data/Recordset.h"

#include <QDate>
#include <QString>

#include <functional>

namespace xv::data {
class Database;
}

namespace xv::test {

// Writes one order line with every column filled, as a saved order holds it; adjust changes fields
// before the row is written. Returns the new row's key.
int addOrderLine(data::Database& db, const QString& numero, const QDate& datadocumento,
                 const std::function<void(data::Recordset&)>& adjust = {});

void addCounter(data::Database& db, int year, int lastNumber);

} // namespace xv::test
