#include "vnbytstr/framework/File.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"
#include "vnbytstr/framework/MemFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

using vnbytstr::ScopedSystem;
using vnbytstr::test::Call;
using vnbytstr::test::Fault;
using vnbytstr::test::TemporaryFolder;
using vnbytstr::test::TestSystem;

#ifndef EDQUOT // a system without that error
#define EDQUOT ENOSPC
#endif

namespace {

// What a call threw, by value; m_cause none when it threw nothing.
struct Thrown {
    int m_cause = CFileException::none;
    int m_osError = 0;
    std::string m_name;
};

template <class Function>
Thrown ErrorOf(Function&& call) {
    try {
        call();
    } catch (CFileException* error) {
        Thrown thrown{error->m_cause, error->m_lOsError, std::string(error->m_strFileName)};
        error->Delete();
        return thrown;
    }
    return {};
}

class FileTest : public ::testing::Test {
protected:
    FileTest() : m_scope(m_system) {}
    ~FileTest() override { EXPECT_TRUE(m_system.OpenHandles().empty()); }

    std::string Name(const char* name) const { return m_folder.File(name); }
    // Cause of an Open that is to fail.
    int OpenError(const std::string& name, UINT flags, int* osError = nullptr) {
        CFile file;
        CFileException error;
        EXPECT_FALSE(file.Open(name.c_str(), flags, &error));
        EXPECT_EQ(file.m_hFile, CFile::hFileNull);
        EXPECT_EQ(error.m_strFileName, name.c_str());
        if (osError != nullptr)
            *osError = error.m_lOsError;
        return error.m_cause;
    }

    TemporaryFolder m_folder;
    TestSystem m_system;
    ScopedSystem m_scope;
};

TEST_F(FileTest, OpenFlags) {
    EXPECT_EQ(OpenError(Name("none"), CFile::modeRead), CFileException::fileNotFound);
    EXPECT_EQ(OpenError(m_folder.Path(), CFile::modeRead), CFileException::accessDenied);
    EXPECT_EQ(OpenError(Name("a/b"), CFile::modeRead), CFileException::fileNotFound);
    EXPECT_EQ(OpenError(Name("none"), CFile::modeWrite | CFile::modeReadWrite),
              CFileException::genericException);

    m_folder.Write("a", "content");
    { CFile kept(Name("a").c_str(), CFile::modeCreate | CFile::modeNoTruncate | CFile::modeWrite); }
    EXPECT_EQ(m_folder.Read("a"), "content");
    {
        CFile file(Name("a").c_str(), CFile::modeWrite | CFile::typeBinary | CFile::modeNoInherit);
        file.Write("CON", 3);
        char byte;
        EXPECT_EQ(ErrorOf([&] { file.Read(&byte, 1); }).m_cause, CFileException::invalidFile);
    }
    EXPECT_EQ(m_folder.Read("a"), "CONtent");
    {
        CFile file(Name("a").c_str(), CFile::modeRead);
        const Thrown thrown = ErrorOf([&] { file.Write("x", 1); });
        EXPECT_EQ(thrown.m_cause, CFileException::invalidFile);
        EXPECT_EQ(thrown.m_name, Name("a"));
        ASSERT_TRUE(file.Open(file.GetFilePath(), CFile::modeReadWrite)); // the old one is closed
        file.Write("x", 1);
    }
    { CFile emptied(Name("a").c_str(), CFile::modeCreate | CFile::modeWrite); }
    EXPECT_EQ(m_folder.Read("a"), "");
    EXPECT_EQ(ErrorOf([&] { CFile(Name("none").c_str(), CFile::modeRead); }).m_name, Name("none"));
}

TEST_F(FileTest, ExclusiveCreationNeverFollowsOrReplaces) {
    constexpr UINT kNew = CFile::modeCreate | CFile::modeExclusive | CFile::modeReadWrite;
    m_folder.Write("taken", "content");
    if (!m_folder.Link(Name("target"), "dangling"))
        GTEST_SKIP() << "no symbolic links here";
    for (const UINT more : {0u, static_cast<UINT>(CFile::modeScratch)}) {
        int osError = 0;
        EXPECT_EQ(OpenError(Name("taken"), kNew | more, &osError), CFileException::accessDenied);
        EXPECT_EQ(osError, EEXIST);
        EXPECT_EQ(OpenError(Name("dangling"), kNew | more, &osError), CFileException::accessDenied);
        EXPECT_EQ(osError, EEXIST);
    }
    EXPECT_EQ(m_folder.Read("taken"), "content");
    EXPECT_FALSE(std::filesystem::exists(Name("target")));
}

TEST_F(FileTest, ScratchFileIsPrivateMarkedAndLocked) {
    constexpr UINT kScratch =
        CFile::modeCreate | CFile::modeExclusive | CFile::modeScratch | CFile::modeReadWrite;
    CFile file(Name("scratch").c_str(), kScratch);
    vnbytstr::FileStatus status;
    ASSERT_EQ(m_system.GetFileStatus(Name("scratch").c_str(), status), 0);
    EXPECT_TRUE(status.isScratch);
    EXPECT_TRUE(m_folder.HasMode(Name("scratch"), 0600));
    CFile other(Name("scratch").c_str(), CFile::modeReadWrite);
    EXPECT_EQ(m_system.LockFile(other.m_hFile, true, false), EWOULDBLOCK);

    // Every call of the open can fail; no file and no handle is left.
    for (unsigned at = 1; at <= 4; ++at) {
        m_system.Inject(Fault{.at = at, .error = EIO});
        int osError = 0;
        EXPECT_EQ(OpenError(Name("new"), kScratch, &osError), CFileException::hardIO) << at;
        EXPECT_EQ(m_system.Hits(), 1u);
        EXPECT_FALSE(std::filesystem::exists(Name("new"))) << at;
    }
    // The sweep holds the lock just then.
    m_system.Inject(Fault{.call = Call::Lock, .error = EWOULDBLOCK});
    int osError = 0;
    OpenError(Name("new"), kScratch, &osError);
    EXPECT_EQ(osError, EEXIST);
    std::filesystem::remove(Name("new"));
    // A file system without locks.
    m_system.Inject(Fault{.call = Call::Lock, .error = ENOLCK});
    EXPECT_TRUE(CFile().Open(Name("new").c_str(), kScratch));
}

TEST_F(FileTest, ShareModesKeepEachOtherOut) {
    m_folder.Write("a", "content");
    const std::string name = Name("a");
    {
        CFile reader(name.c_str(), CFile::modeRead | CFile::shareDenyWrite);
        CFile second(name.c_str(), CFile::modeRead | CFile::shareDenyWrite);
        EXPECT_EQ(OpenError(name, CFile::modeReadWrite | CFile::shareDenyWrite),
                  CFileException::sharingViolation);
        // Refused before the content is cut.
        EXPECT_EQ(OpenError(name, CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive),
                  CFileException::sharingViolation);
        CFile unconcerned(name.c_str(), CFile::modeRead | CFile::shareDenyNone);
        EXPECT_EQ(unconcerned.GetLength(), 7u);
    }
    CFile writer(name.c_str(), CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive);
    EXPECT_EQ(writer.GetLength(), 0u);
}

TEST_F(FileTest, SeekPast2GiBTakesTwoSteps) {
    CFile file(Name("sparse").c_str(), CFile::modeCreate | CFile::modeReadWrite);
    const auto seek = [&](DWORD position) {
        EXPECT_EQ(file.Seek(0x7FFFFFFF, CFile::begin), 0x7FFFFFFF);
        return static_cast<DWORD>(
            file.Seek(static_cast<LONG>(position - 0x7FFFFFFF), CFile::current));
    };
    EXPECT_EQ(seek(0x80000000u), 0x80000000u);
    EXPECT_EQ(seek(0xFFFF8000u), 0xFFFF8000u);
    file.Write("x", 1);
    EXPECT_EQ(file.GetPosition(), 0xFFFF8001u);
    EXPECT_EQ(file.GetLength(), 0xFFFF8001u);
    EXPECT_EQ(file.SeekToEnd(), 0xFFFF8001u);
    EXPECT_EQ(static_cast<DWORD>(file.Seek(-1, CFile::end)), 0xFFFF8000u);
    char byte = 0;
    EXPECT_EQ(file.Read(&byte, 1), 1u);
    EXPECT_EQ(byte, 'x');

    EXPECT_EQ(ErrorOf([&] { file.Seek(0x8000, CFile::current); }).m_cause, CFileException::badSeek);
    EXPECT_EQ(file.GetPosition(), 0xFFFF8001u);
    EXPECT_EQ(ErrorOf([&] { file.Seek(-1, CFile::begin); }).m_cause, CFileException::badSeek);
    file.SetLength(0xFFFFFFFFu);
    EXPECT_EQ(file.GetLength(), 0xFFFFFFFFu);
    file.Write("y", 1);
    const Thrown thrown = ErrorOf([&] { file.GetLength(); });
    EXPECT_EQ(thrown.m_osError, EOVERFLOW);
    file.SeekToBegin();
    EXPECT_EQ(ErrorOf([&] { file.SeekToEnd(); }).m_cause, CFileException::badSeek);
    EXPECT_EQ(file.GetPosition(), 0u);
}

TEST_F(FileTest, TransfersCutShortAreCompleted) {
    std::string content(1000, ' ');
    std::generate(content.begin(), content.end(),
                  [n = 0]() mutable { return static_cast<char>(n++ * 7); });
    const auto part = [&](std::size_t at, std::size_t size) {
        return std::span(reinterpret_cast<const BYTE*>(content.data()) + at, size);
    };
    CFile file(Name("a").c_str(), CFile::modeCreate | CFile::modeReadWrite);
    m_system.Inject(Fault{.call = Call::Write, .fromThenOn = true, .kind = Fault::Kind::Shorten});
    file.Write(content.data(), 300);
    std::vector<std::span<const BYTE>> parts = {part(300, 100), part(0, 0), part(400, 57)};
    for (std::size_t i = 457; i < 1000; ++i) // more parts than one system call takes
        parts.push_back(part(i, 1));
    file.WriteGather(parts);
    m_system.Inject(std::nullopt);
    EXPECT_EQ(m_folder.Read("a"), content);
    file.WriteGather(parts);
    EXPECT_EQ(m_folder.Read("a"), content + content.substr(300));

    // A system that takes nothing and reports nothing is not asked for ever.
    for (const bool gather : {false, true}) {
        m_system.Inject(Fault{.call = Call::Write, .kind = Fault::Kind::Nothing});
        try {
            gather ? file.WriteGather(parts) : file.Write("abc", 3);
            ADD_FAILURE();
        } catch (CFileException* error) {
            EXPECT_EQ(error->m_cause, CFileException::diskFull);
            error->Delete();
        }
    }
    m_system.Inject(std::nullopt);

    file.SetLength(1000);
    file.SeekToBegin();
    m_system.Inject(Fault{.call = Call::Read, .kind = Fault::Kind::Shorten});
    std::string back(2000, ' ');
    EXPECT_EQ(file.Read(back.data(), 2000), 1000u);
    EXPECT_EQ(back.substr(0, 1000), content);
    EXPECT_EQ(file.Read(back.data(), 2000), 0u);
}

TEST_F(FileTest, FailuresAreReportedAndCloseTheFile) {
    CFile file(Name("a").c_str(), CFile::modeCreate | CFile::modeReadWrite);
    struct Case {
        Call m_call;
        int m_osError;
        int m_cause;
        void (*m_action)(CFile&);
    };
    const Case cases[] = {
        {Call::Write, ENOSPC, CFileException::diskFull, [](CFile& f) { f.Write("abc", 3); }},
        {Call::Write, EDQUOT, CFileException::diskFull,
         [](CFile& f) {
             const std::array<std::span<const BYTE>, 1> parts = {
                 std::span<const BYTE>(reinterpret_cast<const BYTE*>("abc"), 3)};
             f.WriteGather(parts);
         }},
        {Call::Read, EIO, CFileException::hardIO,
         [](CFile& f) {
             char c;
             f.Read(&c, 1);
         }},
        {Call::Sync, EIO, CFileException::hardIO, [](CFile& f) { f.Flush(); }},
        {Call::SetLength, ENOSPC, CFileException::diskFull, [](CFile& f) { f.SetLength(9); }},
        {Call::Length, EIO, CFileException::hardIO, [](CFile& f) { f.GetLength(); }},
        {Call::Seek, EIO, CFileException::hardIO, [](CFile& f) { f.SeekToEnd(); }},
        {Call::Close, EIO, CFileException::hardIO, [](CFile& f) { f.Close(); }},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(vnbytstr::test::CallName(one.m_call));
        m_system.Inject(Fault{.call = one.m_call, .error = one.m_osError});
        const Thrown thrown = ErrorOf([&] { one.m_action(file); });
        EXPECT_EQ(thrown.m_cause, one.m_cause);
        EXPECT_EQ(thrown.m_osError, one.m_osError);
        EXPECT_EQ(thrown.m_name, Name("a"));
    }
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    m_system.Inject(std::nullopt);
    file.Close(); // nothing to do
    file.Flush();
    EXPECT_EQ(ErrorOf([&] { file.GetPosition(); }).m_cause, CFileException::invalidFile);

    // A borrowed handle stays open for its owner.
    CFile owner(Name("a").c_str(), CFile::modeRead);
    { CFile borrowed(owner.m_hFile); }
    EXPECT_EQ(owner.GetLength(), 0u);
    m_system.Inject(Fault{.call = Call::Close});
    owner.Abort(); // silently
}

TEST_F(FileTest, NamesRenameRemoveStatus) {
    m_folder.Write("old", "content");
    m_folder.Write("taken", "x");
    Thrown thrown = ErrorOf([&] { CFile::Rename(Name("old").c_str(), Name("taken").c_str()); });
    EXPECT_EQ(thrown.m_osError, EEXIST);
    EXPECT_EQ(thrown.m_name, Name("taken"));
    EXPECT_EQ(m_folder.Read("taken"), "x");
    CFile::Rename(Name("old").c_str(), Name("new").c_str());
    CFileStatus status;
    EXPECT_FALSE(CFile::GetStatus(Name("old").c_str(), status));
    ASSERT_TRUE(CFile::GetStatus(Name("new").c_str(), status));
    EXPECT_EQ(status.m_size, 7u);
    EXPECT_EQ(status.m_attribute & CFile::directory, 0);
    EXPECT_GT(status.m_mtime, 1600000000);
    ASSERT_TRUE(CFile::GetStatus(m_folder.Path().c_str(), status));
    EXPECT_EQ(status.m_attribute & CFile::directory, CFile::directory);
    CFile::Remove(Name("new").c_str());
    thrown = ErrorOf([&] { CFile::Remove(Name("new").c_str()); });
    EXPECT_EQ(thrown.m_cause, CFileException::fileNotFound);
    EXPECT_EQ(thrown.m_name, Name("new"));
    if (m_folder.Link(Name("gone"), "dangling")) {
        EXPECT_FALSE(CFile::GetStatus(Name("dangling").c_str(), status));
    }

    CFile file(Name("taken").c_str(), CFile::modeRead);
    EXPECT_EQ(file.GetFileName(), "taken");
    ASSERT_TRUE(file.GetStatus(status));
    EXPECT_EQ(status.m_szFullName, Name("taken").c_str());
    EXPECT_EQ(status.m_size, 1u);
    file.Close();
    EXPECT_FALSE(file.GetStatus(status));
    // A name without a folder gets the current one.
    EXPECT_FALSE(file.Open("no such file here", CFile::modeRead));
    EXPECT_EQ(file.GetFilePath(),
              (std::filesystem::current_path() / "no such file here").string().c_str());
}

// A file on disk is the oracle of the one in memory; both against a plain string.
TEST_F(FileTest, MemoryFileBehavesAsAFile) {
    std::mt19937 random(99);
    const auto number = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    CFile disk(Name("disk").c_str(), CFile::modeCreate | CFile::modeReadWrite);
    CMemFile memory(7);
    for (int step = 0; step < 5000; ++step) {
        SCOPED_TRACE(step);
        switch (number(0, 4)) {
        case 0: {
            const std::string text(static_cast<std::size_t>(number(0, 60)),
                                   static_cast<char>(number(1, 255)));
            for (CFile* file : {&disk, static_cast<CFile*>(&memory)})
                file->Write(text.data(), static_cast<UINT>(text.size()));
            break;
        }
        case 1: {
            char fromDisk[80] = {};
            char fromMemory[80] = {};
            const auto count = static_cast<UINT>(number(0, 80));
            ASSERT_EQ(memory.Read(fromMemory, count), disk.Read(fromDisk, count));
            ASSERT_EQ(std::memcmp(fromDisk, fromMemory, sizeof fromDisk), 0);
            break;
        }
        case 2:
        case 3: {
            const auto from = static_cast<UINT>(number(0, 2));
            const int offset = number(from == CFile::begin ? -5 : -100, 120);
            LONG onDisk = -1;
            LONG inMemory = -1;
            const int expected = ErrorOf([&] { onDisk = disk.Seek(offset, from); }).m_cause;
            EXPECT_EQ(ErrorOf([&] { inMemory = memory.Seek(offset, from); }).m_cause, expected);
            ASSERT_EQ(inMemory, onDisk);
            break;
        }
        default: {
            const auto length = static_cast<DWORD>(number(0, 500));
            disk.SetLength(length);
            memory.SetLength(length);
            memory.SeekToEnd();
            break;
        }
        }
        ASSERT_EQ(memory.GetLength(), disk.GetLength());
        ASSERT_EQ(memory.GetPosition(), disk.GetPosition());
    }
    const std::string content = m_folder.Read("disk");
    BYTE* block = memory.Detach();
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::memcmp(block, content.data(), content.size()), 0);
    std::free(block);
    EXPECT_EQ(memory.GetLength(), 0u);
}

class LimitedMemFile : public CMemFile {
public:
    explicit LimitedMemFile(DWORD limit) : CMemFile(1), m_limit(limit) {}
    ~LimitedMemFile() override { Close(); }
    static int s_blocks;

protected:
    BYTE* Alloc(DWORD size) override {
        s_blocks += size <= m_limit;
        return size <= m_limit ? CMemFile::Alloc(size) : nullptr;
    }
    BYTE* Realloc(BYTE* block, DWORD size) override {
        return size <= m_limit ? CMemFile::Realloc(block, size) : nullptr;
    }
    void Free(BYTE* block) noexcept override {
        --s_blocks;
        CMemFile::Free(block);
    }

private:
    DWORD m_limit;
};
int LimitedMemFile::s_blocks = 0;

TEST(MemFile, RefusedMemoryKeepsTheContent) {
    {
        LimitedMemFile file(100);
        file.Write("0123456789", 10);
        const std::string much(200, 'x');
        EXPECT_THROW(file.Write(much.data(), 200), CMemoryException*);
        EXPECT_THROW(file.SetLength(0xFFFFFFFF), CMemoryException*);
        EXPECT_EQ(file.GetLength(), 10u);
        EXPECT_EQ(file.GetPosition(), 10u);
        EXPECT_EQ(LimitedMemFile::s_blocks, 1);
    }
    EXPECT_EQ(LimitedMemFile::s_blocks, 0);
}

TEST(MemFile, AttachedBlockStaysTheCallers) {
    BYTE block[4] = {'a', 'b', 'c', 'd'};
    CMemFile file(block, sizeof block);
    EXPECT_EQ(file.GetLength(), 4u);
    file.Write("AB", 2);
    EXPECT_EQ(block[1], 'B');
    file.SeekToEnd();
    EXPECT_THROW(file.Write("e", 1), CMemoryException*);
    EXPECT_EQ(file.Detach(), block);

    auto* room = static_cast<BYTE*>(std::malloc(2));
    file.Attach(room, 2, 16);
    EXPECT_EQ(file.GetLength(), 0u);
    file.Write("0123456789", 10); // grows the caller's block
    BYTE* grown = file.Detach();
    EXPECT_EQ(std::memcmp(grown, "0123456789", 10), 0);
    std::free(grown);
    EXPECT_FALSE(file.Open("name", CFile::modeRead));
}

} // namespace
