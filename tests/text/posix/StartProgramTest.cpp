// Programs that are started without a shell.
#include "src/os/StartProgram.h"
#include "src/text/ConsoleInteraction.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace vnbytstr;

namespace {

TEST(StartProgram, MakesAddressesOfPagesWithAnchors) {
    EXPECT_EQ(detail::DesktopArgument("/a/b.htm"), "/a/b.htm");
    EXPECT_EQ(detail::DesktopArgument("/a b/c%.htm#part"), "file:///a%20b/c%25.htm#part");
    EXPECT_EQ(detail::DesktopArgument("http://x/y#z"), "http://x/y#z");
    EXPECT_EQ(detail::DesktopArgument("-x"), "./-x");
    EXPECT_EQ(detail::DesktopArgument("a#b"), "a#b");
    EXPECT_EQ(detail::DesktopArgument("/\xC3\xA4\x7F?\"\n.htm#\xC3\xA4"),
              "file:///%C3%A4%7F%3F%22%0A.htm#\xC3\xA4");
}

TEST(StartProgram, SplitsParameters) {
    using Arguments = std::vector<std::string>;
    EXPECT_EQ(detail::SplitParameters(""), Arguments());
    EXPECT_EQ(detail::SplitParameters(" \t"), Arguments());
    EXPECT_EQ(detail::SplitParameters("a \"b c\"d \"\" "), (Arguments{"a", "b cd", ""}));
    EXPECT_EQ(detail::SplitParameters(R"(\"a b\" c:\d\)"), (Arguments{"\"a", "b\"", "c:\\d\\"}));
}

/// A program in a folder that writes down how it was called.
class StartProgramTest : public ::testing::Test {
protected:
    void AddProgram(const std::string& name) {
        folder.Write(name, "#!/bin/sh\n{ pwd; for a in \"$@\"; do echo \"[$a]\"; done; } > " +
                               folder.File("part") + "\nmv " + folder.File("part") + " " +
                               folder.File("called") + "\n");
        std::filesystem::permissions(folder.File(name), std::filesystem::perms::owner_all);
    }
    /// What the program wrote, once it has.
    std::string Called() {
        for (int i = 0; i < 1000 && !std::filesystem::exists(folder.File("called")); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::string text = folder.Read("called");
        std::filesystem::remove(folder.File("called"));
        return text;
    }
    int Start(const std::string& file, const char* parameters = nullptr,
              const char* workFolder = "/") {
        const ScopedSystem scope(system);
        return console.ShellExecute("open", file.c_str(), parameters, workFolder, SW_SHOWNORMAL);
    }

    test::TemporaryFolder folder;
    test::TestSystem system;
    ConsoleInteraction console;
};

TEST_F(StartProgramTest, StartsWithoutAShell) {
    AddProgram("browser");
    EXPECT_GT(Start(folder.File("browser"), "\"/x y/z.htm#a\" $(touch gone) ;ls"), 32);
    EXPECT_EQ(Called(), "/\n[/x y/z.htm#a]\n[$(touch]\n[gone)]\n[;ls]\n");
    system.SetEnvironment("PATH", "/nowhere::" + folder.Path() + ":");
    EXPECT_GT(Start("browser", "1", folder.Path().c_str()), 32);
    EXPECT_EQ(Called(), std::filesystem::canonical(folder.Path()).string() + "\n[1]\n");
    const std::string here = std::filesystem::current_path().string();
    for (const char* workFolder : {"", static_cast<const char*>(nullptr)})
        for (const char* verb : {"", static_cast<const char*>(nullptr)}) {
            const ScopedSystem scope(system);
            EXPECT_GT(console.ShellExecute(verb, "browser", "", workFolder, SW_SHOWNORMAL), 32);
            EXPECT_EQ(Called(), here + "\n");
        }
    system.SetEnvironment("PATH", "");
    EXPECT_GT(Start("true"), 32); // where the system's programs are
    std::filesystem::current_path(folder.Path());
    system.SetEnvironment("PATH", "/nowhere:");
    EXPECT_EQ(Start("browser"), kShellNoAssociation); // a document, as no folder was named
    std::filesystem::current_path(here);
}

TEST_F(StartProgramTest, LeavesDocumentsAndAddressesToTheDesktop) {
    AddProgram("xdg-open");
    system.SetEnvironment("PATH", folder.Path());
    folder.Write("page.htm", "");
    EXPECT_GT(Start(folder.File("page.htm")), 32);
    EXPECT_EQ(Called(), "/\n[" + folder.File("page.htm") + "]\n");
    EXPECT_GT(Start("http://www.example.com/a?b=c&d"), 32);
    EXPECT_EQ(Called(), "/\n[http://www.example.com/a?b=c&d]\n");
    EXPECT_GT(Start("X-y.z+1://h"), 32);
    EXPECT_EQ(Called(), "/\n[X-y.z+1://h]\n");
    EXPECT_GT(Start("xdg-open", "/a/b.htm#c"), 32);
    EXPECT_EQ(Called(), "/\n[file:///a/b.htm#c]\n");
}

TEST_F(StartProgramTest, SaysWhyItCannot) {
    system.SetEnvironment("PATH", folder.Path());
    folder.Write("page.htm", "");
    folder.Write("broken", "#!/no/such/interpreter\n");
    std::filesystem::permissions(folder.File("broken"), std::filesystem::perms::owner_all);
    EXPECT_EQ(Start("no-such-program"), kShellFileNotFound);
    EXPECT_EQ(Start(folder.File("no-such-program")), kShellFileNotFound);
    EXPECT_EQ(Start(folder.File("page.htm/x")), kShellPathNotFound);
    EXPECT_EQ(Start(folder.File("page.htm")), kShellNoAssociation);
    EXPECT_EQ(Start("http://x/"), kShellNoAssociation);
    EXPECT_EQ(Start(folder.File("broken")), kShellFileNotFound);
    EXPECT_EQ(Start("/bin/true", nullptr, "/no/such/folder"), kShellPathNotFound);
    EXPECT_EQ(Start("/bin/true", nullptr, folder.File("page.htm").c_str()), kShellPathNotFound);
    folder.Write("text", "no program");
    folder.Write("locked", "#!" + folder.File("page.htm") + "\n"); // which is not executable
    for (const char* name : {"text", "locked"})
        std::filesystem::permissions(folder.File(name), std::filesystem::perms::owner_all);
    EXPECT_EQ(Start(folder.File("text")), kShellBadFormat);
    EXPECT_EQ(Start(folder.File("locked")), kShellAccessDenied);
    EXPECT_EQ(Start("/bin/true", std::string(1 << 20, 'x').c_str()), kShellNoMemory);
    EXPECT_EQ(Start(folder.Path()), kShellNoAssociation);
    for (const char* noAddress :
         {"://h", "a b://h", "a:/h", "a,b://h", "a:b://h", "a[b://h", "a~b://h"})
        EXPECT_EQ(Start(noAddress), kShellFileNotFound) << noAddress;
    EXPECT_EQ(Start(""), kShellFileNotFound);
    EXPECT_EQ(console.ShellExecute(nullptr, nullptr, nullptr, nullptr, 0), kShellFileNotFound);
    EXPECT_EQ(console.ShellExecute("print", "/bin/true", nullptr, nullptr, 0), kShellNoAssociation);
    EXPECT_NE(system.Diagnostics().find("Cannot open no-such-program"), std::string::npos);
}

} // namespace
