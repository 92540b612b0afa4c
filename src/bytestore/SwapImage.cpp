#include "src/bytestore/SwapImage.h"

#include "src/os/Crc32c.h"

namespace vnbytstr::detail {

void PageOnFile::SetWritten(std::span<const BYTE> bytes) noexcept {
    m_state = static_cast<DWORD>(bytes.size());
    m_checksum = Crc32c(bytes);
}

bool PageOnFile::Matches(std::span<const BYTE> read) const noexcept {
    const DWORD count = GetCount();
    return count == 0 || (read.size() >= count && Crc32c(read.first(count)) == m_checksum);
}

} // namespace vnbytstr::detail
