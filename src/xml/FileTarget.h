// A file as the serializer's output, written through the system's seam.
#pragma once

#include "src/os/FileReplacement.h"
#include "vnbytstr/framework/Types.h"

#include <xercesc/framework/XMLFormatter.hpp>

#include <cstddef>
#include <memory>
#include <span>

namespace vnbytstr::detail {

/// The file is replaced when all of it has been written, and stays unchanged when anything fails.
class FileTarget final : public xercesc::XMLFormatTarget {
public:
    FileTarget();
    ~FileTarget() override;

    /// Must come first. False when the file cannot be written.
    bool Open(const char* name);
    /// Brings the file to the disk under its name. False when that or a write before failed.
    bool Commit();

    void writeChars(const XMLByte* bytes, XMLSize_t count,
                    xercesc::XMLFormatter* formatter) override;

private:
    static constexpr std::size_t kBufferSize = 1u << 16;

    void Write(std::span<const BYTE> bytes);
    void WriteBuffer();

    FileReplacement m_file;
    std::unique_ptr<BYTE[]> m_buffer;
    std::size_t m_used = 0;
    bool m_hasFailed = false;
};

} // namespace vnbytstr::detail
