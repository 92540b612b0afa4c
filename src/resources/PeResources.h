// The resources of a PE file (32- and 64-bit executables and libraries of Windows), as far as they
// are texts. The format is Microsoft's "PE Format" document, section ".rsrc"; string tables and
// version information are those of its resource compiler.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <cstddef>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace vnbytstr::detail {

/// The string tables and the language of one file. Nothing in the file is trusted: every offset and
/// count is checked before it is used, the resource tree has its three levels and no directory
/// twice, and the work is bounded by the file's length and by kMaxEntries.
class PeResources {
public:
    static constexpr std::size_t kMaxFileLength = 64u << 20;
    static constexpr std::size_t kMaxEntries = 65536; ///< of all directories together

    /// Takes the bytes of a whole file. False when it is not a PE file, or damaged: the object is
    /// then empty. A file without resources is valid.
    bool Parse(std::vector<BYTE> file);

    /// The string of that id, false when it is missing or empty. Of several languages
    /// the neutral one counts, else the first of the file.
    bool FindString(UINT id, std::u16string& text) const;
    /// All ids with a string, in ascending order.
    std::vector<UINT> GetStringIds() const;
    /// Language of the strings, else of the version information: the Windows LANGID, 0 when it is
    /// neutral or there are neither.
    WORD GetLanguage() const { return m_language; }
    /// FileDescription of the version information; empty when there is none.
    const std::u16string& GetFileDescription() const { return m_fileDescription; }

private:
    struct Section {
        DWORD address; // relative to the image
        DWORD length;  // bytes of it that the file has
        DWORD offset;  // in the file
    };
    struct Leaf {
        DWORD type, name, language;
        std::size_t offset, length; // in the file
    };
    struct Position {
        DWORD offset; // in the file
        WORD length;  // UTF-16 units
    };
    class Walk;

    WORD Word(std::size_t offset) const;
    DWORD DWord(std::size_t offset) const;
    bool Holds(std::size_t offset, std::size_t length) const;
    const Section* FindSection(DWORD address) const;
    bool ReadHeaders(DWORD& resources);
    bool ReadSections(std::size_t offset, unsigned count);
    bool AddStrings(const Leaf& leaf);
    void ReadVersion(const Leaf& leaf);

    std::vector<BYTE> m_file;
    std::vector<Section> m_sections;
    std::unordered_map<UINT, Position> m_strings;
    std::u16string m_fileDescription;
    WORD m_language = 0;
};

} // namespace vnbytstr::detail
