#include "tests/xml/Canonical.h"

#include <array>
#include <cstdio>

std::string vnbytstr::test::Canonical(const std::string& file) {
    const std::string command =
        "XML_CATALOG_FILES= xmllint --nonet --c14n '" + file + "' 2>/dev/null";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    std::string text;
    std::array<char, 65536> buffer;
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), pipe))
        text.append(buffer.data(), size);
    return ::pclose(pipe) == 0 ? text : "";
}
