// SPDX-License-Identifier: MIT
// A record lock held while the PostgreSQL server stops and starts again, on a server of the test's own:
// once this workstation's connection is open again, the order is still its own.
#include "PrivateServer.h"

#include "host/Host.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace xv;

class LockReconnectTest : public ::testing::Test
{
protected:
    void SetUp() override { XV_REQUIRE_PRIVATE_SERVER(m_server); }

    std::unique_ptr<host::Host> station(const QString& name)
    {
        host::HostOptions options;
        options.dataPath = m_data.path() + QLatin1Char('/') + name + QLatin1Char('/');
        options.connectionText = m_server.connectionText();
        options.fillDemoData = false;
        options.startCounters = false;
        options.stationName = name;
        auto h = std::make_unique<host::Host>(options);
        EXPECT_TRUE(h->Initialize());
        return h;
    }

    test::PrivateServer m_server;
    QTemporaryDir m_data;
};

TEST_F(LockReconnectTest, AnOrderLockedBeforeTheServerStoppedIsStillHeldOnceTheConnectionIsBack)
{
    auto first = station("CASSA1");
    ASSERT_EQ(first->LockRecord(11, 8, "Commissioni"), "");
    ASSERT_TRUE(m_server.stop()) << m_server.reason().toStdString();
    ASSERT_TRUE(m_server.start()) << m_server.reason().toStdString();
    // The first workstation's next step opens its connection again.
    first->GetConnection().executeBound("select 1");

    auto second = station("CASSA2");
    const QString answer = second->LockRecord(22, 8, "Commissioni");
    EXPECT_TRUE(answer.contains("CASSA1")) << answer.toStdString();
    EXPECT_EQ(first->LockRecord(11, 8, "Commissioni"), "") << "the order is still the first one's";
}

} // namespace
