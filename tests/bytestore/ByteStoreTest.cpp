// CByteStore: what only a store has: pages, replacement, swap file, saving.
#include "tests/bytestore/StoreFixture.h"

#include "bytestore/SwapSweep.h"
#include "platform/companion/Profile.h"
#include "vnbytstr/TempFileName.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <set>

namespace vnbytstr::test {
namespace {

class ByteStoreTest : public StoreFixture {
protected:
    /// Appends page by page while the clock goes on, so that pages leave in the order of their
    /// numbers.
    void AppendPages(CByteStore& store, const Bytes& bytes) {
        for (std::size_t done = 0; done < bytes.size(); done += kPage) {
            m_system.SetTick(++m_tick);
            store.Concat(bytes.data() + done,
                         static_cast<DWORD>(std::min<std::size_t>(kPage, bytes.size() - done)));
        }
    }
    DWORD m_tick = 1000;
};

/// Opens the protected part.
class OpenStore : public CByteStore {
public:
    using CByteStore::CByteStore;
    using CByteStore::GetMaxPages;
    using CByteStore::GetPageFromPageNum;
    using CByteStore::GetPageToDiscard;
    using CByteStore::SetMaxPages;
};

TEST_F(ByteStoreTest, ValuesAreBigEndianAcrossPages) {
    CByteStore store;
    Append(store, Bytes(kPage - 1, 0));
    store.ConcatWord(0x1234);
    EXPECT_EQ(store.GetByte(32767), 0x12);
    EXPECT_EQ(store.GetByte(32768), 0x34);
    EXPECT_EQ(store.GetWord(32767), 0x1234);
    store.SetInt64(32764, 0x0102030405060708);
    EXPECT_EQ(store.GetInt48(32765), 0x020304050607);
    EXPECT_EQ(store.GetDWord(32766), 0x03040506u);
    EXPECT_EQ(store.GetLength(), 32772u);
}

TEST_F(ByteStoreTest, AccountedBytesAreNeverHeld) {
    CByteStore store;
    store.Concat(DWORD{5});
    DWORD start, end;
    store.GetRange(start, end);
    EXPECT_EQ(start, 5u);
    EXPECT_EQ(end, 5u);
    EXPECT_TRUE(store.IsEmpty());
    // The first append goes into the middle of a page that no file has.
    store.ConcatByte(7);
    EXPECT_EQ(store.GetByte(5), 7);
    EXPECT_TRUE(store.IsByteAvailable(5) && !store.IsByteAvailable(4));
    EXPECT_EQ(CauseOf([&] { store.CopyTo(4, Bytes(2).data(), 2, 2); }), 0);
    store.Concat(DWORD{3 * kPage});
    store.ConcatWord(0xABCD);
    EXPECT_EQ(store.GetWord(6 + 3 * kPage), 0xABCD);
}

TEST_F(ByteStoreTest, LengthsUpTo4GiBLess1) {
    CByteStore store;
    store.Concat(DWORD{0xFFFFFFFE});
    store.ConcatByte(1);
    EXPECT_EQ(store.GetLength(), 0xFFFFFFFFu);
    EXPECT_EQ(store.GetByte(0xFFFFFFFE), 1);
    EXPECT_EQ(CauseOf([&] { store.ConcatByte(2); }), 6);
    EXPECT_EQ(CauseOf([&] { store.Concat(DWORD{1}); }), 6);
    EXPECT_EQ(CauseOf([&] { store.SetWord(0xFFFFFFFE, 1); }), 6);
    EXPECT_EQ(CauseOf([&] { store.CopyFrom(0xFFFFFFFE, Bytes(2).data(), 2); }), 6);
    EXPECT_EQ(store.GetWord(0xFFFFFFFE), 0x0100);
    EXPECT_EQ(store.GetByte(0xFFFFFFFF), 0);

    m_folder.Write("sparse", "");
    const std::string name = m_folder.File("sparse");
    CByteStore file;
    ASSERT_EQ(::truncate(name.c_str(), 0x100000000), 0);
    EXPECT_EQ(CauseOf([&] { file.SetFileName(name.c_str()); }), 6);
    ASSERT_EQ(::truncate(name.c_str(), 0xFFFFFFFF), 0);
    file.SetFileName(name.c_str());
    file.SetDWord(0xFFFFFFFB, 0x01020304);
    file.SetByte(0x7FFFFFFF, 9);
    file.SetByte(0x80000001, 8);
    file.SetAutoDelete(0);
    file.Flush();
    file.SetFileName(name.c_str());
    EXPECT_EQ(file.GetDWord(0xFFFFFFFB), 0x01020304u);
    EXPECT_EQ(file.GetByte(0x7FFFFFFF), 9);
    EXPECT_EQ(file.GetWord(0x80000000), 8);
}

// --- cache ---------------------------------------------------------------------------------------

TEST_F(ByteStoreTest, TargetFollowsSettingAndLoad) {
    const auto target = [&](DWORD pages, DWORD load) {
        VNWriteProfileDWORD(3, "Options", "MaxCachePages", pages);
        m_system.SetMemoryLoad(load);
        return CByteStore::GetTargetMaxPages();
    };
    m_system.SetMemoryLoad(50);
    EXPECT_EQ(CByteStore::GetTargetMaxPages(), 32);
    EXPECT_EQ(target(0, 0), 16);
    EXPECT_EQ(target(1000, 10), 900);
    EXPECT_EQ(target(1000, 100), 16);
    EXPECT_EQ(target(0xFFFFFFFF, 99), 42949672); // 0xFFFFFFFF * 1 / 100
    EXPECT_EQ(target(0x60000000, 99), 16106127);
    EXPECT_EQ(target(0xFFFFFFFF, 0), 42949671); // the product wraps at 32 bits
}

TEST_F(ByteStoreTest, CacheGivesPagesBackWhenMemoryFills) {
    m_system.SetMemoryLoad(0);
    CByteStore store;
    const Bytes bytes = Pattern(60 * kPage);
    Append(store, bytes);
    EXPECT_EQ(store.GetResidentPageCount(), 60u);
    EXPECT_STREQ(store.GetFileName(), "");
    m_system.SetMemoryLoad(90);
    store.ConcatByte(1);
    EXPECT_EQ(store.GetResidentPageCount(), 16u);
    EXPECT_EQ(Content(store).size(), bytes.size() + 1);
    EXPECT_TRUE(store.Left(60 * kPage) == CByteStream(bytes.data(), 60 * kPage));
}

/// The victim at every step against a plain list of (page, tick) in order of creation.
TEST_F(ByteStoreTest, VictimIsTheOldestAndTheFirstOfEquals) {
    struct Entry {
        DWORD page, tick;
    };
    std::vector<Entry> model;
    const auto oldest = [&] {
        return std::min_element(model.begin(), model.end(),
                                [](const Entry& a, const Entry& b) { return a.tick < b.tick; });
    };
    OpenStore store;
    Append(store, Pattern(40 * kPage));
    for (DWORD page = 24; page < 40; ++page)
        store.SetByte(page * kPage, static_cast<BYTE>(page)); // all sixteen in a known state
    std::minstd_rand random(7);
    DWORD tick = 0xFFFFFF00; // and over the wrap of the clock, which counts as no special case
    m_system.SetTick(tick);
    for (int i = 0; i < 16; ++i)
        store.SetMaxPages(16 - i);
    store.SetMaxPages(1);
    model = {{store.GetPageToDiscard()->GetPageNum(), 0}};
    store.GetByte(model[0].page * kPage);
    model[0].tick = tick;
    store.SetMaxPages(16);
    for (int step = 0; step < 20000; ++step) {
        if (random() % 3 == 0)
            m_system.SetTick(tick += static_cast<DWORD>(random() % 3));
        const auto page = static_cast<DWORD>(random() % (random() % 2 ? 40 : 18));
        const DWORD index = page * kPage + static_cast<DWORD>(random() % (kPage - 8));
        switch (random() % 4) {
        case 0:
            store.SetByte(index, static_cast<BYTE>(step));
            break;
        case 1:
            store.GetByte(index);
            break;
        case 2:
            store.GetDWord(index);
            break;
        default:
            store.CopyFrom(index, Pattern(8).data(), 8);
        }
        auto found = std::find_if(model.begin(), model.end(),
                                  [&](const Entry& entry) { return entry.page == page; });
        if (found == model.end()) {
            if (model.size() < 16)
                found = model.insert(model.end(), Entry{page, 0});
            else
                found = oldest();
        }
        *found = {page, tick};
        ASSERT_EQ(store.GetPageToDiscard()->GetPageNum(), oldest()->page) << "step " << step;
        ASSERT_EQ(store.GetPageToDiscard()->GetLastAccessTime(), oldest()->tick);
    }
}

TEST_F(ByteStoreTest, PageBelowTheStartIsDroppedUnwritten) {
    CByteStore store;
    AppendPages(store, Pattern(16 * kPage));
    store.DiscardUpTo(2 * kPage + 1); // page 1 ends below it; page 2 is still held
    AppendPages(store, Pattern(2 * kPage));
    EXPECT_STREQ(store.GetFileName(), "");
    EXPECT_EQ(store.GetSwappedPageCount(), 0u);
    AppendPages(store, Pattern(kPage));
    EXPECT_STRNE(store.GetFileName(), "");
    EXPECT_GE(store.GetSwappedPageCount(), 1u);
    store.DiscardUpTo(5);
    DWORD start, end;
    store.GetRange(start, end);
    EXPECT_EQ(start, 2 * kPage + 1);
    store.DiscardUpTo(0xFFFFFFFF);
    store.GetRange(start, end);
    EXPECT_EQ(start, end);
}

TEST_F(ByteStoreTest, PageSwapsByItsRules) {
    CFile file(m_folder.File("page").c_str(), CFile::modeCreate | CFile::modeReadWrite);
    CBytePage page;
    EXPECT_TRUE(page.GetMustRead() && page.GetMustWrite());
    const Bytes bytes = Pattern(kPage);
    std::copy(bytes.begin(), bytes.end(), page.GetData());
    page.SetPageNum(0);
    page.SwapOut(file, 100, 40); // begins below the shift: keeps its place, cut at the end
    EXPECT_EQ(file.GetLength(), 60u);
    page.SwapOut(file, 100, 0); // no longer to be written
    EXPECT_EQ(file.GetLength(), 60u);
    page.SetMustWrite(TRUE);
    page.SwapOut(file, 100, 100);
    EXPECT_FALSE(page.GetMustWrite());
    EXPECT_EQ(file.GetLength(), 60u);
    page.SetPageNum(1);
    page.SetMustWrite(TRUE);
    page.SwapOut(file, 0, 40);
    EXPECT_EQ(file.GetLength(), 2 * kPage - 40);
    EXPECT_TRUE(page.GetMustRead());
    EXPECT_EQ(CauseOf([&] { page.SwapIn(file, 2); }), 2);
    EXPECT_TRUE(page.GetMustRead());
    page.SwapIn(file, 0);
    EXPECT_EQ(page.GetData()[kPage - 40], bytes[0]);
    m_system.SetTick(1234);
    page.GetData();
    EXPECT_EQ(page.GetLastAccessTime(), 1234u);
    m_system.Inject(Fault{.call = Call::Seek, .kind = Fault::Kind::Misplace});
    EXPECT_EQ(CauseOf([&] { page.SwapIn(file, 1); }), 1);
    m_system.Inject(std::nullopt);
}

// --- swap files ----------------------------------------------------------------------------------

TEST_F(ByteStoreTest, SwapFileLivesUntilEmpty) {
    CByteStore store;
    Append(store, Pattern(20 * kPage));
    const std::string name = store.GetFileName();
    EXPECT_EQ(name.find(m_folder.Path() + "~dat-"), 0u);
    EXPECT_TRUE(name.ends_with(".tmp"));
    struct stat info;
    ASSERT_EQ(::stat(name.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    store.Empty();
    EXPECT_EQ(FileCount(), 0u);
    EXPECT_EQ(store.GetFileName(), name);
    // A file that somebody else makes under the old name is not the store's.
    m_folder.Write(name.substr(m_folder.Path().size()), "other");
    store.Empty();
    EXPECT_EQ(FileCount(), 1u);
}

TEST_F(ByteStoreTest, TemporaryNames) {
    m_system.SetProcessId(1234);
    CString name, next;
    GenerateLOBFileName(name);
    EXPECT_EQ(name.Find((m_folder.Path() + "~tmp-1234-").c_str()), 0);
    EXPECT_EQ(name.Right(4), ".lob");
    GenerateTempFileName(next, "x", "y");
    EXPECT_EQ(next.Right(2), ".y");
    GetTemporaryPath(name);
    EXPECT_EQ(std::string(name), m_folder.Path());
}

TEST_F(ByteStoreTest, NamesTakenMeanwhileArePassedOver) {
    // Links that point nowhere, and files, under the next names.
    CString name;
    GenerateTempFileName(name, "dat", nullptr);
    const std::string last(name);
    const std::string stem = last.substr(0, last.rfind('-') + 1);
    const unsigned counter = static_cast<unsigned>(std::stoul(last.substr(stem.size())));
    for (unsigned i = 1; i <= 3; ++i)
        ASSERT_EQ(::symlink(m_folder.File("nowhere").c_str(),
                            (stem + std::to_string(counter + i) + ".tmp").c_str()),
                  0);
    // The fourth is taken between the look and the opening.
    m_system.Inject(Fault{.call = Call::Open, .at = 1, .error = EEXIST});
    CByteStore store;
    const Bytes bytes = Pattern(20 * kPage);
    Append(store, bytes);
    EXPECT_EQ(store.GetFileName(), stem + std::to_string(counter + 5) + ".tmp");
    EXPECT_EQ(Content(store), bytes);
    store.Empty();
    EXPECT_EQ(FileCount(), 3u);
}

TEST_F(ByteStoreTest, DeadProcessesSwapFilesAreSweptAway) {
    using detail::OwnerOfSwapFile;
    EXPECT_EQ(OwnerOfSwapFile("~dat-17-3.tmp"), 17u);
    for (const char* other :
         {"~dat-17-3.lob", "~dat-17.tmp", "~dat-a-3.tmp", "~dat--3.tmp", "~tmp-17-3.tmp",
          "~dat-17-3.tmp~", "~dat-99999999999-1.tmp", "dat-17-3.tmp", ""})
        EXPECT_FALSE(OwnerOfSwapFile(other)) << other;

    // Stores of "process 17": one that died (its lock is gone), one that lives, one that was kept.
    m_system.SetProcessId(17);
    {
        CFile died((m_folder.File("~dat-17-900.tmp")).c_str(),
                   CFile::modeCreate | CFile::modeReadWrite | CFile::modeExclusive |
                       CFile::modeScratch);
    }
    CByteStore lives, kept;
    Append(lives, Pattern(20 * kPage));
    Append(kept, Pattern(20 * kPage));
    kept.SetAutoDelete(0);
    kept.Empty();
    m_folder.Write("~dat-17-901.tmp", "a plain file that happens to have such a name");
    m_system.SetProcessId(18);
    detail::SweepSwapFiles();
    std::set<std::string> left;
    for (const std::string& name : m_folder.Names())
        left.insert(name);
    EXPECT_FALSE(left.contains("~dat-17-900.tmp"));
    EXPECT_TRUE(left.contains("~dat-17-901.tmp"));
    EXPECT_EQ(left.size(), 3u);
}

// --- saving --------------------------------------------------------------------------------------

TEST_F(ByteStoreTest, SaveLeavesTheFileAndNothingElse) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{5}, std::size_t{kPage}, std::size_t{40 * kPage + 77}}) {
        const Bytes bytes = Pattern(size);
        m_folder.Write("target", "old");
        CByteStore store;
        Append(store, bytes);
        store.SetComplete(1);
        store.SaveToFile(m_folder.File("target").c_str());
        EXPECT_EQ(m_folder.Read("target"), AsText(bytes));
        EXPECT_EQ(FileCount(), 1u);
        EXPECT_TRUE(store.IsEmpty() && !store.GetComplete());
        Append(store, bytes); // and can be used on
        EXPECT_EQ(Content(store), bytes);
        store.CopyToFile(m_folder.File("copy").c_str());
        EXPECT_EQ(Content(store), bytes);
        EXPECT_EQ(m_folder.Read("copy"), AsText(bytes));
        ::unlink(m_folder.File("copy").c_str());
    }
    struct stat info;
    ASSERT_EQ(::stat(m_folder.File("target").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644u);
}

TEST_F(ByteStoreTest, LastPageThatLeftMemoryWholeIsCutInTheSavedFile) {
    CByteStore store;
    const Bytes bytes = Pattern(20 * kPage + 10);
    Append(store, bytes);
    for (DWORD page = 0; page < 20; ++page)
        store.GetDWord(page * kPage); // pushes the last page out
    store.SaveToFile(m_folder.File("target").c_str());
    EXPECT_EQ(m_folder.Read("target"), AsText(bytes));
}

/// The image that the rule of CBytePage::SwapOut gives, page by page.
std::string ShiftedImage(const Bytes& bytes, std::size_t shift) {
    std::string image;
    for (std::size_t begin = 0; begin < bytes.size(); begin += kPage) {
        std::size_t count = std::min<std::size_t>(bytes.size() - begin, kPage);
        std::size_t position = begin;
        if (begin >= shift)
            position -= shift;
        else
            count -= std::min(count, shift);
        if (count == 0)
            continue;
        if (image.size() < position + count)
            image.resize(position + count);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(begin), count,
                    image.begin() + static_cast<std::ptrdiff_t>(position));
    }
    return image;
}

TEST_F(ByteStoreTest, SavesFromTheCursorByTheRuleOfPages) {
    for (const std::size_t size :
         {std::size_t{100}, std::size_t{3 * kPage}, std::size_t{30 * kPage + 5}}) {
        const Bytes bytes = Pattern(size);
        for (const DWORD shift : {10u, 99u, kPage, kPage + 7232}) {
            if (shift >= size)
                continue;
            CByteStore store;
            Append(store, bytes);
            store.SetCurrentOffset(shift);
            store.CopyToFile(m_folder.File("copy").c_str(), 1);
            EXPECT_EQ(m_folder.Read("copy"), ShiftedImage(bytes, shift));
            // A flush from the cursor shows the same file and loses nothing of the store.
            store.Flush(1);
            CFile flushed(store.GetFileName(), CFile::modeRead);
            std::string image(flushed.GetLength(), '\0');
            flushed.Read(image.data(), static_cast<UINT>(image.size()));
            flushed.Close();
            EXPECT_EQ(image, ShiftedImage(bytes, shift));
            EXPECT_EQ(Content(store), bytes);
            store.ConcatByte(1);
            Bytes longer = bytes;
            longer.push_back(1);
            store.SaveToFile(m_folder.File("saved").c_str());
            EXPECT_EQ(m_folder.Read("saved"), AsText(longer));
        }
    }
    EXPECT_EQ(FileCount(), 2u);
}

TEST_F(ByteStoreTest, SaveAcrossFileSystemsCopies) {
    CByteStore store;
    const Bytes bytes = Pattern(30 * kPage + 3);
    Append(store, bytes);
    m_system.Inject(Fault{.call = Call::Rename, .at = 1, .error = EXDEV});
    store.SaveToFile(m_folder.File("target").c_str());
    EXPECT_EQ(m_system.Hits(), 1u);
    EXPECT_EQ(m_folder.Read("target"), AsText(bytes));
    EXPECT_EQ(FileCount(), 1u);
}

TEST_F(ByteStoreTest, SaveLeavesLinksAndDevicesWhatTheyAre) {
    const Bytes bytes = Pattern(20 * kPage);
    m_folder.Write("real", "old");
    ASSERT_EQ(::chmod(m_folder.File("real").c_str(), 0640), 0);
    ASSERT_EQ(::symlink("real", m_folder.File("link").c_str()), 0);
    ASSERT_EQ(::symlink("/dev/null", m_folder.File("null").c_str()), 0);
    for (const char* name : {"link", "null", "real"}) {
        CByteStore store;
        Append(store, bytes);
        store.SaveToFile(m_folder.File(name).c_str());
        EXPECT_TRUE(store.IsEmpty());
    }
    struct stat info;
    ASSERT_EQ(::lstat(m_folder.File("link").c_str(), &info), 0);
    EXPECT_TRUE(S_ISLNK(info.st_mode));
    EXPECT_EQ(m_folder.Read("real"), AsText(bytes));
    ASSERT_EQ(::stat(m_folder.File("real").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    ASSERT_EQ(::stat("/dev/null", &info), 0);
    EXPECT_TRUE(S_ISCHR(info.st_mode));
}

TEST_F(ByteStoreTest, SavedOntoItsOwnFilesStaysThere) {
    const Bytes bytes = Pattern(20 * kPage);
    {
        CByteStore store;
        Append(store, bytes);
        const std::string name = store.GetFileName();
        store.CopyToFile(name.c_str());
        EXPECT_EQ(Content(store), bytes);
        store.SaveToFile(name.c_str());
        EXPECT_EQ(m_folder.Read(name.substr(m_folder.Path().size())), AsText(bytes));
        EXPECT_EQ(FileCount(), 1u);
    }
    EXPECT_EQ(FileCount(), 1u);
}

TEST_F(ByteStoreTest, OpensAFileAsContent) {
    const Bytes bytes = Pattern(20 * kPage + 9);
    m_folder.Write("data", AsText(bytes));
    const std::string name = m_folder.File("data");
    {
        CByteStore store;
        store.SetAutoDelete(0);
        store.SetFileName(name.c_str());
        EXPECT_EQ(Content(store), bytes);
        store.SetFileName(store.GetFileName());
        EXPECT_EQ(store.GetLength(), bytes.size());
    }
    EXPECT_EQ(m_folder.Read("data"), AsText(bytes));
    {
        CByteStore store;
        store.SetFileName(name.c_str());
        EXPECT_EQ(CauseOf([&] { store.SetFileName(m_folder.File("missing").c_str()); }), -2);
        EXPECT_TRUE(store.IsEmpty());
    }
    EXPECT_EQ(FileCount(), 0u); // auto-delete
}

// --- faults --------------------------------------------------------------------------------------

TEST_F(ByteStoreTest, FullDiskLosesNothing) {
    CByteStore store;
    const Bytes bytes = Pattern(16 * kPage);
    Append(store, bytes);
    m_system.Inject(Fault{.call = Call::Write, .fromThenOn = true, .error = ENOSPC});
    const Bytes more = Pattern(25 * kPage + 1, 2);
    EXPECT_EQ(CauseOf([&] { Append(store, more); }), 4);
    EXPECT_EQ(store.GetLength(), bytes.size());
    EXPECT_EQ(Content(store), bytes);
    m_system.Inject(std::nullopt); // the person made room
    Append(store, more);
    Bytes all = bytes;
    all.insert(all.end(), more.begin(), more.end());
    EXPECT_EQ(Content(store), all);
}

TEST_F(ByteStoreTest, ReleasedPagesComeBack) {
    for (const DWORD size : {DWORD{0}, DWORD{5}, 3 * kPage, 40 * kPage + 7}) {
        CByteStore store;
        Bytes bytes = Pattern(size);
        AppendPages(store, bytes);
        if (size > 0) {
            m_system.Inject(Fault{.call = Call::Write, .fromThenOn = true});
            EXPECT_EQ(CauseOf([&] { store.ReleasePages(); }), 4);
            m_system.Inject(std::nullopt);
            EXPECT_EQ(Content(store), bytes);
        }
        store.ReleasePages();
        EXPECT_EQ(store.GetResidentPageCount(), 0u);
        EXPECT_EQ(FileCount(), size > 0 ? 1u : 0u);
        EXPECT_EQ(Content(store), bytes);
        store.ReleasePages();
        store.ConcatByte(0x5A);
        bytes.push_back(0x5A);
        EXPECT_EQ(Content(store), bytes);
    }
}

TEST_F(ByteStoreTest, PageThatCouldNotBeReadIsReadAgain) {
    CByteStore store;
    const Bytes bytes = Pattern(20 * kPage);
    Append(store, bytes);
    store.Flush();
    for (const Fault::Kind kind : {Fault::Kind::Fail, Fault::Kind::Misplace}) {
        const Call call = kind == Fault::Kind::Fail ? Call::Read : Call::Seek;
        for (DWORD page = 20; page-- > 0;) {
            m_system.SetTick(++m_tick);
            store.GetDWord(page * kPage);
        }
        m_system.Inject(Fault{.call = call, .fromThenOn = true, .kind = kind});
        EXPECT_GT(CauseOf([&] { store.GetByte(19 * kPage); }), 0);
        EXPECT_GT(CauseOf([&] { store.GetByte(19 * kPage); }), 0);
        m_system.Inject(std::nullopt);
        EXPECT_EQ(store.GetByte(19 * kPage), bytes[19 * kPage]);
    }
    EXPECT_EQ(Content(store), bytes);
}

TEST_F(ByteStoreTest, CutOrRemovedSwapFileIsNoticed) {
    CByteStore store;
    const Bytes bytes = Pattern(40 * kPage);
    Append(store, bytes);
    ASSERT_EQ(::unlink(store.GetFileName()), 0); // the open file is still there
    EXPECT_EQ(Content(store), bytes);
    store.Empty();
    AppendPages(store, bytes);
    store.Flush();
    ASSERT_EQ(::truncate(store.GetFileName(), 10 * kPage + 100), 0);
    EXPECT_EQ(CauseOf([&] { store.GetByte(20 * kPage); }), 2);
    EXPECT_EQ(CauseOf([&] { store.GetByte(10 * kPage); }), 2);
    EXPECT_EQ(store.GetByte(3 * kPage), bytes[3 * kPage]);
}

/// Spills, saves, opens and reads again; returns what came back.
Bytes SpillSaveReload(const std::string& target, const Bytes& bytes) {
    CByteStore store;
    Append(store, bytes);
    store.SetDWord(3, 0x01020304);
    store.SaveToFile(target.c_str());
    CByteStore reloaded;
    reloaded.SetAutoDelete(0);
    reloaded.SetFileName(target.c_str());
    Bytes content = Content(reloaded);
    reloaded.CopyToFile((target + ".copy").c_str());
    return content;
}

/// Every system call of the scenario fails in turn, once or from then on. The outcome is the
/// defined exception or the right bytes; no descriptor and no file stays behind; an old target is
/// whole.
TEST_F(ByteStoreTest, EverySystemCallMayFail) {
    Bytes bytes = Pattern(17 * kPage + 5);
    Bytes expected = bytes;
    for (DWORD i = 0; i < 4; ++i)
        expected[3 + i] = static_cast<BYTE>(i + 1);
    const std::string old = "the old content";
    for (const Call call : {Call::Any, Call::Write, Call::Read, Call::Seek, Call::Rename}) {
        for (const Fault::Kind kind :
             {Fault::Kind::Fail, Fault::Kind::Shorten, Fault::Kind::Misplace}) {
            if ((kind == Fault::Kind::Shorten && call != Call::Read && call != Call::Write) ||
                (kind == Fault::Kind::Misplace && call != Call::Seek))
                continue;
            for (const bool fromThenOn : {false, true}) {
                for (unsigned at = 1;; ++at) {
                    TemporaryFolder folder;
                    folder.Write("target", old);
                    m_system.SetTemporaryFolder(folder.Path());
                    m_system.Inject(Fault{.call = call,
                                          .at = at,
                                          .fromThenOn = fromThenOn,
                                          .error = call == Call::Write ? ENOSPC : EIO,
                                          .kind = kind});
                    Bytes got;
                    const int cause =
                        CauseOf([&] { got = SpillSaveReload(folder.File("target"), bytes); });
                    const bool hit = m_system.Hits() > 0;
                    m_system.Inject(std::nullopt);
                    SCOPED_TRACE(std::string(CallName(call)) + " " + std::to_string(at) +
                                 (fromThenOn ? " on" : ""));
                    if (cause == -1) {
                        ASSERT_EQ(got, expected);
                    }
                    ASSERT_TRUE(m_system.OpenHandles().empty());
                    const std::string target = folder.Read("target");
                    ASSERT_TRUE(target == old || target == AsText(expected)) << target.size();
                    // A removal that was itself made to fail may leave its file; nothing else may.
                    if (!fromThenOn && call != Call::Any) {
                        for (const std::string& name : folder.Names())
                            ASSERT_TRUE(name.starts_with("target")) << name;
                    }
                    if (!hit)
                        break;
                }
            }
        }
    }
    m_system.SetTemporaryFolder(m_folder.Path());
}

} // namespace
} // namespace vnbytstr::test
