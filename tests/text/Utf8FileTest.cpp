// Conversion of files to UTF-8: ICU, called directly, is the oracle of the text. What becomes of
// the file when calls fail is with the other saves in tests/durability.
#include "src/charset/CodePage.h"
#include "src/text/AnsiToUtf8.h"
#include "tests/support/TemporaryFolder.h"
#include "vnbytstr/TextEncoding.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <filesystem>
#include <random>
#include <string>

namespace {

using vnbytstr::CodePage;
using vnbytstr::ScopedCodePage;
using vnbytstr::test::TemporaryFolder;

/// What ICU makes of well-formed text; 932 there exchanges three control characters, which an ANSI
/// page does not, so texts for it hold none.
std::string Icu(const char* page, const std::string& text) {
    std::string out(text.size() * 4 + 16, '\0');
    UErrorCode error = U_ZERO_ERROR;
    const int32_t size = ucnv_convert("UTF-8", page, out.data(), static_cast<int32_t>(out.size()),
                                      text.data(), static_cast<int32_t>(text.size()), &error);
    EXPECT_TRUE(U_SUCCESS(error));
    out.resize(static_cast<std::size_t>(size));
    return out;
}

std::string ConvertInSlices(const std::string& text, std::size_t slice) {
    vnbytstr::detail::AnsiToUtf8 converter;
    std::string out;
    for (std::size_t at = 0; at < text.size() || at == 0; at += slice) {
        const std::string piece = text.substr(at, slice);
        const auto converted = converter.Convert(
            {reinterpret_cast<const BYTE*>(piece.data()), piece.size()}, at + slice >= text.size());
        out.append(converted.begin(), converted.end());
    }
    return out;
}

struct Page {
    UINT number;
    const char* icuName;
};
class Utf8File : public testing::Test {
protected:
    std::string Convert(const std::string& content) {
        m_folder.Write("text", content);
        EXPECT_EQ(ConvertToUTF8(m_folder.File("text").c_str()), 1);
        return m_folder.Read("text");
    }
    TemporaryFolder m_folder;
};

} // namespace

TEST_F(Utf8File, WhatIsNotUtf8StaysUnderUtf8) {
    const ScopedCodePage scope(65001);
    const std::string slice(256 * 1024 - 1, 'x');
    for (const std::string& text :
         {std::string("caf\xE9 \xFC"), std::string("\xC3"), slice + "\xC3", slice + "\xC3(",
          slice + slice + "\xED\xA0\x80"}) {
        m_folder.Write("text", text);
        EXPECT_EQ(ConvertToUTF8(m_folder.File("text").c_str()), 0);
        EXPECT_EQ(m_folder.Read("text"), text);
    }
    EXPECT_EQ(m_folder.Names().size(), 1u);
    EXPECT_EQ(Convert(slice + "\xC3\xA9\xEF\xBF\xBD"), slice + "\xC3\xA9\xEF\xBF\xBD");
}

TEST_F(Utf8File, BrokenTextIsThatOfTheCodePage) {
    std::mt19937 random(3);
    for (const UINT page :
         {874u,   932u,   936u,   949u,   950u,   1250u,  1251u,  1252u,  1253u,  1254u,  1255u,
          1256u,  1257u,  1258u,  20127u, 20866u, 21866u, 28591u, 28592u, 28593u, 28594u, 28595u,
          28596u, 28597u, 28598u, 28599u, 28603u, 28605u, 51932u, 51949u, 54936u, 65001u}) {
        const ScopedCodePage scope(page);
        for (int round = 0; round < 300; ++round) {
            // Line ends stop a broken sequence from running on.
            std::string text;
            for (auto lines = random() % 20; lines > 0; --lines) {
                for (auto size = random() % 3; size > 0; --size)
                    text += static_cast<char>(random() % 3 == 0 ? 'a' : random());
                text += "\n\n\n\n";
            }
            const std::string expected =
                CodePage::Find(65001)->FromWide(CodePage::Ansi().ToWide(text));
            ASSERT_EQ(ConvertInSlices(text, 1 + random() % 50), expected)
                << page << " " << testing::PrintToString(text);
        }
    }
}

TEST_F(Utf8File, CharactersAcrossSlices) {
    // Odd beginnings, so that characters lie across the file's slices, too.
    for (const Page& page :
         {Page{1252, "windows-1252"}, Page{932, "windows-932"}, Page{65001, "UTF-8"}}) {
        const ScopedCodePage scope(page.number);
        const std::string piece = page.number == 1252    ? "Caf\xE9 \x80 "
                                  : page.number == 65001 ? "\xE3\x81\x82\xF0\x9F\x98\x80z"
                                                         : "\x82\xA0\x88\x9F\xB1";
        std::string text = "x";
        while (text.size() < 700000)
            text += piece;
        EXPECT_EQ(Convert(text), Icu(page.icuName, text)) << page.number;
    }
}

TEST_F(Utf8File, ControlCharactersOf932) {
    const ScopedCodePage scope(932);
    EXPECT_EQ(Convert("\x1A\x1C\x7F\x82\xA0\x1A\\"), "\x1A\x1C\x7F\xE3\x81\x82\x1A\\");
    EXPECT_EQ(Convert("a\x82"), "a\xEF\xBF\xBD"); // a lone lead byte at the end
}

TEST_F(Utf8File, EmptyAndMissingFiles) {
    EXPECT_EQ(Convert(""), "");
    EXPECT_EQ(ConvertToUTF8(m_folder.File("none").c_str()), 0);
    EXPECT_EQ(ConvertToUTF8(m_folder.Path().c_str()), 0);
    EXPECT_EQ(ConvertToUTF8(nullptr), 0);
    EXPECT_EQ(m_folder.Names().size(), 1u);
}

TEST_F(Utf8File, ReadOnlyFilesAndPermissions) {
    const ScopedCodePage scope(1252);
    namespace fs = std::filesystem;
    m_folder.Write("text", "Caf\xE9");
    fs::permissions(m_folder.File("text"), fs::perms::owner_read);
    EXPECT_EQ(ConvertToUTF8(m_folder.File("text").c_str()), 0);
    EXPECT_EQ(m_folder.Read("text"), "Caf\xE9");
    fs::permissions(m_folder.File("text"), fs::perms::owner_read | fs::perms::owner_write);
    if (!m_folder.Link("text", "link"))
        GTEST_SKIP() << "no symbolic links here";
    EXPECT_EQ(ConvertToUTF8(m_folder.File("link").c_str()), 1);
    EXPECT_TRUE(fs::is_symlink(m_folder.File("link")));
    EXPECT_EQ(m_folder.Read("text"), "Caf\xC3\xA9");
    EXPECT_EQ(fs::status(m_folder.File("text")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}
