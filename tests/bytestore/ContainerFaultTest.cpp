// Stores and streams when system calls fail.
#include "tests/bytestore/StoreFixture.h"

#include "vnbytstr/Ccsid.h"
#include "vnbytstr/DES.h"

#include <filesystem>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<int> g_allocationsLeft{-1}; ///< the one after so many fails, once; negative: none does
} // namespace

void* operator new(std::size_t size) {
    if (g_allocationsLeft.load() >= 0 && g_allocationsLeft.fetch_sub(1) == 0)
        throw std::bad_alloc();
    if (void* block = std::malloc(size > 0 ? size : 1))
        return block;
    throw std::bad_alloc();
}
// What std::stable_sort asks for; a sanitizer's own would not go with the free below.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
// The compiler sees the inlined free, but not that the block came from the operator above.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace vnbytstr::test {
namespace {

class ContainerFaultTest : public StoreFixture {};

/// Every allocation of each operation fails in turn: that is an exception of the framework, the
/// content is as it was, and the operation succeeds afterwards.
TEST_F(ContainerFaultTest, MemoryThatRunsOutIsAnExceptionOfTheFramework) {
    const Bytes bytes = Pattern(20 * kPage), small = Pattern(300, 2);
    const CByteStream key("0102030405060708"), pattern(bytes.data() + 1000, 50);
    m_folder.Write("two", "old"); // a file that is written over, as it has two names
    const std::string two = m_folder.File("two");
    std::filesystem::create_hard_link(two, m_folder.File("names"));
    using Operation = std::function<void(CByteStream&, CByteStore&)>;
    const std::vector<Operation> operations = {
        [&](CByteStream&, CByteStore& store) { store.CopyToFile(two.c_str()); },
        [&](CByteStream&, CByteStore& store) { store.CopyToFile(store.GetFileName()); },
        [&](CByteStream& stream, CByteStore&) { stream.CopyToFile(two.c_str()); },
        [](CByteStream&, CByteStore& store) {
            store.SetCurrentOffset(9);
            store.Flush(1);
            store.Flush(0);
        },
        [](CByteStream& stream, CByteStore&) { stream.Concat(stream); },
        [](CByteStream&, CByteStore& store) { store.Concat(store.GetFirstPage(), 3); },
        [](CByteStream&, CByteStore& store) { store.CopyFrom(5, store.GetFirstPage(), 30); },
        [](CByteStream&, CByteStore& store) { store.SetByte(40 * kPage, 1); },
        [](CByteStream& stream, CByteStore& store) { stream = store; },
        [](CByteStream& stream, CByteStore& store) { store = stream; },
        [](CByteStream& stream, CByteStore& store) { stream.Concat(store); },
        [&](CByteStream& stream, CByteStore& store) {
            store.Find(pattern, 20);
            stream.Find(pattern);
        },
        [](CByteStream& stream, CByteStore&) { CDES("key").Encrypt(stream); },
        [&](CByteStream& stream, CByteStore& store) {
            stream.Encrypt(key, key, CDES::eCBC, false);
            store.Decrypt(key, key, CDES::eCBC, false, store);
        },
        [](CByteStream& stream, CByteStore& store) {
            stream.TranslateCCSID(819, 1200);
            store.TranslateCCSID(819, 1200, store);
        },
    };
    constexpr std::size_t kTwoSteps = 12; // the stream may be done before the store fails
    for (std::size_t which = 0; which < operations.size(); ++which) {
        for (int at = 0;; ++at) {
            SCOPED_TRACE(testing::Message() << "operation " << which << ", allocation " << at);
            m_folder.Write("two", "old");
            CByteStream stream(small.data(), 300);
            CByteStore store(bytes.data(), 20 * kPage);
            bool failed = false;
            g_allocationsLeft = at;
            try {
                operations[which](stream, store);
            } catch (CException* error) {
                failed = true;
                error->Delete();
            } catch (const std::bad_alloc&) {
                ADD_FAILURE() << "not an exception of the framework";
            }
            const bool hit = g_allocationsLeft.exchange(-1) < 0;
            const std::string saved = m_folder.Read("two");
            EXPECT_TRUE(saved == "old" || saved == AsText(bytes) || saved == AsText(small));
            if (failed) {
                EXPECT_EQ(Content(store), bytes);
                if (which < kTwoSteps) {
                    EXPECT_EQ(Content(stream), small);
                }
                EXPECT_EQ(CauseOf([&] { operations[which](stream, store); }), -1);
            }
            if (!hit)
                break;
        }
    }
}

TEST_F(ContainerFaultTest, ReleasedPagesComeBack) {
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

TEST_F(ContainerFaultTest, PageLimitBoundsWhatIsInMemory) {
    const Bytes bytes = Pattern(40 * kPage + 9);
    CByteStore store, other;
    AppendPages(store, bytes);
    for (const int change : {0x5A, 0}) { // each second page: the last to leave wait to be written
        for (DWORD i = 0; i < bytes.size(); i += 2 * kPage)
            store.SetByte(i, static_cast<BYTE>(bytes[i] ^ change));
    }
    store.SetPageLimit(20);
    EXPECT_EQ(Content(store), bytes);
    EXPECT_EQ(store.GetResidentPageCount(), 20u);
    store.SetByte(3, 1);
    m_system.Inject(Fault{.call = Call::Write, .fromThenOn = true, .error = ENOSPC});
    EXPECT_EQ(CauseOf([&] { store.SetPageLimit(1); }), 4);
    m_system.Inject(std::nullopt);
    EXPECT_EQ(store.GetPageLimit(), 20u);
    store.SetByte(3, bytes[3]);
    store.SetPageLimit(2);
    EXPECT_EQ(store.GetResidentPageCount(), 2u);
    AppendPages(store, bytes);
    EXPECT_EQ(store.GetResidentPageCount(), 2u);
    EXPECT_EQ(store.GetLength(), 2 * bytes.size());
    AppendPages(other, bytes);
    store = other;
    EXPECT_EQ(store.GetPageLimit(), 2u);
    EXPECT_EQ(store.GetResidentPageCount(), 2u);
    other = std::move(store);
    EXPECT_EQ(other.GetPageLimit(), 2u);
    EXPECT_EQ(store.GetPageLimit(), 0u);
    EXPECT_EQ(Content(other), bytes);
    other.SetPageLimit(0);
    EXPECT_EQ(Content(other), bytes);
    other.Flush(); // now none waits
    other.SetPageLimit(10);
    EXPECT_EQ(Content(other), bytes);
    other.SetPageLimit(0);
    EXPECT_EQ(Content(other), bytes);
    EXPECT_EQ(other.GetResidentPageCount(), 16u);
}

TEST_F(ContainerFaultTest, PageThatCouldNotBeReadIsReadAgain) {
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
    // Others may come in between, once there is room for more.
    for (DWORD page = 20; page-- > 0;) {
        m_system.SetTick(++m_tick);
        store.GetDWord(page * kPage);
    }
    m_system.Inject(Fault{.call = Call::Read, .fromThenOn = true});
    EXPECT_GT(CauseOf([&] { store.GetByte(19 * kPage); }), 0);
    m_system.Inject(std::nullopt);
    m_system.SetMemoryLoad(0);
    store.ConcatByte(1); // a new page, for which the number of pages is looked at
    EXPECT_EQ(store.GetByte(18 * kPage), bytes[18 * kPage]);
    EXPECT_EQ(store.GetByte(19 * kPage), bytes[19 * kPage]);
    EXPECT_EQ(store.GetResidentPageCount(), 18u); // in the memory that was meant for it
    EXPECT_TRUE(store.Left(20 * kPage) == CByteStream(bytes.data(), 20 * kPage));
}

TEST_F(ContainerFaultTest, WhatWasDroppedIsNotWritten) {
    CByteStore store;
    Append(store, Pattern(20 * kPage)); // some pages wait to be written
    store.Shift(0, 20 * kPage);
    m_system.Inject(Fault{.call = Call::Write, .fromThenOn = true, .error = ENOSPC});
    EXPECT_EQ(CauseOf([&] { store.Flush(); }), -1);
    m_system.Inject(std::nullopt);
}

TEST_F(ContainerFaultTest, CutOrRemovedSwapFileIsNoticed) {
    CByteStore store;
    const Bytes bytes = Pattern(40 * kPage);
    Append(store, bytes);
    std::filesystem::remove(store.GetFileName()); // the open file is still there
    EXPECT_EQ(Content(store), bytes);
    store.Empty();
    AppendPages(store, bytes);
    store.Flush();
    std::filesystem::resize_file(store.GetFileName(), 10 * kPage + 100);
    EXPECT_EQ(CauseOf([&] { store.GetByte(20 * kPage); }), 2);
    EXPECT_EQ(CauseOf([&] { store.GetByte(10 * kPage); }), 2);
    EXPECT_EQ(store.GetByte(3 * kPage), bytes[3 * kPage]);
}

/// An operation on a container, and the bytes that it should give.
struct Change {
    const char* name;
    void (*run)(CByteStream& value, CByteStream& other);
    Bytes (*expected)(Bytes value, const Bytes& other);
    /// The first byte that a failed try may have changed.
    DWORD safe = 0xFFFFFFFF;
};

const CByteStream& Key() {
    static const CByteStream key("3132333435363738");
    return key;
}

Bytes Ciphered(const Bytes& bytes, bool encrypt) {
    CByteStream value(bytes.data(), static_cast<DWORD>(bytes.size()));
    encrypt ? value.Encrypt(Key(), Key(), CDES::eCBC, false)
            : value.Decrypt(Key(), Key(), CDES::eCBC, false);
    return Content(value);
}

const Change kChanges[] = {
    {"assign", [](CByteStream& value, CByteStream& other) { value = other; },
     [](Bytes, const Bytes& other) { return other; }},
    {"encipher",
     [](CByteStream& value, CByteStream&) { value.Encrypt(Key(), Key(), CDES::eCBC, false); },
     [](Bytes value, const Bytes&) { return Ciphered(value, true); }},
    {"decipher",
     [](CByteStream& value, CByteStream&) { value.Decrypt(Key(), Key(), CDES::eCBC, false); },
     [](Bytes value, const Bytes&) { return Ciphered(value, false); }},
    {"translate", [](CByteStream& value, CByteStream&) { value.TranslateCCSID(819, 1200); },
     [](Bytes value, const Bytes&) {
         Bytes wide;
         for (const BYTE byte : value)
             wide.insert(wide.end(), {0, byte});
         return wide;
     }},
    {"append", [](CByteStream& value, CByteStream& other) { value.Concat(other); },
     [](Bytes value, const Bytes& other) {
         value.insert(value.end(), other.begin(), other.end());
         return value;
     }},
    {"copy over the end",
     [](CByteStream& value, CByteStream& other) { value.CopyFrom(15 * kPage, other, 3); },
     [](Bytes value, const Bytes& other) {
         value.resize(15 * kPage);
         value.insert(value.end(), other.begin() + 3, other.end());
         return value;
     },
     15 * kPage},
    {"shift", [](CByteStream& value, CByteStream&) { value.Shift(5, 16 * kPage); },
     [](Bytes value, const Bytes&) {
         value.erase(value.begin() + 5, value.begin() + 16 * kPage);
         return value;
     },
     5},
    {"copy into a new one",
     [](CByteStream& value, CByteStream& other) {
         const CByteStream copy(other);
         value = copy.Right(10);
     },
     [](Bytes, const Bytes& other) { return Bytes(other.end() - 10, other.end()); }},
};

/// Every system call of each change fails in turn, once or from then on, or moves half, or lands
/// elsewhere. The outcome is the right content, or a defined exception with the content of before;
/// the same call then succeeds. No descriptor and no file is left.
TEST_F(ContainerFaultTest, EverySystemCallMayFail) {
    const Bytes bytes = Pattern(18 * kPage + 8), others = Pattern(17 * kPage, 2);
    const Fault kinds[] = {{.call = Call::Any},
                           {.call = Call::Any, .fromThenOn = true},
                           {.call = Call::Write, .error = ENOSPC, .kind = Fault::Kind::Shorten},
                           {.call = Call::Read, .kind = Fault::Kind::Shorten},
                           {.call = Call::Seek, .kind = Fault::Kind::Misplace}};
    unsigned failures = 0;
    for (const Change& change : kChanges) {
        const Bytes expected = change.expected(bytes, others);
        for (Fault fault : kinds) {
            for (fault.at = 1;; ++fault.at) {
                SCOPED_TRACE(testing::Message()
                             << change.name << ", " << CallName(fault.call) << ' ' << fault.at
                             << (fault.fromThenOn ? " on" : ""));
                CByteStream value(bytes.data(), static_cast<DWORD>(bytes.size()));
                CByteStream other(others.data(), static_cast<DWORD>(others.size()));
                m_system.Inject(fault);
                const int cause = CauseOf([&] { change.run(value, other); });
                const bool hit = m_system.Hits() > 0;
                m_system.Inject(std::nullopt);
                if (cause != -1) {
                    ++failures;
                    Bytes content = Content(value);
                    ASSERT_EQ(content.size(), bytes.size());
                    ASSERT_TRUE(std::equal(content.begin(),
                                           content.begin() + std::min<std::ptrdiff_t>(
                                                                 change.safe, std::ssize(content)),
                                           bytes.begin()));
                    ASSERT_EQ(Content(other), others);
                    if (content != bytes) // a part had moved: what it would be without
                        value.CopyFrom(0, bytes.data(), static_cast<DWORD>(bytes.size()));
                    change.run(value, other);
                }
                ASSERT_TRUE(Content(value) == expected);
                value.Empty();
                other.Empty();
                // A removal that was itself made to fail may leave its file; nothing else may.
                ASSERT_TRUE(FileCount() == 0 || fault.call == Call::Any);
                for (const std::string& name : m_folder.Names())
                    std::filesystem::remove(m_folder.File(name.c_str()));
                if (!hit)
                    break;
            }
        }
    }
    EXPECT_GT(failures, 100u);
}

} // namespace
} // namespace vnbytstr::test
