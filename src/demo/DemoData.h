// SPDX-License-Identifier: MIT
#pragma once

#include <QDate>
#include <QtGlobal>

#include <functional>

namespace xv::data {
class Database;
}

namespace xv::demo {

using data::Database;

struct DemoOptions
{
    int orders = 300;
    quint32 seed = 20261123;
    // Orders and delivery notes are dated from the first of January two years before this day up to
    // this day.
    QDate today = QDate::currentDate();
    int customers = 80;
    std::function<void(int done, int total)> progress;
};

struct DemoSummary
{
    int articles = 0;
    int customers = 0;
    int suppliers = 0;
    int agents = 0;
    int orders = 0;
    int movimentiRows = 0;
};

// Fills an empty, freshly migrated database with a favour shop's catalogue, people and three years of
// orders; the same options give the same data on every machine. Everything is written in one
// transaction, so a failure leaves the database as it was.
// Throws xv::common::RuntimeError when movimenti, med or controparti already hold rows.
DemoSummary fillDemoData(Database& db, const DemoOptions& options);

// The order count that makes movimenti reach about this many rows: orders average a fixed number of
// lines, and the suppliers' deliveries add a few hundred rows whatever the order count.
int demoOrdersForRows(qint64 movimentiRows);

} // namespace xv::demo
