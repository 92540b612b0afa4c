#include "src/xml/FileTarget.h"

#include "src/os/System.h"

#include <algorithm>

namespace vnbytstr::detail {

FileTarget::FileTarget() : m_buffer(std::make_unique<BYTE[]>(kBufferSize)) {}

FileTarget::~FileTarget() = default;

bool FileTarget::Open(const char* name) { return m_file.Open(name) == 0; }

bool FileTarget::Commit() {
    WriteBuffer();
    return !m_hasFailed && m_file.Commit() == 0;
}

/// The serializer ignores results, so a failure is kept until Commit.
void FileTarget::writeChars(const XMLByte* bytes, XMLSize_t count, xercesc::XMLFormatter*) {
    if (count > kBufferSize - m_used)
        WriteBuffer();
    if (count >= kBufferSize) {
        Write({bytes, count});
        return;
    }
    std::copy_n(bytes, count, m_buffer.get() + m_used);
    m_used += count;
}

void FileTarget::WriteBuffer() {
    Write({m_buffer.get(), m_used});
    m_used = 0;
}

void FileTarget::Write(std::span<const BYTE> bytes) {
    System& system = System::Current();
    while (!bytes.empty() && !m_hasFailed) {
        std::size_t done = 0;
        m_hasFailed =
            system.WriteFile(m_file.Handle(), bytes.data(), bytes.size(), done) != 0 || done == 0;
        bytes = bytes.subspan(std::min(done, bytes.size()));
    }
}

} // namespace vnbytstr::detail
