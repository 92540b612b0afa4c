// Stores and streams as values: copies, assignment, moves, and one from the other.
#include "tests/bytestore/StoreFixture.h"
#include "vnbytstr/DES.h"
#include "vnbytstr/FixedBinary.h"

#include <type_traits>

namespace vnbytstr::test {
namespace {

template <class Container>
constexpr bool kMoves =
    std::is_nothrow_move_constructible_v<Container>&& std::is_nothrow_move_assignable_v<Container>;
static_assert(kMoves<CByteStream> && kMoves<CByteStore>);
static_assert(std::is_convertible_v<const char*, CByteStream> &&
              std::is_convertible_v<const char*, CByteStore> &&
              std::is_convertible_v<const CByteStream&, CByteStore> &&
              std::is_convertible_v<CByteStream, CByteStore> &&
              std::is_convertible_v<CByteStore&, CByteStream> &&
              std::is_convertible_v<CByteStore, CByteStream> &&
              std::is_convertible_v<const char*, CFixedBinary> &&
              std::is_convertible_v<const char*, CDES>);
static_assert(!std::is_constructible_v<CByteStore, const CByteStore&>);

class ContainerValueTest : public StoreFixture {
protected:
    /// The retained bytes, and the range that they lie in.
    struct State {
        DWORD start, end, cursor;
        Bytes bytes;
        bool operator==(const State&) const = default;
    };
    template <class Container>
    static State StateOf(Container& container) {
        State state{};
        container.GetRange(state.start, state.end);
        state.cursor = container.GetCO();
        state.bytes.resize(state.end - state.start);
        if (!state.bytes.empty())
            container.CopyTo(state.start, state.bytes.data(), 0, 0);
        return state;
    }
    /// `size` bytes with the first `start` discarded.
    template <class Container>
    static void Fill(Container& container, DWORD size, DWORD start, unsigned seed = 1) {
        Append(container, Pattern(size, seed));
        container.DiscardUpTo(start);
    }
    static constexpr DWORD kLong = 40 * kPage + 7;
};

TEST_F(ContainerValueTest, CopiesHoldTheRetainedBytesAtTheirIndexes) {
    for (const auto& [size, start] : {std::pair{0u, 0u},
                                      {5u, 0u},
                                      {5u, 3u},
                                      {5u, 5u},
                                      {kLong, 0u},
                                      {kLong, 20 * kPage + 3},
                                      {kLong, 39 * kPage},
                                      {kLong, kLong}}) {
        SCOPED_TRACE(testing::Message() << size << " from " << start);
        CByteStream stream;
        Fill(stream, size, start);
        CByteStore store;
        Fill(store, size, start);
        const State expected = StateOf(store);
        ASSERT_EQ(StateOf(stream), expected);

        CByteStore fromStore(store), fromStream(std::as_const(stream)), assigned("01"), other("02");
        CByteStream streamFromStore(store), streamFromStream(stream), copy("03"), spilled;
        Fill(spilled, kLong, 3, 9);
        for (CByteStore* made : {&fromStore, &fromStream})
            EXPECT_EQ(StateOf(*made), expected);
        for (CByteStream* made : {&streamFromStore, &streamFromStream})
            EXPECT_EQ(StateOf(*made), expected);
        assigned.SetCurrentOffset(1);
        assigned = store;
        EXPECT_EQ(StateOf(assigned), expected);
        other = stream;
        EXPECT_EQ(StateOf(other), expected);
        copy.SetCurrentOffset(1);
        copy = stream;
        EXPECT_EQ(StateOf(copy), expected);
        spilled = stream;
        EXPECT_EQ(StateOf(spilled), expected);
        EXPECT_FALSE(spilled.IsAllInBuffer()); // once and for good
        EXPECT_TRUE(stream == store && store == stream && !(stream != store) && store == assigned);
    }
}

TEST_F(ContainerValueTest, AssignmentKeepsWhatItCannotReplace) {
    for (const DWORD size : std::initializer_list<DWORD>{5u, kLong}) {
        CByteStream stream(Pattern(size).data(), size), full;
        CByteStore store(Pattern(size).data(), size), fullStore;
        Fill(full, kLong, 3, 2);
        Fill(fullStore, kLong, 3, 2);
        stream.SetCurrentOffset(4);
        store.SetCurrentOffset(4);
        const State before = StateOf(store);
        for (const Call call : {Call::Read, Call::Write, Call::Open}) {
            m_system.Inject(Fault{.call = call, .fromThenOn = true, .error = ENOSPC});
            EXPECT_NE(CauseOf([&] { stream = full; }), -1);
            EXPECT_NE(CauseOf([&] { store = full; }), -1);
            EXPECT_NE(CauseOf([&] { store = fullStore; }), -1);
            m_system.Inject(std::nullopt);
            EXPECT_EQ(StateOf(stream), before);
            EXPECT_EQ(StateOf(store), before);
        }
        stream = full; // there is room again
        store = fullStore;
        EXPECT_TRUE(stream == full && store == full);
    }
    Bytes buffer(10);
    CByteStream bound;
    bound.SetWritableBuffer(buffer.data(), 4, 10);
    const CByteStream exact("0102030405060708090A"), more("0102030405060708090A0B");
    EXPECT_EQ(CauseOf([&] { bound = more; }), 3);
    EXPECT_EQ(CauseOf([&] { bound = "0102030405060708090A0B"; }), 3);
    EXPECT_EQ(Content(bound), Bytes(4));
    EXPECT_EQ(CauseOf([&] { bound = exact; }), -1);
    EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    bound = "0506"; // literals stay in the buffer as well
    EXPECT_EQ(bound.GetLength(), 2u);
    EXPECT_EQ(buffer[0], 5);
    // Nothing is put into it of what cannot be read.
    CByteStream spilled(Pattern(20 * kPage).data(), 20 * kPage);
    Bytes large(21 * kPage);
    CByteStream roomy;
    roomy.SetWritableBuffer(large.data(), 4, static_cast<DWORD>(large.size()));
    m_system.Inject(Fault{.call = Call::Read, .fromThenOn = true});
    EXPECT_EQ(CauseOf([&] { roomy = spilled; }), 2);
    m_system.Inject(std::nullopt);
    EXPECT_EQ(Content(roomy), Bytes(4));
    roomy = spilled;
    EXPECT_EQ(Content(roomy), Pattern(20 * kPage));
    EXPECT_TRUE(std::equal(large.begin(), large.end() - kPage, Pattern(20 * kPage).begin()));
    CByteStream nothing;
    EXPECT_EQ(CauseOf([&] { nothing.GetBuffer(0x40001); }), 2); // now it has a store
    roomy = nothing;
    EXPECT_TRUE(roomy.IsEmpty());
    roomy = std::move(spilled); // which takes the store, and leaves the buffer
    EXPECT_FALSE(roomy.IsAllInBuffer());
    // A part of its own buffer.
    CByteStream part;
    part.SetReadOnlyBuffer(buffer.data() + 2, 8);
    bound = part;
    EXPECT_EQ(Content(bound), (Bytes{3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(ContainerValueTest, AssignmentLeavesTheUsersFileAndSettings) {
    m_folder.Write("data", AsText(Pattern(30 * kPage)));
    const std::string name = m_folder.File("data");
    const CByteStream replacement("010203");
    {
        CByteStore store;
        store.SetAutoDelete(0);
        store.SetFileName(name.c_str());
        store = replacement;
        EXPECT_FALSE(store.GetAutoDelete());
        EXPECT_EQ(store.GetFileName(), name); // as Empty leaves it
        EXPECT_TRUE(store == replacement);
        store.SetFileName(name.c_str());
        const CByteStream key("01");
        ASSERT_EQ(store.Encrypt(key, key, CDES::eECB, false, store), 1);
        EXPECT_NE(store.GetFileName(), name); // it has a swap file
        store.SetAutoDelete(1);
    }
    EXPECT_EQ(m_folder.Read("data"), AsText(Pattern(30 * kPage)));
    EXPECT_EQ(FileCount(), 1u);
    CByteStore store;
    store.SetFileName(name.c_str());
    store = "05";
    EXPECT_EQ(FileCount(), 0u); // auto-delete
}

TEST_F(ContainerValueTest, AssignedToItselfItStays) {
    CByteStream small("0102"), spilled(Pattern(kLong).data(), kLong);
    CByteStore store(Pattern(kLong).data(), kLong);
    const auto check = [](auto& value) {
        auto& same = value;
        const Bytes before = Content(value);
        value = same;
        value = std::move(same);
        EXPECT_TRUE(Content(value) == before && value == same);
    };
    check(small);
    check(spilled);
    check(store);
}

TEST_F(ContainerValueTest, MovesTakeEverything) {
    CByteStore store;
    Fill(store, kLong, 5);
    store.SetCurrentOffset(77);
    store.SetComplete(1);
    store.SetAutoDelete(0);
    const std::string name = store.GetFileName();
    const State state = StateOf(store);
    const unsigned reads = m_system.Count(Call::Read);
    CByteStore moved(std::move(store));
    EXPECT_EQ(m_system.Count(Call::Read), reads);
    EXPECT_EQ(moved.GetFileName(), name);
    EXPECT_TRUE(moved.GetComplete() && !moved.GetAutoDelete());
    EXPECT_EQ(StateOf(moved), state);
    EXPECT_TRUE(store.IsEmpty() && !store.GetComplete() && store.GetAutoDelete());
    EXPECT_STREQ(store.GetFileName(), "");
    Fill(store, kLong, 0, 2); // and can be used on
    store = std::move(moved);
    EXPECT_EQ(FileCount(), 1u); // that of the content it had before is gone
    EXPECT_EQ(StateOf(store), state);
    store.SetAutoDelete(1);

    CByteStream stream(std::move(store)); // becomes the store
    EXPECT_EQ(stream.GetFileName(), name);
    EXPECT_EQ(StateOf(stream), state);
    EXPECT_TRUE(CByteStream(CByteStore("0102")).IsAllInBuffer());
    CByteStream target("09");
    target.SetComplete(1);
    target = std::move(stream);
    EXPECT_EQ(StateOf(target), state);
    EXPECT_TRUE(stream.IsAllInBuffer() && stream.IsEmpty());
    stream = CByteStream("0708");
    EXPECT_TRUE(stream == "0708");
    target = CByteStream();
    EXPECT_EQ(FileCount(), 0u);

    // A caller's buffer moves along; what suits a writable one is put into it.
    Bytes buffer(4);
    target.SetWritableBuffer(buffer.data(), 0, 4);
    target = CByteStream("01020304");
    EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4}));
    CByteStream second(std::move(target));
    EXPECT_EQ(CauseOf([&] { second.ConcatByte(5); }), 3);
    target.ConcatByte(5);
    EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4}));
    second = CByteStream("0102030405");
    EXPECT_TRUE(second == "0102030405");
    second.ConcatByte(6);
    second.SetReadOnlyBuffer(buffer.data(), 4);
    second = CByteStream("05");
    EXPECT_TRUE(second == "05" && !second.IsReadOnlyBuffer());
    EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4}));

    std::vector<CByteStream> streams;
    std::vector<CByteStore> stores;
    for (BYTE i = 0; i < 100; ++i) {
        streams.emplace_back(&i, 1);
        stores.emplace_back(&i, 1);
    }
    const BYTE* first = streams[0];
    streams.reserve(streams.capacity() + 1);
    EXPECT_EQ(static_cast<const BYTE*>(streams[0]), first);
    streams.erase(streams.begin());
    EXPECT_EQ(streams[98].GetByte(0), 99);
    EXPECT_EQ(stores[99].GetByte(0), 99);
}

TEST_F(ContainerValueTest, ConvertsWhereAContainerIsWanted) {
    CByteStream stream = "0A0B0D0A";
    CByteStore store = stream;
    EXPECT_EQ(stream.Find("0D0A"), 2u);
    EXPECT_EQ(store.Find("0D0A"), 2u);
    EXPECT_EQ(store.Find(store), 0u);
    EXPECT_TRUE(stream == store);
    const auto none = CByteStore::kNotFound;
    const auto check = [&](auto& value) {
        EXPECT_EQ(value.Find("0D0A", 3), none);
        EXPECT_EQ(value.Find("0D0A", 99), none);
        EXPECT_EQ(value.Find("0A0B0D0A01"), none);
        EXPECT_EQ(value.Find("0E"), none);
        EXPECT_EQ(value.Find("", 4), 4u);
        EXPECT_EQ(value.Find("", 5), none);
        EXPECT_TRUE(value != CByteStream("0A0B0D0B") && value != CByteStore("0A0B0D0B"));
    };
    check(stream);
    check(store);
    store = store.Mid(1, 2); // a temporary
    stream = store;
    EXPECT_TRUE(stream == "0B0D" && store == "0B0D");
    store.Concat(CByteStore("01"));
    stream += "01";
    stream += BYTE{2};
    stream += WORD{0x0304};
    EXPECT_TRUE(stream == "0B0D01020304");
    stream.Concat(store);
    EXPECT_TRUE(stream == "0B0D01020304 0B0D01");
    store.Concat(stream);
    store.Concat("FF");
    EXPECT_TRUE(store == "0B0D01 0B0D01020304 0B0D01 FF");
    EXPECT_TRUE(store != stream && stream != store && store != "0B" && stream != "0B");
    stream = "0405";
    EXPECT_TRUE(stream == "0405");
    EXPECT_TRUE(CByteStore("0405") == stream && stream == CByteStore("0405"));
}

} // namespace
} // namespace vnbytstr::test
