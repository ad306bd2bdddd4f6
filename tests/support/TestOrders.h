// SPDX-License-Identifier: MIT
#pragma once

#include <QDate>
#include <QString>
#include <QVariant>

#include <initializer_list>
#include <utility>

namespace xv::data {
class Database;
}

namespace xv::test {

// Column values of an order line; the amounts (prezzo, prezzo2, imponibile, imposta, totale) in euros.
using LineValues = std::initializer_list<std::pair<const char*, QVariant>>;

// Writes one order line with every column filled, as a saved order holds it, then the values given.
// Returns the new row's key.
int addOrderLine(data::Database& db, const QString& numero, const QDate& datadocumento,
                 LineValues values = {});

void addCounter(data::Database& db, int year, int lastNumber);

// The first column of the first row an SQL text of our own gives, as text; "<none>" when it gives no row.
QString scalar(data::Database& db, const QString& sql, const QVariantList& values = {});

} // namespace xv::test
