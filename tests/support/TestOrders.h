// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"
#include "host/Recordset.h"

#include <QDate>
#include <QString>

#include <functional>

namespace xv::host {
class Database;
}

namespace xv::test {

// Writes one order line with every column filled, as a saved order holds it; adjust changes fields
// before the row is written. Returns the new row's key.
int addOrderLine(host::Database& db, const QString& numero, const QDate& datadocumento,
                 const std::function<void(host::Recordset&)>& adjust = {});

void addCounter(host::Database& db, int year, int lastNumber);

} // namespace xv::test
