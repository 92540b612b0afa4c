#include "tests/xml/Listener.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vnbytstr::test {

Listener::Listener() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
    const int own = static_cast<int>(m_socket);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(own, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(::listen(own, 5), 0);
    EXPECT_EQ(::getsockname(own, reinterpret_cast<sockaddr*>(&address), &size), 0);
    m_url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/x";
}

Listener::~Listener() { ::close(static_cast<int>(m_socket)); }

bool Listener::WasAsked() const {
    return ::accept(static_cast<int>(m_socket), nullptr, nullptr) >= 0;
}

} // namespace vnbytstr::test
