// A file that is written as a whole or not at all.
#pragma once

#include <vnbytstr/ByteStream.h>

#include <string>
#include <vector>

namespace vnquery {

/// The new content goes to a file of another name in the target's folder, which takes the target's
/// name at Commit; until then, and when Commit is not reached, a target that exists stays as it
/// was. What is no plain file (a pipe, a device) is written directly.
///
/// Writes are gathered to blocks. All functions throw CFileException.
class TargetFile : public CFile {
public:
    explicit TargetFile(const std::string& name);
    ~TargetFile() override;

    void Write(const void* buffer, UINT count) override;
    /// Ends the file and gives it its name.
    void Commit();
    ULONGLONG GetWritten() const { return m_written; } ///< bytes

private:
    void OpenBeside();
    void WriteBlock();

    std::string m_target;
    std::string m_beside; ///< name until Commit; "" when written directly
    std::vector<BYTE> m_block;
    ULONGLONG m_written = 0;
};

/// Whether SaveToFile and CopyToFile can put a new file in the place of `name`: it is a plain file,
/// a link to one, or nothing yet.
bool IsReplaceable(const std::string& name);

} // namespace vnquery
