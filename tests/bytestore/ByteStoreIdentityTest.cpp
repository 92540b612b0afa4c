// CByteStore and files that have several names or are changed by others.
#include "tests/bytestore/StoreFixture.h"

namespace vnbytstr::test {
namespace {

class ByteStoreIdentityTest : public StoreFixture {
protected:
    /// Makes the file `name` the store's content, not to be deleted unless `autoDelete`.
    void Open(CByteStore& store, const char* name, BOOL autoDelete) {
        m_folder.Write(name, AsText(m_bytes));
        store.SetAutoDelete(autoDelete);
        store.SetFileName(m_folder.File(name).c_str());
    }
    /// Puts another program's file under a name, by renaming as editors do.
    void PutOther(const std::string& name) {
        m_folder.Write("other", "other");
        ASSERT_EQ(m_system.RenameFile(m_folder.File("other").c_str(), name.c_str(), true), 0);
    }
    /// Writes over some bytes of a file, past the store that has it open.
    static void Poke(const std::string& name, std::streamoff offset, char byte) {
        std::fstream file(name, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(offset).put(byte);
        ASSERT_TRUE(file.flush());
    }
    std::string Base(const char* path) const {
        return std::string(path).substr(m_folder.Path().size());
    }

    const Bytes m_bytes = Pattern(20 * kPage + 10);
    const std::string m_text = AsText(m_bytes);
};

TEST_F(ByteStoreIdentityTest, SavedOntoItsFileUnderAnotherSpellingItStays) {
    const std::string dotted = m_folder.Path() + "./a";
    m_folder.Write("a", "");
    const bool ignoresCase = std::filesystem::exists(m_folder.File("A"));
    for (const int way : {0, 1, 2, 3, 4, 5}) {
        if (way == 5 && !ignoresCase)
            continue;
        for (const BOOL autoDelete : {TRUE, FALSE}) {
            SCOPED_TRACE(way);
            std::filesystem::remove(m_folder.File("link"));
            CByteStore store;
            Open(store, "a", autoDelete);
            const std::string link = m_folder.File("link");
            if (way == 0 && !m_folder.Link("a", "link"))
                continue; // not every system, or user, can
            if (way == 3)
                std::filesystem::create_hard_link(m_folder.File("a"), link);
            const bool shifted = way == 2 || way == 4;
            if (shifted)
                store.SetCurrentOffset(3);
            const std::string name = way == 0 || way == 3 ? link
                                     : way == 5           ? m_folder.File("A")
                                                          : dotted;
            store.SaveToFile(name.c_str(), shifted);
            EXPECT_TRUE(store.IsEmpty());
            store.Empty();
            const std::string expected =
                shifted ? m_text.substr(0, kPage - 3) + m_text.substr(kPage) : m_text;
            EXPECT_TRUE(m_folder.Read("a") == expected) << m_folder.Read("a").size();
        }
    }
}

TEST_F(ByteStoreIdentityTest, AnotherProgramsFileUnderTheNameIsLeftAlone) {
    for (const int way : {0, 1, 2, 3, 4}) {
        SCOPED_TRACE(way);
        CByteStore store;
        if (way < 3)
            Open(store, "a", way != 1);
        else
            Append(store, m_bytes);
        const std::string name = store.GetFileName();
        PutOther(name);
        if (way == 0)
            store.Empty();
        else if (way == 4)
            store.Flush();
        else
            store.SaveToFile(m_folder.File("out").c_str());
        EXPECT_EQ(m_folder.Read(Base(name.c_str())), "other");
        if (way != 0 && way != 4) {
            EXPECT_TRUE(m_folder.Read("out") == m_text);
        }
        if (way == 4) {
            EXPECT_EQ(CauseOf([&] {
                          store.SetCurrentOffset(5);
                          store.Flush(1);
                      }),
                      -2);
        }
        store.Empty();
        EXPECT_EQ(m_folder.Read(Base(name.c_str())), "other");
        std::filesystem::remove(name);
    }
}

TEST_F(ByteStoreIdentityTest, CopiedOntoItsOwnFileItStaysBoundToIt) {
    const std::string spelled = m_folder.Path() + "./a";
    for (const bool hasTwoNames : {false, true}) {
        for (const bool shifted : {false, true}) {
            SCOPED_TRACE(shifted);
            CByteStore store;
            Open(store, "a", FALSE);
            if (hasTwoNames)
                std::filesystem::create_hard_link(m_folder.File("a"), m_folder.File("b"));
            store.SetByte(7, 0x55);
            store.SetCurrentOffset(100);
            store.CopyToFile(spelled.c_str(), shifted);
            std::string expected = m_text;
            expected[7] = 0x55;
            EXPECT_TRUE(
                m_folder.Read("a") ==
                (shifted ? expected.substr(0, kPage - 100) + expected.substr(kPage) : expected));
            EXPECT_TRUE(AsText(Content(store)) == expected);
            store.SetByte(9, 0x66);
            store.SetByte(19 * kPage, 0x77);
            expected[9] = 0x66;
            expected[19 * kPage] = 0x77;
            store.Flush();
            EXPECT_TRUE(m_folder.Read("a") == expected);
            store.Flush(1);
            EXPECT_TRUE(m_folder.Read("a") ==
                        expected.substr(0, kPage - 100) + expected.substr(kPage));
            store.Flush(0);
            EXPECT_TRUE(m_folder.Read("a") == expected);
            EXPECT_TRUE(AsText(Content(store)) == expected);
            if (hasTwoNames) {
                EXPECT_TRUE(m_folder.Read("b") == expected);
            }
            std::filesystem::remove(m_folder.File("b"));
        }
    }
}

TEST_F(ByteStoreIdentityTest, KeptFilesAreCutAtTheLength) {
    {
        CByteStore store;
        Open(store, "a", FALSE);
        for (DWORD page = 20; page > 0;
             --page) { // the last page leaves memory, and is written whole
            store.SetByte(20 * kPage + 9, 1);
            m_system.SetTick(++m_tick);
            for (DWORD other = 0; other < 20; ++other)
                store.SetByte(other * kPage, 2);
        }
    }
    EXPECT_EQ(m_folder.Read("a").size(), m_bytes.size());
    {
        CByteStore store;
        Open(store, "a", FALSE);
        store.Shift(0, 5 * kPage);
        store.Flush();
    }
    EXPECT_TRUE(m_folder.Read("a") == m_text.substr(5 * kPage));
}

TEST_F(ByteStoreIdentityTest, ASwapFileThatWasUnlinkedCanStillBeSaved) {
    CByteStore store;
    Append(store, m_bytes);
    ASSERT_EQ(m_system.RemoveFile(store.GetFileName()), 0);
    store.SaveToFile(m_folder.File("out").c_str());
    EXPECT_TRUE(m_folder.Read("out") == m_text);
    EXPECT_EQ(FileCount(), 1u);
}

TEST_F(ByteStoreIdentityTest, NamesGoOnMeaningTheSameFileInAnotherFolder) {
    const std::filesystem::path here = std::filesystem::current_path();
    std::filesystem::create_directories(m_folder.File("one/tmp"));
    std::filesystem::create_directories(m_folder.File("two/tmp"));
    m_folder.Write("one/rel", m_text);
    m_folder.Write("two/rel", "other");
    std::filesystem::current_path(m_folder.File("one"));
    m_system.SetTemporaryFolder("tmp/");
    {
        CByteStore file, spilled;
        file.SetFileName("rel");
        EXPECT_EQ(std::filesystem::path(file.GetFileName()), m_folder.File("one/rel"));
        Append(spilled, m_bytes);
        std::filesystem::current_path(m_folder.File("two"));
        EXPECT_EQ(AsText(Content(file)), m_text);
    }
    std::filesystem::current_path(here);
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("one/rel")));
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.File("one/tmp")));
    EXPECT_EQ(m_folder.Read("two/rel"), "other");
}

TEST_F(ByteStoreIdentityTest, NullNamesAreRefused) {
    CByteStore store;
    CByteStream stream;
    Append(store, m_bytes);
    Append(stream, Pattern(10));
    EXPECT_EQ(CauseOf([&] { store.SaveToFile(nullptr); }), -2);
    EXPECT_EQ(CauseOf([&] { store.CopyToFile(nullptr); }), -2);
    EXPECT_EQ(CauseOf([&] { stream.SaveToFile(nullptr); }), -2);
    EXPECT_EQ(CauseOf([&] { stream.CopyToFile(nullptr); }), -2);
    EXPECT_EQ(CauseOf([&] { stream.SetFileName(nullptr); }), -2);
    EXPECT_EQ(Content(store), m_bytes);
    EXPECT_EQ(CauseOf([&] { store.SetFileName(nullptr); }), -2);
}

/// The user's file under the store's name was removed, replaced or moved behind a link: a save goes
/// to its target alone.
TEST_F(ByteStoreIdentityTest, SavedElsewhereAfterItsNameHasChanged) {
    const std::string name = m_folder.File("a"), out = m_folder.File("out");
    for (const int way : {0, 1, 2, 3}) {
        SCOPED_TRACE(way);
        CByteStore store;
        Open(store, "a", FALSE);
        if (way == 0)
            std::filesystem::remove(name);
        else if (way == 1)
            PutOther(name);
        else
            std::filesystem::rename(name, m_folder.File("moved"));
        if (way == 2 && !m_folder.Link("moved", "a"))
            continue; // not every system, or user, can
        m_system.Inject(way == 3 ? std::optional(Fault{.call = Call::Rename, .at = 2})
                                 : std::nullopt);
        store.SetByte(3, 0x11);
        store.SaveToFile(out.c_str());
        m_system.Inject(std::nullopt);
        std::string expected = m_text;
        expected[3] = 0x11;
        EXPECT_TRUE(m_folder.Read("out") == expected);
        if (way == 1) {
            EXPECT_EQ(m_folder.Read("a"), "other");
        }
        for (const std::string& each : m_folder.Names())
            std::filesystem::remove(m_folder.File(each));
    }
}

TEST_F(ByteStoreIdentityTest, AfterAFailedSyncItsOwnFileIsWrittenAgain) {
    CByteStore store;
    Open(store, "a", FALSE);
    store.SetByte(3, 0x11);
    const std::string name = store.GetFileName();
    m_system.Inject(Fault{.call = Call::Sync, .error = EIO});
    EXPECT_EQ(CauseOf([&] { store.SaveToFile(name.c_str()); }), -2);
    m_system.Inject(std::nullopt);
    m_system.ResetCounts();
    store.SaveToFile(name.c_str());
    EXPECT_GT(m_system.Count(Call::Write), 20u);
    EXPECT_EQ(m_folder.Read("a")[3], 0x11);
}

/// A shifted image under the name, of a file that is the user's: kept, cut, replaced, reopened.
TEST_F(ByteStoreIdentityTest, WithAShiftedImageUnderItsName) {
    const std::string shifted = m_text.substr(0, kPage - 100) + m_text.substr(kPage);
    for (const int way : {0, 1, 2, 3}) {
        SCOPED_TRACE(way);
        CByteStore store;
        if (way == 3)
            Append(store, m_bytes);
        else
            Open(store, "a", FALSE);
        const std::string name = store.GetFileName();
        store.Flush(1); // the cursor is at the beginning
        store.SetCurrentOffset(100);
        store.Flush(1);
        const std::string base = Base(store.GetFileName());
        EXPECT_TRUE(m_folder.Read(base) == shifted);
        if (way == 1)
            PutOther(name);
        if (way == 1)
            store.Flush(0); // not the store's any more
        if (way == 2)
            store.Flush(1);
        store.SetAutoDelete(way == 3 ? FALSE : store.GetAutoDelete());
        EXPECT_EQ(Content(store), m_bytes);
        store.Empty();
        EXPECT_TRUE(m_folder.Read(base) == (way == 1 ? "other" : shifted));
        std::filesystem::remove(m_folder.File(base));
    }
}

TEST_F(ByteStoreIdentityTest, AFileWhoseStatusIsNotToldIsNotOpened) {
    m_folder.Write("a", m_text);
    for (unsigned at = 1;; ++at) {
        CByteStore store("0102");
        m_system.Inject(Fault{.call = Call::Status, .at = at});
        const int cause = CauseOf([&] { store.SetFileName(m_folder.File("a").c_str()); });
        const bool hit = m_system.Hits() > 0;
        m_system.Inject(std::nullopt);
        EXPECT_EQ(cause, hit ? -2 : -1);
        if (!hit)
            break;
        store.Empty();
        EXPECT_TRUE(m_folder.Read("a") == m_text);
    }
}

TEST_F(ByteStoreIdentityTest, AFailedSyncIsFinal) {
    CByteStore store;
    Append(store, m_bytes);
    m_system.Inject(Fault{.call = Call::Sync, .at = 1, .error = EIO});
    EXPECT_EQ(CauseOf([&] { store.SaveToFile(m_folder.File("out").c_str()); }), -2);
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("out")));
    m_system.Inject(std::nullopt);
    m_system.ResetCounts();
    store.SaveToFile(m_folder.File("out").c_str());
    EXPECT_GT(m_system.Count(Call::Write), 20u); // all pages once more
    EXPECT_TRUE(m_folder.Read("out") == m_text);
}

// --- pages that change in the swap file ----------------------------------------------------------

TEST_F(ByteStoreIdentityTest, PagesThatComeBackChangedAreAnError) {
    CByteStore store;
    AppendPages(store, m_bytes); // pages 0 to 4 have left
    store.Flush();
    const std::string name = store.GetFileName();
    const char byte = m_text[2 * kPage + 77];
    Poke(name, 2 * kPage + 77, static_cast<char>(byte ^ 1));
    EXPECT_EQ(CauseOf([&] { store.GetDWord(2 * kPage); }), 2);
    EXPECT_EQ(CauseOf([&] { store.GetDWord(2 * kPage); }), 2) << "and stays one";
    EXPECT_EQ(store.GetDWord(kPage), (CByteStore(m_bytes.data() + kPage, 4)).GetDWord(0));
    m_system.Inject(Fault{.call = Call::Rename, .at = 1, .error = EXDEV}); // so that it is copied
    EXPECT_EQ(CauseOf([&] { store.SaveToFile(m_folder.File("out").c_str()); }), 2);
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("out")));
    Poke(name, 2 * kPage + 77, byte);
    EXPECT_EQ(Content(store), m_bytes);
}

TEST_F(ByteStoreIdentityTest, AFilesOwnPagesHaveNoChecksumUntilTheyAreWritten) {
    CByteStore store;
    Open(store, "a", FALSE);
    const std::string name = store.GetFileName();
    Poke(name, 3 * kPage, 'x');
    EXPECT_EQ(store.GetByte(3 * kPage), 'x');
    store.SetByte(3 * kPage, 'y');
    store.ReleasePages();
    Poke(name, 3 * kPage, 'z');
    EXPECT_EQ(CauseOf([&] { store.GetByte(3 * kPage); }), 2);
}

} // namespace
} // namespace vnbytstr::test
