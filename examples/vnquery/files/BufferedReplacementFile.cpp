#include "vnquery/files/BufferedReplacementFile.h"

namespace vnquery {

namespace {

constexpr std::size_t kBlockSize = 262144;

} // namespace

BufferedReplacementFile::BufferedReplacementFile(const std::string& name)
    : CReplacementFile(name.c_str()) {
    m_block.reserve(kBlockSize);
}

void BufferedReplacementFile::Write(const void* buffer, UINT count) {
    const auto* bytes = static_cast<const BYTE*>(buffer);
    if (m_block.size() + count > kBlockSize)
        WriteBlock();
    if (count >= kBlockSize)
        CReplacementFile::Write(bytes, count);
    else
        m_block.insert(m_block.end(), bytes, bytes + count);
    m_written += count;
}

void BufferedReplacementFile::WriteBlock() {
    CReplacementFile::Write(m_block.data(), static_cast<UINT>(m_block.size()));
    m_block.clear();
}

void BufferedReplacementFile::Commit() {
    WriteBlock();
    CReplacementFile::Commit();
}

} // namespace vnquery
