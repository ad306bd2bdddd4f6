// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Recordset.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using data::Recordset;
using data::Transaction;

class TransactionTest : public test::SchemaTest
{
protected:
    void insert(const QString& numero)
    {
        db().executeBound("insert into movimenti (numero, serie) values (?, '2026')", {numero});
    }
    QStringList numbers()
    {
        QStringList seen;
        for (Recordset rs = Recordset::open(db(), "select numero from movimenti order by rowid"); !rs.eof();
             rs.moveNext())
            seen << rs.text("numero");
        return seen;
    }
};

TEST_P(TransactionTest, ATransactionLeftWithoutCommitWritesNothing)
{
    {
        Transaction transaction(db());
        insert("1");
        EXPECT_THROW(db().executeBound("insert into movimenti (nessuna_colonna) values (1)"), common::RuntimeError);
    }
    EXPECT_TRUE(numbers().isEmpty());
    EXPECT_FALSE(db().inTransaction());
}

TEST_P(TransactionTest, AnInnerRollbackUndoesOnlyTheInnerWorkAndTheOuterOneCarriesOn)
{
    {
        Transaction outer(db());
        insert("1");
        {
            Transaction inner(db());
            insert("2");
        } // left without commit
        EXPECT_TRUE(db().inTransaction()) << "the outer transaction is still open";
        insert("3");
        outer.commit();
    }
    EXPECT_EQ(numbers(), QStringList({"1", "3"}));
    EXPECT_FALSE(db().inTransaction());
}

// PostgreSQL refuses every statement of a transaction after one failed; the inner level's rollback
// must bring the outer one back to a usable state.
TEST_P(TransactionTest, AFailedStatementInsideAnInnerLevelLeavesTheOuterOneUsable)
{
    {
        Transaction outer(db());
        insert("1");
        try {
            Transaction inner(db());
            insert("2");
            db().executeBound("insert into movimenti (nessuna_colonna) values (1)");
            inner.commit();
            FAIL() << "the insert must fail";
        } catch (const common::RuntimeError& e) {
            EXPECT_TRUE(e.description().contains("nessuna_colonna")) << e.description().toStdString();
        }
        insert("3");
        outer.commit();
    }
    EXPECT_EQ(numbers(), QStringList({"1", "3"}));
}

TEST_P(TransactionTest, ThreeLevelsUnwindOneAtATime)
{
    {
        Transaction first(db());
        insert("1");
        {
            Transaction second(db());
            insert("2");
            {
                Transaction third(db());
                insert("3");
            }
            EXPECT_EQ(db().transactionDepth(), 2);
            second.commit();
        }
        first.commit();
    }
    EXPECT_EQ(numbers(), QStringList({"1", "2"}));
    EXPECT_THROW(db().commit(), common::RuntimeError) << "nothing is left open to commit";
}

XV_INSTANTIATE_FOR_ENGINES(TransactionTest);

} // namespace
