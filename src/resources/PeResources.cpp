#include "src/resources/PeResources.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace vnbytstr::detail {

namespace {

constexpr DWORD kStringTable = 6; // resource types
constexpr DWORD kVersion = 16;
constexpr DWORD kHighBit = 0x80000000; // of a name: it is a text; of an offset: to a directory
constexpr unsigned kResourceDirectory = 2;
constexpr unsigned kMaxSections = 96;
constexpr unsigned kStringsPerTable = 16;
constexpr DWORD kMaxTable = 4096; // 65536 ids
constexpr std::size_t kDosHeader = 64, kFileHeader = 20, kSectionHeader = 40;
constexpr std::size_t kDirectoryHeader = 16, kDirectoryEntry = 8, kDataEntry = 16;

} // namespace

WORD PeResources::Word(std::size_t offset) const {
    return static_cast<WORD>(m_file[offset] | m_file[offset + 1] << 8);
}

DWORD PeResources::DWord(std::size_t offset) const {
    return Word(offset) | static_cast<DWORD>(Word(offset + 2)) << 16;
}

bool PeResources::Holds(std::size_t offset, std::size_t length) const {
    return offset <= m_file.size() && length <= m_file.size() - offset;
}

const PeResources::Section* PeResources::FindSection(DWORD address) const {
    const auto found = std::find_if(m_sections.begin(), m_sections.end(), [&](const Section& each) {
        return address >= each.address && address - each.address < each.length;
    });
    return found != m_sections.end() ? &*found : nullptr;
}

/// Walks the resource tree and gathers its leaves.
class PeResources::Walk {
public:
    Walk(const PeResources& file, const Section& section, DWORD address)
        : m_file(file), m_base(section.offset + (address - section.address)),
          m_length(section.length - (address - section.address)) {}

    bool Run() { return ReadDirectory(0, 0); }
    const std::vector<Leaf>& GetLeaves() const { return m_leaves; }

private:
    bool Holds(std::size_t offset, std::size_t length) const {
        return offset <= m_length && length <= m_length - offset;
    }

    bool ReadDirectory(std::size_t offset, unsigned level) {
        if (level > 2 || !m_seen.insert(offset).second || !Holds(offset, kDirectoryHeader))
            return false;
        const std::size_t count =
            std::size_t{m_file.Word(m_base + offset + 12)} + m_file.Word(m_base + offset + 14);
        m_entries += count;
        offset += kDirectoryHeader;
        if (m_entries > kMaxEntries || !Holds(offset, count * kDirectoryEntry))
            return false;
        for (std::size_t i = 0; i < count; ++i, offset += kDirectoryEntry) {
            m_path[level] = m_file.DWord(m_base + offset);
            if (!IsName(m_path[level]) || !ReadEntry(m_file.DWord(m_base + offset + 4), level))
                return false;
        }
        return true;
    }

    /// Whether a name that is a text lies within the resources; a number always does.
    bool IsName(DWORD name) const {
        if ((name & kHighBit) == 0)
            return true;
        const std::size_t offset = name & ~kHighBit;
        return Holds(offset, 2) && Holds(offset + 2, std::size_t{2} * m_file.Word(m_base + offset));
    }

    bool ReadEntry(DWORD offset, unsigned level) {
        if ((offset & kHighBit) != 0)
            return ReadDirectory(offset & ~kHighBit, level + 1);
        if (level != 2 || !Holds(offset, kDataEntry))
            return false;
        const DWORD address = m_file.DWord(m_base + offset);
        const DWORD length = m_file.DWord(m_base + offset + 4);
        const Section* section = m_file.FindSection(address);
        if (length == 0)
            return true;
        if (section == nullptr || length > section->length - (address - section->address))
            return false;
        m_leaves.push_back({m_path[0], m_path[1], m_path[2],
                            section->offset + (address - section->address), length});
        return true;
    }

    const PeResources& m_file;
    std::size_t m_base, m_length; // of the resources in the file
    std::size_t m_entries = 0;
    DWORD m_path[3] = {};
    std::unordered_set<std::size_t> m_seen;
    std::vector<Leaf> m_leaves;
};

bool PeResources::Parse(std::vector<BYTE> file) {
    *this = {};
    if (file.size() > kMaxFileLength)
        return false;
    m_file = std::move(file);
    DWORD resources = 0;
    bool isGood = ReadHeaders(resources);
    if (isGood && resources != 0) {
        const Section* section = FindSection(resources);
        isGood = section != nullptr;
        if (isGood) {
            Walk walk(*this, *section, resources);
            isGood = walk.Run();
            bool hasVersion = false;
            for (const Leaf& leaf : walk.GetLeaves()) {
                if (leaf.type == kStringTable)
                    isGood = isGood && AddStrings(leaf);
                else if (leaf.type == kVersion && !std::exchange(hasVersion, true))
                    ReadVersion(leaf); // any number of leaves may share one block
            }
        }
    }
    if (!isGood)
        *this = {};
    return isGood;
}

bool PeResources::ReadHeaders(DWORD& resources) {
    if (!Holds(0, kDosHeader) || m_file[0] != 'M' || m_file[1] != 'Z')
        return false;
    const std::size_t header = DWord(0x3C);
    if (!Holds(header, 4 + kFileHeader) || DWord(header) != 0x00004550) // "PE"
        return false;
    const unsigned sections = Word(header + 4 + 2);
    const std::size_t optionalLength = Word(header + 4 + 16);
    const std::size_t optional = header + 4 + kFileHeader;
    if (optionalLength < 2 || !Holds(optional, optionalLength))
        return false;
    const WORD magic = Word(optional);
    if (magic != 0x10B && magic != 0x20B)
        return false;
    const std::size_t directories = magic == 0x10B ? 96 : 112;
    if (optionalLength < directories)
        return false;
    const std::size_t count = DWord(optional + directories - 4);
    const std::size_t entry = directories + kResourceDirectory * std::size_t{8};
    if (count > kResourceDirectory) {
        if (optionalLength < entry + 8)
            return false;
        resources = DWord(optional + entry);
    }
    return ReadSections(optional + optionalLength, sections);
}

bool PeResources::ReadSections(std::size_t offset, unsigned count) {
    if (count > kMaxSections || !Holds(offset, count * kSectionHeader))
        return false;
    for (unsigned i = 0; i < count; ++i, offset += kSectionHeader) {
        const DWORD virtualLength = DWord(offset + 8);
        Section section{DWord(offset + 12), DWord(offset + 16), DWord(offset + 20)};
        if (section.length != 0 && !Holds(section.offset, section.length))
            return false;
        // What the file has past the section's length is padding; length 0 is that of old linkers.
        if (virtualLength != 0)
            section.length = std::min(section.length, virtualLength);
        m_sections.push_back(section);
    }
    return true;
}

bool PeResources::AddStrings(const Leaf& leaf) {
    if (leaf.name == 0 || leaf.name > kMaxTable || leaf.length % 2 != 0)
        return false;
    if (m_strings.empty())
        m_language = static_cast<WORD>(leaf.language);
    const UINT first = (leaf.name - 1) * kStringsPerTable;
    const std::size_t end = leaf.offset + leaf.length;
    std::size_t offset = leaf.offset;
    // Some tools leave out the empty strings at the end.
    for (UINT i = 0; i < kStringsPerTable && offset < end; ++i) {
        const WORD length = Word(offset);
        offset += 2;
        if (std::size_t{2} * length > end - offset)
            return false;
        if (length != 0)
            m_strings.try_emplace(first + i, Position{static_cast<DWORD>(offset), length});
        offset += std::size_t{2} * length;
    }
    return true;
}

bool PeResources::FindString(UINT id, std::u16string& text) const {
    const auto found = m_strings.find(id);
    if (found == m_strings.end())
        return false;
    text.resize(found->second.length);
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = Word(found->second.offset + 2 * i);
    return true;
}

std::vector<UINT> PeResources::GetStringIds() const {
    std::vector<UINT> ids;
    for (const auto& [id, position] : m_strings)
        ids.push_back(id);
    std::sort(ids.begin(), ids.end());
    return ids;
}

/// Version information is a tree of blocks: WORD length, WORD length of the value, WORD 1 when the
/// value is text (its length then counts units), key with its NUL, padding to four bytes, value,
/// padding, inner blocks. The description is VS_VERSION_INFO/StringFileInfo/<language>/
/// FileDescription. A broken block is skipped: the file's strings are usable without it.
void PeResources::ReadVersion(const Leaf& leaf) {
    if (m_strings.empty())
        m_language = static_cast<WORD>(leaf.language);
    struct Block {
        std::u16string key, value;
        std::size_t inner, end;
    };
    const auto aligned = [&](std::size_t offset) {
        return leaf.offset + ((offset - leaf.offset + 3) & ~std::size_t{3});
    };
    // Reads the text at `offset` up to its NUL and moves `offset` past that.
    const auto readText = [&](std::size_t& offset, std::size_t end) {
        std::u16string text;
        while (offset + 2 <= end) {
            const char16_t unit = Word(offset);
            offset += 2;
            if (unit == 0)
                break;
            text += unit;
        }
        return text;
    };
    const auto readBlock = [&](std::size_t offset, std::size_t end, Block& block) {
        if (offset > end || end - offset < 6 || Word(offset) < 6 || Word(offset) > end - offset)
            return false;
        block.end = offset + Word(offset);
        const bool isText = Word(offset + 4) == 1;
        const std::size_t length = Word(offset + 2) * std::size_t{isText ? 2u : 1u};
        offset += 6;
        block.key = readText(offset, block.end);
        const std::size_t value = std::min(aligned(offset), block.end);
        block.inner = std::min(aligned(std::min(value + length, block.end)), block.end);
        offset = value;
        block.value = isText ? readText(offset, std::min(value + length, block.end)) : u"";
        return true;
    };
    Block root, info, table, entry;
    const std::size_t end = leaf.offset + leaf.length;
    if (!readBlock(leaf.offset, end, root))
        return;
    for (std::size_t i = root.inner; readBlock(i, root.end, info); i = aligned(info.end)) {
        if (info.key != u"StringFileInfo")
            continue;
        for (std::size_t j = info.inner; readBlock(j, info.end, table); j = aligned(table.end)) {
            for (std::size_t k = table.inner; readBlock(k, table.end, entry);
                 k = aligned(entry.end)) {
                if (entry.key == u"FileDescription" && m_fileDescription.empty())
                    m_fileDescription = entry.value;
            }
        }
    }
}

} // namespace vnbytstr::detail
