// SPDX-License-Identifier: MIT
#include "CommitCutter.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <vector>

namespace xv::test {

namespace {

// The simple-query message of a bare COMMIT, as the driver sends it: 'Q', its length, the text and a NUL.
constexpr std::string_view kCommit("Q\0\0\0\x0b"
                                   "COMMIT\0",
                                   12);

struct Pair
{
    int client = -1;
    int server = -1;
};

bool sendAll(int fd, const char* data, ssize_t size)
{
    while (size > 0) {
        const ssize_t sent = ::send(fd, data, static_cast<size_t>(size), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        data += sent;
        size -= sent;
    }
    return true;
}

int connectTo(int port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

void closePair(Pair& pair)
{
    ::close(pair.client);
    ::close(pair.server);
    pair.client = pair.server = -1;
}

} // namespace

CommitCutter::CommitCutter(int serverPort) : m_serverPort(serverPort)
{
    m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = 0;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(m_listener, 8) != 0 ||
        ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        ::close(m_listener);
        m_listener = -1;
        return;
    }
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] { run(); });
}

CommitCutter::~CommitCutter()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
    if (m_listener >= 0)
        ::close(m_listener);
}

void CommitCutter::run()
{
    std::vector<Pair> pairs;
    std::array<char, 65536> buffer{};
    while (!m_stop) {
        std::vector<pollfd> watched{{m_listener, POLLIN, 0}};
        for (const Pair& pair : pairs) {
            watched.push_back({pair.client, POLLIN, 0});
            watched.push_back({pair.server, POLLIN, 0});
        }
        if (::poll(watched.data(), watched.size(), 50) <= 0)
            continue;
        if (watched[0].revents & POLLIN) {
            const int client = ::accept(m_listener, nullptr, nullptr);
            const int server = client >= 0 ? connectTo(m_serverPort) : -1;
            if (server >= 0)
                pairs.push_back({client, server});
            else if (client >= 0)
                ::close(client);
        }
        for (size_t i = 0; i < pairs.size(); ++i) {
            Pair& pair = pairs[i];
            const pollfd& fromClient = watched[1 + 2 * i];
            const pollfd& fromServer = watched[2 + 2 * i];
            if (fromClient.revents & (POLLIN | POLLHUP | POLLERR)) {
                const ssize_t got = ::recv(pair.client, buffer.data(), buffer.size(), 0);
                if (got <= 0 || !sendAll(pair.server, buffer.data(), got)) {
                    closePair(pair);
                    continue;
                }
                if (m_armed && std::string_view(buffer.data(), static_cast<size_t>(got)).find(kCommit) !=
                                   std::string_view::npos) {
                    // The server's answer says the commit was done; the client never reads it.
                    pollfd answer{pair.server, POLLIN, 0};
                    if (::poll(&answer, 1, 5000) > 0)
                        (void)::recv(pair.server, buffer.data(), buffer.size(), 0);
                    m_armed = false;
                    ++m_cuts;
                    closePair(pair);
                    continue;
                }
            }
            if (fromServer.revents & (POLLIN | POLLHUP | POLLERR)) {
                const ssize_t got = ::recv(pair.server, buffer.data(), buffer.size(), 0);
                if (got <= 0 || !sendAll(pair.client, buffer.data(), got))
                    closePair(pair);
            }
        }
        pairs.erase(std::remove_if(pairs.begin(), pairs.end(), [](const Pair& p) { return p.client < 0; }),
                    pairs.end());
    }
    for (Pair& pair : pairs)
        closePair(pair);
}

} // namespace xv::test
