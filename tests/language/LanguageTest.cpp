#include "vnbytstr/Language.h"

#include "src/charset/CodePage.h"
#include "src/language/DefaultLanguage.h"
#include "src/resources/ResourceFiles.h"
#include "tests/support/PeFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"
#include "vnbytstr/Profile.h"
#include "vnbytstr/ProgramTexts.h"
#include "vnbytstr/ResourceLibrary.h"
#include "vnbytstr/framework/Module.h"

#include <filesystem>

#include <gtest/gtest.h>

using namespace vnbytstr;

namespace {

/// A program in its own folder, with its own settings, whose resource libraries are those that
/// a test puts there. Lines of the trace are in Trace.
class LanguageTest : public ::testing::Test {
protected:
    LanguageTest() {
        system.SetModuleFileName(folder.File("program"));
        system.SetEnvironment("VNBYTSTR_PROFILE", folder.File("profile.ini"));
        system.SetEnvironment("VNBYTSTR_TRACE", "1");
        system.SetEnvironment("LC_ALL", "de_DE.UTF-8");
        scope.emplace(system);
    }
    ~LanguageTest() override { AfxSetResourceHandle(nullptr); }

    void AddLibrary(const std::string& name, const std::map<UINT, std::u16string>& strings,
                    WORD language = 0x409) {
        test::PeContent content;
        content.strings = strings;
        content.language = language;
        folder.Write(name, MakePeFile(content).Text());
    }
    HINSTANCE Load(const std::string& name) {
        HINSTANCE library = nullptr;
        EXPECT_EQ(LoadResourceLibrary(folder.File(name).c_str(), library), 0);
        return library;
    }
    /// The trace since the last call, with "@" for the program's folder.
    std::string Trace() {
        std::string text = system.Diagnostics().substr(m_traced);
        m_traced = system.Diagnostics().size();
        for (std::size_t at; (at = text.find(folder.Path())) != std::string::npos;)
            text.replace(at, folder.Path().size(), "@");
        return text;
    }
    void SetLanguage(const char* code) { VNWriteProfileString(3, "Options", "UILanguage", code); }
    void SetLocale(const char* locale) { system.SetEnvironment("LC_ALL", locale); }

    test::TemporaryFolder folder;
    test::TestSystem system;
    std::optional<ScopedSystem> scope;

private:
    std::size_t m_traced = 0;
};

TEST_F(LanguageTest, ComesFromTheSettingUnchecked) {
    SetLanguage("xyz");
    EXPECT_STREQ(GetUILanguage(), "xyz");
    EXPECT_EQ(Trace(), "Entering GetUILanguage()\n\txyz specified in registry\n");
    SetLanguage("");
    EXPECT_STREQ(GetUILanguage(), "DEU");
    EXPECT_EQ(Trace(), "Entering GetUILanguage()\nEntering GetDefaultUILanguage()\n"
                       "\tGetLocalInfo() returns DEU\n");
}

TEST_F(LanguageTest, ComesFromTheLocale) {
    SetLocale("de_LI.UTF-8");
    EXPECT_STREQ(GetUILanguage(), "DEU");
    EXPECT_EQ(Trace(), "Entering GetUILanguage()\nEntering GetDefaultUILanguage()\n"
                       "\tGetLocalInfo() returns DEC\n\tDEC is not recognized\n\tMapped to DEU\n");
    const std::pair<const char*, const char*> locales[] = {
        {"pt_PT", "PTG"}, {"fr_CA", "FRC"}, {"fr_LU", "FRA"}, {"it_CH", "ITS"}, {"ar_SA", "ARE"},
        {"es_MX", "ESN"}, {"en_GB", "ENU"}, {"nl_NL", "ENU"}, {"C", "ENU"},     {"xx_YY", "ENU"}};
    for (const auto& [locale, code] : locales) {
        SetLocale(locale);
        EXPECT_STREQ(GetUILanguage(), code) << locale;
    }
    system.SetEnvironment("LC_MESSAGES", "ko_KR.UTF-8");
    system.SetEnvironment("LC_CTYPE", "ja_JP.UTF-8");
    SetLocale("");
    EXPECT_STREQ(GetUILanguage(), "KOR");
}

TEST(MapLanguage, MapsUnlistedCodesByTheirFamily) {
    const std::pair<const char*, const char*> names[] = {
        {"FRX", "FRA"}, {"DEC", "DEU"}, {"ITX", "ITA"}, {"ARX", "ARE"}, {"ESX", "ESN"},
        {"PTX", "ENU"}, {"deu", "ENU"}, {"FR", "FRA"},  {"F", "ENU"},   {"", "ENU"}};
    for (const auto& [name, code] : names)
        EXPECT_STREQ(detail::MapLanguage(name, false), code) << name;
    EXPECT_STREQ(detail::MapLanguage("PTX", true), "PTB");
    EXPECT_STREQ(detail::MapLanguage("PTG", true), "PTG");
    EXPECT_STREQ(detail::MapLanguage("XXX", true), "ENU");
    for (const char* code : {"SVE", "PTG", "PTB", "KOR", "JPN", "ITS", "ITA", "HEB", "FRS", "FRC",
                             "FRB", "FRA", "ESN", "ENU", "DEU", "DES", "DAN", "CHT", "ARE"})
        EXPECT_STREQ(detail::MapLanguage(code, false), code);
}

TEST_F(LanguageTest, LoadsTheLibraryOfTheLanguage) {
    AddLibrary("appDEU.dll", {{1, u"eins"}}, 0x407);
    AddLibrary("appENU.dll", {{1, u"one"}});
    const HINSTANCE library = LoadResourceDLL("app");
    EXPECT_EQ(GetModuleFileName(library), folder.File("appDEU.dll"));
    EXPECT_EQ(AfxGetResourceHandle(), library);
    EXPECT_FALSE(ResourcesAreEnglish());
    Trace();

    SetLanguage("xyz");
    EXPECT_EQ(GetModuleFileName(LoadResourceDLL("app")), folder.File("appENU.dll"));
    EXPECT_TRUE(ResourcesAreEnglish());
    EXPECT_EQ(Trace(), "Entering LoadResourceDLL(\"app\")\nEntering GetUILanguage()\n"
                       "\txyz specified in registry\n"
                       "Entering GetResourceDLLName(\"xyz\", \"app\")\n"
                       "\tChecking for @appxyz.dll\n\tDid not find it\n"
                       "\tFalling back to ENU resources\n"
                       "Entering GetResourceDLLName(\"ENU\", \"app\")\n"
                       "\tChecking for @appENU.dll\n\tFound it\n\tSetting resource handle\n");
}

TEST_F(LanguageTest, LoadsNothingWhenThereIsNothing) {
    SetLanguage("ENU");
    EXPECT_EQ(LoadResourceDLL("app"), nullptr);
    EXPECT_TRUE(Trace().ends_with("\tDid not find it\n\tCould not find any language\n"));
    folder.Write("appENU.dll", "damaged");
    EXPECT_EQ(LoadResourceDLL("app"), nullptr);
    EXPECT_NE(Trace().find("\tFound it\n\tLoadLibrary(@appENU.dll) failed: It is no resource "
                           "library, or a damaged one\n"),
              std::string::npos);
    EXPECT_EQ(AfxGetResourceHandle(), AfxGetInstanceHandle());
    EXPECT_EQ(LoadResourceDLL(nullptr), nullptr);
}

TEST_F(LanguageTest, LoadsStringsFromOneAfterTheOther) {
    AddLibrary("current.dll", {{1, u"current"}});
    AddLibrary("module.dll", {{1, u"module"}, {2, u"module 2"}});
    AddLibrary("vnurcENU.dll", {{1, u"english"}, {2, u"english 2"}, {3, u"english 3"}});
    const HINSTANCE current = Load("current.dll"), module = Load("module.dll");
    AfxSetResourceHandle(current);
    const auto load = [&](UINT id, HINSTANCE from) {
        CString text = "old";
        const int length = LoadStringA(text, id, from);
        EXPECT_EQ(length, text.GetLength());
        EXPECT_EQ(AfxGetResourceHandle(), current);
        return std::string(text);
    };
    EXPECT_EQ(load(1, module), "current");
    EXPECT_EQ(load(2, module), "module 2");
    EXPECT_EQ(Trace(), "");
    EXPECT_EQ(load(2, nullptr), "english 2");
    EXPECT_EQ(load(3, module), "english 3");
    EXPECT_EQ(load(2, current), "english 2");
    const std::string found = "Entering GetResourceDLLName(\"ENU\", \"vnurc\")\n"
                              "\tChecking for @vnurcENU.dll\n\tFound it\n";
    EXPECT_EQ(Trace(), found + found + found);
    EXPECT_EQ(load(4, module), "");

    // The program itself is the current source until a library is.
    AfxSetResourceHandle(nullptr);
    CString text;
    EXPECT_GT(LoadStringA(text, 3, nullptr), 0);
    EXPECT_EQ(AfxGetResourceHandle(), AfxGetInstanceHandle());
    EXPECT_STREQ(text, "english 3");
    // A handle of nothing is passed over.
    AfxSetResourceHandle(current);
    FreeResourceLibrary(module);
    EXPECT_EQ(load(2, module), "english 2");
}

TEST_F(LanguageTest, SeesTheEnglishLibraryComeAndGo) {
    system.SetEnvironment("VNBYTSTR_TRACE", "");
    scope.reset();
    scope.emplace(system);
    DWORD tick = 1000;
    const auto load = [&] {
        system.SetTick(tick += 10);
        CString text;
        for (int i = 0; i < 3; ++i)
            LoadStringA(text, 9, nullptr);
        return std::string(text);
    };
    EXPECT_EQ(load(), "");
    AddLibrary("vnurcENU.dll", {{9, u"nine"}});
    EXPECT_EQ(load(), "nine");
    AddLibrary("new.dll", {{9, u"new nine"}});
    std::filesystem::rename(folder.File("new.dll"), folder.File("vnurcENU.dll"));
    EXPECT_EQ(load(), "new nine");
    std::filesystem::remove(folder.File("vnurcENU.dll"));
    EXPECT_EQ(load(), "");
    folder.Write("vnurcENU.dll", "damaged");
    EXPECT_EQ(load(), "");
    EXPECT_EQ(system.Diagnostics(), "");
}

TEST_F(LanguageTest, RestoresTheHandleWhenALoadThrows) {
    AddLibrary("current.dll", {{1, u"current"}});
    const HINSTANCE current = Load("current.dll");
    AfxSetResourceHandle(current);
    system.Inject(test::Fault{test::Call::Status, 1, true, 0, test::Fault::Kind::Throw});
    CString text = "old";
    EXPECT_EQ(LoadStringA(text, 2, nullptr), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(AfxGetResourceHandle(), current);
    EXPECT_EQ(LoadResourceDLL("app"), nullptr);
    EXPECT_EQ(AfxGetResourceHandle(), current);
    EXPECT_GE(system.Hits(), 2u);
}

TEST_F(LanguageTest, KnowsWhatTheResourcesAre) {
    EXPECT_TRUE(ResourcesAreEnglish());
    EXPECT_FALSE(ResourcesAreBiDi());
    AddLibrary("he.dll", {{1, u"\u05D0"}}, 0x40D);
    AfxSetResourceHandle(Load("he.dll"));
    EXPECT_FALSE(ResourcesAreEnglish());
    EXPECT_TRUE(ResourcesAreBiDi());
    EXPECT_FALSE(SystemResourcesAreEnglish());
    SetLocale("en_ZA.UTF-8");
    EXPECT_TRUE(SystemResourcesAreEnglish());
    SetLocale("C");
    EXPECT_TRUE(SystemResourcesAreEnglish());
}

TEST_F(LanguageTest, ProgramsHaveTextsOfTheirOwn) {
    const ScopedCodePage page(65001);
    CString text = "old";
    ProgramTexts texts("films"); // there is no library yet
    EXPECT_FALSE(texts.Find(1, text));
    EXPECT_STREQ(text, "");
    AddLibrary("appDEU.dll", {{1, u"app one"}, {3, u"app three"}});
    const HINSTANCE current = LoadResourceDLL("app");
    AddLibrary("filmsENU.dll", {{1, u"one"}, {2, u"two"}});
    AddLibrary("filmsDEU.dll", {{1, u"eins"}}, 0x407);
    AddLibrary("filmsHEB.dll", {{1, u"\u05D0"}}, 0x40D);
    // By language, not from what the current library has, and each text with its own fallback.
    const auto have = [&](const char* language, const char* one, bool isRightToLeft) {
        SetLanguage(language);
        EXPECT_TRUE(texts.Load());
        EXPECT_TRUE(texts.Find(1, text));
        EXPECT_STREQ(text, one);
        EXPECT_TRUE(texts.Find(2, text));
        EXPECT_STREQ(text, "two");
        EXPECT_FALSE(texts.Find(3, text));
        EXPECT_EQ(texts.IsRightToLeft(), isRightToLeft);
    };
    have("DEU", "eins", false);
    have("HEB", "\u05D0", true);
    have("KOR", "one", false);
    have("ENU", "one", false);
    EXPECT_EQ(AfxGetResourceHandle(), current);
    folder.Write("filmsFRA.dll", "damaged");
    SetLanguage("FRA");
    EXPECT_FALSE(texts.Load()); // what was there stays
    EXPECT_TRUE(texts.Find(1, text));
    EXPECT_STREQ(text, "one");
}

TEST_F(LanguageTest, ListsWhatIsInstalled) {
    const ScopedCodePage page(65001);
    for (const char* name : {"appENU.dll", "appDEU.dll", "appQQQ.dll", "app.dll", "appEN.dll",
                             "other.dll", "appFRAX.dll", "appFRA.so"})
        folder.Write(name, "");
    const auto languages = GetInstalledLanguages("app");
    ASSERT_EQ(languages.size(), 3u);
    EXPECT_STREQ(languages[0].m_strName, "Deutsch (Deutschland)");
    EXPECT_STREQ(languages[1].m_strCode, "ENU");
    EXPECT_EQ(std::string(languages[1].m_strFile), folder.File("appENU.dll"));
    EXPECT_STREQ(languages[2].m_strName, "QQQ");
    EXPECT_STREQ(GetLanguageNameFromCode("ENU"), "English (United States)");
    EXPECT_STREQ(GetLanguageNameFromCode(nullptr), "");
}

/// Beside the program first, then beside the library, then in its data folder.
TEST_F(LanguageTest, AnInstalledLibraryFindsItsOwn) {
    test::TemporaryFolder prefix;
    const std::string lib = prefix.File("a/b/lib/");
    const std::string data =
        std::filesystem::path(lib + VNBYTSTR_DATA_FROM_LIBRARY).lexically_normal().string();
    std::filesystem::create_directories(lib);
    std::filesystem::create_directories(data);
    system.SetLibraryFileName(lib + "libvnbytstr.so.0");
    const auto nameOf = [](const char* code) {
        return std::string(vnbytstr::detail::GetResourceDLLName(code, "app"));
    };
    const auto put = [&](const std::string& folderName, const char* code) {
        AddLibrary("made", {{1, u"text"}});
        std::filesystem::rename(folder.File("made"), folderName + "/app" + code + ".dll");
    };
    put(data, "DEU");
    EXPECT_EQ(std::filesystem::path(nameOf("DEU")).lexically_normal(), data + "/appDEU.dll");
    put(lib, "DEU");
    EXPECT_EQ(nameOf("DEU"), lib + "appDEU.dll");
    put(folder.Path(), "DEU");
    put(data, "FRA");
    EXPECT_EQ(nameOf("DEU"), folder.File("appDEU.dll"));
    EXPECT_EQ(nameOf("ENU"), "");
    const std::vector<SInstalledLanguage> all = GetInstalledLanguages("app");
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].m_strFile, folder.File("appDEU.dll").c_str());
    EXPECT_EQ(all[1].m_strCode, "FRA");
}

} // namespace
