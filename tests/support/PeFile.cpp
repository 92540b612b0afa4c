#include "tests/support/PeFile.h"

namespace vnbytstr::test {

namespace {

constexpr DWORD kAddress = 0x1000; // of the one section
constexpr DWORD kDirectory = 0x80000000;

class Writer {
public:
    explicit Writer(std::vector<BYTE>& bytes) : m_bytes(bytes) {}
    void Word(std::size_t value) {
        m_bytes.push_back(static_cast<BYTE>(value));
        m_bytes.push_back(static_cast<BYTE>(value >> 8));
    }
    void DWord(std::size_t value) {
        Word(value & 0xFFFF);
        Word(value >> 16);
    }
    void Zeros(std::size_t count) { m_bytes.insert(m_bytes.end(), count, 0); }
    void Text(const std::u16string& text) {
        for (const char16_t unit : text)
            Word(unit);
    }
    void Align() { Zeros((4 - m_bytes.size() % 4) % 4); }

private:
    std::vector<BYTE>& m_bytes;
};

std::vector<BYTE> MakeTable(const std::map<UINT, std::u16string>& strings, UINT block) {
    std::vector<BYTE> bytes;
    Writer writer(bytes);
    for (UINT i = 0; i < 16; ++i) {
        const auto found = strings.find((block - 1) * 16 + i);
        const std::u16string text = found != strings.end() ? found->second : u"";
        writer.Word(text.size());
        writer.Text(text);
    }
    return bytes;
}

/// A block of version information with what is inside it.
std::vector<BYTE> MakeBlock(const std::u16string& key, const std::u16string& value,
                            const std::vector<BYTE>& inner) {
    std::vector<BYTE> bytes;
    Writer writer(bytes);
    writer.Word(0);
    writer.Word(value.empty() ? 0 : value.size() + 1);
    writer.Word(1);
    writer.Text(key);
    writer.Word(0);
    writer.Align();
    if (!value.empty()) {
        writer.Text(value);
        writer.Word(0);
        writer.Align();
    }
    bytes.insert(bytes.end(), inner.begin(), inner.end());
    bytes[0] = static_cast<BYTE>(bytes.size());
    bytes[1] = static_cast<BYTE>(bytes.size() >> 8);
    return bytes;
}

void WriteDirectory(Writer& writer, std::size_t entries) {
    writer.Zeros(12);
    writer.Word(0);
    writer.Word(entries);
}

} // namespace

PeFile MakePeFile(const PeContent& content) {
    // What the leaves hold: the string tables, then the version.
    std::vector<std::pair<DWORD, std::vector<BYTE>>> tables;
    for (const auto& [id, text] : content.strings) {
        if (tables.empty() || tables.back().first != id / 16 + 1)
            tables.emplace_back(id / 16 + 1, MakeTable(content.strings, id / 16 + 1));
    }
    const std::size_t tableCount = tables.size();
    const bool hasVersion = !content.fileDescription.empty();
    if (hasVersion) {
        const auto entry = MakeBlock(u"FileDescription", content.fileDescription, {});
        const auto info = MakeBlock(u"StringFileInfo", u"", MakeBlock(u"040904B0", u"", entry));
        tables.emplace_back(1, MakeBlock(u"VS_VERSION_INFO", u"", info));
    }

    PeFile file;
    std::vector<BYTE>& bytes = file.bytes;
    Writer writer(bytes);
    bytes = {'M', 'Z'};
    writer.Zeros(0x3A);
    file.header = 0x40;
    writer.DWord(file.header);
    bytes.insert(bytes.end(), {'P', 'E', 0, 0});
    writer.Word(content.is64Bit ? 0x8664 : 0x14C);
    writer.Word(1);
    writer.Zeros(12);
    const std::size_t directories = content.is64Bit ? 112 : 96;
    writer.Word(directories + 128);
    writer.Word(0x2002);
    file.optional = bytes.size();
    writer.Word(content.is64Bit ? 0x20B : 0x10B);
    writer.Zeros(directories - 6);
    writer.DWord(16);
    writer.Zeros(16);
    file.resourceEntry = bytes.size();
    writer.DWord(kAddress);
    writer.Zeros(4 + 13 * 8);
    file.sections = bytes.size();
    bytes.insert(bytes.end(), {'.', 'r', 's', 'r', 'c', 0, 0, 0});
    writer.Zeros(32);
    writer.Zeros(0x200 - bytes.size());
    file.resources = bytes.size();

    // Root, types, names, languages, data entries, data.
    const std::size_t types = (tableCount > 0 ? 1u : 0u) + (hasVersion ? 1u : 0u);
    const std::size_t names = 16 + 8 * types;
    const std::size_t versionNames = names + (tableCount > 0 ? 16 + 8 * tableCount : 0);
    const std::size_t languages = versionNames + (hasVersion ? 24u : 0u);
    const std::size_t entries = languages + 24 * tables.size();
    std::size_t data = entries + 16 * tables.size();
    file.typeDirectory = file.resources + names;
    file.nameDirectory = file.resources + languages;
    file.dataEntry = file.resources + entries;
    file.data = file.resources + data;

    WriteDirectory(writer, types);
    if (tableCount > 0) {
        writer.DWord(6);
        writer.DWord(kDirectory | names);
    }
    if (hasVersion) {
        writer.DWord(16);
        writer.DWord(kDirectory | versionNames);
    }
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (i == 0 && tableCount > 0)
            WriteDirectory(writer, tableCount);
        else if (i == tableCount)
            WriteDirectory(writer, 1);
        writer.DWord(tables[i].first);
        writer.DWord(kDirectory | (languages + 24 * i));
    }
    for (std::size_t i = 0; i < tables.size(); ++i) {
        WriteDirectory(writer, 1);
        writer.DWord(content.language);
        writer.DWord(entries + 16 * i);
    }
    for (const auto& [name, table] : tables) {
        writer.DWord(kAddress + data);
        writer.DWord(table.size());
        writer.Zeros(8);
        data += (table.size() + 3) & ~std::size_t{3};
    }
    for (const auto& [name, table] : tables) {
        bytes.insert(bytes.end(), table.begin(), table.end());
        writer.Align();
    }
    const auto length = static_cast<DWORD>(bytes.size() - file.resources);
    file.SetDWord(file.resourceEntry + 4, length);
    file.SetDWord(file.sections + 8, length);
    file.SetDWord(file.sections + 12, kAddress);
    file.SetDWord(file.sections + 16, length);
    file.SetDWord(file.sections + 20, static_cast<DWORD>(file.resources));
    return file;
}

} // namespace vnbytstr::test
