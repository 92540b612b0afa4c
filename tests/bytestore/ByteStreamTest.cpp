// CByteStream: the block, a caller's buffer, and the way into a store.
#include "tests/bytestore/StoreFixture.h"

#include "vnbytstr/Profile.h"

namespace vnbytstr::test {
namespace {

class ByteStreamTest : public StoreFixture {};

TEST_F(ByteStreamTest, MovesIntoAStoreWhenItOutgrowsTheLimit) {
    CByteStream stream;
    stream.SetComplete(1);
    stream.ConcatByte(1);
    stream.SetCurrentOffset(1);
    // Capacities 32, 96, 224 ... 262112; the next doubling passes the limit.
    while (stream.GetLength() < 262112)
        stream.ConcatByte(static_cast<BYTE>(stream.GetLength()));
    EXPECT_TRUE(stream.IsAllInBuffer());
    stream.ConcatByte(7);
    EXPECT_FALSE(stream.IsAllInBuffer());
    EXPECT_EQ(stream.GetCO(), 1u);
    EXPECT_TRUE(stream.GetComplete());
    EXPECT_EQ(CauseOf([&] { static_cast<void>(static_cast<const BYTE*>(stream)); }), 2);
    EXPECT_EQ(CauseOf([&] { stream.GetBuffer(1); }), 2);
    EXPECT_EQ(CauseOf([&] { stream.ReleaseBuffer(1); }), 4);
    EXPECT_EQ(stream.GetByte(262112), 7);
    EXPECT_EQ(stream.GetByte(300), 300 % 256);
    stream.Empty(1);
    EXPECT_FALSE(stream.IsAllInBuffer());
    EXPECT_FALSE(stream.GetComplete());
    stream.ConcatByte(5);
    EXPECT_TRUE(stream == "05");
}

TEST_F(ByteStreamTest, AccountedBytesAreRealUntilTheContentHasMoved) {
    CByteStream stream;
    Append(stream, Pattern(100));
    stream.Concat(DWORD{0x40000});
    EXPECT_EQ(stream.GetLength(), 0x40064u); // real bytes, although it moved
    DWORD start, end;
    stream.GetRange(start, end);
    EXPECT_EQ(start, 0u);
    stream.Concat(DWORD{5}); // none any more
    stream.GetRange(start, end);
    EXPECT_EQ(start, 5u);
    EXPECT_EQ(end, 0x40069u);
}

TEST_F(ByteStreamTest, BlockGrowsByDoublingAnd32) {
    const auto capacity = [](CByteStream& stream) {
        const DWORD length = stream.GetLength();
        stream.ReleaseBuffer(0xFFFFFFFF); // cut to the block's size
        const DWORD size = stream.GetLength();
        stream.ReleaseBuffer(length);
        return size;
    };
    CByteStream stream;
    std::vector<DWORD> capacities;
    while (stream.GetLength() < 300) {
        stream.ConcatByte(1);
        if (capacities.empty() || capacity(stream) != capacities.back())
            capacities.push_back(capacity(stream));
    }
    EXPECT_EQ(capacities, (std::vector<DWORD>{32, 96, 224, 480}));
    stream.GetBuffer(600); // more than the least step: as much as asked for
    EXPECT_EQ(capacity(stream), 600u);
}

/// The cursor forms of every kind, and what they leave where it is.
TEST_F(ByteStreamTest, CursorForms) {
    const auto check = [](auto& value) {
        value.CopyFromHex(0, "000102030405060708090A0B0C0D0E0F");
        value.Skip(3);
        value.SkipByte();
        EXPECT_EQ(value.GetCurrentByte(), 4);
        value.SkipWord();
        EXPECT_EQ(value.GetCurrentOffset(), 6u);
        EXPECT_EQ(value.GetRemaining(), 10u);
        EXPECT_EQ(value.GetCurrentWord(), 0x0607);
        EXPECT_EQ(value.GetCurrentDWord(), 0x06070809u);
        EXPECT_EQ(value.GetCurrentInt48(), 0x060708090A0B);
        EXPECT_EQ(value.GetCurrentInt64(), 0x060708090A0B0C0D);
        Bytes bytes(4);
        value.CopyCurrentTo(bytes.data(), 2, 4);
        EXPECT_EQ(bytes, (Bytes{6, 7, 0, 0}));
        CByteStream stream("FF");
        value.CopyCurrentTo(stream, 1, 2);
        EXPECT_TRUE(stream == "FF0607");
        CByteStore store("FF");
        value.CopyCurrentTo(store, 2, 2);
        EXPECT_TRUE(store == "FF000607");
        value.CopyTo(0, store, 0, 1);
        EXPECT_TRUE(store == "00000607");
        EXPECT_TRUE(value.Left(2) == "0001" && value.Right(2) == "0E0F" &&
                    value.Mid(13) == "0D0E0F");
        EXPECT_TRUE(value.Right(99) == value && value.Right(0).IsEmpty());
        EXPECT_EQ(value.GetFirstPage()[5], 5);
        value.SetCurrentByte(0x11);
        EXPECT_EQ(value.GetCurrentWord(), 0x1107);
        value.SetCurrentWord(0x2122);
        EXPECT_EQ(value.GetCurrentDWord(), 0x21220809u);
        value.SetCurrentDWord(0x31323334);
        EXPECT_EQ(value.GetCurrentInt48(), 0x313233340A0B);
        value.SetCurrentInt48(0x414243444546);
        EXPECT_EQ(value.GetCurrentInt64(), 0x4142434445460C0D);
        value.SetCurrentInt64(0x5152535455565758);
        EXPECT_EQ(value.GetInt64(6), 0x5152535455565758);
        EXPECT_EQ(value.GetCO(), 6u);
        value.CopyFromHex(0, CString("AA"));
        EXPECT_EQ(value[16], 0xAA);
        value.SetByte(0, 0xBB);
        EXPECT_EQ(value.GetWord(0xFFFFFFFF), 0); // there is no byte after it
    };
    CByteStream stream, spilled;
    spilled.SetComplete(1);
    EXPECT_EQ(CauseOf([&] { spilled.GetBuffer(0x40001); }), 2);
    ASSERT_FALSE(spilled.IsAllInBuffer());
    CByteStore store;
    check(stream);
    check(spilled);
    check(store);
}

TEST_F(ByteStreamTest, ReadOnlyBufferIsNeverWritten) {
    const Bytes bytes = Pattern(10);
    CByteStream stream;
    stream.SetReadOnlyBuffer(bytes.data(), 10);
    EXPECT_TRUE(stream.IsReadOnlyBuffer());
    EXPECT_EQ(Content(stream), bytes);
    CByteStream other(bytes.data(), 3);
    for (const auto& change : std::initializer_list<std::function<void()>>{
             [&] { stream.SetByte(0, 1); }, [&] { stream.SetInt64(0xFFFFFFFF, 1); },
             [&] { stream.ConcatByte(1); }, [&] { stream.CopyFromHex(0, "01"); },
             [&] { stream = other; }, [&] { stream.Shift(0, 1); }, [&] { stream.GetBuffer(1); },
             [&] { stream.ReleaseBuffer(1); }, [&] { stream.Concat(DWORD{1}); },
             [&] { stream.Concat(other); }, [&] { stream.GetConcatBufferSetLength(1); },
             [&] { stream.Truncate(9); }})
        EXPECT_EQ(CauseOf(change), 3);
    EXPECT_EQ(Content(stream), bytes);
    stream.SetInternalBuffer();
    EXPECT_TRUE(stream.IsEmpty());
    stream.ConcatByte(1);
    EXPECT_EQ(stream.GetLength(), 1u);
}

TEST_F(ByteStreamTest, WritableBufferGrowsWithinItsCapacity) {
    Bytes buffer(16);
    CByteStream stream;
    stream.SetWritableBuffer(buffer.data(), 0, 16);
    for (BYTE i = 0; i < 16; ++i)
        stream.ConcatByte(i);
    EXPECT_EQ(CauseOf([&] { stream.ConcatByte(16); }), 3);
    EXPECT_EQ(CauseOf([&] { stream.SetByte(16, 1); }), 3);
    EXPECT_EQ(stream.GetLength(), 16u);
    EXPECT_EQ(buffer[15], 15);

    // A buffer larger than the limit stays the caller's.
    Bytes large(0x50000);
    stream.SetWritableBuffer(large.data(), 0, 0x50000);
    stream.SetByte(0x4FFFF, 9);
    EXPECT_TRUE(stream.IsAllInBuffer());
    EXPECT_EQ(large[0x4FFFF], 9);
    EXPECT_EQ(CauseOf([&] { stream.SetByte(0x50000, 1); }), 3);
    stream.Empty(1);
    EXPECT_TRUE(stream.IsEmpty() && stream.IsAllInBuffer());
    stream = CByteStream("0102"); // fits: into the buffer
    EXPECT_EQ(large[1], 2);
    CByteStream lent, stored;
    lent.SetReadOnlyBuffer(buffer.data(), 16);
    stream = std::move(lent);
    EXPECT_EQ(CauseOf([&] { stream.ConcatByte(1); }), 3);
    EXPECT_EQ(stream.GetByte(15), 15);
    stored.SetByte(0x50001, 3);
    stream.SetWritableBuffer(large.data(), 2, 0x50000);
    stream = std::move(stored);
    EXPECT_EQ(stream.GetByte(0x50001), 3);
    EXPECT_EQ(large[1], 2);
}

TEST_F(ByteStreamTest, ReleasedPagesComeBack) {
    CByteStream stream("010203");
    stream.ReleasePages();
    stream.SetByte(0x50000, 9);
    stream.ReleasePages();
    EXPECT_EQ(stream.GetStore()->GetResidentPageCount(), 0u);
    EXPECT_TRUE(stream.Left(3) == "010203");
    EXPECT_EQ(stream.GetByte(0x50000), 9);
}

/// Only the beginning of a long pattern is held in memory; here it is found without the rest.
TEST_F(ByteStreamTest, EndOfAStoreThatBeginsAPattern) {
    const Bytes bytes = Pattern(0x60000);
    CByteStream pattern(bytes.data(), 0x60000);
    CByteStore store;
    store.SetByte(0x60000 - 1, 0);
    store.CopyFrom(0x20000, pattern, 0, 0x40000);
    EXPECT_EQ(store.Find(pattern, 0), 0xFFFFFFFFu);
    store.CopyFrom(store.GetLength(), pattern, 0x40000, 0x20000);
    EXPECT_EQ(store.Find(pattern, 0), 0x20000u);
}

/// The store behind a stream is not the caller's, but nothing is lost when it is given its stream.
TEST_F(ByteStreamTest, StoreThatTakesFromItsOwnStream) {
    CByteStream stream("010203");
    stream.SetByte(0x50000, 9);
    auto& store = const_cast<CByteStore&>(*stream.GetStore());
    store = stream;
    EXPECT_TRUE(store == stream);
    store.CopyFrom(1, stream, 0, 3);
    EXPECT_TRUE(stream.Left(4) == "01010203");
    EXPECT_EQ(stream.GetByte(0x50000), 9);
}

TEST_F(ByteStreamTest, BuffersThatAreNull) {
    CByteStream stream("01");
    stream.SetReadOnlyBuffer(nullptr, 5);
    EXPECT_TRUE(stream.IsEmpty());
    stream.Empty(0);
    stream.SetWritableBuffer(nullptr, 3, 5);
    EXPECT_TRUE(stream.IsEmpty());
    EXPECT_EQ(CauseOf([&] { stream.ConcatByte(1); }), 3);
    stream.SetInternalBuffer();
    stream.SetInternalBuffer();
    EXPECT_EQ(stream.GetConcatBuffer(0), nullptr);
    CByteStore none;
    stream.CopyFrom(0, CByteStream(), 0, 0);
    stream.CopyFrom(0, none, 0, 0);
    EXPECT_TRUE(stream.IsEmpty());
}

/// A block that was taken under a higher limit is given up when the content is found too long.
TEST_F(ByteStreamTest, LimitThatSinks) {
    CByteStream stream("0102");
    stream.GetBuffer(1000);
    CByteStream::m_dwMaxSizeInMemory = 100;
    stream.CopyFrom(200, Pattern(10).data(), 10);
    EXPECT_FALSE(stream.IsAllInBuffer());
    EXPECT_TRUE(stream.Left(3) == "010200" &&
                stream.Right(10) == CByteStream(Pattern(10).data(), 10));
    CByteStream full;
    CByteStream::m_dwMaxSizeInMemory = 0x40000;
    full.SetByte(262111, 1);
    full.GetBuffer(262112);
    full.Concat(DWORD{1}); // below the limit, which the block's next size passes
    EXPECT_EQ(full.GetLength(), 262113u);
    EXPECT_EQ(full.GetWord(262111), 0x0100);
}

TEST_F(ByteStreamTest, BufferAccess) {
    CByteStream stream;
    EXPECT_EQ(static_cast<const BYTE*>(stream), nullptr);
    std::fill_n(stream.GetBufferSetLength(100), 100, BYTE{1});
    stream.ReleaseBuffer(0);
    EXPECT_EQ(stream.GetLength(), 100u);
    std::fill_n(stream.GetConcatBuffer(60), 60, BYTE{2});
    EXPECT_EQ(stream.GetLength(), 100u);
    stream.Concat(DWORD{60}); // what was written there stands
    EXPECT_EQ(stream.GetWord(99), 0x0102);
    stream.ReleaseBuffer(40);
    EXPECT_EQ(stream.GetLength(), 40u);
    stream.ReleaseBuffer(0xFFFFFFFF);
    EXPECT_LT(stream.GetLength(), 0x40000u); // at most the buffer's size
    stream.Empty(0);
    EXPECT_NE(static_cast<const BYTE*>(stream), nullptr);
    stream.Empty(1);
    EXPECT_EQ(static_cast<const BYTE*>(stream), nullptr);
    EXPECT_EQ(CauseOf([&] { stream.GetBuffer(0x40001); }), 2);
}

TEST_F(ByteStreamTest, ComparesAndSearchesWhereverTheBytesLie) {
    const Bytes bytes = Pattern(20 * kPage + 3);
    CByteStream spilled(bytes.data(), static_cast<DWORD>(bytes.size())), view;
    view.SetReadOnlyBuffer(bytes.data(), static_cast<DWORD>(bytes.size()));
    ASSERT_FALSE(spilled.IsAllInBuffer());
    EXPECT_TRUE(spilled == view && view == spilled && spilled == spilled);
    // A pattern longer than what is held of it in memory, in another store and in the same one.
    const CByteStream part = spilled.Mid(3 * kPage + 7, 4 * kPage);
    EXPECT_EQ(spilled.Find(part), 3 * kPage + 7);
    EXPECT_EQ(view.Find(part), 3 * kPage + 7);
    EXPECT_EQ(spilled.Find(spilled), 0u);
    EXPECT_EQ(spilled.Find(spilled, 1), CByteStream::kNotFound);
    CByteStream inStore; // a short one that has a store
    EXPECT_EQ(CauseOf([&] { inStore.GetBuffer(0x40001); }), 2);
    EXPECT_EQ(view.Find(inStore, 5), 5u); // empty
    inStore.CopyFrom(0, bytes.data() + 2 * kPage + 1, 50);
    EXPECT_EQ(view.Find(inStore), 2 * kPage + 1);
    spilled.SetByte(7 * kPage + 6, static_cast<BYTE>(spilled.GetByte(7 * kPage + 6) + 1));
    EXPECT_EQ(spilled.Find(part), CByteStream::kNotFound);
    EXPECT_TRUE(spilled != view && view != spilled);
    CByteStream twice(spilled);
    twice.Concat(twice);
    EXPECT_EQ(twice.GetLength(), 2 * spilled.GetLength());
    EXPECT_TRUE(twice.Right(spilled.GetLength()) == spilled);
}

TEST_F(ByteStreamTest, FailedGrowthKeepsContentAndCanBeTriedAgain) {
    CByteStream source(Pattern(40 * kPage).data(), 40 * kPage), target("0102");
    m_system.Inject(Fault{.call = Call::Write, .fromThenOn = true, .error = ENOSPC});
    EXPECT_EQ(CauseOf([&] { target.Concat(source); }), 4);
    EXPECT_TRUE(target == "0102");
    m_system.Inject(std::nullopt);
    target.Concat(source);
    EXPECT_EQ(target.GetLength(), 40 * kPage + 2);
    EXPECT_TRUE(target.Mid(2) == source);
}

TEST_F(ByteStreamTest, FilesThroughAStore) {
    const std::string name = m_folder.File("file");
    CByteStream stream("010203");
    EXPECT_STREQ(stream.GetFileName(), "");
    EXPECT_EQ(CauseOf([&] { stream.SetFileName(m_folder.File("missing").c_str()); }), -2);
    EXPECT_TRUE(stream == "010203");
    stream.SetCurrentOffset(1);
    stream.CopyToFile(name.c_str(), 1);
    EXPECT_EQ(m_folder.Read("file"), "\1\2"); // cut at its end, as a page is
    stream.SaveToFile(name.c_str());
    EXPECT_EQ(m_folder.Read("file"), "\1\2\3");
    EXPECT_TRUE(stream.IsEmpty());
    stream.SetAutoDelete(0); // holds for the store to come
    stream.SetFileName(name.c_str());
    EXPECT_TRUE(stream == "010203");
    stream.SetFileName(name.c_str()); // from one store to the next
    stream.SetByte(0, 9);
    stream.CopyToFile(m_folder.File("copy").c_str(), 1); // the cursor is at the beginning
    EXPECT_EQ(m_folder.Read("copy"), "\x09\2\3");
    EXPECT_EQ(m_folder.Read("file"), "\1\2\3");
    stream.Flush();
    EXPECT_EQ(m_folder.Read("file"), "\x09\2\3");
    stream.Empty();
    EXPECT_EQ(FileCount(), 2u);
    CByteStream small("05");
    small.Flush(); // has nothing to flush
    small.CopyToFile(m_folder.File("copy").c_str(), 1);
    EXPECT_EQ(m_folder.Read("copy"), "\5");
}

TEST_F(ByteStreamTest, LimitIsReadOncePerProcess) {
    const auto limit = [&](DWORD setting) {
        VNWriteProfileDWORD(3, "Options", "MaxCacheBlock", setting);
        return CByteStream::GetMaxSizeInMemory();
    };
    // A setting that cannot be read now may be later.
    CByteStream::m_dwMaxSizeInMemory = 0;
    VNWriteProfileDWORD(3, "Options", "MaxCacheBlock", 500);
    m_system.Inject(Fault{.call = Call::Open, .fromThenOn = true, .error = EIO});
    EXPECT_EQ(CByteStream::GetMaxSizeInMemory(), 0x40000u);
    m_system.Inject(std::nullopt);
    m_system.SetTick(++m_tick);
    EXPECT_EQ(CByteStream::GetMaxSizeInMemory(), 500u);
    CByteStream::m_dwMaxSizeInMemory = 0;
    EXPECT_EQ(limit(0), 0u);
    EXPECT_EQ(limit(1000), 1000u);
    EXPECT_EQ(limit(2000), 1000u);
    const CByteStream most(Pattern(1000).data(), 1000), more(Pattern(1001).data(), 1001);
    EXPECT_TRUE(most.IsAllInBuffer());
    EXPECT_FALSE(more.IsAllInBuffer());
}

} // namespace
} // namespace vnbytstr::test
