#include "TargetFile.h"

#include <cerrno>
#include <filesystem>
#include <random>

namespace vnquery {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBlockSize = 262144;
constexpr int kMaxAttempts = 100;

std::string RandomDigits() {
    static std::random_device device;
    char text[16];
    std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(device()));
    return text;
}

} // namespace

bool IsReplaceable(const std::string& name) {
    std::error_code error;
    const fs::file_status status = fs::status(name, error);
    return status.type() == fs::file_type::regular || status.type() == fs::file_type::not_found;
}

TargetFile::TargetFile(const std::string& name) : m_target(name) {
    m_block.reserve(kBlockSize);
    std::error_code error;
    if (fs::is_directory(name, error))
        CFileException::ThrowOsError(EISDIR, name.c_str());
    CFileException failure;
    if (!IsReplaceable(name)) {
        if (!Open(name.c_str(), modeWrite, &failure))
            CFileException::ThrowOsError(failure.m_lOsError, name.c_str());
        return;
    }
    // A link stays a link: what it points to is replaced.
    if (const fs::path resolved = fs::canonical(name, error); !error)
        m_target = resolved.string();
    OpenBeside();
}

TargetFile::~TargetFile() {
    Abort();
    std::error_code ignored;
    if (!m_beside.empty())
        fs::remove(m_beside, ignored);
}

void TargetFile::OpenBeside() {
    const fs::path folder = fs::path(m_target).parent_path();
    CFileException failure;
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        const std::string name = (folder / ("~vnquery-" + RandomDigits() + ".tmp")).string();
        if (Open(name.c_str(), modeCreate | modeExclusive | modeWrite, &failure)) {
            m_beside = name;
            SetFilePath(m_target.c_str());
            return;
        }
        if (failure.m_lOsError != EEXIST)
            break;
    }
    CFileException::ThrowOsError(failure.m_lOsError, m_target.c_str());
}

void TargetFile::Write(const void* buffer, UINT count) {
    const auto* bytes = static_cast<const BYTE*>(buffer);
    if (m_block.size() + count > kBlockSize)
        WriteBlock();
    if (count >= kBlockSize)
        CFile::Write(bytes, count);
    else
        m_block.insert(m_block.end(), bytes, bytes + count);
    m_written += count;
}

void TargetFile::WriteBlock() {
    CFile::Write(m_block.data(), static_cast<UINT>(m_block.size()));
    m_block.clear();
}

void TargetFile::Commit() {
    WriteBlock();
    if (m_beside.empty()) {
        Close();
        return;
    }
    Flush();
    Close();
    std::error_code error;
    if (const fs::file_status old = fs::status(m_target, error); fs::exists(old))
        fs::permissions(m_beside, old.permissions(), error);
    fs::rename(m_beside, m_target, error);
    if (error)
        CFileException::ThrowOsError(error.value(), m_target.c_str());
    m_beside.clear();
}

} // namespace vnquery
