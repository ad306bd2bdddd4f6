// SPDX-License-Identifier: MIT
// A database that takes no write says why in words the operator can act on, beside the engine's own.
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Database.h"

#include <QSqlError>
#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;

TEST(WriteRefusal, TellsADatabaseThatCannotBeWrittenAndAFullDiskByTheEnginesCodes)
{
    const char* const readOnly = "Il database è in sola lettura: ";
    const char* const full = "Il disco del database è pieno: ";
    const struct
    {
        const char* code;
        const char* said;
        const char* refusal; // the start of it; empty for none
    } cases[] = {
        {"8", "attempt to write a readonly database", readOnly},
        {"1032", "attempt to write a readonly database", readOnly}, // the file moved away while open
        {"25006", "cannot execute UPDATE in a read-only transaction", readOnly},
        {"13", "database or disk is full", full},
        {"53100", "could not extend file: No space left on device", full},
        {"", "database or disk is full", full}, // a commit, whose code the SQLite driver drops
        {"19", "FOREIGN KEY constraint failed", ""},
        {"", "FOREIGN KEY constraint failed", ""},
        {"23505", "duplicate key value violates unique constraint", ""},
    };
    for (const auto& c : cases) {
        const QString refusal = data::writeRefusal(QSqlError(
            QString(), QString::fromUtf8(c.said), QSqlError::StatementError, QString::fromUtf8(c.code)));
        const QString expected = QString::fromUtf8(c.refusal);
        EXPECT_TRUE(expected.isEmpty() ? refusal.isEmpty() : refusal.startsWith(expected))
            << c.code << " " << c.said << " -> " << refusal.toStdString();
    }
}

class WriteRefusalTest : public test::SchemaTest
{
protected:
    // Why writing a long text was refused; empty when it was written.
    QString refusal()
    {
        try {
            db().executeBound("insert into movimenti (riferimenti) values (?)", {QString(20000, u'R')});
            return {};
        } catch (const common::RuntimeError& e) {
            return e.description();
        }
    }
};

TEST_P(WriteRefusalTest, ADatabaseThatCannotBeWrittenSaysSoUntilItCanAgain)
{
    test::setReadOnly(db(), true);
    const QString why = refusal();
    EXPECT_TRUE(why.startsWith("Il database è in sola lettura: impossibile registrare le modifiche."))
        << why.toStdString();
    EXPECT_TRUE(why.contains("[insert into movimenti")) << "the statement is still named";
    test::setReadOnly(db(), false);
    EXPECT_EQ(refusal(), QString());
}

XV_INSTANTIATE_FOR_ENGINES(WriteRefusalTest);

// The disk filling up is made by capping the SQLite file at the pages it has.
class FullDiskTest : public WriteRefusalTest
{
};

TEST_P(FullDiskTest, ADiskWithNoRoomLeftSaysSoUntilThereIsRoomAgain)
{
    QSqlQuery pages = db().executeBound("PRAGMA page_count");
    ASSERT_TRUE(pages.next());
    db().executeBound(QStringLiteral("PRAGMA max_page_count = %1").arg(pages.value(0).toLongLong()));
    const QString why = refusal();
    EXPECT_TRUE(why.startsWith("Il disco del database è pieno: impossibile registrare le modifiche."))
        << why.toStdString();
    db().executeBound("PRAGMA max_page_count = 2147483646");
    EXPECT_EQ(refusal(), QString());
}

// A disk that fills half-way through a transaction ends it in the engine: leaving it then raises no second
// error, and the connection goes on once there is room.
TEST_P(FullDiskTest, ATransactionTheFullDiskEndedIsLeftWithoutASecondError)
{
    QSqlQuery pages = db().executeBound("PRAGMA page_count");
    ASSERT_TRUE(pages.next());
    db().executeBound(QStringLiteral("PRAGMA max_page_count = %1").arg(pages.value(0).toLongLong()));
    try {
        data::Transaction transaction(db());
        for (int i = 0; i < 3; ++i)
            db().executeBound("insert into movimenti (riferimenti) values (?)", {QString(3000, u'R')});
        transaction.commit();
        ADD_FAILURE() << "the full disk took the rows";
    } catch (const common::RuntimeError& e) {
        EXPECT_TRUE(e.description().startsWith("Il disco del database è pieno"))
            << e.description().toStdString();
    }
    EXPECT_FALSE(db().inTransaction());
    db().executeBound("PRAGMA max_page_count = 2147483646");
    EXPECT_EQ(refusal(), QString());
}

INSTANTIATE_TEST_SUITE_P(SQLite, FullDiskTest, ::testing::Values(data::Engine::SQLite), test::engineName);

} // namespace
