#include "tests/window/ControlHost.h"

#include "src/window/controls/FileFilters.h"
#include "src/window/controls/SpinCounter.h"
#include "tests/support/TemporaryFolder.h"
#include "vnbytstr/window/Button.h"
#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/FileDialog.h"
#include "vnbytstr/window/Static.h"
#include "vnbytstr/window/ToolTip.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QToolButton>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

namespace {

using testing::ElementsAre;
using testing::Pair;
using vnbytstr::detail::SpinCounter;

constexpr DWORD kShown = WS_VISIBLE | WS_TABSTOP;

TEST(Button, ClicksAndKeysPressIt) {
    ControlHost host;
    CButton button;
    button.Create("&Go", kShown, CRect(0, 0, 80, 30), &host, 1);
    Click(button, {10, 10});
    EXPECT_THAT(host.Codes(1), ElementsAre(BN_CLICKED));
    button.SetFocus();
    PressKey(Qt::Key_Space);
    PressKey(Qt::Key_Return); // the dialog's business
    EXPECT_THAT(host.Codes(1), ElementsAre(BN_CLICKED));
    button.SendMessage(BM_CLICK);
    EXPECT_THAT(host.Codes(1), ElementsAre(BN_CLICKED));
    button.EnableWindow(FALSE);
    Click(button, {10, 10});
    EXPECT_TRUE(host.Codes(1).empty());
    button.EnableWindow();
    host.m_destroyOnCommand = true;
    Click(button, {10, 10});
    host.m_destroyOnCommand = false;
    EXPECT_EQ(button.m_hWnd, nullptr);
}

TEST(Button, ChecksGoRoundAndGroupsHaveOneChoice) {
    ControlHost host;
    CButton box;
    CButton three;
    CButton manual;
    box.Create("box", kShown | BS_AUTOCHECKBOX, CRect(0, 0, 80, 20), &host, 1);
    three.Create("three", kShown | BS_AUTO3STATE, CRect(0, 20, 80, 40), &host, 2);
    manual.Create("manual", kShown | BS_CHECKBOX, CRect(0, 40, 80, 60), &host, 3);
    std::vector<int> states;
    for (int i = 0; i < 3; ++i) {
        Click(box, {6, 10});
        Click(three, {6, 10});
        Click(manual, {6, 10});
        states.insert(states.end(), {box.GetCheck(), three.GetCheck(), manual.GetCheck()});
    }
    EXPECT_THAT(states, ElementsAre(1, 1, 0, 0, 2, 0, 1, 0, 0));
    CButton radios[4];
    for (int i = 0; i < 4; ++i)
        radios[i].Create("radio", kShown | BS_AUTORADIOBUTTON | (i % 2 == 0 ? WS_GROUP : 0),
                         CRect(0, 60 + 20 * i, 80, 80 + 20 * i), &host, static_cast<UINT>(10 + i));
    Click(radios[0], {6, 10});
    Click(radios[3], {6, 10});
    EXPECT_TRUE(radios[0].GetCheck() && radios[3].GetCheck()); // two groups
    Click(radios[1], {6, 10});
    EXPECT_FALSE(radios[0].GetCheck());
    EXPECT_TRUE(radios[1].GetCheck() && radios[3].GetCheck());
    EXPECT_THAT(host.Codes(11), ElementsAre(BN_CLICKED));
    CButton group;
    group.Create("group", WS_VISIBLE | BS_GROUPBOX, CRect(0, 0, 300, 200), &host, 20);
    Click(box, {6, 10}); // through the frame that lies above it
    EXPECT_THAT(host.Codes(1), ElementsAre(BN_CLICKED));
}

TEST(SpinCounter, CountsWithinItsRange) {
    SpinCounter counter;
    counter.SetRange(10, 0); // up goes to the smaller number
    counter.SetPosition(5);
    EXPECT_EQ(counter.After(counter.Delta(true, 0), false), 4);
    counter.SetRange(INT_MIN, INT_MAX);
    counter.SetPosition(INT_MAX);
    EXPECT_EQ(counter.After(5, false), INT_MAX);
    EXPECT_EQ(counter.After(5, true), INT_MIN);
    EXPECT_EQ(counter.Delta(true, 1), 1);
    EXPECT_EQ(counter.Delta(false, 3), -5);
    EXPECT_EQ(counter.Delta(true, 60), 20);
    EXPECT_EQ(counter.Text(-1234567, ','), "-1,234,567");
    EXPECT_EQ(counter.Text(-123, ','), "-123");
    EXPECT_EQ(counter.Parse(" 1,234 ", ','), 1234);
    EXPECT_EQ(counter.Parse("2147483648", 0), std::nullopt);
    EXPECT_EQ(counter.Parse("12x", 0), std::nullopt);
    EXPECT_EQ(counter.Parse("", 0), std::nullopt);
}

class SpinTest : public testing::Test {
protected:
    void Make(DWORD style) {
        m_edit.Create(kShown, CRect(10, 10, 110, 34), &m_host, 1);
        m_spin.Create(style | WS_VISIBLE | UDS_AUTOBUDDY | UDS_SETBUDDYINT | UDS_ALIGNRIGHT |
                          UDS_ARROWKEYS | UDS_NOTHOUSANDS,
                      CRect(0, 0, 0, 0), &m_host, 2);
        m_spin.SetRange32(-5, 2000);
        m_spin.SetPos(3);
    }
    void Press(bool up) { Click(m_spin, {4, up ? 4 : 20}); }
    ControlHost m_host;
    CEdit m_edit;
    CSpinButtonCtrl m_spin;
};

TEST_F(SpinTest, StepsAskThenWriteThenTell) {
    Make(0);
    EXPECT_EQ(TextOf(m_edit), "3");
    Press(true);
    EXPECT_EQ(TextOf(m_edit), "4");
    EXPECT_THAT(m_host.m_deltas, ElementsAre(Pair(3, 1)));
    EXPECT_THAT(m_host.m_scrolled, ElementsAre(Pair(SB_THUMBPOSITION, 4), Pair(SB_ENDSCROLL, 4)));
    m_edit.SetWindowText("1999"); // what stands in the buddy counts
    Press(true);
    Press(true);
    EXPECT_EQ(TextOf(m_edit), "2000");
    m_host.m_refuse = true;
    Press(false);
    EXPECT_EQ(m_spin.GetPos(), 2000);
    m_host.m_refuse = false;
    m_edit.SetFocus();
    PressKey(Qt::Key_Down);
    EXPECT_EQ(TextOf(m_edit), "1999");
    m_edit.SetWindowText("many");
    BOOL error = FALSE;
    EXPECT_EQ(m_spin.GetPos(&error), 1999);
    EXPECT_TRUE(error);
}

TEST_F(SpinTest, StandsAtItsBuddyWrapsAndOutlivesIt) {
    Make(UDS_WRAP);
    CRect edit;
    CRect spin;
    m_edit.GetWindowRect(edit);
    m_spin.GetWindowRect(spin);
    EXPECT_EQ(edit.right, spin.left);
    EXPECT_EQ(edit.top, spin.top);
    EXPECT_EQ(spin.right - edit.left, 100);
    m_spin.SetPos(2000);
    Press(true);
    EXPECT_EQ(TextOf(m_edit), "-5");
    m_edit.DestroyWindow();
    EXPECT_EQ(m_spin.GetBuddy(), nullptr);
    Press(true);
    EXPECT_EQ(m_spin.GetPos(), -4);
}

TEST(Static, ItsLetterLeadsToWhatFollows) {
    ControlHost host;
    CStatic label;
    CEdit edit;
    CButton other;
    label.Create("&Name:", WS_VISIBLE, CRect(0, 0, 50, 20), &host);
    edit.Create(kShown, CRect(50, 0, 150, 20), &host, 1);
    other.Create("other", kShown, CRect(0, 30, 50, 50), &host, 2);
    other.SetFocus();
    QCoreApplication::processEvents();
    PressKey(Qt::Key_N, Qt::AltModifier);
    EXPECT_EQ(CWnd::GetFocus(), &edit);
}

TEST(ToolTip, ShowsATextAsItIs) {
    ControlHost host;
    ShowTip(host, {10, 10}, "a < b & <b>c</b>");
    EXPECT_STREQ(GetShownTip(), "a < b & <b>c</b>");
    HideTip();
    EXPECT_TRUE(QTest::qWaitFor([] { return GetShownTip().IsEmpty(); }));
}

TEST(FileDialog, FiltersAreTakenApart) {
    using vnbytstr::detail::NameFilters;
    EXPECT_EQ(NameFilters("Text (*.txt)|*.txt; *.log|All|*.*||"),
              QStringList({"Text (*.txt *.log)", "All (*)"}));
    EXPECT_EQ(NameFilters("half"), QStringList());
    EXPECT_EQ(NameFilters(""), QStringList());
}

TEST(FileDialog, AnswersWhatWasChosen) {
    const vnbytstr::test::TemporaryFolder folder;
    const std::string file = folder.File("data.one.txt");
    folder.Write("data.one.txt", "x");
    CFileDialog open(TRUE, nullptr, nullptr, OFN_FILEMUSTEXIST, "Text|*.txt||");
    open.SetInitialFolder(folder.Path().c_str());
    DoLater([] {
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText("data.one.txt");
        static_cast<QDialog*>(dialog)->accept();
    });
    ASSERT_EQ(open.DoModal(), IDOK);
    EXPECT_STREQ(open.GetPathName(), file.c_str());
    EXPECT_STREQ(open.GetFileName(), "data.one.txt");
    EXPECT_STREQ(open.GetFileTitle(), "data.one");
    EXPECT_STREQ(open.GetFileExt(), "txt");
    CFileDialog save(FALSE, "csv");
    save.SetInitialFolder(folder.Path().c_str());
    DoLater([] { QApplication::activeModalWidget()->close(); });
    EXPECT_EQ(save.DoModal(), IDCANCEL);
    EXPECT_STREQ(save.GetPathName(), "");
}

TEST(Controls, ReadFromRightToLeft) {
    ControlHost host(WS_EX_LAYOUTRTL);
    CEdit edit;
    edit.Create(kShown, CRect(10, 10, 110, 30), &host, 1);
    EXPECT_EQ(edit.GetWidget()->x() + edit.GetWidget()->width(),
              host.GetWidget()->width() - 10); // ten pixels from the right
    const auto* const line = edit.GetWidget()->findChild<QLineEdit*>();
    EXPECT_EQ(line->layoutDirection(), Qt::RightToLeft);
    CSpinButtonCtrl spin;
    spin.Create(WS_VISIBLE | UDS_ALIGNRIGHT | UDS_AUTOBUDDY, CRect(0, 0, 0, 0), &host, 2);
    EXPECT_LT(spin.GetWidget()->x(), edit.GetWidget()->x()); // "right" is the end of the line
}

} // namespace
