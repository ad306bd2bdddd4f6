// SPDX-License-Identifier: MIT
#pragma once

#include "host/Host.h"

#include <QDate>
#include <QString>
#include <QTemporaryDir>

namespace xv::bench {

// The shop the form benchmarks work in: a host on a fresh database (or on a copy of the large shop named by
// XV_BENCH_DB) with the shop's colours in its settings and one order of a thousand lines this year. Message boxes are answered No and counted, since any box
// would be a fault of the run. Services are reset again when it goes.
class BenchShop
{
public:
    static constexpr int kLines = 1000;

    BenchShop();
    ~BenchShop();
    BenchShop(const BenchShop&) = delete;
    BenchShop& operator=(const BenchShop&) = delete;

    bool ready() const { return m_host != nullptr; }
    host::Host& host() { return *m_host; }
    const QString& number() const { return m_number; }
    int boxes() const { return m_boxes; }

private:
    QTemporaryDir m_dir;
    host::Host* m_host = nullptr;
    QString m_number;
    int m_boxes = 0;
};

} // namespace xv::bench
