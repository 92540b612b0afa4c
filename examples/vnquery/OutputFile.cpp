#include "OutputFile.h"

#include <filesystem>

namespace vnquery {

namespace {

constexpr std::size_t kBlockSize = 262144;

} // namespace

bool IsReplaceable(const std::string& name) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(name, error);
    return std::filesystem::is_regular_file(status) ||
           status.type() == std::filesystem::file_type::not_found;
}

OutputFile::OutputFile(const std::string& name) : CReplacementFile(name.c_str()) {
    m_block.reserve(kBlockSize);
}

void OutputFile::Write(const void* buffer, UINT count) {
    const auto* bytes = static_cast<const BYTE*>(buffer);
    if (m_block.size() + count > kBlockSize)
        WriteBlock();
    if (count >= kBlockSize)
        CReplacementFile::Write(bytes, count);
    else
        m_block.insert(m_block.end(), bytes, bytes + count);
    m_written += count;
}

void OutputFile::WriteBlock() {
    CReplacementFile::Write(m_block.data(), static_cast<UINT>(m_block.size()));
    m_block.clear();
}

void OutputFile::Commit() {
    WriteBlock();
    CReplacementFile::Commit();
}

} // namespace vnquery
