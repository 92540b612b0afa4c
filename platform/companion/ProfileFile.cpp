// Invariants: m_sections[0] has no header; every index in m_byName is that of a section with that
// name, every index in a section's byName that of a living entry with that name, and each name has
// one living entry at the most.
#include "platform/companion/ProfileFileInternal.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace vnbytstr::detail {

namespace {

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

} // namespace

ProfileFile::ProfileFile(const CodePage& page) : m_page(&page), m_sections(1) {}

ProfileFile::ProfileFile(std::string_view text, const CodePage& page) : ProfileFile(page) {
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
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
    if (isKnown) {
        const auto [place, isNew] = m_byName.try_emplace(
            {header->root, DecodeProfileText(header->name, *m_page)}, m_sections.size());
        if (!isNew)
            return place->second;
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
    line.isEntry = true;
    line.name = DecodeProfileText(Trimmed(text.substr(0, equals)), *m_page);
    line.value = DecodeProfileText(Trimmed(text.substr(equals + 1)), *m_page);
    const std::size_t index = section.lines.size() - 1;
    const auto [place, isNew] = section.byName.try_emplace(line.name, index);
    if (!isNew) {
        section.lines[place->second].isDead = true;
        place->second = index;
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
        if (line.isEntry && !line.isDead)
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
    return m_sections[place->second];
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
    // Before the blank lines at the section's end; those are no entries, so no index moves.
    std::size_t index = target.lines.size();
    while (index > 0 && !target.lines[index - 1].isEntry &&
           Trimmed(target.lines[index - 1].raw).empty())
        --index;
    Line line;
    line.raw = Raw(name, value);
    line.name = name;
    line.value = value;
    line.isEntry = true;
    target.lines.insert(target.lines.begin() + static_cast<std::ptrdiff_t>(index), std::move(line));
    target.byName.emplace(name, index);
    return true;
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
    target.byName.clear();
    if (hasText)
        return changed;
    target.isDead = true;
    m_byName.erase(place);
    return true;
}

} // namespace vnbytstr::detail
