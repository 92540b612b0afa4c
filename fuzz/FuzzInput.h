// What the fuzz targets share.
#pragma once

#include "platform/framework/MemFile.h"
#include "platform/system/CodePage.h"

#include <array>
#include <cstdint>
#include <cstdlib>

namespace vnbytstr::fuzz {

/// Ends the program when a rule does not hold, in every build.
inline void Require(bool condition) {
    if (!condition)
        std::abort();
}

/// The code page that the first byte of an input chooses.
inline UINT PageOf(std::uint8_t choice) {
    constexpr std::array<UINT, 9> kPages = {1252, 932, 936, 949, 950, 1255, 1256, 65001, 54936};
    return kPages[choice % kPages.size()];
}

/// Makes a file of an input, standing at its beginning.
inline void Fill(CMemFile& file, const std::uint8_t* data, std::size_t size) {
    if (size > 0)
        file.Write(data, static_cast<UINT>(size));
    file.SeekToBegin();
}

} // namespace vnbytstr::fuzz
