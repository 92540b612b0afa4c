#include <winsock2.h>

#include "tests/xml/Listener.h"

#include <gtest/gtest.h>

namespace vnbytstr::test {

namespace {
SOCKET Own(std::intptr_t socket) { return static_cast<SOCKET>(socket); }
} // namespace

Listener::Listener() : m_socket(0) {
    WSADATA data;
    EXPECT_EQ(::WSAStartup(MAKEWORD(2, 2), &data), 0);
    m_socket = static_cast<std::intptr_t>(::socket(AF_INET, SOCK_STREAM, 0));
    u_long isNonBlocking = 1;
    EXPECT_EQ(::ioctlsocket(Own(m_socket), static_cast<long>(FIONBIO), &isNonBlocking), 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    EXPECT_EQ(::bind(Own(m_socket), reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(::listen(Own(m_socket), 5), 0);
    EXPECT_EQ(::getsockname(Own(m_socket), reinterpret_cast<sockaddr*>(&address), &size), 0);
    m_url = "http://127.0.0.1:" + std::to_string(::ntohs(address.sin_port)) + "/x";
}

Listener::~Listener() {
    ::closesocket(Own(m_socket));
    ::WSACleanup();
}

bool Listener::WasAsked() const {
    return ::accept(Own(m_socket), nullptr, nullptr) != INVALID_SOCKET;
}

} // namespace vnbytstr::test
