// Conversion of files to UTF-8: ICU, called directly, is the oracle of the text; failing systems
// show that a file is either converted or as it was.
#include "src/charset/CodePage.h"
#include "src/os/CpuKernel.h"
#include "src/text/AnsiToUtf8.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"
#include "vnbytstr/TextEncoding.h"
#include "vnbytstr/framework/Exception.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <filesystem>
#include <optional>
#include <random>
#include <string>

namespace {

using vnbytstr::CodePage;
using vnbytstr::ScopedCodePage;
using vnbytstr::ScopedSystem;
using vnbytstr::test::Call;
using vnbytstr::test::Fault;
using vnbytstr::test::TemporaryFolder;
using vnbytstr::test::TestSystem;

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
constexpr Page kPages[] = {{1252, "windows-1252"}, {932, "windows-932"}, {936, "windows-936"},
                           {949, "windows-949"},   {950, "windows-950"}, {1255, "windows-1255"},
                           {1256, "windows-1256"}, {65001, "UTF-8"},     {54936, "gb18030"},
                           {51932, "EUC-JP"}};

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

TEST_F(Utf8File, EveryByteAndEveryPairOfEachPage) {
    for (const Page& page : kPages) {
        const ScopedCodePage scope(page.number);
        std::string text;
        for (unsigned byte = 1; byte < 256; ++byte) {
            const char single = static_cast<char>(byte);
            if (byte == 0x1A || byte == 0x1C || byte == 0x7F)
                continue;
            const std::string_view one(&single, 1);
            if (CodePage::Ansi().ToWide(one) != u"\uFFFD")
                text += single;
            for (unsigned trail = 1; trail < 256; ++trail) {
                const char pair[] = {single, static_cast<char>(trail)};
                // What ICU reads as one character: others are broken, and tested apart.
                if (CodePage::Ansi().IsLeadByte(single) &&
                    CodePage::Ansi().ToWide({pair, 2}).size() == 1 &&
                    CodePage::Ansi().ToWide({pair, 2}) != u"\uFFFD")
                    text.append(pair, 2);
            }
        }
        const std::string expected = Icu(page.icuName, text);
        EXPECT_EQ(Convert(text), expected) << page.number;
        EXPECT_EQ(ConvertInSlices(text, 1), expected) << page.number;
    }
}

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
    for (const Page& page : {kPages[0], kPages[1], kPages[7]}) {
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
    fs::create_symlink("text", m_folder.File("link"));
    EXPECT_EQ(ConvertToUTF8(m_folder.File("link").c_str()), 1);
    EXPECT_TRUE(fs::is_symlink(m_folder.File("link")));
    EXPECT_EQ(m_folder.Read("text"), "Caf\xC3\xA9");
    EXPECT_EQ(fs::status(m_folder.File("text")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}

// Every call to the system fails in turn, for a file converted beside and for one converted in
// place, once and from then on: the file is converted or as it was, and nothing else stays behind.
TEST_F(Utf8File, FailuresLoseNothing) {
    const ScopedCodePage scope(1252);
    std::string text;
    while (text.size() < 600000)
        text += "Caf\xE9 cr\xE8me ";
    const std::string converted = Icu("windows-1252", text);
    for (const bool fromThenOn : {false, true}) {
        for (unsigned at = 1;; ++at) {
            m_folder.Write("text", text);
            int result = 0;
            unsigned hits = 0;
            {
                TestSystem system;
                const ScopedSystem systemScope(system);
                system.Inject(Fault{Call::Any, at, fromThenOn, ENOSPC, Fault::Kind::Fail});
                result = ConvertToUTF8(m_folder.File("text").c_str());
                hits = system.Hits();
                EXPECT_TRUE(system.OpenHandles().empty()) << at;
            }
            const std::string after = m_folder.Read("text");
            ASSERT_TRUE(after == text || after == converted) << at;
            EXPECT_TRUE(result == 0 || after == converted) << at;
            EXPECT_TRUE(fromThenOn || m_folder.Names().size() == 1) << at;
            for (const std::string& name : m_folder.Names())
                std::filesystem::remove(m_folder.File(name));
            if (hits == 0) {
                EXPECT_EQ(result, 1);
                EXPECT_GT(at, 10u);
                break;
            }
        }
    }
}

TEST_F(Utf8File, InPlaceWhereTheFolderTakesNoFile) {
    const ScopedCodePage scope(1252);
    std::string text;
    while (text.size() < 600000)
        text += "Caf\xE9 cr\xE8me ";
    const std::string converted = Icu("windows-1252", text);
    /// A folder that takes no file, on a disk that is full from the n-th write on.
    class Closed final {
    public:
        explicit Closed(unsigned failingWrite) {
            m_inner.Inject(Fault{Call::Open, 2, false, EACCES, Fault::Kind::Fail});
            m_outer.emplace();
            if (failingWrite > 0)
                m_outer->Inject(Fault{Call::Write, failingWrite, false, ENOSPC, Fault::Kind::Fail});
            m_outerScope.emplace(*m_outer);
        }

    private:
        TestSystem m_inner;
        ScopedSystem m_innerScope{m_inner};
        std::optional<TestSystem> m_outer;
        std::optional<ScopedSystem> m_outerScope;
    };
    for (unsigned failing = 0; failing < 3; ++failing) {
        m_folder.Write("text", text);

        std::filesystem::create_hard_link(m_folder.File("text"), m_folder.File("other"));
        int result = 0;
        {
            const Closed closed(failing);
            result = ConvertToUTF8(m_folder.File("text").c_str());
        }

        EXPECT_EQ(result, failing == 0 ? 1 : 0);
        EXPECT_EQ(m_folder.Read("text"), failing == 0 ? converted : text) << failing;
        EXPECT_EQ(m_folder.Read("other"), m_folder.Read("text")); // the same file still
        std::filesystem::remove(m_folder.File("other"));
    }
}
