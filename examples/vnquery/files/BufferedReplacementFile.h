// A file that is written as a whole or not at all, in many small pieces.
#pragma once

#include "vnbytstr/ReplacementFile.h"

#include <string>
#include <vector>

namespace vnquery {

/// CReplacementFile with its writes gathered into blocks. All functions throw CFileException.
class BufferedReplacementFile : public CReplacementFile {
public:
    explicit BufferedReplacementFile(const std::string& name);

    void Write(const void* buffer, UINT count) override;
    /// Ends the file and gives it its name.
    void Commit();
    /// Bytes that were written.
    ULONGLONG GetWritten() const { return m_written; }

private:
    void WriteBlock();

    std::vector<BYTE> m_block;
    ULONGLONG m_written = 0;
};

} // namespace vnquery
