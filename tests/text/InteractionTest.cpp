#include "src/os/StartProgram.h"
#include "src/text/ConsoleInteraction.h"
#include "tests/support/TestInteraction.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>

using namespace vnbytstr;
using Arguments = std::vector<std::string>;

namespace {

TEST(Interaction, InstallsForAScope) {
    Interaction& console = Interaction::Current();
    test::TestInteraction outer, inner;
    {
        const ScopedInteraction first(outer);
        {
            const ScopedInteraction second(inner);
            EXPECT_EQ(&Interaction::Current(), &inner);
        }
        EXPECT_EQ(&Interaction::Current(), &outer);
    }
    EXPECT_EQ(&Interaction::Current(), &console);
}

TEST(ConsoleInteraction, PrintsAndTakesTheDefaultButton) {
    ASSERT_NE(std::freopen("/dev/null", "r", stdin), nullptr); // no terminal: there is no question
    test::TestSystem system;
    const ScopedSystem scope(system);
    ConsoleInteraction console;
    EXPECT_EQ(console.MessageBox("text", "caption", MB_OK | MB_ICONSTOP, 5), IDOK);
    EXPECT_EQ(console.MessageBox("again", nullptr, MB_YESNO | MB_DEFBUTTON2, 0), IDNO);
    EXPECT_EQ(console.MessageBox(nullptr, "", MB_YESNOCANCEL | MB_DEFBUTTON3, 0), IDCANCEL);
    EXPECT_EQ(system.Diagnostics(), "caption: text\nagain\n\n");
    EXPECT_EQ(console.MessageBox("", "", MB_ABORTRETRYIGNORE, 0), IDABORT);
    EXPECT_EQ(console.MessageBox("", "", MB_RETRYCANCEL | MB_DEFBUTTON2, 0), IDCANCEL);
    EXPECT_EQ(console.MessageBox("", "", MB_OKCANCEL | MB_DEFBUTTON4, 0), IDOK);
    EXPECT_EQ(console.MessageBox("", "", 0xF, 0), IDOK);
}

TEST(ConsoleInteraction, UnderstandsAnswers) {
    const auto buttons = detail::MessageBoxButtons(MB_ABORTRETRYIGNORE);
    const auto choose = [&](const char* answer) {
        return detail::ChooseButton(buttons, 1, answer);
    };
    EXPECT_EQ(choose("\n"), 1);
    EXPECT_EQ(choose(" A \r\n"), 0);
    EXPECT_EQ(choose("ignore\n"), 2);
    EXPECT_EQ(choose("ignored\n"), -1);
    EXPECT_EQ(choose("x\n"), -1);
    EXPECT_EQ(detail::ChooseButton({{IDYES, "Yes", "Ja"}, {IDNO, "No", "Nein"}}, 0, "J"), 0);
    EXPECT_EQ(detail::ChooseButton({{IDYES, "Yes", "Ja"}, {IDNO, "No", "Nein"}}, 0, "y"), 0);
    EXPECT_EQ(detail::ChooseButton({{IDABORT, "Abort", "Abort"}, {IDOK, "OK", "About"}}, 0, "ab"),
              -1);
}

TEST(StartProgram, SplitsParameters) {
    EXPECT_EQ(detail::SplitParameters(""), Arguments());
    EXPECT_EQ(detail::SplitParameters(" a  b\tc "), (Arguments{"a", "b", "c"}));
    EXPECT_EQ(detail::SplitParameters("\"/my help/a.htm#x\" \"\" c"),
              (Arguments{"/my help/a.htm#x", "", "c"}));
    EXPECT_EQ(detail::SplitParameters("a\\\"b \"c d"), (Arguments{"a\"b", "c d"}));
    EXPECT_EQ(detail::SplitParameters("$(x) `y` ;z *"), (Arguments{"$(x)", "`y`", ";z", "*"}));
}

} // namespace
