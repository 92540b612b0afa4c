// Every allocation fails in turn, once and from then on, in a process that has done the same before
// and in a fresh one: each try ends in an exception or a refusal, and what is tried again
// afterwards gives the right result. Each process that does so is a child, so that an abort is
// seen.
#include "src/charset/CodePage.h"
#include "src/charset/Collation.h"
#include "src/os/FileReplacement.h"
#include "src/os/LeftoverSweep.h"
#include "tests/durability/FailingMemory.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"
#include "vnbytstr/BidiText.h"
#include "vnbytstr/ByteStore.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/DES.h"
#include "vnbytstr/DiffieHellman.h"
#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/Messages.h"
#include "vnbytstr/MultibyteText.h"
#include "vnbytstr/Profile.h"
#include "vnbytstr/StringPersistence.h"
#include "vnbytstr/TextEncoding.h"
#include "vnbytstr/XercesWrapper.h"
#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/File.h"
#include "vnbytstr/framework/MemFile.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>

namespace vnbytstr::test {
namespace {

struct Refused {
    int line;
};
void Demand(bool isDone, int line = __builtin_LINE()) {
    if (!isDone)
        throw Refused{line};
}

std::string TextOf(const CString& text) {
    return {text, static_cast<std::size_t>(text.GetLength())};
}

template <class Container>
std::string BytesOf(Container& container) {
    std::string bytes(container.GetLength(), '\0');
    if (!bytes.empty())
        container.CopyTo(0, reinterpret_cast<BYTE*>(bytes.data()), 0,
                         static_cast<DWORD>(bytes.size()));
    return bytes;
}

/// What a child works with.
struct Folder {
    std::string path;
    std::string File(const char* name) const { return path + name; }
    void Write(const char* name, const std::string& content) const {
        std::FILE* const file = std::fopen(File(name).c_str(), "wb");
        std::fwrite(content.data(), 1, content.size(), file);
        std::fclose(file);
    }
    std::string Read(const char* name) const {
        StopFailing();
        std::string content(1 << 20, '\0');
        std::FILE* const file = std::fopen(File(name).c_str(), "rb");
        if (file == nullptr)
            return "missing";
        content.resize(std::fread(content.data(), 1, content.size(), file));
        std::fclose(file);
        return content;
    }
};

struct Scenario {
    const char* name;
    /// Makes the start the same for each try; nothing fails there.
    void (*prepare)(const Folder& folder);
    /// The result; the same each time.
    std::string (*run)(const Folder& folder);
    /// What must hold after a try that failed; null: nothing.
    void (*afterFailure)(const Folder& folder) = nullptr;
    bool withIcu = true;    ///< ICU's own allocations fail, too
    bool mayDiffer = false; ///< a lack of memory gives another result, as the header says
};
void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

void Nothing(const Folder&) {}

// --- the scenarios -------------------------------------------------------------------------------

std::string TranslateBytes(const Folder&) {
    CByteStream stream("C1C2 40 F1");
    CByteStream to;
    Demand(stream.TranslateCCSID(37, 1208, to) != 0);
    CByteStream wide("82A0 41");
    Demand(wide.TranslateCCSID(932, 1200) != 0);
    return BytesOf(to) + BytesOf(wide);
}

class SmallStore : public CByteStore {
public:
    using CByteStore::SetMaxPages;
};

std::string SpillAndSave(const Folder& folder) {
    SmallStore store;
    store.SetMaxPages(2);
    const std::string bytes(100000, 'b');
    store.Concat(reinterpret_cast<const BYTE*>(bytes.data()), 100000);
    store.SetByte(3, 'c');
    store.SaveToFile(folder.File("saved").c_str());
    return folder.Read("saved");
}

std::string Contain(const Folder&) {
    CByteStream stream("00010203");
    const CByteStream more("FEFF");
    stream += more;
    CByteStream copy(stream);
    copy.Concat(stream);
    CByteStore store;
    store.Concat(copy);
    CByteStream part = copy.Mid(2, 5);
    const CString hex(part.GetLength() == 5 ? "5" : "?");
    return BytesOf(copy) + BytesOf(store) + BytesOf(part) + TextOf(hex);
}

std::string Cipher(const Folder&) {
    CByteStream text("000102030405060708090A0B0C0D0E0F");
    const CByteStream key("0123456789ABCDEF"), vector("FEDCBA9876543210");
    Demand(text.Encrypt(key, vector, CDES::eCBC, true) != 0);
    const std::string enciphered = BytesOf(text);
    Demand(text.Decrypt(key, vector, CDES::eCBC, true) != 0);
    return enciphered + BytesOf(text);
}

std::string Xml(const Folder& folder) {
    CXercesWrapper xml;
    Demand(xml.LoadXML("<a><b c=\"1\">t\xC3\xA4xt</b></a>"));
    XMLElement root;
    XMLNode child;
    CString text;
    Demand(xml.GetRootElement(root) && xml.AppendChildElement(root, "d", child) &&
           xml.SetAttribute(child, "e", CXMLVariant("f")) && xml.GetXML(text) &&
           xml.Save(folder.File("saved.xml").c_str(), true));
    return TextOf(text) + folder.Read("saved.xml");
}
/// A living wrapper keeps the parser's platform, whose start has a separate test.
void BeginXml(const Folder& folder) {
    static const CXercesWrapper first;
    folder.Write("saved.xml", "<old/>");
}
void KeepsXmlFile(const Folder& folder) {
    const std::string saved = folder.Read("saved.xml");
    Demand(saved == "<old/>" || saved.find("</a>") != std::string::npos);
}

constexpr char kSettings[] = "[3/Options]\nSaveGlobals=1\n\n[3/Global Variables]\nMYREPORT=one\n"
                             "SECOND=two\n";
void WriteSettings(const Folder& folder) { folder.Write("profile.ini", kSettings); }

/// Fonts come from a library that a lack of memory kills.
void SettleGlobals(const Folder& folder) {
    static TestSystem system;
    system.SetFontFamily("");
    System::Install(&system);
    WriteSettings(folder);
}

std::string Settings(const Folder& folder) {
    Demand(VNWriteProfileString(3, "Options", "Other", "va lue") != FALSE);
    CProfileSectionKey key;
    Demand(VNGetProfileSectionKey(3, "Global Variables", key) != FALSE);
    return TextOf(VNGetProfileString(3, "Options", "Other", "", 0)) + TextOf(key.GetString(1)) +
           folder.Read("profile.ini");
}

std::string Globals(const Folder& folder) {
    CGlobalVars globals;
    Demand(globals.Initialize() == CGlobalVars::Success);
    const CString name("THIRD"), value("three");
    int added = 0;
    Demand(globals.AddGlobalVariable(&name, &value, added) == CGlobalVars::Success);
    Demand(globals.SaveToRegistry() == CGlobalVars::Success);
    return folder.Read("profile.ini");
}
/// What a failed start and a save after it must not take away.
void KeepsVariables(const Folder& folder) {
    const std::string settings = folder.Read("profile.ini");
    Demand(settings.find("MYREPORT=one") != std::string::npos &&
           settings.find("SECOND=two") != std::string::npos);
}

std::string HalfTable(const Folder& folder) {
    CGlobalVars globals;
    try {
        globals.Initialize();
    } catch (CException* error) {
        error->Delete();
    } catch (const std::bad_alloc&) {
    }
    StopFailing();
    globals.SaveToRegistry(); // a half table is not saved
    KeepsVariables(folder);
    return "kept";
}

std::string Languages(const Folder&) {
    CString text;
    Demand(LoadStringA(text, 1, nullptr) >= 0);
    return TextOf(GetUILanguage()) + TextOf(GetLanguageNameFromCode("DE"));
}

void WriteText(const Folder& folder) {
    std::string text;
    for (int i = 0; i < 300; ++i)
        text += "M\xE4rz ";
    folder.Write("text", text);
}
std::string Utf8(const Folder& folder) {
    Demand(ConvertToUTF8(folder.File("text").c_str()) != 0);
    return folder.Read("text");
}
/// A refused file is as it was: who tries again must not convert twice.
void KeepsText(const Folder& folder) { Demand(folder.Read("text").find("M\xE4rz") == 0); }

std::string StringFile(const Folder& folder) {
    {
        CFile file(folder.File("string").c_str(), CFile::modeCreate | CFile::modeReadWrite);
        WriteStringToFile(file, "M\xE4rz");
    }
    CFile file(folder.File("string").c_str(), CFile::modeRead);
    char* text = nullptr;
    bool converted = false, hadMark = false;
    ReadStringFromFile(file, text, converted, hadMark);
    const std::unique_ptr<char, decltype(&std::free)> block(text, &std::free);
    return text;
}

std::string Texts(const Folder&) {
    CString text("m\xE4rz"), out;
    MakeStringUpper(text);
    Demand(FormatStringEx(out, "%1!s! and %2!s!", text, "b") >= 0);
    CStringArray strings;
    for (const char* each : {"b", "\xE4", "a", "B"})
        strings.Add(each);
    Sort(strings);
    Exchange(out, "and", "or");
    CString all = out;
    for (int i = 0; i < strings.GetSize(); ++i)
        all += strings[i];
    FormatStringAsHex(text, true);
    return TextOf(all) + TextOf(text) + (IsStringAllLTR(out) ? "ltr" : "-");
}

/// Blocks of operator new, which the caller deletes.
std::string Blocks(const Folder&) {
    auto* block = static_cast<char*>(::operator new(3));
    std::memcpy(block, "abc", 3);
    DWORD length = 0;
    const bool isHex = FormatBufferAsHex(block, 3, length);
    const std::string hex = isHex ? block : "";
    ::operator delete(block);
    Demand(isHex && URLEncodeStr("a b", block, true) != 0);
    const std::string all = hex + block;
    ::operator delete(block);
    return all;
}

/// A page of double bytes that was half made would take every byte for a character.
std::string DoubleBytePage(const Folder&) {
    const CodePage* const page = CodePage::Find(932);
    Demand(page != nullptr);
    const std::u16string wide = page->ToWide("\x82\xA0"
                                             "A");
    return std::to_string(page->CountChars("\x82\xA0"
                                           "A")) +
           std::to_string(wide.size()) + page->FromWide(wide) +
           std::to_string(CompareIgnoringCaseKanaWidth("a", "B"));
}

std::string FirstSystem(const Folder& folder) {
    System& system = System::Current();
    FileHandle handle = kNoFile;
    Demand(system.OpenFile(folder.File("first").c_str(), kOpenWrite | kOpenCreate, handle) == 0);
    Demand(system.CloseFile(handle) == 0);
    return system.GetTemporaryFolder();
}

/// Leaves a file half overwritten, on a disk that did not take the old content back either, unless
/// that has been done and not been mended yet.
void HalfOverwrite(const Folder& folder) {
    const std::string old(130000, 'o'), target = folder.File("target");
    if (const std::string now = folder.Read("target"); now != "missing" && now != old)
        return;
    folder.Write("target", old);
    static_cast<void>(::link(target.c_str(), folder.File("other").c_str()));
    TestSystem system;
    const ScopedSystem scope(system);
    FileReplacement replacement;
    std::size_t done = 0;
    const std::string fresh(130000, 'n');
    Demand(replacement.Open(target.c_str()) == 0 &&
           system.WriteFile(replacement.Handle(), fresh.data(), fresh.size(), done) == 0);
    system.Before(Call::Sync, 1, [&] { // the copy of the old content is complete then
        system.Inject(Fault{.call = Call::Write, .at = 2, .fromThenOn = true});
    });
    Demand(replacement.Commit() != 0 && folder.Read("target") != old);
}
/// A sweep without memory is left to the next one, in this process or another.
std::string Sweep(const Folder& folder) {
    SweepLeftovers(folder.path);
    return folder.Read("target") == std::string(130000, 'o') ? "old" : "mixed";
}

const Scenario kScenarios[] = {
    {"Sweep", HalfOverwrite, Sweep, nullptr, true, true},
    {"System", Nothing, FirstSystem},
    {"DoubleBytePage", Nothing, DoubleBytePage},
    {"Translation", Nothing, TranslateBytes},
    {"Containers", Nothing, Contain},
    {"SpillAndSave", Nothing, SpillAndSave},
    {"Cipher", Nothing, Cipher},
    {"Settings", WriteSettings, Settings, KeepsVariables},
    // A text of the user interface that could not be loaded is missing.
    {"Globals", SettleGlobals, Globals, KeepsVariables, true, true},
    {"HalfTable", SettleGlobals, HalfTable, KeepsVariables},
    {"Utf8File", WriteText, Utf8, KeepsText},
    {"StringFile", Nothing, StringFile},
    {"Texts", Nothing, Texts},
    {"Blocks", Nothing, Blocks},
    // ICU's names of languages do not survive a lack of memory themselves.
    {"Languages", Nothing, Languages, nullptr, false, true},
    {"Xml", BeginXml, Xml, KeepsXmlFile},
};

// --- the sweep -----------------------------------------------------------------------------------

/// What the children tell.
struct Report {
    unsigned at = 0; ///< the fault that is tried
    bool isOver = false;
    unsigned exceptions = 0, badAllocs = 0, refusals = 0, successes = 0;
    std::array<char, 512> complaint{};
};

class Allocations : public ::testing::TestWithParam<Scenario> {
protected:
    Allocations()
        : m_report(*new (::mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Report) {}
    ~Allocations() override { ::munmap(&m_report, sizeof(Report)); }

    void Sweep(bool isFresh, bool fromThenOn) {
        m_report = {};
        unsigned failures = 0;
        for (unsigned at = 1; !m_report.isOver && failures < 5;) {
            m_report.at = at;
            const TemporaryFolder folder;
            const pid_t child = ::fork();
            if (child == 0)
                RunChild({folder.Path()}, isFresh, {at, fromThenOn});
            int status = 0;
            ::waitpid(child, &status, 0);
            if (status != 0) {
                ++failures;
                ADD_FAILURE() << "allocation " << m_report.at << (fromThenOn ? " and on" : "")
                              << (isFresh ? ", fresh" : "") << ": "
                              << (WIFSIGNALED(status) ? ::strsignal(WTERMSIG(status))
                                                      : m_report.complaint.data());
            }
            at = Next(m_report.at);
        }
        std::printf("             %u exceptions, %u std::bad_alloc, %u refusals, %u successes\n",
                    m_report.exceptions, m_report.badAllocs, m_report.refusals, m_report.successes);
    }

private:
    /// All of the first ones, then fewer and fewer.
    static unsigned Next(unsigned at) {
        static const bool all = std::getenv("VNBYTSTR_SWEEP_ALL") != nullptr;
        return at + 1 + (all ? 0 : at / 20);
    }

    [[noreturn]] void RunChild(const Folder& folder, bool isFresh, const MemoryFault& fault) {
        try {
            Child(folder, isFresh, fault);
        } catch (const std::exception& error) {
            StopFailing();
            Complain(error.what());
        }
    }

    [[noreturn]] void Child(const Folder& folder, bool isFresh, MemoryFault fault) {
        ::alarm(20);
        ::setenv("TMPDIR", folder.path.c_str(), 1);
        ::setenv("VNBYTSTR_PROFILE", folder.File("profile.ini").c_str(), 1);
        ::setenv("VNBYTSTR_CODEPAGE", "1252", 1);
        ::setenv("LC_ALL", "de_DE.UTF-8", 1);
        if (!std::freopen("/dev/null", "w", stderr))
            ::_exit(1);
        // At its first use ICU keeps many a failure for the life of the process.
        if (isFresh || !GetParam().withIcu)
            SpareIcu();
        std::optional<std::string> expected;
        if (!isFresh) {
            GetParam().prepare(folder);
            expected = GetParam().run(folder);
        }
        do {
            Try(folder, fault, expected);
            fault.at = Next(fault.at);
        } while (!isFresh && !m_report.isOver);
        ::_exit(0);
    }

    void Try(const Folder& folder, const MemoryFault& fault, std::optional<std::string>& expected) {
        m_report.at = fault.at;
        GetParam().prepare(folder);
        std::string result;
        bool hasFailed = true;
        FailMemory(fault);
        try {
            result = GetParam().run(folder);
            hasFailed = false;
        } catch (CException* error) {
            StopFailing();
            error->Delete();
            ++m_report.exceptions;
        } catch (const std::bad_alloc&) {
            ++m_report.badAllocs;
        } catch (const Refused&) {
            ++m_report.refusals;
        }
        m_report.isOver = !StopFailing();
        m_report.successes += !hasFailed;
        const char* what = "a failed try left something half done";
        try {
            if (hasFailed && GetParam().afterFailure)
                GetParam().afterFailure(folder);
            what = "the second try failed";
            GetParam().prepare(folder);
            const std::string again = GetParam().run(folder);
            if (!hasFailed && result != again && !(GetParam().mayDiffer && !m_report.isOver))
                Complain("the result is " + result + " and not " + again);
            if (expected && again != *expected)
                Complain("the second result is " + again + " and not " + *expected);
            if (hasFailed && m_report.isOver)
                Complain("it fails with all memory");
        } catch (CException*) {
            Complain(what);
        } catch (const std::bad_alloc&) {
            Complain(what);
        } catch (const Refused& refusal) {
            Complain(what + (" in line " + std::to_string(refusal.line)));
        }
    }

    [[noreturn]] void Complain(const std::string& text) {
        std::snprintf(m_report.complaint.data(), m_report.complaint.size(), "%s", text.c_str());
        ::_exit(1);
    }

    Report& m_report;
};

TEST_P(Allocations, MayFailOneByOne) { Sweep(false, false); }
TEST_P(Allocations, MayFailFromOneOn) { Sweep(false, true); }
TEST_P(Allocations, MayFailOneByOneAtFirstUse) { Sweep(true, false); }
TEST_P(Allocations, MayFailFromOneOnAtFirstUse) { Sweep(true, true); }

/// The address space ends a little above what the process has.
TEST(ParserPlatform, BeginsWhenThereIsMemoryAgain) {
    for (unsigned room = 0; room < 24; ++room) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(20);
            std::size_t pages = 0;
            if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
                if (std::fscanf(file, "%zu", &pages) != 1)
                    ::_exit(3);
                std::fclose(file);
            }
            CString text("<a>some text</a>");
            CodePage::Find(65001)->ToWide("\xC3\xA4"); // ICU keeps a failure at its first use
            rlimit old{};
            ::getrlimit(RLIMIT_AS, &old);
            const rlimit low{pages * 4096 + room * (128u << 10), old.rlim_max};
            ::setrlimit(RLIMIT_AS, &low);
            {
                CXercesWrapper xml;
                xml.LoadXML(text);
                ::setrlimit(RLIMIT_AS, &old);
                if (!xml.LoadXML(text))
                    ::_exit(1);
            }
            CXercesWrapper xml;
            ::_exit(xml.LoadXML(text) ? 0 : 2);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0) << room;
    }
}

INSTANTIATE_TEST_SUITE_P(Sweep, Allocations, ::testing::ValuesIn(kScenarios),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vnbytstr::test
