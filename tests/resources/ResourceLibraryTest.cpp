#include "vnbytstr/ResourceLibrary.h"
#include "src/charset/CodePage.h"
#include "tests/support/LongFile.h"
#include "tests/support/PeFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>

using namespace vnbytstr;
using test::MakePeFile;
using test::PeContent;

namespace {

std::string Library(const std::u16string& text, WORD language = 0x409) {
    PeContent content;
    content.strings = {{7, text}};
    content.language = language;
    return MakePeFile(content).Text();
}

CString StringOf(HINSTANCE library, UINT id = 7) {
    CString text = "(none)";
    FindResourceString(library, id, text);
    return text;
}

TEST(ResourceLibrary, CountsLoadsOfTheSameFile) {
    const test::TemporaryFolder folder;
    folder.Write("a.dll", Library(u"first"));
    HINSTANCE first = nullptr, second = nullptr;
    ASSERT_EQ(LoadResourceLibrary(folder.File("a.dll").c_str(), first), 0);
    ASSERT_EQ(LoadResourceLibrary((folder.Path() + "./a.dll").c_str(), second), 0);
    EXPECT_EQ(first, second);
    EXPECT_EQ(GetModuleFileName(first), folder.File("a.dll"));
    EXPECT_TRUE(FreeResourceLibrary(first));
    EXPECT_STREQ(StringOf(first), "first");
    EXPECT_TRUE(FreeResourceLibrary(first));
    EXPECT_STREQ(StringOf(first), "(none)");
    EXPECT_FALSE(FreeResourceLibrary(first));
    EXPECT_EQ(GetModuleFileName(first), "");
    EXPECT_TRUE(ReviveResourceLibrary(first));
    EXPECT_STREQ(StringOf(first), "first");
    FreeResourceLibrary(first);

    // Another file under the name is another library.
    folder.Write("b.dll", Library(u"second text"));
    std::filesystem::rename(folder.File("b.dll"), folder.File("a.dll"));
    ASSERT_EQ(LoadResourceLibrary(folder.File("a.dll").c_str(), second), 0);
    EXPECT_STREQ(StringOf(second), "second text");
    FreeResourceLibrary(second);
}

TEST(ResourceLibrary, RefusesWhatIsNoLibrary) {
    const test::TemporaryFolder folder;
    folder.Write("text.dll", "not a library");
    HINSTANCE library = GetApplicationInstance();
    EXPECT_EQ(LoadResourceLibrary(folder.File("text.dll").c_str(), library), ENOEXEC);
    EXPECT_EQ(library, nullptr);
    EXPECT_EQ(LoadResourceLibrary(folder.File("none.dll").c_str(), library), ENOENT);
    EXPECT_EQ(LoadResourceLibrary(folder.Path().c_str(), library), EISDIR);
    EXPECT_EQ(LoadResourceLibrary(nullptr, library), ENOENT);
    EXPECT_EQ(LoadResourceLibrary("", library), ENOENT);
    folder.Write("long.dll", "MZ");
    vnbytstr::test::SetLength(folder.File("long.dll"), std::uint64_t{5} << 30);
    EXPECT_EQ(LoadResourceLibrary(folder.File("long.dll").c_str(), library), ENOEXEC);

    char other = 0;
    const auto bogus = reinterpret_cast<HINSTANCE>(&other);
    for (const HINSTANCE handle : {HINSTANCE{nullptr}, bogus, GetApplicationInstance()}) {
        EXPECT_STREQ(StringOf(handle), "(none)");
        EXPECT_FALSE(FreeResourceLibrary(handle));
        EXPECT_EQ(GetResourceLanguage(handle), 0);
        EXPECT_FALSE(IsResourceRightToLeft(handle));
        EXPECT_TRUE(ListResourceStrings(handle).empty());
    }
}

TEST(ResourceLibrary, ToleratesReadErrorsAndShortReads) {
    const test::TemporaryFolder folder;
    folder.Write("a.dll", Library(u"text"));
    test::TestSystem system;
    const ScopedSystem scope(system);
    HINSTANCE library = nullptr;
    for (const test::Call call : {test::Call::Open, test::Call::Length, test::Call::Read}) {
        system.Inject(test::Fault{call, 1, false, EIO, test::Fault::Kind::Fail});
        EXPECT_EQ(LoadResourceLibrary(folder.File("a.dll").c_str(), library), EIO);
        EXPECT_TRUE(system.OpenHandles().empty());
    }
    system.Inject(test::Fault{test::Call::Read, 1, true, 0, test::Fault::Kind::Shorten});
    const int error = LoadResourceLibrary(folder.File("a.dll").c_str(), library);
    EXPECT_TRUE(error == 0 || error == ENOEXEC); // a last read of one byte falls to none
    if (error == 0) {
        EXPECT_STREQ(StringOf(library), "text");
        FreeResourceLibrary(library);
    }
}

TEST(ResourceLibrary, GivesTextsInTheAnsiCodePage) {
    const test::TemporaryFolder folder;
    folder.Write("a.dll", Library(u"\u00E9\u05D0"));
    HINSTANCE library = nullptr;
    ASSERT_EQ(LoadResourceLibrary(folder.File("a.dll").c_str(), library), 0);
    for (const auto& [page, text] : std::initializer_list<std::pair<UINT, const char*>>{
             {65001, "\xC3\xA9\xD7\x90"}, {1255, "?\xE0"}, {1252, "\xE9?"}}) {
        const ScopedCodePage scope(page);
        EXPECT_STREQ(StringOf(library), text) << page;
    }
    FreeResourceLibrary(library);
}

TEST(ResourceLibrary, KnowsTextFromRightToLeft) {
    const test::TemporaryFolder folder;
    const auto isRightToLeft = [&](WORD language, const std::u16string& description) {
        PeContent content;
        content.strings = {{7, u"x"}};
        content.language = language;
        content.fileDescription = description;
        folder.Write("a.dll", MakePeFile(content).Text());
        HINSTANCE library = nullptr;
        EXPECT_EQ(LoadResourceLibrary(folder.File("a.dll").c_str(), library), 0);
        EXPECT_EQ(GetResourceLanguage(library), language);
        const bool result = IsResourceRightToLeft(library);
        FreeResourceLibrary(library);
        std::filesystem::remove(folder.File("a.dll"));
        return result;
    };
    EXPECT_FALSE(isRightToLeft(0x409, u"plain"));
    EXPECT_TRUE(isRightToLeft(0x409, u"\u200E\u200Emarked"));
    EXPECT_FALSE(isRightToLeft(0x409, u"\u200Emarked once"));
    EXPECT_TRUE(isRightToLeft(0x40D, u"Hebrew, not marked"));
    EXPECT_TRUE(isRightToLeft(0xC01, u"Arabic of Egypt"));
}

} // namespace
