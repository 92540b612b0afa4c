// The resource libraries as the system reads them: the same texts as by this library's own reader.
#include "src/charset/CodePage.h"
#include "src/os/Paths.h"
#include "src/os/System.h"
#include "vnbytstr/ResourceLibrary.h"

#include <gtest/gtest.h>

namespace vnbytstr::test {
namespace {

TEST(SystemReader, ReadsTheSameTexts) {
    const ScopedCodePage utf8(65001);
    const std::string folder(FolderPrefixOf(System::Current().GetModuleFileName()));
    std::size_t count = 0;
    for (const char* code :
         {"ENU", "DEU", "FRA", "ESN", "ITA", "PTB", "JPN", "KOR", "CHT", "HEB", "ARE"}) {
        const std::string file = folder + "vnurc" + code + ".dll";
        HINSTANCE own = nullptr;
        ASSERT_EQ(LoadResourceLibrary(file.c_str(), own), 0) << file;
        const HMODULE systems = ::LoadLibraryExA(
            file.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
        ASSERT_NE(systems, nullptr) << file;
        for (UINT id = 0; id < 0x10000; ++id) {
            const wchar_t* wide = nullptr; // into the library, without a NUL
            const int length = ::LoadStringW(systems, id, reinterpret_cast<wchar_t*>(&wide), 0);
            const std::string expected =
                length > 0 ? CodePage::Ansi().FromWide({reinterpret_cast<const char16_t*>(wide),
                                                        static_cast<std::size_t>(length)})
                           : "";
            CString text;
            EXPECT_EQ(FindResourceString(own, id, text), length > 0) << file << ' ' << id;
            EXPECT_EQ(std::string(text), expected) << file << ' ' << id;
            count += length > 0;
        }
        const UINT first = ListResourceStrings(own).at(0);
        WORD language = 0;
        ::EnumResourceLanguagesW(
            systems, MAKEINTRESOURCEW(6), MAKEINTRESOURCEW(first / 16 + 1), // 6: string tables
            [](HMODULE, LPCWSTR, LPCWSTR, WORD found, LONG_PTR result) -> BOOL {
                *reinterpret_cast<WORD*>(result) = found;
                return FALSE;
            },
            reinterpret_cast<LONG_PTR>(&language));
        EXPECT_EQ(GetResourceLanguage(own), language) << file;
        ::FreeLibrary(systems);
        FreeResourceLibrary(own);
    }
    EXPECT_GT(count, 1000u);
}

} // namespace
} // namespace vnbytstr::test
