// A port of this machine that must not be connected to.
#pragma once

#include <cstdint>
#include <string>

namespace vnbytstr::test {

class Listener {
public:
    Listener();
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    const std::string& Url() const { return m_url; }
    bool WasAsked() const;

private:
    std::intptr_t m_socket;
    std::string m_url;
};

} // namespace vnbytstr::test
