// What the fuzz targets share.
#pragma once

#include "src/charset/CodePage.h"
#include "vnbytstr/framework/MemFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/// What every fuzz target defines: one input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vnbytstr::fuzz {

/// Ends the program when a rule does not hold, in every build, and says where it stands.
inline void Require(bool condition, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
    if (condition)
        return;
    std::fprintf(stderr, "ERROR: %s:%d: this does not hold\n", file, line);
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

/// An input that is taken piece by piece. Past its end there are zeros and empty texts.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    std::size_t Left() const { return m_size; }
    std::uint8_t Byte() {
        if (m_size == 0)
            return 0;
        --m_size;
        return *m_data++;
    }
    std::size_t Number() { // up to 65535
        const std::size_t high = Byte();
        return high << 8 | Byte();
    }
    /// The next `count` bytes, or what is left.
    std::string Bytes(std::size_t count) {
        count = std::min(count, m_size);
        std::string bytes(m_data, m_data + count);
        m_data += count;
        m_size -= count;
        return bytes;
    }
    /// A text with its length, up to 255, in front.
    std::string Text() { return Bytes(Byte()); }
    std::string Rest() { return Bytes(m_size); }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
};

inline CString ToCString(const std::string& text) {
    return {text.data(), static_cast<int>(text.size())};
}
inline std::string ToStdString(const CString& text) {
    return {static_cast<const char*>(text), static_cast<std::size_t>(text.GetLength())};
}

} // namespace vnbytstr::fuzz
