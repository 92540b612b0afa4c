// Makes PE files with string tables, and tells where their parts are.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace vnbytstr::test {

struct PeFile {
    std::vector<BYTE> bytes;
    // Offsets in the file.
    std::size_t header = 0, optional = 0, resourceEntry = 0, sections = 0, resources = 0;
    std::size_t typeDirectory = 0, nameDirectory = 0; ///< of the string tables, of the first table
    std::size_t dataEntry = 0, data = 0;              ///< of the first table

    std::string Text() const { return {bytes.begin(), bytes.end()}; }
    void SetWord(std::size_t offset, WORD value) {
        bytes.at(offset) = static_cast<BYTE>(value);
        bytes.at(offset + 1) = static_cast<BYTE>(value >> 8);
    }
    void SetDWord(std::size_t offset, DWORD value) {
        SetWord(offset, static_cast<WORD>(value));
        SetWord(offset + 2, static_cast<WORD>(value >> 16));
    }
};

struct PeContent {
    std::map<UINT, std::u16string> strings;
    WORD language = 0x409;
    bool is64Bit = true;
    std::u16string fileDescription; ///< no version information when it is empty
};

/// A library with that content.
PeFile MakePeFile(const PeContent& content);

} // namespace vnbytstr::test
