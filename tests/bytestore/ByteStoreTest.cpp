// CByteStore: values, limits, pages and their replacement.
#include "tests/bytestore/StoreFixture.h"
#include "tests/support/LongFile.h"

#include "vnbytstr/Profile.h"

#include <filesystem>

namespace vnbytstr::test {
namespace {

class ByteStoreTest : public StoreFixture {};

/// Opens the protected part.
class OpenStore : public CByteStore {
public:
    using CByteStore::CByteStore;
    using CByteStore::GetMaxPages;
    using CByteStore::GetPageFromPageNum;
    using CByteStore::GetPageToDiscard;
    using CByteStore::SetMaxPages;
};

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

/// The first page may be had before there is any content.
TEST_F(ByteStoreTest, FirstPageOfAnEmptyStore) {
    CByteStore store;
    store.GetFirstPage()[3] = 7;
    store.Flush();
    EXPECT_TRUE(store.IsEmpty());
    store.GetFirstPage();
    store.ReleasePages();
    EXPECT_EQ(store.GetResidentPageCount(), 0u);
    store.GetFirstPage();
    AppendPages(store, Pattern(20 * kPage));
    EXPECT_EQ(Content(store), Pattern(20 * kPage));
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
    vnbytstr::test::SetLength(name, 0x100000000);
    EXPECT_EQ(CauseOf([&] { file.SetFileName(name.c_str()); }), 6);
    vnbytstr::test::SetLength(name, 0xFFFFFFFF);
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
    CString hex("kept"); // a text has no room for so much
    char digits[2];
    EXPECT_EQ(CauseOf([&] { file.CopyToHex(1, hex, 0); }), 0);
    EXPECT_EQ(CauseOf([&] { file.CopyToHex(0, digits, 1, 0x80000000); }), 0);
    EXPECT_TRUE(hex == "kept");
    file.CopyToHex(0xFFFFFFFF, hex, 0);
    EXPECT_TRUE(hex.IsEmpty());
    file.DiscardUpTo(5);
    EXPECT_EQ(CauseOf([&] { file.CopyToHex(4, digits, 1, 2); }), 0);
    EXPECT_EQ(CauseOf([&] { file.CopyToHex(4, hex, 1); }), 0);
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
        const bool isRun = tick < 0xF0000000 && random() % 50 == 0; // not over the wrap
        if (isRun)
            m_system.SetTick(tick += 2);
        const auto page = static_cast<DWORD>(random() % (random() % 2 ? 40 : 18));
        const DWORD index = page * kPage + static_cast<DWORD>(random() % (kPage - 8));
        auto found = std::find_if(model.begin(), model.end(),
                                  [&](const Entry& entry) { return entry.page == page; });
        if (found == model.end()) {
            if (model.size() < 16)
                found = model.insert(model.end(), Entry{page, 0});
            else
                found = oldest();
        }
        found->page = page;
        switch (isRun ? 9 : random() % 5) {
        case 9: // long enough to do without the clock, which goes on
            for (int i = 0; i < 40; ++i) {
                store.SetByte(index, static_cast<BYTE>(step));
                m_system.SetTick(++tick);
                store.GetWord(index);
            }
            // Over the other pages in memory too, one after the other, and back.
            m_system.SetTick(tick += 2000);
            for (std::size_t i = model.size(); i-- > 0;) {
                store.GetByte(model[i].page * kPage);
                model[i].tick = tick - 100 * static_cast<DWORD>(i);
            }
            store.GetByte(index);
            break;
        case 0:
            store.SetByte(index, static_cast<BYTE>(step));
            break;
        case 1:
            store.GetByte(index);
            break;
        case 4:
            store.GetWord(index);
            break;
        case 2:
            store.GetDWord(index);
            break;
        default:
            store.CopyFrom(index, Pattern(8).data(), 8);
        }
        found->tick = tick;
        if (isRun)
            m_system.SetTick(tick += 2);
        ASSERT_EQ(store.GetPageToDiscard()->GetPageNum(), oldest()->page) << "step " << step;
    }
}

/// The source lies in the very page that has to make room for the last one.
TEST_F(ByteStoreTest, AppendsFromAPageThatLeaves) {
    OpenStore store;
    Bytes bytes = Pattern(20 * kPage + 100);
    AppendPages(store, bytes);
    store.Flush();
    for (DWORD page = 0; page < 16; ++page) {
        m_system.SetTick(++m_tick);
        store.GetDWord(page * kPage);
    }
    m_system.SetTick(++m_tick);
    for (DWORD page = 0; page < 16; ++page)
        store.GetDWord(page * kPage); // all of the same age
    CBytePage* const page = store.GetPageToDiscard();
    const auto* const source = bytes.data() + page->GetPageNum() * kPage + 5;
    const Bytes part(source, source + 10);
    store.Concat(page->GetData() + 5, 10);
    bytes.insert(bytes.end(), part.begin(), part.end());
    EXPECT_TRUE(Content(store) == bytes);
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
    std::fill_n(page.GetData(), kPage, BYTE{9});
    page.SwapIn(file, 1); // what lies past the end of the file is zero
    EXPECT_EQ(Bytes(page.GetData() + kPage - 40, page.GetData() + kPage), Bytes(40));
    page.SwapIn(file, 0);
    m_system.SetTick(1234);
    page.GetData();
    EXPECT_EQ(page.GetLastAccessTime(), 1234u);
    m_system.Inject(Fault{.call = Call::Seek, .kind = Fault::Kind::Misplace});
    EXPECT_EQ(CauseOf([&] { page.SwapIn(file, 1); }), 1);
    m_system.Inject(std::nullopt);
}

} // namespace
} // namespace vnbytstr::test
