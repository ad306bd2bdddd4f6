// SPDX-License-Identifier: MIT
// The connection to a PostgreSQL server that stops and starts again under it, on a server of the test's
// own: the program goes on without a restart, and never carries on a transaction the server lost.
#include "PrivateServer.h"

#include "common/RuntimeError.h"
#include "data/Database.h"

#include <QSqlQuery>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace xv;
using data::Database;

constexpr const char* kUnreachable = "Impossibile raggiungere il database";

class ReconnectTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        XV_REQUIRE_PRIVATE_SERVER(m_server);
        {
            Database admin(data::ConnectionConfig::fromText(m_server.connectionText()));
            admin.executeBound("create schema negozio");
            admin.executeBound("create table negozio.righe (testo text, giorno timestamp)");
        }
        m_db = std::make_unique<Database>(
            data::ConnectionConfig::fromText(m_server.connectionText() + " schema=negozio"));
    }

    // Unqualified names, dates as the shop writes them, and the session's own settings.
    QString session()
    {
        QSqlQuery q = m_db->executeBound(
            "select current_setting('search_path') || '|' || current_setting('DateStyle') || '|' || "
            "current_setting('standard_conforming_strings') || '|' || current_setting('TimeZone') || '|' || "
            "'03/02/2026'::date");
        return q.next() ? q.value(0).toString() : QString();
    }
    void insert(const char* text) { m_db->executeBound("insert into righe (testo) values (?)", {text}); }
    QString rows()
    {
        QStringList texts;
        QSqlQuery q = m_db->executeBound("select testo from righe order by testo");
        while (q.next())
            texts << q.value(0).toString();
        return texts.join(QLatin1Char(','));
    }
    // The error a call gives, as the operator reads it.
    template <typename Call> std::string errorOf(Call call)
    {
        try {
            call();
        } catch (const common::RuntimeError& e) {
            return e.description().toStdString();
        }
        return "no error";
    }

    test::PrivateServer m_server;
    std::unique_ptr<Database> m_db;
};

TEST_F(ReconnectTest, WhileTheServerIsDownEveryStatementSaysSoAndOnceItIsBackTheSessionIsAsAtTheStart)
{
    const QString before = session();
    ASSERT_TRUE(before.startsWith("negozio|ISO, DMY|on|")) << before.toStdString();
    ASSERT_TRUE(m_server.stop()) << m_server.reason().toStdString();
    for (int attempt = 0; attempt < 2; ++attempt)
        EXPECT_THAT(errorOf([&] { insert("mai"); }), ::testing::HasSubstr(kUnreachable));
    EXPECT_THAT(errorOf([&] { data::Transaction t(*m_db); }), ::testing::HasSubstr(kUnreachable));
    EXPECT_FALSE(m_db->inTransaction());

    ASSERT_TRUE(m_server.start()) << m_server.reason().toStdString();
    EXPECT_EQ(session(), before);
    insert("dopo");
    EXPECT_EQ(rows(), "dopo");

    // Restarted while nothing was running: the first statement already finds the server again.
    ASSERT_TRUE(m_server.stop() && m_server.start()) << m_server.reason().toStdString();
    {
        data::Transaction t(*m_db);
        insert("riavvio");
        t.commit();
    }
    EXPECT_EQ(rows(), "dopo,riavvio");
}

TEST_F(ReconnectTest, ATransactionTheServerLostIsNeverCarriedOnOnANewConnection)
{
    m_db->beginTransaction();
    insert("prima");
    ASSERT_TRUE(m_server.stop() && m_server.start()) << m_server.reason().toStdString();
    // Every later step of the lost transaction fails, even though the server is back.
    EXPECT_THAT(errorOf([&] { insert("seconda"); }), ::testing::HasSubstr(kUnreachable));
    EXPECT_THAT(errorOf([&] { insert("terza"); }), ::testing::HasSubstr(kUnreachable));
    EXPECT_THAT(errorOf([&] { m_db->commit(); }), ::testing::HasSubstr(kUnreachable));
    m_db->rollback();
    EXPECT_FALSE(m_db->inTransaction());

    {
        data::Transaction t(*m_db);
        insert("dopo");
        t.commit();
    }
    EXPECT_EQ(rows(), "dopo");
}

} // namespace
