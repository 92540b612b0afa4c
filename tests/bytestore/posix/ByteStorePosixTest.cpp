// What only POSIX systems have: modes, device nodes, forked children, other users.
#include "tests/bytestore/StoreFixture.h"
#include "tests/support/ChildProcess.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace vnbytstr::test {
namespace {

class ByteStorePosixTest : public StoreFixture {
protected:
    const Bytes m_bytes = Pattern(20 * kPage + 10);
    const std::string m_text = AsText(m_bytes);
};

TEST_F(ByteStorePosixTest, KeptOnPurposeItLosesTheScratchMarkAtOnce) {
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

TEST_F(ByteStorePosixTest, DeviceNodesAreNeverUnlinked) {
    const std::string node = m_folder.File("node");
    if (::mknod(node.c_str(), S_IFCHR | 0600, makedev(1, 3)) != 0)
        GTEST_SKIP() << "making a device node needs root";
    {
        CByteStore store;
        CauseOf([&] { store.SetFileName(node.c_str()); });
    }
    EXPECT_TRUE(std::filesystem::exists(node));
}

TEST_F(ByteStorePosixTest, AFullTargetIsReportedAsTheTargets) {
    const std::string full = m_folder.Device("/dev/full");
    if (::access(full.c_str(), W_OK) != 0)
        GTEST_SKIP() << "there is no /dev/full";
    CByteStore spilled, small;
    CByteStream stream;
    Append(spilled, m_bytes);
    Append(small, Pattern(3000));
    Append(stream, Pattern(3000));
    const auto check = [&](auto action) {
        try {
            action();
            ADD_FAILURE() << "no exception";
        } catch (CFileException* error) {
            EXPECT_EQ(error->m_cause, CFileException::diskFull);
            EXPECT_EQ(std::string(error->m_strFileName), full);
            error->Delete();
        }
    };
    check([&] { spilled.SaveToFile(full.c_str()); });
    check([&] { spilled.CopyToFile(full.c_str()); });
    check([&] { small.SaveToFile(full.c_str()); });
    check([&] { stream.CopyToFile(full.c_str()); });
    EXPECT_EQ(Content(spilled), m_bytes);
}

// --- forked children -----------------------------------------------------------------------------

TEST_F(ByteStorePosixTest, AChildReadsAndChangesACopyOfItsOwn) {
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

/// Also where pages wait to be written, some were never stored, the name leads to a shifted image,
/// or the file cannot be opened once more.
TEST_F(ByteStorePosixTest, AChildHasWhatItsParentHad) {
    for (const bool isShifted : {false, true}) {
        CByteStore store;
        Append(store, Pattern(3 * kPage));
        store.Concat(DWORD{5 * kPage});
        Append(store, m_bytes);
        if (isShifted) {
            store.SetCurrentOffset(8 * kPage);
            store.Flush(1);
        }
        const auto hasAll = [&] {
            store.SetByte(8 * kPage, m_bytes[0]);
            return store.Right(20 * kPage + 10) ==
                   CByteStream(m_bytes.data(), static_cast<DWORD>(m_bytes.size()));
        };
        EXPECT_EQ(InChild([&] {
                      if (!hasAll())
                          return 1;
                      store.SetAutoDelete(0); // its parent's file is not its own
                      for (DWORD page = 8; page < 28; ++page)
                          store.SetByte(page * kPage, 1);
                      store.Flush();
                      store.SetByte(20 * kPage, 2);
                      store.Flush();
                      return store.GetByte(20 * kPage) == 2 && store.GetByte(10 * kPage) == 1 ? 0
                                                                                              : 2;
                  }),
                  0);
        EXPECT_EQ(InChild([&] {
                      m_system.Inject(Fault{.call = Call::Open, .fromThenOn = true});
                      for (DWORD page = 8; page < 28; ++page)
                          if (CauseOf([&] { store.GetDWord(page * kPage); }) == 2)
                              return 0;
                      return 1;
                  }),
                  0);
        EXPECT_TRUE(hasAll());
        EXPECT_EQ(FileCount(), 1u);
    }
}

TEST_F(ByteStorePosixTest, AChildSeesThatItsParentChangedAPage) {
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
TEST_F(ByteStorePosixTest, ClosedFoldersWorkTheSameForEveryKindOfSave) {
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
