// SPDX-License-Identifier: MIT
// A database that takes no write says why in words the operator can act on, beside the engine's own.
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Database.h"

#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;

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

TEST_P(WriteRefusalTest, AnyOtherErrorKeepsTheEnginesOwnText)
{
    try {
        db().executeBound("insert into movimenti (nessuna_colonna) values (1)");
        FAIL() << "the insert must fail";
    } catch (const common::RuntimeError& e) {
        EXPECT_TRUE(e.description().contains("nessuna_colonna")) << e.description().toStdString();
        EXPECT_FALSE(e.description().contains("impossibile registrare")) << e.description().toStdString();
    }
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

INSTANTIATE_TEST_SUITE_P(SQLite, FullDiskTest, ::testing::Values(data::Engine::SQLite), test::engineName);

} // namespace
