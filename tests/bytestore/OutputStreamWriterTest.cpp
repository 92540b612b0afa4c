// COutputStreamWriter: what is in the file afterwards.
#include "tests/bytestore/StoreFixture.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/OutputStreamWriter.h"

#include <climits>

namespace vnbytstr::test {
namespace {

class OutputStreamWriterTest : public StoreFixture {
protected:
    /// What `work` leaves in a file of its own.
    template <class Work>
    std::string Written(WORD ccsid, Work work) {
        CFile file(m_folder.File("out").c_str(), CFile::modeCreate | CFile::modeWrite);
        {
            COutputStreamWriter writer(file, ccsid);
            work(writer);
        }
        EXPECT_EQ(file.m_hFile, CFile::hFileNull);
        return m_folder.Read("out");
    }
    /// Text of 1252 in CCSID 37, by table.
    static std::string Ebcdic(const std::string& text) {
        BYTE out[4096];
        DWORD length = sizeof out;
        EXPECT_TRUE(TranslateCCSID(1252, 37, reinterpret_cast<const BYTE*>(text.data()),
                                   static_cast<DWORD>(text.size()), out, &length));
        return {reinterpret_cast<char*>(out), length};
    }

    ScopedCodePage m_page{1252};
};

TEST_F(OutputStreamWriterTest, WritesNativeTextUnchanged) {
    EXPECT_EQ(Written(1252,
                      [](COutputStreamWriter& writer) {
                          writer.Write("a<b & \"c\"\xFF");
                          writer.LineBreak();
                          writer.SetLineBreak(COutputStreamWriter::eCR);
                          writer.Write("");
                          writer.Write(nullptr);
                          writer.LineBreak();
                          writer.SetLineBreak(static_cast<COutputStreamWriter::ELineBreak>(7));
                          writer.FormattedWrite("%d%%%s", -3, "<");
                          EXPECT_EQ(writer.GetRecordIndex(), 4);
                          writer.LineBreak();
                          EXPECT_EQ(writer.GetRecordIndex(), 0);
                          writer.WriteVerbatim("end");
                      }),
              "a<b & \"c\"\xFF\r\n\r-3%<end");
}

TEST_F(OutputStreamWriterTest, SubstitutesEntityReferences) {
    EXPECT_EQ(Written(1252,
                      [](COutputStreamWriter& writer) {
                          writer.SetSubstituteEntityReferences(TRUE);
                          writer.Write("a<b & c>");
                          EXPECT_EQ(writer.GetRecordIndex(), 18);
                          writer.FormattedWrite("\"%s\"'", "x&y");
                          writer.WriteVerbatim("<&>");
                      }),
              "a&lt;b &amp; c&gt;&quot;x&amp;y&quot;'<&>");
    // In a double-byte page what follows a lead byte is a trail byte, whatever it looks like.
    const ScopedCodePage page(932);
    EXPECT_EQ(Written(932,
                      [](COutputStreamWriter& writer) {
                          writer.SetSubstituteEntityReferences(TRUE);
                          writer.Write("\x83\x5C<\x81<\xB1<");
                      }),
              "\x83\x5C&lt;\x81<\xB1&lt;");
}

TEST_F(OutputStreamWriterTest, LongTextKeepsItsPieces) {
    std::string text, expected;
    for (int i = 0; i < 9000; ++i) {
        text += "run " + std::to_string(i) + (i % 3 ? "<" : "");
        expected += "run " + std::to_string(i) + (i % 3 ? "&lt;" : "");
        if (i == 4500) { // one run longer than a piece
            text += std::string(100000, 'x');
            expected += std::string(100000, 'x');
        }
    }
    const std::string utf16 = Written(1200, [&](COutputStreamWriter& writer) {
        writer.SetSubstituteEntityReferences(TRUE);
        writer.Write(text.c_str());
        EXPECT_EQ(writer.GetRecordIndex(), static_cast<int>(expected.size()));
    });
    ASSERT_EQ(utf16.size(), 2 * expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_EQ(utf16.substr(2 * i, 2), std::string({'\0', expected[i]}));
}

TEST_F(OutputStreamWriterTest, PadsRecordsInNativeBytes) {
    const auto lines = [](COutputStreamWriter& writer) {
        writer.SetRecordLength(10);
        for (const char* line : {"abc", "0123456789", "", "0123456789x"}) {
            writer.Write(line);
            writer.LineBreak();
        }
    };
    const std::string expected = "abc       \r\n0123456789\r\n\r\n0123456789x         \r\n";
    EXPECT_EQ(Written(1252, lines), expected);
    const std::string ebcdic = Written(37, lines);
    EXPECT_EQ(ebcdic, Ebcdic(expected));
    EXPECT_EQ(ebcdic.substr(3, 9), "\x40\x40\x40\x40\x40\x40\x40\x0D\x25");
    // 20 bytes of output, 10 of native text.
    EXPECT_EQ(Written(1202, lines).size(), 2 * expected.size());
    // A character of two native bytes counts two, though it is one in the target.
    const ScopedCodePage page(65001);
    EXPECT_EQ(Written(1252,
                      [](COutputStreamWriter& writer) {
                          writer.SetRecordLength(4);
                          writer.Write("\xC3\xA4");
                          writer.LineBreak();
                      }),
              "\xE4  \r\n");
}

TEST_F(OutputStreamWriterTest, OddRecordIndexesAreSafe) {
    EXPECT_EQ(Written(1252,
                      [](COutputStreamWriter& writer) {
                          writer.SetRecordLength(INT_MAX);
                          writer.SetRecordIndex(-5);
                          writer.LineBreak();
                          writer.SetRecordLength(10);
                          writer.SetRecordIndex(INT_MAX);
                          writer.Write("ab");
                          EXPECT_EQ(writer.GetRecordIndex(), (INT_MAX % 10 + 2) % 10);
                          writer.SetRecordLength(-1);
                          writer.LineBreak();
                          writer.SetRecordIndex(INT_MAX); // without records it stays there
                          writer.Write("cd", 2);
                          EXPECT_EQ(writer.GetRecordIndex(), INT_MAX);
                          writer.WriteVerbatim(nullptr);
                      }),
              "\r\nab\r\ncd");
}

TEST_F(OutputStreamWriterTest, MixedByteTextReturnsToSingleByteMode) {
    const ScopedCodePage page(65001);
    EXPECT_EQ(Written(939,
                      [](COutputStreamWriter& writer) {
                          writer.SetSubstituteEntityReferences(TRUE);
                          writer.Write("\xE3\x81\x84<\xE3\x81\x84");
                          writer.Write("\xE3\x81\x84");
                      }),
              "\x0E\x44\x82\x0F\x50\x93\xA3\x5E\x0E\x44\x82\x0F\x0E\x44\x82\x0F");
}

TEST_F(OutputStreamWriterTest, ReportsWhatTheTargetDoesNotHold) {
    const ScopedCodePage page(65001);
    EXPECT_EQ(Written(1252,
                      [](COutputStreamWriter& writer) {
                          writer.Write("abc");
                          EXPECT_EQ(writer.GetReport().ullUntranslatable, 0u);
                          writer.Write("d\xE4\xB8\xAD\xE4\xB8\xAD");
                          writer.Write("\xE4\xB8\xAD\xFF");
                          EXPECT_EQ(writer.GetReport().ullUntranslatable, 3u);
                          EXPECT_EQ(writer.GetReport().ullFirstUntranslatable, 4u);
                          EXPECT_EQ(writer.GetReport().ullMalformed, 1u);
                          EXPECT_EQ(writer.GetReport().ullFirstMalformed, 13u);
                          writer.Write("\xFF");
                          EXPECT_EQ(writer.GetReport().ullMalformed, 2u);
                          EXPECT_EQ(writer.GetReport().ullFirstMalformed, 13u);
                      }),
              "abcd\x1A\x1A\x1A\x1A\x1A");
}

TEST_F(OutputStreamWriterTest, TextsWithLengthMayContainNul) {
    const std::string text("a\0<\0", 4);
    const auto both = [&](COutputStreamWriter& writer) {
        writer.WriteVerbatim(text.data(), 4);
        writer.SetSubstituteEntityReferences(TRUE);
        writer.Write(text.data(), 4);
        writer.Write(nullptr, 0);
        EXPECT_EQ(writer.GetRecordIndex(), 11);
    };
    const std::string expected("a\0<\0a\0&lt;\0", 11);
    EXPECT_EQ(Written(1252, both), expected);
    EXPECT_EQ(Written(37, both), Ebcdic(expected));
}

TEST_F(OutputStreamWriterTest, StopsAtWhatTheTargetDoesNotHold) {
    const ScopedCodePage page(65001);
    CFile file(m_folder.File("out").c_str(), CFile::modeCreate | CFile::modeReadWrite);
    COutputStreamWriter writer(file, 939, translateStop);
    const auto fails = [&](const char* text) {
        try {
            writer.Write(text);
            return false;
        } catch (CTranslationException* error) {
            EXPECT_EQ(error->m_wTo, 939);
            error->Delete();
            return true;
        }
    };
    EXPECT_FALSE(fails("\xE3\x81\x84"));
    EXPECT_TRUE(fails("\xE3\x81\x84\xF0\x9F\x98\x80\xE3\x81\x84")); // an emoji, in double-byte mode
    EXPECT_EQ(writer.GetReport().ullFirstUntranslatable, 6u);
    EXPECT_FALSE(fails("\xE3\x81\x84")); // a new text: begins in single-byte mode
    writer.LineBreak();
    file.Close();
    EXPECT_EQ(m_folder.Read("out"), "\x0E\x44\x82\x0F\x0E\x44\x82\x0E\x44\x82\x0F\x0D\x25");
}

TEST_F(OutputStreamWriterTest, FollowsAChangeOfTheCodePage) {
    EXPECT_EQ(Written(1208,
                      [](COutputStreamWriter& writer) {
                          writer.Write("\xE4");
                          const ScopedCodePage page(1253);
                          writer.Write("\xE4");
                      }),
              "\xC3\xA4\xCE\xB4");
}

TEST_F(OutputStreamWriterTest, RefusesAnUnknownSet) {
    CFile file(m_folder.File("out").c_str(), CFile::modeCreate | CFile::modeWrite);
    try {
        const COutputStreamWriter writer(file, 4242);
        ADD_FAILURE();
    } catch (CTranslationException* error) {
        EXPECT_EQ(error->m_wFrom, 1252);
        EXPECT_EQ(error->m_wTo, 4242);
        error->Delete();
    }
    EXPECT_NE(file.m_hFile, CFile::hFileNull); // not the writer's yet
}

TEST_F(OutputStreamWriterTest, LeavesTheFileOpenWhenTold) {
    CFile file(m_folder.File("out").c_str(), CFile::modeCreate | CFile::modeWrite);
    {
        COutputStreamWriter writer(file, 37);
        EXPECT_TRUE(writer.GetAutoClose());
        EXPECT_EQ(writer.GetFile(), &file);
        EXPECT_EQ(writer.GetCCSID(), 37);
        EXPECT_EQ(writer.GetLineBreak(), COutputStreamWriter::eCRLF);
        EXPECT_FALSE(writer.GetSubstituteEntityReferences());
        writer.SetAutoClose(FALSE);
    }
    EXPECT_NE(file.m_hFile, CFile::hFileNull);
    file.Close();
    const COutputStreamWriter writer(file, 37); // closed already: nothing to do
}

TEST_F(OutputStreamWriterTest, AFailedWriteThrowsAndDoesNotCount) {
    CFile file(m_folder.File("out").c_str(), CFile::modeCreate | CFile::modeWrite);
    COutputStreamWriter writer(file, 37);
    writer.Write("abc");
    m_system.Inject(Fault{.call = Call::Write, .error = ENOSPC});
    try {
        writer.Write("defg");
        ADD_FAILURE();
    } catch (CFileException* error) {
        EXPECT_EQ(error->m_cause, CFileException::diskFull);
        error->Delete();
    }
    EXPECT_EQ(writer.GetRecordIndex(), 3);
    writer.Write("x"); // not the rest of the text that failed
    EXPECT_EQ(m_folder.Read("out"), Ebcdic("abcx"));
    m_system.Inject(Fault{.call = Call::Close}); // and the destructor swallows this
}

} // namespace
} // namespace vnbytstr::test
