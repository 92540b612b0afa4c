#include "vnbytstr/HTMLHelp.h"

#include "src/help/HelpIndex.h"
#include "src/os/StartProgram.h"
#include "src/text/ConsoleInteraction.h"
#include "tests/support/PeFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestInteraction.h"
#include "tests/support/TestSystem.h"
#include "vnbytstr/Profile.h"
#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/Module.h"

#include <gtest/gtest.h>

using namespace vnbytstr;
using test::TestInteraction;

namespace {

class OpenHelp : public CVNHTMLHelp {
public:
    using CVNHTMLHelp::CVNHTMLHelp;
    using CVNHTMLHelp::InitializeHelp;
    static int& InProgress() { return m_bInProgress; }
};

/// A German program with help folders that a test fills.
class HelpTest : public ::testing::Test {
protected:
    HelpTest() {
        system.SetModuleFileName(folder.File("program"));
        system.SetEnvironment("VNBYTSTR_PROFILE", folder.File("profile.ini"));
        system.SetEnvironment("LC_ALL", "de_DE.UTF-8");
        scope.emplace(system);
        std::filesystem::create_directories(folder.File("Help/l.DEU"));
        std::filesystem::create_directories(folder.File("Help/l.ENU"));
        test::PeContent content;
        content.strings = {{34820, u"no help"}, {34821, u"Help"}};
        folder.Write("vnurcENU.dll", MakePeFile(content).Text());
    }

    void WriteIndex(const std::string& text, const char* language = "DEU") {
        folder.Write(std::string("Help/l.") + language + "/program.ind", text);
    }
    void AddPage(const std::string& name, const char* language = "DEU") {
        folder.Write(std::string("Help/l.") + language + "/" + name, "");
    }
    std::string HelpFolder(const char* language = "DEU") const {
        return folder.Path() + "Help/l." + language +
               static_cast<char>(std::filesystem::path::preferred_separator);
    }
    /// What a request starts: the page without its folder, or an address; empty for nothing.
    std::string Opened(DWORD data, UINT command = 0) {
        interaction.starts.clear();
        help.DoHtmlHelp(data, command);
        EXPECT_EQ(OpenHelp::InProgress(), 0);
        if (interaction.starts.empty())
            return {};
        const TestInteraction::Start& start = interaction.starts[0];
        EXPECT_EQ(interaction.starts.size(), 1u);
        EXPECT_EQ(start.verb, "open");
        EXPECT_EQ(start.show, SW_SHOWNORMAL);
        if (start.parameters == "(null)") {
            EXPECT_EQ(start.folder, "(null)");
            return start.file;
        }
        EXPECT_EQ(start.file, "browser");
        EXPECT_TRUE(start.parameters.starts_with(start.folder)) << start.parameters;
        return start.parameters.substr(start.folder.size());
    }
    /// The text of the one box that a request shows.
    std::string Shown(DWORD data) {
        interaction.boxes.clear();
        EXPECT_EQ(Opened(data), "");
        return interaction.boxes.size() == 1 ? interaction.boxes[0].text : "(not one box)";
    }

    test::TemporaryFolder folder;
    test::TestSystem system;
    std::optional<ScopedSystem> scope;
    TestInteraction interaction;
    ScopedInteraction interactionScope{interaction};
    OpenHelp help{"browser"};
};

TEST_F(HelpTest, OpensPages) {
    WriteIndex("heading, with a comma\r\n12,page.htm#part\r\n  13,page.htm\r\n12,second.htm\r\n"
               "14,HTTP://www.example.com/a,b\r\n\r\n15,long.html?x#y\r\n4294967295,page.htm#z");
    AddPage("page.htm");
    AddPage("long.html");
    EXPECT_EQ(Opened(12), "page.htm#part");
    EXPECT_EQ(Opened(13), "page.htm");
    EXPECT_EQ(Opened(14), "HTTP://www.example.com/a,b");
    EXPECT_EQ(Opened(15), "long.html?x#y");
    EXPECT_EQ(Opened(0xFFFFFFFF), "page.htm#z");
    EXPECT_EQ(interaction.starts[0].folder, HelpFolder());
    EXPECT_TRUE(interaction.boxes.empty());
}

TEST_F(HelpTest, QuotesPathsWithBlanks) {
    WriteIndex("\r\n1,my page.htm\r\n");
    AddPage("my page.htm");
    help.DoHtmlHelp(1, 0);
    ASSERT_EQ(interaction.starts.size(), 1u);
    EXPECT_EQ(interaction.starts[0].parameters, "\"" + HelpFolder() + "my page.htm\"");
}

TEST_F(HelpTest, FallsBackToContentsThenToAMessage) {
    WriteIndex("\n1,gone.htm\n2,a\".htm\" --b=\"\n");
    AddPage("a\".htm");
    const TestInteraction::Box box{"no help", "Help", MB_OK | MB_ICONSTOP, 0};
    for (const DWORD topic : {1u, 2u, 3u}) {
        interaction.boxes.clear();
        EXPECT_EQ(Opened(topic), "");
        EXPECT_EQ(interaction.boxes, std::vector<TestInteraction::Box>{box}) << topic;
    }
    OpenHelp other("browser");
    WriteIndex("\n1,gone.htm\n100000,contents.htm\n");
    AddPage("contents.htm");
    other.DoHtmlHelp(3, 0);
    ASSERT_EQ(interaction.starts.size(), 1u);
    EXPECT_EQ(interaction.starts[0].parameters, HelpFolder() + "contents.htm");
}

TEST_F(HelpTest, FallsBackToEnglish) {
    WriteIndex("\r\n1,page.htm\r\n", "ENU");
    AddPage("page.htm", "ENU");
    EXPECT_EQ(Opened(1), "page.htm");
    EXPECT_EQ(interaction.starts[0].folder, HelpFolder("ENU"));
}

TEST_F(HelpTest, TellsThatTheIndexCannotBeRead) {
    CFileException expected(CFileException::fileNotFound, ENOENT,
                            (HelpFolder("ENU") + "program.ind").c_str());
    char text[512];
    expected.GetErrorMessage(text, sizeof text);
    const std::string name = HelpFolder("ENU") + "program.ind";
    EXPECT_EQ(Shown(1), "Help system could not be loaded because of reason 1\n"
                        "CFile::GetFilePath() returned: " +
                            name +
                            "\nFile exception code: 2.\n"
                            "File exception OS error: 2\nException file name: " +
                            name + "\n\nExpected index file location:\n\t " + name +
                            "\n\nException text:\n\t " + text + ".");
    EXPECT_EQ(OpenHelp("browser").InitializeHelp(), FALSE);
    // The next request tries again.
    WriteIndex("\r\n1,page.htm");
    AddPage("page.htm");
    EXPECT_EQ(Opened(1), "page.htm");
}

TEST_F(HelpTest, TellsThatTheIndexIsDamaged) {
    const std::string start = "Help system could not be loaded with reason ";
    const std::string place = ".\n\n Expected index file location:\n\t " + HelpFolder() +
                              "program.ind\n\nException text:\n\t ";
    const std::string line(10 << 20, 'x');
    for (const auto& [index, reason] : std::vector<std::pair<std::string, std::string>>{
             {"", "2"},
             {"1,page.htm", "2"},
             {"\n1,page.htm\nno comma", "3"},
             {"\n" + line, "3"},
             {"\nx,page.htm", "4"},
             {"\n1x,page.htm", "4"},
             {"\n1 ,page.htm", "4"},
             {"\n-1,page.htm", "4"},
             {"\n,page.htm", "4"},
             {"\n4294967296,page.htm", "4"},
             {"\n99999999999999999999999,page.htm", "4"},
             {"\n1,page.htm\n2 page.htm\n3,page.htm", "4"},
             {"\n" + line + ",page.htm", "4"}}) {
        WriteIndex(index);
        const std::string shown = Shown(1);
        EXPECT_TRUE(shown.starts_with(start + reason + place)) << shown;
        EXPECT_LT(shown.size(), 500u);
        EXPECT_EQ(shown.back(), '.');
    }
}

TEST_F(HelpTest, ReadsLongIndexes) {
    WriteIndex("heading\r\n1," + std::string(10 << 20, 'x') + "\r\n2,page.htm");
    AddPage("page.htm");
    EXPECT_EQ(Opened(2), "page.htm");
    OpenHelp many("browser");
    std::string index = "heading\n";
    for (int i = 0; i < 200000; ++i)
        index += std::to_string(i) + ",page.htm#" + std::to_string(i) + "\n";
    WriteIndex(index);
    many.DoHtmlHelp(199999, 0);
    EXPECT_EQ(interaction.starts.back().parameters, HelpFolder() + "page.htm#199999");
}

TEST_F(HelpTest, ServesOneRequestAtATime) {
    WriteIndex("\n1,page.htm\n2,gone.htm");
    AddPage("page.htm");
    interaction.duringStart = [this] {
        EXPECT_EQ(OpenHelp::InProgress(), 1);
        help.DoHtmlHelp(1, 0);
    };
    EXPECT_EQ(Opened(1), "page.htm");
    // The guard is off again also when something was thrown.
    interaction.duringStart = [] { AfxThrowMemoryException(); };
    EXPECT_EQ(Opened(1), "page.htm");
    interaction.duringStart = nullptr;
    interaction.duringBox = [] { AfxThrowUserException(); };
    EXPECT_EQ(Shown(2), "no help");
    OpenHelp::InProgress() = 1;
    help.DoHtmlHelp(1, 0);
    EXPECT_TRUE(interaction.starts.empty());
    const OpenHelp another("browser");
    EXPECT_EQ(OpenHelp::InProgress(), 0);
}

TEST_F(HelpTest, SurvivesFailuresOfTheSystem) {
    WriteIndex("\n1,page.htm");
    for (const auto kind : {test::Fault::Kind::Fail, test::Fault::Kind::Throw}) {
        for (const test::Call call : {test::Call::Open, test::Call::Length, test::Call::Read}) {
            system.Inject(test::Fault{call, 1, true, EIO, kind});
            EXPECT_TRUE(Shown(1).starts_with("Help system could not be loaded"));
        }
    }
}

TEST(HelpRequest, MapsIdentifiers) {
    const std::pair<DWORD, DWORD> requests[] = {
        {0, 34464},         {1, 1},       {0x10000, 0x10000},      {0x10001, 1},
        {0x20000, 0x10000}, {0x20001, 1}, {0x30000, 0x10000},      {0x30001, 1},
        {0x50000, 0x20000}, {0x50001, 1}, {0xFFFFFFFF, 0xFFFAFFFF}};
    for (const auto& [data, topic] : requests)
        EXPECT_EQ(detail::MapHelpRequest(data, 1), topic) << data;
    EXPECT_EQ(detail::MapHelpRequest(5, 0x105), 100001u);
    EXPECT_EQ(detail::MapHelpRequest(5, 4), 100002u);
    EXPECT_EQ(detail::MapHelpRequest(5, 3), 100000u);
    EXPECT_EQ(detail::MapHelpRequest(0x20005, 2), 0x20005u);
}

TEST_F(HelpTest, TakesEachKindsOwnBaseOff) {
    WriteIndex("\n100000,contents.htm\n5,page.htm#five\n65542,page.htm#of-another-kind\n");
    AddPage("page.htm");
    AddPage("contents.htm");
    EXPECT_EQ(Opened(0x20005, 1), "page.htm#five");
    EXPECT_EQ(Opened(0x20006, 1), "contents.htm");
    EXPECT_EQ(Opened(0x40006, 1), "page.htm#of-another-kind");
}

TEST_F(HelpTest, TellsThatAPageCannotBeOpened) {
    WriteIndex("\n1,page.htm\n2,http://x/\n3,page.htm#\\\n");
    AddPage("page.htm");
    interaction.startResult = kShellFileNotFound;
    for (const DWORD topic : {1, 2, 3}) {
        interaction.boxes.clear();
        help.DoHtmlHelp(topic, 0);
        ASSERT_EQ(interaction.boxes.size(), 1u) << topic;
        EXPECT_EQ(interaction.boxes[0].text, "no help");
        EXPECT_EQ(interaction.boxes[0].caption, "Help");
    }
    EXPECT_EQ(interaction.starts.size(), 2u); // what cannot be one argument is not tried
}

TEST_F(HelpTest, FoldersMayBeCalledAnything) {
    for (const std::string name : {"with blank", "with\ttab", "with\"quote", "a \"b\" \\c"}) {
        const std::string path = folder.Path() + name + "/Help/l.DEU/";
        std::error_code refused; // not every system has such names
        std::filesystem::create_directories(path, refused);
        if (refused)
            continue;
        std::ofstream(path + "program.ind") << "\n1,page.htm#part\n";
        std::ofstream(path + "page.htm") << "";
        system.SetModuleFileName(folder.Path() + name + "/program");
        OpenHelp other("browser");
        interaction.starts.clear();
        other.DoHtmlHelp(1, 0);
        ASSERT_EQ(interaction.starts.size(), 1u) << name;
        const auto parameters = detail::SplitParameters(interaction.starts[0].parameters);
        ASSERT_EQ(parameters.size(), 1u) << name;
        using Path = std::filesystem::path; // whichever separators it has
        EXPECT_EQ(Path(parameters[0]), Path(path + "page.htm#part"));
        EXPECT_EQ(Path(interaction.starts[0].folder), Path(path));
    }
}

TEST(HelpPage, KnowsItsFile) {
    const std::pair<const char*, const char*> pages[] = {
        {"a.htm", "a.htm"},   {"a.htm#b.htm", "a.htm"}, {"a.html#b", "a.html"},
        {"A.HTM#b", "A.HTM"}, {"a.txt#b", "a.txt"},     {"", ""},
        {".ht", ".ht"}};
    for (const auto& [page, file] : pages)
        EXPECT_EQ(detail::FileOfPage(page), file);
}

} // namespace
