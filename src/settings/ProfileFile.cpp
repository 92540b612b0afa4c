// Invariants:
//  1. m_sections[0] has no header.
//  2. Every index in m_byName is that of a section with that name.
//  3. Every index in a section's byName is that of a living entry with that name, which is not
//     hidden; each name has one such entry at the most.
//  4. Every index in a section's removed is that of a dead entry with that name.
#include "src/settings/ProfileFile.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace vnbytstr::detail {

namespace {

constexpr std::string_view kMark = "\xEF\xBB\xBF"; // of UTF-8, which editors put first

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

bool IsReadable(std::string_view line) {
    static const CodePage& utf8 = *CodePage::Find(65001);
    const char* const end = line.data() + line.size();
    for (const char* p = line.data(); p < end;) {
        const std::size_t length = utf8.CharLength(p, end);
        if (*p == '\0' || (length == 1 && static_cast<BYTE>(*p) >= 0x80))
            return false;
        p += length;
    }
    return true;
}

struct Header {
    UINT root;
    std::string_view name;
};

/// "[3/Options]", or nothing for any other header.
std::optional<Header> ReadHeader(std::string_view line) {
    if (line.size() < 2 || line.front() != '[' || line.back() != ']')
        return std::nullopt;
    line = line.substr(1, line.size() - 2);
    const std::size_t slash = line.find('/');
    if (slash == std::string_view::npos)
        return std::nullopt;
    UINT root = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + slash, root);
    if (error != std::errc() || end != line.data() + slash)
        return std::nullopt;
    return Header{root, Trimmed(line.substr(slash + 1))};
}

/// The name in an entry's line, as it is written.
std::string_view NameIn(std::string_view line) {
    const std::string_view text = Trimmed(line);
    return Trimmed(text.substr(0, text.find('=')));
}

} // namespace

ProfileFile::ProfileFile(const CodePage& page) : m_page(&page), m_sections(1) {}

ProfileFile::ProfileFile(std::string_view text, const CodePage& page) : ProfileFile(page) {
    if (text.starts_with(kMark))
        text.remove_prefix(kMark.size());
    Read(text);
}

void ProfileFile::Read(std::string_view text) {
    std::size_t number = 0, current = 0;
    bool isStrange = false, isKnown = false;
    while (!text.empty()) {
        ++number;
        const std::size_t size = std::min(text.find('\n'), text.size());
        const std::string_view raw = text.substr(0, size), line = Trimmed(raw);
        text.remove_prefix(std::min(size + 1, text.size()));
        if (!IsReadable(raw)) {
            if (m_damagedLine == 0)
                m_damagedLine = number;
        } else if (line.starts_with('[')) {
            bool isHeader = false;
            current = ReadSection(raw, isHeader);
            (isHeader ? isKnown : isStrange) = true;
        } else {
            (line.starts_with(';') || line.starts_with('#') ? isKnown : isStrange) |= !line.empty();
            ReadLine(m_sections[current], raw);
        }
    }
    if (m_damagedLine == 0 && isStrange && !isKnown)
        m_damagedLine = 1;
}

std::size_t ProfileFile::ReadSection(std::string_view raw, bool& isKnown) {
    const std::optional<Header> header = ReadHeader(Trimmed(raw));
    isKnown = header.has_value();
    bool isWhole = false;
    std::string name;
    if (isKnown)
        name = DecodeProfileText(header->name, *m_page, &isWhole);
    if (isWhole) {
        const auto [place, isNew] =
            m_byName.try_emplace({header->root, std::move(name)}, m_sections.size());
        if (!isNew && Trimmed(m_sections[place->second].header) == Trimmed(raw))
            return place->second;
        // A name that another code page distinguishes from the first stays apart; the first one
        // counts.
        if (!isNew)
            m_sections[place->second].hasTwin = true;
    }
    m_sections.emplace_back().header = raw;
    return m_sections.size() - 1;
}

void ProfileFile::ReadLine(Section& section, std::string_view raw) {
    Line& line = section.lines.emplace_back();
    line.raw = raw;
    const std::string_view text = Trimmed(raw);
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos || section.header.empty() || text[0] == ';' ||
        text[0] == '#')
        return;
    const std::string_view name = Trimmed(text.substr(0, equals));
    line.name = DecodeProfileText(name, *m_page, &line.isEntry);
    if (!line.isEntry)
        return;
    line.value = DecodeProfileText(Trimmed(text.substr(equals + 1)), *m_page);
    const std::size_t index = section.lines.size() - 1;
    const auto [place, isNew] = section.byName.try_emplace(line.name, index);
    if (!isNew) {
        const std::size_t earlier = std::exchange(place->second, index);
        Line& before = section.lines[earlier];
        before.isDead = NameIn(before.raw) == name;
        before.isHidden = !before.isDead;
        if (before.isHidden)
            section.hidden.push_back(earlier);
    }
}

std::string ProfileFile::Text() const {
    std::string text;
    for (const Section& section : m_sections) {
        if (section.isDead)
            continue;
        if (!section.header.empty())
            text += section.header + '\n';
        for (const Line& line : section.lines) {
            if (!line.isDead)
                text += line.raw + '\n';
        }
    }
    // A second mark belongs to its line: it must not be taken for the file's own when it is read.
    if (text.starts_with(kMark))
        text.insert(0, kMark);
    return text;
}

const ProfileFile::Section* ProfileFile::FindSection(UINT root, std::string_view section) const {
    const auto place = m_byName.find(SectionName{root, section});
    return place == m_byName.end() ? nullptr : &m_sections[place->second];
}

const std::string* ProfileFile::Find(UINT root, std::string_view section,
                                     std::string_view name) const {
    const Section* found = FindSection(root, section);
    if (!found)
        return nullptr;
    const auto place = found->byName.find(name);
    return place == found->byName.end() ? nullptr : &found->lines[place->second].value;
}

bool ProfileFile::HasSection(UINT root, std::string_view section) const {
    const Section* found = FindSection(root, section);
    return found && !found->byName.empty();
}

void ProfileFile::ForEach(
    UINT root, std::string_view section,
    const std::function<void(const std::string&, const std::string&)>& visit) const {
    const Section* found = FindSection(root, section);
    if (!found)
        return;
    for (const Line& line : found->lines) {
        if (line.isEntry && !line.isDead && !line.isHidden)
            visit(line.name, line.value);
    }
}

std::string ProfileFile::Raw(std::string_view name, std::string_view value) const {
    return EncodeProfileText(name, ProfileToken::Name, *m_page) + '=' +
           EncodeProfileText(value, ProfileToken::Value, *m_page);
}

ProfileFile::Section& ProfileFile::MakeSection(UINT root, std::string_view section) {
    const auto [place, isNew] =
        m_byName.try_emplace({root, std::string(section)}, m_sections.size());
    if (isNew) {
        std::vector<Line>& before = m_sections.back().lines;
        const bool isFirst = m_sections.size() == 1 && before.empty();
        if (!isFirst && (before.empty() || !Trimmed(before.back().raw).empty()))
            before.emplace_back(); // a blank line between sections
        m_sections.emplace_back().header =
            '[' + std::to_string(root) + '/' +
            EncodeProfileText(section, ProfileToken::Section, *m_page) + ']';
    }
    Section& made = m_sections[place->second];
    made.isDead = false;
    return made;
}

/// Before the blank lines at the section's end; those are no entries, so no index moves.
void ProfileFile::Append(Section& section, Line line) {
    std::size_t index = section.lines.size();
    while (index > 0 && !section.lines[index - 1].isEntry &&
           Trimmed(section.lines[index - 1].raw).empty())
        --index;
    section.byName.emplace(line.name, index);
    section.lines.insert(section.lines.begin() + static_cast<std::ptrdiff_t>(index),
                         std::move(line));
}

bool ProfileFile::Set(UINT root, std::string_view section, std::string_view name,
                      std::string_view value) {
    Section& target = MakeSection(root, section);
    if (const auto place = target.byName.find(name); place != target.byName.end()) {
        Line& line = target.lines[place->second];
        if (line.value == value)
            return false;
        line.value = value;
        line.raw = Raw(name, value);
        return true;
    }
    Line line;
    line.name = name;
    line.value = value;
    line.isEntry = true;
    if (const auto removed = target.removed.find(name);
        removed != target.removed.end() && target.lines[removed->second].value == value)
        line.raw = target.lines[removed->second].raw;
    else
        line.raw = Raw(name, value);
    Append(target, std::move(line));
    return true;
}

/// When the line that counts is removed, no other line of that name may take its place.
void ProfileFile::RemoveHidden(Section& section, std::string_view name) {
    for (const std::size_t index : section.hidden)
        section.lines[index].isDead |= section.lines[index].name == name;
}

bool ProfileFile::Remove(UINT root, std::string_view section, std::string_view name) {
    const auto place = m_byName.find(SectionName{root, section});
    if (place == m_byName.end())
        return false;
    Section& target = m_sections[place->second];
    const auto entry = target.byName.find(name);
    if (entry == target.byName.end())
        return false;
    target.lines[entry->second].isDead = true;
    target.byName.erase(entry);
    RemoveHidden(target, name);
    return true;
}

bool ProfileFile::RemoveSection(UINT root, std::string_view section) {
    const auto place = m_byName.find(SectionName{root, section});
    if (place == m_byName.end())
        return false;
    Section& target = m_sections[place->second];
    bool changed = false, hasText = false;
    for (Line& line : target.lines) {
        if (line.isEntry) {
            changed |= !line.isDead;
            line.isDead = true;
        } else {
            hasText |= !Trimmed(line.raw).empty();
        }
    }
    for (const auto& [name, index] : target.byName)
        target.removed.insert_or_assign(name, index);
    target.byName.clear();
    target.isDead = !hasText && !target.hasTwin;
    return changed;
}

} // namespace vnbytstr::detail
