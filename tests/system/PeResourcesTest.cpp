#include "platform/system/PeResourcesInternal.h"
#include "tests/support/PeFile.h"

#include <functional>
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
    }
}

struct Damage {
    const char* what;
    std::function<void(PeFile&)> apply;
};

std::function<void(PeFile&)> Cut(std::size_t PeFile::*part, std::ptrdiff_t offset) {
    return [=](PeFile& file) {
        file.bytes.resize(
            static_cast<std::size_t>(static_cast<std::ptrdiff_t>(file.*part) + offset));
    };
}

std::function<void(PeFile&)> Word(std::size_t PeFile::*part, std::size_t offset, unsigned value) {
    return [=](PeFile& file) { file.SetWord(file.*part + offset, static_cast<WORD>(value)); };
}

std::function<void(PeFile&)> DWord(std::size_t PeFile::*part, std::size_t offset, DWORD value) {
    return [=](PeFile& file) { file.SetDWord(file.*part + offset, value); };
}

const std::vector<Damage> kDamages = {
    {"empty", [](PeFile& file) { file.bytes.clear(); }},
    {"one byte", [](PeFile& file) { file.bytes.resize(1); }},
    {"cut in the first header", [](PeFile& file) { file.bytes.resize(63); }},
    {"cut before the file header", Cut(&PeFile::header, 0)},
    {"cut in the signature", Cut(&PeFile::header, 3)},
    {"cut in the file header", Cut(&PeFile::header, 23)},
    {"cut before the optional header", Cut(&PeFile::optional, 0)},
    {"cut in the optional header", Cut(&PeFile::optional, 100)},
    {"cut before the resource entry", Cut(&PeFile::resourceEntry, 0)},
    {"cut before the section table", Cut(&PeFile::sections, 0)},
    {"cut in the section table", Cut(&PeFile::sections, 39)},
    {"cut before the section", Cut(&PeFile::resources, 0)},
    {"cut in the root directory", Cut(&PeFile::resources, 15)},
    {"cut in the root's entries", Cut(&PeFile::resources, 20)},
    {"cut in a type", Cut(&PeFile::typeDirectory, 8)},
    {"cut in a name", Cut(&PeFile::nameDirectory, 17)},
    {"cut in a data entry", Cut(&PeFile::dataEntry, 7)},
    {"cut in a string", Cut(&PeFile::data, 3)},
    {"cut before the last byte", [](PeFile& file) { file.bytes.pop_back(); }},
    {"not MZ", [](PeFile& file) { file.bytes[1] = 'z'; }},
    {"not PE", Word(&PeFile::header, 0, 0x4D5A)},
    {"file header past the end", [](PeFile& file) { file.SetDWord(0x3C, 0x7FFFFFFF); }},
    {"file header at the very end", [](PeFile& file) { file.SetDWord(0x3C, 0xFFFFFFFF); }},
    {"file header in its own field", [](PeFile& file) { file.SetDWord(0x3C, 0x3C); }},
    {"unknown kind of optional header", Word(&PeFile::optional, 0, 0x107)},
    {"no optional header", Word(&PeFile::header, 20, 0)},
    {"optional header of an odd length", Word(&PeFile::header, 20, 111)},
    {"optional header without the entry", Word(&PeFile::header, 20, 112 + 17)},
    {"optional header past the end", Word(&PeFile::header, 20, 0xFFFF)},
    {"too many sections", Word(&PeFile::header, 6, 97)},
    {"most sections", Word(&PeFile::header, 6, 0xFFFF)},
    {"no section", Word(&PeFile::header, 6, 0)},
    {"resources before the section", DWord(&PeFile::resourceEntry, 0, 0xFFF)},
    {"resources past the section", DWord(&PeFile::resourceEntry, 0, 0x10001000)},
    {"resources at the last address", DWord(&PeFile::resourceEntry, 0, 0xFFFFFFFF)},
    {"section past the end", DWord(&PeFile::sections, 20, 0x10000000)},
    {"section whose end overflows", DWord(&PeFile::sections, 20, 0xFFFFFFFF)},
    {"section longer than the file", DWord(&PeFile::sections, 16, 0xFFFFFFFF)},
    {"section of no length", DWord(&PeFile::sections, 16, 0)},
    {"section of too small a memory", DWord(&PeFile::sections, 8, 20)},
    {"section at the last address", DWord(&PeFile::sections, 12, 0xFFFFFFFF)},
    {"most named entries", Word(&PeFile::resources, 12, 0xFFFF)},
    {"most numbered entries", Word(&PeFile::resources, 14, 0xFFFF)},
    {"most entries of a type", Word(&PeFile::typeDirectory, 14, 0xFFFF)},
    {"the root is its own type", DWord(&PeFile::resources, 20, 0x80000000)},
    {"a type is its own name",
     [](PeFile& file) {
         file.SetDWord(file.typeDirectory + 20,
                       0x80000000 | static_cast<DWORD>(file.typeDirectory - file.resources));
     }},
    {"a name leads back to the root", DWord(&PeFile::typeDirectory, 20, 0x80000000)},
    {"a language leads back to the root", DWord(&PeFile::nameDirectory, 20, 0x80000000)},
    {"two names share a directory",
     [](PeFile& file) {
         file.SetDWord(file.typeDirectory + 28,
                       0x80000000 | static_cast<DWORD>(file.nameDirectory - file.resources));
     }},
    {"a directory past the end", DWord(&PeFile::resources, 20, 0xFFFFFFFF)},
    {"a directory in the last bytes",
     [](PeFile& file) {
         file.SetDWord(file.resources + 20,
                       0x80000000 | static_cast<DWORD>(file.bytes.size() - file.resources - 8));
     }},
    {"a fourth level",
     [](PeFile& file) {
         file.SetDWord(file.nameDirectory + 20,
                       0x80000000 | static_cast<DWORD>(file.data - file.resources));
     }},
    {"data in the place of types", DWord(&PeFile::resources, 20, 0x40)},
    {"data in the place of names", DWord(&PeFile::typeDirectory, 20, 0x40)},
    {"a data entry past the end", DWord(&PeFile::nameDirectory, 20, 0x7FFFFFF0)},
    {"data before the section", DWord(&PeFile::dataEntry, 0, 0xFFE)},
    {"data past the section", DWord(&PeFile::dataEntry, 0, 0xFFFFFFFE)},
    {"data of too great a length", DWord(&PeFile::dataEntry, 4, 0x7FFFFFFF)},
    {"data whose end overflows", DWord(&PeFile::dataEntry, 4, 0xFFFFFFFE)},
    {"a table of an odd length", DWord(&PeFile::dataEntry, 4, 37)},
    {"a table that ends in a string", DWord(&PeFile::dataEntry, 4, 6)},
    {"a string that is too long", Word(&PeFile::data, 2, 0xFFFF)},
    {"table 0", DWord(&PeFile::typeDirectory, 16, 0)},
    {"table 4097", DWord(&PeFile::typeDirectory, 16, 4097)},
    {"a table with a name", DWord(&PeFile::typeDirectory, 16, 0x80000000)},
    {"a name past the end", DWord(&PeFile::typeDirectory, 16, 0xFFFFFFFF)},
};

TEST(PeResources, RefusesDamagedFiles) {
    for (const Damage& damage : kDamages) {
        PeFile file = MakePeFile(Content());
        damage.apply(file);
        PeResources resources;
        EXPECT_FALSE(resources.Parse(file.bytes)) << damage.what;
        EXPECT_TRUE(resources.GetStringIds().empty()) << damage.what;
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

} // namespace
