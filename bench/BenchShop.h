// SPDX-License-Identifier: MIT
#pragma once

#include "data/SqlDialect.h"
#include "host/Dialogs.h"
#include "host/Host.h"

#include <QDate>
#include <QString>
#include <QTemporaryDir>

#include <deque>

namespace xv::bench {

// The shop the form benchmarks work in: a host on a fresh database (or on a copy of the large shop named by
// XV_BENCH_DB, or on PostgreSQL a copy of the database named by XV_BENCH_PG) with the shop's colours in its
// settings and one order of a thousand lines this year. Message boxes the run expects are answered as
// scripted; any other is answered No and counted, since it would be a fault of the run. Services are reset
// again when it goes.
class BenchShop
{
public:
    static constexpr int kLines = 1000;

    explicit BenchShop(data::Engine engine = data::Engine::SQLite);
    ~BenchShop();
    BenchShop(const BenchShop&) = delete;
    BenchShop& operator=(const BenchShop&) = delete;

    bool ready() const { return m_host != nullptr; }
    host::Host& host() { return *m_host; }
    const QString& number() const { return m_number; }
    // The shop's database as XVELARIO_DB names it, and a folder of its own, for a run of the real program.
    const QString& connectionText() const { return m_connectionText; }
    QString folder() const { return m_dir.path(); }
    // Boxes nobody expected, and the text of the last of them.
    int boxes() const { return m_boxes; }
    const QString& lastBox() const { return m_lastBox; }

    // Writes a few small orders of two lines for the customer, three years ago, into the shop's copy (the
    // shop's own file is never written to): a name the demo shop does not have, for a search that finds only
    // these.
    void writeCustomerOrders(const QString& customer, int orders);

    // The next box must contain this text; it is given this answer.
    void expectMessage(const QString& containing, host::Answer answer);
    bool allExpectedShown() const { return m_expected.empty(); }

    // Why the shop could not be opened (a PostgreSQL run without XV_BENCH_PG, ...).
    const QString& failure() const { return m_failure; }

private:
    QTemporaryDir m_dir;
    host::Host* m_host = nullptr;
    QString m_number;
    QString m_connectionText;
    int m_boxes = 0;
    QString m_lastBox;
    QString m_failure;
    std::deque<std::pair<QString, host::Answer>> m_expected;
};

} // namespace xv::bench
