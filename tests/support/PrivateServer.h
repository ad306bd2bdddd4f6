// SPDX-License-Identifier: MIT
#pragma once

#include "TestDatabase.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace xv::test {

// A PostgreSQL server of one test's own, in a temporary folder on a free loopback port, which the test
// may stop and start again while the program is connected: the shared server of the test script serves
// other tests at the same time. The programs come from XV_TEST_PG_BIN, else the newest installed.
class PrivateServer
{
public:
    PrivateServer();
    ~PrivateServer();
    PrivateServer(const PrivateServer&) = delete;
    PrivateServer& operator=(const PrivateServer&) = delete;

    // False, with the reason, when there is no PostgreSQL to start.
    bool available() const { return m_running; }
    const QString& reason() const { return m_reason; }
    QString connectionText() const;

    // Both wait until the server has stopped or accepts connections; false on failure, with the reason.
    bool stop();
    bool start();

private:
    bool run(const QString& program, const QStringList& arguments);

    QTemporaryDir m_dir;
    QString m_bin;
    int m_port = 0;
    bool m_running = false;
    QString m_reason;
};

// Skips the test, or fails it where PostgreSQL is required, when the server could not be started.
#define XV_REQUIRE_PRIVATE_SERVER(server)                                                                    \
    do {                                                                                                     \
        if (!(server).available()) {                                                                         \
            if (::xv::test::postgresRequired())                                                              \
                FAIL() << (server).reason().toStdString();                                                   \
            GTEST_SKIP() << (server).reason().toStdString();                                                 \
        }                                                                                                    \
    } while (false)

} // namespace xv::test
