#include "src/resources/PeResources.h"
#include "tests/support/PeFile.h"
#include "tests/support/Vectors.h"

#include <gtest/gtest.h>
#include <random>

using vnbytstr::detail::PeResources;
using vnbytstr::test::MakePeFile;
using vnbytstr::test::PeContent;
using vnbytstr::test::PeFile;

namespace {

PeContent Content(bool is64Bit = true) {
    PeContent content;
    content.strings = {{1, u"one"},
                       {15, u"fifteen"},
                       {16, u"\u05D0\u65E5\U0001F600"},
                       {34588, u"<BLOB>"},
                       {65535, u"last"}};
    content.language = 0x40D;
    content.is64Bit = is64Bit;
    content.fileDescription = u"\u200E\u200Edescription";
    return content;
}

TEST(PeResources, ReadsBothKindsOfFiles) {
    for (const bool is64Bit : {true, false}) {
        PeContent content = Content(is64Bit);
        PeResources resources;
        ASSERT_TRUE(resources.Parse(MakePeFile(content).bytes));
        std::map<UINT, std::u16string> read;
        for (const UINT id : resources.GetStringIds())
            ASSERT_TRUE(resources.FindString(id, read[id]));
        EXPECT_EQ(read, content.strings);
        EXPECT_EQ(resources.GetLanguage(), 0x40D);
        EXPECT_EQ(resources.GetFileDescription(), content.fileDescription);
        std::u16string text = u"as it was";
        EXPECT_FALSE(resources.FindString(2, text));   // an empty one
        EXPECT_FALSE(resources.FindString(700, text)); // no table
        EXPECT_FALSE(resources.FindString(34588 + 65536, text));
        EXPECT_EQ(text, u"as it was");
    }
}

TEST(PeResources, TakesFilesThatHaveLess) {
    PeResources resources;
    PeFile none = MakePeFile({});
    none.SetDWord(none.resourceEntry, 0);
    EXPECT_TRUE(resources.Parse(none.bytes));
    EXPECT_TRUE(resources.GetStringIds().empty());

    PeContent versionOnly;
    versionOnly.fileDescription = u"x";
    versionOnly.language = 0x411;
    EXPECT_TRUE(resources.Parse(MakePeFile(versionOnly).bytes));
    EXPECT_EQ(resources.GetLanguage(), 0x411);

    // A table that ends after its last string.
    PeContent content;
    content.strings = {{0, u"ab"}};
    PeFile file = MakePeFile(content);
    file.SetDWord(file.dataEntry + 4, 6);
    EXPECT_TRUE(resources.Parse(file.bytes));
    EXPECT_EQ(resources.GetStringIds(), std::vector<UINT>{0});

    // Version information that makes no sense does not spoil the strings.
    PeFile version = MakePeFile(Content());
    for (const WORD length : std::initializer_list<WORD>{0, 5, 7, 0x7FFF, 0xFFFF}) {
        const std::size_t block = version.Text().rfind(std::string("V\0S\0_\0", 6)) - 6;
        version.SetWord(block, length);
        EXPECT_TRUE(resources.Parse(version.bytes));
        EXPECT_FALSE(resources.GetStringIds().empty());
        EXPECT_TRUE(resources.GetFileDescription().empty()) << length;
    }
}

std::size_t PartOf(const PeFile& file, const std::string& name) {
    const std::map<std::string, std::size_t> parts = {{"start", 0},
                                                      {"end", file.bytes.size()},
                                                      {"header", file.header},
                                                      {"optional", file.optional},
                                                      {"resourceEntry", file.resourceEntry},
                                                      {"sections", file.sections},
                                                      {"resources", file.resources},
                                                      {"typeDirectory", file.typeDirectory},
                                                      {"nameDirectory", file.nameDirectory},
                                                      {"dataEntry", file.dataEntry},
                                                      {"data", file.data}};
    return parts.at(name);
}

/// A number, or where a directory is: @ and a part, with a distance to it.
DWORD ValueOf(const PeFile& file, const std::string& text) {
    if (text[0] != '@')
        return static_cast<DWORD>(std::stoll(text));
    const std::size_t sign = std::min(text.find('-'), text.size());
    const int distance = sign < text.size() ? std::stoi(text.substr(sign)) : 0;
    return 0x80000000 |
           (static_cast<DWORD>(PartOf(file, text.substr(1, sign - 1)) - file.resources) +
            static_cast<DWORD>(distance));
}

TEST(PeResources, RefusesDamagedFiles) {
    for (const auto& damage : vnbytstr::test::ReadVectors("resources/data/damages.txt")) {
        PeFile file = MakePeFile(Content());
        const std::size_t at =
            PartOf(file, damage[1]) + static_cast<std::size_t>(std::stoi(damage[2]));
        if (damage[0] == "Cut")
            file.bytes.resize(at);
        else if (damage[0] == "Word")
            file.SetWord(at, static_cast<WORD>(ValueOf(file, damage[3])));
        else
            file.SetDWord(at, ValueOf(file, damage[3]));
        PeResources resources;
        EXPECT_FALSE(resources.Parse(file.bytes)) << testing::PrintToString(damage);
        EXPECT_TRUE(resources.GetStringIds().empty()) << testing::PrintToString(damage);
    }
}

TEST(PeResources, RefusesATreeThatIsTooWide) {
    // A directory of 65536 empty directories, all different, would be within the file.
    PeFile file = MakePeFile(Content());
    const std::size_t root = file.resources;
    file.bytes.resize(root);
    file.bytes.resize(root + 16 + 65535 * 8 + 65536 * 16);
    file.SetWord(root + 12, 1);
    file.SetWord(root + 14, 0xFFFE);
    for (DWORD i = 0; i < 0xFFFF; ++i)
        file.SetDWord(root + 16 + 8 * i + 4, 0x80000000u | (16 + 65535 * 8 + 16 * i));
    const auto length = static_cast<DWORD>(file.bytes.size() - root);
    file.SetDWord(file.sections + 8, length);
    file.SetDWord(file.sections + 16, length);
    PeResources resources;
    EXPECT_TRUE(resources.Parse(file.bytes));
    // One more entry, in one of them, is one too many for all of them together.
    file.SetWord(root + 16 + 65535 * 8 + 14, 2);
    EXPECT_FALSE(resources.Parse(file.bytes));
}

// Whatever the bytes are, what is read lies within them (the sanitizers look) and every string that
// is listed is there.
TEST(PeResources, SurvivesAnyBytes) {
    const PeFile good = MakePeFile(Content(false));
    const auto check = [](std::vector<BYTE> bytes) {
        PeResources resources;
        if (!resources.Parse(std::move(bytes)))
            return;
        std::u16string text;
        for (const UINT id : resources.GetStringIds())
            ASSERT_TRUE(resources.FindString(id, text));
    };
    for (std::size_t length = 0; length < good.bytes.size(); ++length)
        check({good.bytes.begin(), good.bytes.begin() + static_cast<std::ptrdiff_t>(length)});
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round) {
        std::vector<BYTE> bytes = good.bytes;
        for (unsigned changes = 1 + random() % 4; changes > 0; --changes)
            bytes[random() % bytes.size()] = static_cast<BYTE>(random() % 3 ? random() : 0xFF);
        check(std::move(bytes));
    }
}

// --- files put together by hand, with sound bytes where a broken length leads ------------------

std::string Words(std::initializer_list<unsigned> words) {
    std::string bytes;
    for (const unsigned word : words) {
        bytes += static_cast<char>(word);
        bytes += static_cast<char>(word >> 8);
    }
    return bytes;
}
std::string DWords(std::initializer_list<DWORD> dwords) {
    std::string bytes;
    for (const DWORD dword : dwords)
        bytes += Words({dword & 0xFFFF, dword >> 16});
    return bytes;
}
std::string Zeros(std::size_t count) { return std::string(count, '\0'); }

constexpr DWORD kSub = 0x80000000, kAddress = 0x1000;

/// A resource directory of numbered entries, each with an offset.
std::string Directory(std::initializer_list<std::pair<DWORD, DWORD>> entries) {
    std::string bytes = Zeros(12) + Words({0, static_cast<unsigned>(entries.size())});
    for (const auto& [name, offset] : entries)
        bytes += DWords({name, offset});
    return bytes;
}

struct Image {
    std::string resources; ///< the first section
    std::string behind{};  ///< bytes of the file after it
    unsigned sections = 1, optionalLength = 240;
    DWORD virtualLength = 0;
    std::string sectionName = ".rsrc...";

    bool IsTaken(PeResources& result) const {
        constexpr DWORD kOffset = 0x2000;
        std::string file = "MZ" + Zeros(58) + DWords({0x40, 0x4550}) + Words({0x8664, sections});
        file += Zeros(12) + Words({optionalLength, 0x2102}) + Words({0x20B}) + Zeros(106) +
                DWords({16}) + Zeros(16) + DWords({kAddress}) + Zeros(256);
        file.resize(0x40 + 24 + optionalLength);
        const auto size = static_cast<DWORD>(resources.size());
        file += sectionName + DWords({virtualLength, kAddress, size, kOffset}) + Zeros(16);
        file.resize(kOffset);
        file += resources + behind;
        return result.Parse({file.begin(), file.end()});
    }
};

/// One table of strings, its data entry with that length.
std::string Strings(const std::string& data, std::size_t length, DWORD type = 6) {
    return Directory({{type, kSub | 24}}) + Directory({{1, kSub | 48}}) + Directory({{0, 72}}) +
           DWords({kAddress + 88, static_cast<DWORD>(length), 0, 0}) + data;
}

TEST(PeResources, LengthsEndWhereTheyShould) {
    PeResources resources;
    const std::string table = Words({2, 'a', 'b'});
    std::u16string text;
    Image good{.resources = Strings(table, table.size()), .behind = Zeros(64)};
    ASSERT_TRUE(good.IsTaken(resources));
    EXPECT_TRUE(resources.FindString(0, text));
    EXPECT_EQ(text, u"ab");
    // Data that begin in the section and end after it.
    Image longer{.resources = Strings(table, table.size() + 2), .behind = Zeros(64)};
    EXPECT_FALSE(longer.IsTaken(resources));
    // A string of one unit more than its table.
    Image string{.resources = Strings(table, table.size() - 2)};
    EXPECT_FALSE(string.IsTaken(resources));
    // A type that is a text, whose length and units lie within the resources.
    for (const auto& [place, isGood] : {std::pair<DWORD, bool>{88, true}, {92, false}, {93, false}})
        EXPECT_EQ(Image{.resources = Strings(table, table.size(), kSub | place)}.IsTaken(resources),
                  isGood);
    // A directory of two entries, of which the section holds one and the file both.
    Image directory{.resources = Directory({{6, kSub | 24}}) + Directory({{1, kSub | 70}}) +
                                 DWords({kAddress + 64, 6, 0, 0}) + table +
                                 Directory({{0, 48}, {1, 48}}),
                    .behind = Zeros(64)};
    EXPECT_TRUE(directory.IsTaken(resources));
    directory.virtualLength = static_cast<DWORD>(directory.resources.size() - 8);
    EXPECT_FALSE(directory.IsTaken(resources));
    // The optional header ends before the entry for resources; what follows it looks like one.
    Image header = good;
    header.optionalLength = 128;
    header.sectionName = DWords({kAddress, 0});
    EXPECT_FALSE(header.IsTaken(resources));
    for (const unsigned sections : {96u, 97u}) {
        Image many = good;
        many.sections = sections;
        EXPECT_EQ(many.IsTaken(resources), sections == 96);
    }
}

TEST(PeResources, EntriesEnd) {
    // All lead to one data entry of no length.
    constexpr auto kMax = static_cast<unsigned>(PeResources::kMaxEntries);
    for (const unsigned count : {kMax - 2, kMax - 1}) {
        std::string tree = Directory({{16, kSub | 24}}) + Directory({{1, kSub | 64}}) +
                           DWords({0, 0, 0, 0}) + Zeros(12) + Words({count - 30000, 30000});
        for (DWORD i = 0; i < count; ++i)
            tree += DWords({i, 48});
        PeResources resources;
        EXPECT_EQ(Image{.resources = tree}.IsTaken(resources), count == kMax - 2);
    }
}

TEST(PeResources, TheFirstVersionInformationCounts) {
    const auto block = [](const std::string& key, const std::string& inner, bool isText) {
        std::string bytes = key;
        bytes.resize((bytes.size() + 2 + 6 + 3) / 4 * 4 - 6);
        bytes += inner;
        const std::size_t value = isText ? inner.size() / 2 : 0;
        return Words({static_cast<unsigned>(bytes.size() + 6), static_cast<unsigned>(value),
                      isText ? 1u : 0u}) +
               bytes;
    };
    const auto wide = [](std::string_view text) {
        std::string bytes;
        for (const char c : text)
            bytes += Words({static_cast<unsigned char>(c)});
        return bytes;
    };
    const auto version = [&](std::string_view description) {
        return block(wide("VS_VERSION_INFO"),
                     block(wide("StringFileInfo"),
                           block(wide("040904B0"),
                                 block(wide("FileDescription"), wide(description), true), false),
                           false),
                     false);
    };
    const std::string other = block(wide("VS_VERSION_INFO"), "", false),
                      described = version("text");
    PeResources resources;
    const auto both = [&](const std::string& first, const std::string& second) {
        const auto begin = static_cast<DWORD>(24 + 24 + 32 + 32);
        const std::string tree = Directory({{16, kSub | 24}}) + Directory({{1, kSub | 48}}) +
                                 Directory({{0, 80}, {1, 96}}) +
                                 DWords({kAddress + begin, static_cast<DWORD>(first.size()), 0, 0,
                                         kAddress + begin + static_cast<DWORD>(first.size()),
                                         static_cast<DWORD>(second.size()), 0, 0}) +
                                 first + second;
        EXPECT_TRUE(Image{.resources = tree}.IsTaken(resources));
        return resources.GetFileDescription();
    };
    EXPECT_EQ(both(described, other), u"text");
    // Else any number of leaves that share a long block could be made to be read.
    EXPECT_EQ(both(other, described), u"");
}

} // namespace
