// A file that is written as a whole or not at all, in many small pieces.
#pragma once

#include <vnbytstr/ReplacementFile.h>

#include <string>
#include <vector>

namespace vnquery {

/// CReplacementFile with its writes gathered to blocks. All functions throw CFileException.
class OutputFile : public CReplacementFile {
public:
    explicit OutputFile(const std::string& name);

    void Write(const void* buffer, UINT count) override;
    /// Ends the file and gives it its name.
    void Commit();
    ULONGLONG GetWritten() const { return m_written; } ///< bytes

private:
    void WriteBlock();

    std::vector<BYTE> m_block;
    ULONGLONG m_written = 0;
};

/// Whether SaveToFile can give a file of its own to `name`: that is a plain file, a link to one, or
/// nothing yet.
bool IsReplaceable(const std::string& name);

} // namespace vnquery
