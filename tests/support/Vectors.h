// Tables of test cases kept as text files.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace vnbytstr::test {

/// The lines of a file below tests/, as fields that blanks separate. Empty lines and those that
/// begin with '#' or '[' are left out. Fails the test when there is none.
inline std::vector<std::vector<std::string>> ReadVectors(const std::string& name) {
    std::ifstream file(VNBYTSTR_TESTS_FOLDER + name);
    std::vector<std::vector<std::string>> lines;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#' || line[0] == '[')
            continue;
        std::istringstream fields(line);
        lines.emplace_back();
        for (std::string field; fields >> field;)
            lines.back().push_back(field);
    }
    EXPECT_FALSE(lines.empty()) << name;
    return lines;
}

inline std::string FromHex(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

} // namespace vnbytstr::test
