// Four threads at a time, each with objects of its own, in every subsystem: what they share behind
// those (tables made at first use, pools, caches, counters) disturbs none of them. Under the
// thread sanitizer it also has no races; scripts/check-threads runs it so.
#include "messages/ResourceIds.h"
#include "src/os/SystemWrapper.h"
#include "tests/support/TemporaryFolder.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/Ccsid.h"
#include "vnbytstr/DES.h"
#include "vnbytstr/FixedBinary.h"
#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/Messages.h"
#include "vnbytstr/MultibyteText.h"
#include "vnbytstr/OutputStreamWriter.h"
#include "vnbytstr/Profile.h"
#include "vnbytstr/StringPersistence.h"
#include "vnbytstr/TextEncoding.h"
#include "vnbytstr/XercesWrapper.h"
#include "vnbytstr/framework/Archive.h"
#include "vnbytstr/framework/MemFile.h"
#include "vnbytstr/framework/Module.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#ifdef __SANITIZE_THREAD__
#include <pthread.h>

#include <ctime>

// What std::timed_mutex locks with. gcc 12's sanitizer does not know it and would miss every such
// lock, so it goes through a function that it knows.
extern "C" int pthread_mutex_clocklock(pthread_mutex_t* mutex, clockid_t clock,
                                       const timespec* deadline) noexcept {
    constexpr long kSecond = 1'000'000'000;
    timespec now{}, until{};
    ::clock_gettime(clock, &now);
    ::clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += deadline->tv_sec - now.tv_sec;
    until.tv_nsec += deadline->tv_nsec - now.tv_nsec;
    if (until.tv_nsec < 0 || until.tv_nsec >= kSecond) {
        const int step = until.tv_nsec < 0 ? -1 : 1;
        until.tv_sec += step;
        until.tv_nsec -= step * kSecond;
    }
    return ::pthread_mutex_timedlock(mutex, &until);
}

// Fontconfig is not compiled with the sanitizer, which does not see its atomic pointers.
extern "C" [[gnu::visibility("default")]] const char* __tsan_default_suppressions() {
    return "race:libfontconfig.so\n";
}
#endif

// Fontconfig keeps a little memory for good.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}

namespace {

constexpr int kThreads = 4;

/// Runs `work(thread, round)` in all threads, which begin every round together. Not by std::barrier:
/// that of MinGW-w64 12 does not wake all of them at times, on Wine at least.
template <class Work>
void InThreads(int rounds, Work work) {
    std::atomic<int> begun{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < rounds; ++round) {
                for (++begun; begun < kThreads * (round + 1);)
                    std::this_thread::yield();
                work(i, round);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

/// The system, but for where it says that profile and temporary files are.
class FolderSystem : public vnbytstr::SystemWrapper {
public:
    explicit FolderSystem(const vnbytstr::test::TemporaryFolder& folder)
        : SystemWrapper(vnbytstr::System::Current()), m_folder(folder) {}
    std::string GetEnvironment(const char* name) override {
        return std::string_view(name) == "VNBYTSTR_PROFILE" ? m_folder.File("profile.ini")
                                                            : SystemWrapper::GetEnvironment(name);
    }
    std::string GetTemporaryFolder() override { return m_folder.Path(); }

private:
    const vnbytstr::test::TemporaryFolder& m_folder;
};

/// The profile and the temporary files of this process, in a folder that goes with it.
class Threads : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_folder = new vnbytstr::test::TemporaryFolder;
        s_system = new FolderSystem(*s_folder);
        s_scope = new vnbytstr::ScopedSystem(*s_system);
    }
    static void TearDownTestSuite() {
        delete s_scope;
        delete s_system;
        delete s_folder;
    }

    static vnbytstr::test::TemporaryFolder* s_folder;
    static FolderSystem* s_system;
    static vnbytstr::ScopedSystem* s_scope;
};
FolderSystem* Threads::s_system;
vnbytstr::ScopedSystem* Threads::s_scope;
vnbytstr::test::TemporaryFolder* Threads::s_folder;

/// A store that gives pages back when it is told to.
class SmallStore : public CByteStore {
public:
    using CByteStore::SetMaxPages;
};

TEST_F(Threads, StoresThatSpill) {
    InThreads(4, [](int thread, int) {
        SmallStore store;
        const DWORD step = 16384 + static_cast<DWORD>(thread);
        const std::vector<BYTE> piece(step, static_cast<BYTE>(thread + 1));
        for (int i = 0; i < 40; ++i)
            store.Concat(piece.data(), step);
        store.SetMaxPages(2);
        EXPECT_GT(store.GetSwappedPageCount(), 0u);
        store.SetDWord(100000, 0x01020304);
        const BYTE wanted[] = {1, 2, 3, 4};
        EXPECT_EQ(store.Find(CByteStream(wanted, 4)), 100000u);
        EXPECT_EQ(store[40 * step - 1], static_cast<BYTE>(thread + 1));
        const std::string name = s_folder->File("saved-" + std::to_string(thread));
        store.SaveToFile(name.c_str());
        CByteStore loaded;
        loaded.SetFileName(name.c_str());
        EXPECT_EQ(loaded.GetDWord(100000), 0x01020304u);
        EXPECT_EQ(loaded.GetLength(), 40 * step);
    });
}

TEST_F(Threads, Streams) {
    InThreads(30, [](int thread, int) {
        CByteStream stream;
        for (int i = 0; i < 300; ++i)
            stream.ConcatWord(static_cast<WORD>(i * (thread + 1)));
        CString hex;
        stream.CopyToHex(0, hex, 0);
        EXPECT_TRUE(stream == static_cast<const char*>(hex));
        EXPECT_EQ(stream.Find(stream.Mid(400)), 400u);
        CMemFile file;
        COutputStreamWriter(file, 37).Write("abc");
        EXPECT_EQ(file.GetLength(), 3u);
        EXPECT_GT(CByteStream::GetMaxSizeInMemory(), 0u);
    });
}

TEST_F(Threads, Ciphers) {
    InThreads(20, [](int thread, int) {
        const CByteStream key("0123456789ABCDEF"), vector("FEDCBA9876543210");
        const std::vector<BYTE> text(5000, static_cast<BYTE>(thread));
        CByteStream stream(text.data(), 5000);
        ASSERT_EQ(stream.Encrypt(key, vector, CDES::eCBC, true), 1);
        EXPECT_EQ(stream.GetLength(), 5000u + 8u);
        ASSERT_EQ(stream.Decrypt(key, vector, CDES::eCBC, true), 1);
        EXPECT_TRUE(stream == CByteStream(text.data(), 5000));
    });
}

TEST_F(Threads, Numbers) {
    InThreads(10, [](int thread, int) {
        // Fermat: a ^ (p - 1) is 1 modulo the prime 2 ^ 521 - 1.
        CFixedBinary one("00000001"), prime("00000001");
        prime.ShiftLeft(521);
        prime -= one;
        CFixedBinary base("00000002");
        base *= CFixedBinary(("0000000" + std::to_string(thread + 1)).c_str());
        EXPECT_EQ(base.ExpMod(prime - one, prime), one);
        EXPECT_EQ((base * prime).Mod(prime), CFixedBinary(1));
    });
}

TEST_F(Threads, Translations) {
    constexpr WORD kSets[] = {37, 273, 930, 935, 1252, 932, 954, 1200, 1208, 1232};
    InThreads(3, [&](int thread, int round) {
        for (std::size_t i = 0; i < std::size(kSets); ++i) {
            // Some pairs by all at once, some by each thread in an order of its own.
            const WORD other =
                kSets[(round == 0 ? i : i + static_cast<std::size_t>(thread)) % std::size(kSets)];
            const std::string text = "ABC def 123 (" + std::to_string(thread) + ")";
            BYTE there[200], back[200];
            DWORD length = sizeof there, backLength = sizeof back;
            ASSERT_TRUE(TranslateCCSID(1208, other, reinterpret_cast<const BYTE*>(text.data()),
                                       static_cast<DWORD>(text.size()), there, &length));
            ASSERT_TRUE(TranslateCCSID(other, 1208, there, length, back, &backLength));
            EXPECT_EQ(std::string(back, back + backLength), text);
            EXPECT_FALSE(CanTranslateCCSID(other, static_cast<WORD>(60000 + thread + round)));
        }
    });
}

TEST_F(Threads, Texts) {
    const CString shared("a text that all threads copy");
    InThreads(40, [&](int thread, int) {
        CString text(shared);
        EXPECT_EQ(Exchange(text, "text", "value"), 1);
        text.MakeUpper();
        MakeStringLower(text);
        EXPECT_EQ(text, "a value that all threads copy");
        FormatString(text, "%s %d %5.2f", static_cast<const char*>(shared), thread, 1.5);
        EXPECT_EQ(text, shared + " " + CString(static_cast<char>('0' + thread)) + "  1.50");
        CMemFile file;
        CArchive out(&file, CArchive::store);
        out << text;
        WriteStringWithLengthToArchive(out, shared);
        out.Close();
        file.SeekToBegin();
        CArchive in(&file, CArchive::load);
        CString first, second;
        in >> first;
        ReadStringWithLengthFromArchive(in, second);
        EXPECT_EQ(first, text);
        EXPECT_EQ(second, shared);
        FormatStringAsHex(second, true);
        EXPECT_EQ(IsValidIdentifierChar('x'), true);
        EXPECT_EQ(VariousByteLength("\xC3\xA9t\xC3\xA9"), 3);
    });
}

TEST_F(Threads, XmlDocuments) {
    InThreads(6, [](int thread, int) {
        CXercesWrapper xml;
        const std::string source = "<r><e n=\"" + std::to_string(thread) + "\">\xC3\xA9</e></r>";
        ASSERT_TRUE(xml.LoadXML(source.c_str()));
        CString text;
        ASSERT_TRUE(xml.GetXML(text));
        EXPECT_EQ(text, source.c_str());
        EXPECT_FALSE(xml.LoadXML("<r><e></r>"));
        EXPECT_NE(xml.GetLastParseError().m_severity, SXMLParseError::kNone);

        const std::string name = s_folder->File("document-" + std::to_string(thread));
        XMLElement root;
        XMLNode child;
        ASSERT_TRUE(xml.Create("made") && xml.GetRootElement(root));
        ASSERT_TRUE(xml.AppendChildElement(root, "child", child));
        ASSERT_TRUE(xml.SetAttribute(child, "n", CXMLVariant(thread)));
        ASSERT_TRUE(xml.Save(name.c_str(), true) && xml.LoadFile(name.c_str()));
        int number = -1;
        ASSERT_TRUE(xml.GetRootElement(root) && xml.GetNode(root, "child", child));
        EXPECT_TRUE(xml.GetIntAttribute(child, "n", number));
        EXPECT_EQ(number, thread);
    });
}

TEST_F(Threads, LanguageStrings) {
    InThreads(6, [](int thread, int) {
        if (thread == 0) { // the user interface's: there is one resource handle
            CString text;
            EXPECT_GT(LoadStringA(text, IDS_BUTTON_CANCEL, nullptr), 0);
            EXPECT_EQ(text, "Cancel");
            EXPECT_TRUE(ResourcesAreEnglish());
        }
        EXPECT_FALSE(GetLanguageNameFromCode("DEU").IsEmpty());
        EXPECT_FALSE(GetInstalledLanguages("vnurc").empty());
        EXPECT_FALSE(GetUILanguage().IsEmpty());
        EXPECT_FALSE(CGlobalVars::IsReservedName("no such name"));
        EXPECT_EQ(CGlobalVars::GetIDFromName("tlxqw_sq"), CGlobalVars::TLXQW_SQ);
    });
}

TEST_F(Threads, Settings) {
    VNWriteProfileDWORD(3, "Options", "Shared", 7);
    InThreads(4, [](int thread, int round) {
        const CString section = "Thread " + CString(static_cast<char>('0' + thread));
        EXPECT_TRUE(VNWriteProfileDWORD(3, section, "Round", static_cast<DWORD>(round)));
        EXPECT_EQ(VNGetProfileDWORD(3, section, "Round", 99), static_cast<DWORD>(round));
        EXPECT_EQ(VNGetProfileDWORD(3, "Options", "Shared", 0), 7u);
        EXPECT_EQ(VNGetProfileString(3, "Options", "Missing", "default"), "default");
        CProfileSectionKey key;
        EXPECT_TRUE(VNGetProfileSectionKey(3, section, key));
        EXPECT_EQ(key.GetCount(), 1);
        EXPECT_EQ(VNGetProfileStatus(), ProfileSound);
    });
}

TEST_F(Threads, TablesOfTheirOwn) {
    InThreads(2, [](int thread, int) {
        CGlobalVars table;
        ASSERT_EQ(table.Initialize(), CGlobalVars::Success);
        int added = 0;
        EXPECT_EQ(table.AddGlobalVariable("MINE", CString(static_cast<char>('0' + thread)), added),
                  CGlobalVars::Success);
        CString value;
        table.GetGlobalVarValue("mine", value, 1);
        EXPECT_EQ(value, "'" + CString(static_cast<char>('0' + thread)) + "'");
    });
}

} // namespace
