// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "data/Database.h"
#include "data/Recordset.h"
#include "host/Host.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;

class LockInTransactionTest : public test::HostedTest
{
};

// Asking for a lock someone else holds only reads: it must leave the caller's own transaction alone.
TEST_P(LockInTransactionTest, FindingTheRecordHeldLeavesTheCallersTransactionOpen)
{
    auto options = database().hostOptions();
    options.stationName = "BANCO2";
    host::Host second(options);
    ASSERT_TRUE(second.Initialize());
    ASSERT_EQ(second.LockRecord(7, 42, "movimenti"), "");

    data::Database& db = h().GetConnection();
    {
        data::Transaction transaction(db);
        db.executeBound("insert into movimenti (numero, serie) values ('1', '2026')");
        EXPECT_FALSE(h().LockRecord(101, 42, "movimenti").isEmpty());
        EXPECT_TRUE(db.inTransaction());
        db.executeBound("insert into movimenti (numero, serie) values ('2', '2026')");
        transaction.commit();
    }
    EXPECT_EQ(data::Recordset::open(db, "select count(*) from movimenti").value(0).toInt(), 2);
}

XV_INSTANTIATE_FOR_ENGINES(LockInTransactionTest);

} // namespace
