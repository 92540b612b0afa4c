// Stores and streams when system calls fail.
#include "tests/bytestore/StoreFixture.h"

#include "platform/companion/Ccsid.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>

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
    using Operation = std::function<void(CByteStream&, CByteStore&)>;
    const std::vector<Operation> operations = {
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
    constexpr std::size_t kTwoSteps =
        8; // from here on the stream may be done before the store fails
    for (std::size_t which = 0; which < operations.size(); ++which) {
        for (int at = 0;; ++at) {
            SCOPED_TRACE(testing::Message() << "operation " << which << ", allocation " << at);
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
            if (failed) {
                EXPECT_EQ(Content(store), bytes);
                if (which < kTwoSteps) {
                    EXPECT_EQ(Content(stream), small);
                }
                operations[which](stream, store);
            }
            if (!hit)
                break;
        }
    }
}

TEST_F(ContainerFaultTest, LimitIsReadByManyThreads) {
    CByteStream::m_dwMaxSizeInMemory = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] { EXPECT_EQ(CByteStream::GetMaxSizeInMemory(), 0x40000u); });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(ContainerFaultTest, FullDiskLosesNothing) {
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
}

TEST_F(ContainerFaultTest, CutOrRemovedSwapFileIsNoticed) {
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
TEST_F(ContainerFaultTest, EverySystemCallMayFail) {
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
