// The content of the profile file, apart from disks and locks.
//
//     ; a comment
//     [3/Options]
//     MaxCachePages=64
//
// A section's header is the settings root, a slash and the section's name. Names and values are
// written as ProfileText says; blanks around them do not count. Of two lines with one name the
// later one counts; two sections with one name are one. Lines of any other form, comments among
// them, are kept.
//
// Names are compared as they are written, not as converted to the code page. A name that the page
// cannot show whole is not found, listed or removed, nor is anything in such a section: it is kept
// for programs that can show it. Setting a value to what it is already keeps the form in which it
// is written, also when its section was removed in between.
#pragma once

#include "src/settings/ProfileText.h"
#include "vnbytstr/framework/Types.h"

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vnbytstr::detail {

class ProfileFile {
public:
    /// An empty file whose texts are in `page`.
    explicit ProfileFile(const CodePage& page);
    /// Reads a file's text. Lines that are not UTF-8, or hold a NUL, are left out; see DamagedLine.
    ProfileFile(std::string_view text, const CodePage& page);

    /// Number (from 1) of the first line that could not be read: one that is not UTF-8 or holds a
    /// NUL; or 1 when the file is not blank and has no section and no comment, so that it is
    /// something else. 0 when the file is sound.
    std::size_t DamagedLine() const noexcept { return m_damagedLine; }

    /// The whole text, for the disk.
    std::string Text() const;

    /// The value in the code page, null when there is none. Valid until the next change.
    const std::string* Find(UINT root, std::string_view section, std::string_view name) const;
    /// Whether the section has any value; for tests.
    bool HasSection(UINT root, std::string_view section) const;
    /// Calls `visit` with each name and value of a section, in the file's order.
    void ForEach(UINT root, std::string_view section,
                 const std::function<void(const std::string&, const std::string&)>& visit) const;

    /// Each returns whether anything changed.
    bool Set(UINT root, std::string_view section, std::string_view name, std::string_view value);
    bool Remove(UINT root, std::string_view section, std::string_view name);
    /// Comments of the section stay, and so do names that the page cannot show.
    bool RemoveSection(UINT root, std::string_view section);

private:
    struct Line {
        std::string raw;
        std::string name, value; ///< in the code page
        bool isEntry = false;    ///< else only `raw` counts
        bool isDead = false;     ///< not in the text any more
        bool isHidden = false;   ///< a later line of that name, spelt otherwise, counts
    };
    struct StringHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>()(text);
        }
    };
    using LineMap = std::unordered_map<std::string, std::size_t, StringHash, std::equal_to<>>;
    struct Section {
        std::string header; ///< empty for what stands before the first one
        bool isDead = false;
        bool hasTwin = false; ///< a later one of the name, spelt otherwise, must stay hidden
        std::vector<Line> lines;
        LineMap byName;
        std::vector<std::size_t> hidden; ///< the lines with isHidden
        LineMap removed;                 ///< the entries, dead now, that RemoveSection took
    };
    struct SectionName {
        UINT root;
        std::string_view name;
    };
    struct SectionKey {
        UINT root;
        std::string name;
        operator SectionName() const noexcept { return {root, name}; }
    };
    struct SectionHash {
        using is_transparent = void;
        std::size_t operator()(const SectionName& key) const noexcept {
            return std::hash<std::string_view>()(key.name) + key.root;
        }
    };
    struct SectionEqual {
        using is_transparent = void;
        bool operator()(const SectionName& a, const SectionName& b) const noexcept {
            return a.root == b.root && a.name == b.name;
        }
    };

    void Read(std::string_view text);
    std::size_t ReadSection(std::string_view raw, bool& isKnown);
    void ReadLine(Section& section, std::string_view raw);
    const Section* FindSection(UINT root, std::string_view section) const;
    Section& MakeSection(UINT root, std::string_view section);
    std::string Raw(std::string_view name, std::string_view value) const;
    static void Append(Section& section, Line line);
    static void RemoveHidden(Section& section, std::string_view name);

    const CodePage* m_page;
    std::vector<Section> m_sections; // [0] is what stands before the first header
    std::unordered_map<SectionKey, std::size_t, SectionHash, SectionEqual> m_byName;
    std::size_t m_damagedLine = 0;
};

} // namespace vnbytstr::detail
