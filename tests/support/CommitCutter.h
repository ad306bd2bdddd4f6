// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <thread>

namespace xv::test {

// A loopback relay in front of a PostgreSQL server that can break a connection at its commit: once armed,
// the next COMMIT goes through to the server, the server's answer is thrown away and the client's connection
// is closed. The client cannot tell whether its transaction was stored; the server has stored it. Connections
// made afterwards are relayed as they are.
class CommitCutter
{
public:
    explicit CommitCutter(int serverPort);
    ~CommitCutter();
    CommitCutter(const CommitCutter&) = delete;
    CommitCutter& operator=(const CommitCutter&) = delete;

    // 0 when it could not listen.
    int port() const { return m_port; }
    void armAtNextCommit() { m_armed = true; }
    // How many commits it has cut so far.
    int cuts() const { return m_cuts; }

private:
    void run();

    int m_serverPort;
    int m_listener = -1;
    int m_port = 0;
    std::atomic<bool> m_armed{false};
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_cuts{0};
    std::thread m_thread;
};

} // namespace xv::test
