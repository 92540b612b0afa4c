// CByteStore and files that have several names, are changed by others, or are shared with a child.
#include "tests/bytestore/StoreFixture.h"
#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

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
        ASSERT_EQ(::rename(m_folder.File("other").c_str(), name.c_str()), 0);
    }
    std::string Base(const char* path) const {
        return std::string(path).substr(m_folder.Path().size());
    }

    const Bytes m_bytes = Pattern(20 * kPage + 10);
    const std::string m_text = AsText(m_bytes);
};

TEST_F(ByteStoreIdentityTest, SavedOntoItsFileUnderAnotherSpellingItStays) {
    const std::string dotted = m_folder.Path() + "./a";
    for (const int way : {0, 1, 2, 3, 4}) {
        for (const BOOL autoDelete : {TRUE, FALSE}) {
            SCOPED_TRACE(way);
            std::filesystem::remove(m_folder.File("link"));
            CByteStore store;
            Open(store, "a", autoDelete);
            const std::string link = m_folder.File("link");
            if (way == 0) {
                ASSERT_EQ(::symlink("a", link.c_str()), 0);
            }
            if (way == 3) {
                ASSERT_EQ(::link(m_folder.File("a").c_str(), link.c_str()), 0);
            }
            const bool shifted = way == 2 || way == 4;
            if (shifted)
                store.SetCurrentOffset(3);
            store.SaveToFile(way == 0 || way == 3 ? link.c_str() : dotted.c_str(), shifted);
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
            if (hasTwoNames) {
                ASSERT_EQ(::link(m_folder.File("a").c_str(), m_folder.File("b").c_str()), 0);
            }
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
    ASSERT_EQ(::unlink(store.GetFileName()), 0);
    store.SaveToFile(m_folder.File("out").c_str());
    EXPECT_TRUE(m_folder.Read("out") == m_text);
    EXPECT_EQ(FileCount(), 1u);
}

TEST_F(ByteStoreIdentityTest, KeptOnPurposeItLosesTheScratchMarkAtOnce) {
    CByteStore before, after;
    before.SetAutoDelete(0);
    Append(before, m_bytes);
    Append(after, m_bytes);
    after.SetAutoDelete(0);
    for (CByteStore* store : {&before, &after}) {
        struct stat info;
        ASSERT_EQ(::stat(store->GetFileName(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, 0644u);
    }
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
        EXPECT_EQ(std::string(file.GetFileName()), m_folder.File("one/rel"));
        Append(spilled, m_bytes);
        std::filesystem::current_path(m_folder.File("two"));
        EXPECT_EQ(AsText(Content(file)), m_text);
    }
    std::filesystem::current_path(here);
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("one/rel")));
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.File("one/tmp")));
    EXPECT_EQ(m_folder.Read("two/rel"), "other");
}

TEST_F(ByteStoreIdentityTest, DeviceNodesAreNeverUnlinked) {
    const std::string node = m_folder.File("node");
    if (::mknod(node.c_str(), S_IFCHR | 0600, makedev(1, 3)) != 0)
        GTEST_SKIP() << "making a device node needs root";
    {
        CByteStore store;
        CauseOf([&] { store.SetFileName(node.c_str()); });
    }
    EXPECT_TRUE(std::filesystem::exists(node));
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

TEST_F(ByteStoreIdentityTest, AFullTargetIsReportedAsTheTargets) {
    if (::access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "there is no /dev/full";
    CByteStore spilled, small;
    CByteStream stream;
    Append(spilled, m_bytes);
    Append(small, Pattern(3000));
    Append(stream, Pattern(3000));
    const auto check = [](auto action) {
        try {
            action();
            ADD_FAILURE() << "no exception";
        } catch (CFileException* error) {
            EXPECT_EQ(error->m_cause, CFileException::diskFull);
            EXPECT_EQ(std::string(error->m_strFileName), "/dev/full");
            error->Delete();
        }
    };
    check([&] { spilled.SaveToFile("/dev/full"); });
    check([&] { spilled.CopyToFile("/dev/full"); });
    check([&] { small.SaveToFile("/dev/full"); });
    check([&] { stream.CopyToFile("/dev/full"); });
    EXPECT_EQ(Content(spilled), m_bytes);
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
    const int file = ::open(store.GetFileName(), O_RDWR);
    ASSERT_GE(file, 0);
    BYTE byte = static_cast<BYTE>(m_bytes[2 * kPage + 77] ^ 1);
    ASSERT_EQ(::pwrite(file, &byte, 1, 2 * kPage + 77), 1);
    EXPECT_EQ(CauseOf([&] { store.GetDWord(2 * kPage); }), 2);
    EXPECT_EQ(CauseOf([&] { store.GetDWord(2 * kPage); }), 2) << "and stays one";
    EXPECT_EQ(store.GetDWord(kPage), (CByteStore(m_bytes.data() + kPage, 4)).GetDWord(0));
    m_system.Inject(Fault{.call = Call::Rename, .at = 1, .error = EXDEV}); // so that it is copied
    EXPECT_EQ(CauseOf([&] { store.SaveToFile(m_folder.File("out").c_str()); }), 2);
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("out")));
    ASSERT_EQ(::pwrite(file, &m_bytes[2 * kPage + 77], 1, 2 * kPage + 77), 1);
    ::close(file);
    EXPECT_EQ(Content(store), m_bytes);
}

TEST_F(ByteStoreIdentityTest, AFilesOwnPagesHaveNoChecksumUntilTheyAreWritten) {
    CByteStore store;
    Open(store, "a", FALSE);
    const int file = ::open(store.GetFileName(), O_RDWR);
    ASSERT_EQ(::pwrite(file, "x", 1, 3 * kPage), 1);
    EXPECT_EQ(store.GetByte(3 * kPage), 'x');
    store.SetByte(3 * kPage, 'y');
    store.ReleasePages();
    ASSERT_EQ(::pwrite(file, "z", 1, 3 * kPage), 1);
    ::close(file);
    EXPECT_EQ(CauseOf([&] { store.GetByte(3 * kPage); }), 2);
}

// --- forked children -----------------------------------------------------------------------------

TEST_F(ByteStoreIdentityTest, AChildReadsAndChangesACopyOfItsOwn) {
    CByteStore store;
    AppendPages(store, m_bytes);
    const auto child = [&] {
        CByteStore& copy = store;
        if (Content(copy) != m_bytes)
            return 1;
        for (DWORD page = 0; page < 20; ++page)
            copy.SetDWord(page * kPage, 0xDEADBEEF);
        copy.Flush();
        for (DWORD page = 0; page < 20; ++page)
            if (copy.GetDWord(page * kPage) != 0xDEADBEEF ||
                copy.GetByte(page * kPage + 5) != m_bytes[page * kPage + 5])
                return 2;
        copy.SaveToFile(m_folder.File("child").c_str());
        if (m_folder.Read("child").size() != m_text.size())
            return 3;
        copy.Empty();
        return 0;
    };
    EXPECT_EQ(InChild(child), 0);
    EXPECT_EQ(InChild([&] {
                  store.Empty();
                  return 0;
              }),
              0);
    EXPECT_EQ(FileCount(), 2u);
    EXPECT_EQ(Content(store), m_bytes);
    store.SaveToFile(m_folder.File("parent").c_str());
    EXPECT_TRUE(m_folder.Read("parent") == m_text);
    EXPECT_EQ(FileCount(), 2u);
}

TEST_F(ByteStoreIdentityTest, AChildSeesThatItsParentChangedAPage) {
    CByteStore store;
    AppendPages(store, m_bytes);
    store.ReleasePages();
    int go[2];
    ASSERT_EQ(::pipe(go), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        char byte;
        const bool told = ::read(go[0], &byte, 1) == 1;
        const int changed = CauseOf([&] { store.GetDWord(3 * kPage); });
        store.SetDWord(4 * kPage, 7); // continues in another file
        store.ReleasePages();
        const int still = CauseOf([&] { store.GetDWord(3 * kPage); });
        ::_exit(told && changed == 2 && still == 2 && store.GetDWord(4 * kPage) == 7 ? 0 : 1);
    }
    store.SetDWord(3 * kPage, 1);
    store.ReleasePages();
    ASSERT_EQ(::write(go[1], "x", 1), 1);
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(store.GetDWord(3 * kPage), 1u);
    ::close(go[0]);
    ::close(go[1]);
}

// --- other users ---------------------------------------------------------------------------------

/// A file that may be written in a folder that takes no new names.
TEST_F(ByteStoreIdentityTest, ClosedFoldersWorkTheSameForEveryKindOfSave) {
    if (!CanBecomeNobody())
        GTEST_SKIP() << "becoming another user needs root";
    std::filesystem::create_directory(m_folder.File("closed"));
    std::filesystem::create_directory(m_folder.File("tmp"));
    ASSERT_EQ(::chmod(m_folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(m_folder.File("tmp").c_str(), 0777), 0);
    m_system.SetTemporaryFolder(m_folder.File("tmp/"));
    const std::string name = m_folder.File("closed/file");
    for (const int kind : {0, 1, 2, 3}) {
        m_folder.Write("closed/file", "precious");
        ASSERT_EQ(::chmod(name.c_str(), 0666), 0);
        const std::string expected = kind == 0 || kind == 3 ? AsText(Pattern(3000)) : m_text;
        const auto save = [&](bool fails) {
            CByteStore store;
            CByteStream stream;
            Append(store, kind == 0 ? Pattern(3000) : m_bytes);
            Append(stream, Pattern(3000));
            store.Flush(); // so that only the target is written to
            if (fails)     // as a target whose disk is full does
                m_system.Inject(
                    Fault{.call = Call::Write, .at = 2, .fromThenOn = true, .error = ENOSPC});
            const int cause = CauseOf([&] {
                if (kind == 3)
                    stream.SaveToFile(name.c_str());
                else if (kind == 2)
                    store.CopyToFile(name.c_str());
                else
                    store.SaveToFile(name.c_str());
            });
            m_system.Inject(std::nullopt);
            return cause == (fails ? -2 : -1) ? 0 : 10 + cause;
        };
        EXPECT_EQ(AsNobody([&] { return save(true); }), 0) << kind;
        EXPECT_EQ(m_folder.Read("closed/file"), "precious");
        EXPECT_EQ(AsNobody([&] { return save(false); }), 0) << kind;
        EXPECT_TRUE(m_folder.Read("closed/file") == expected) << kind;
        EXPECT_TRUE(std::filesystem::is_empty(m_folder.File("tmp"))) << kind;
        struct stat info;
        ASSERT_EQ(::stat(name.c_str(), &info), 0);
        EXPECT_EQ(info.st_uid, 0u);
    }
}

} // namespace
} // namespace vnbytstr::test
