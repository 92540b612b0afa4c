#include "tests/window/ControlHost.h"

#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/FrameWnd.h"
#include "vnbytstr/window/Menu.h"

#include <QMenu>
#include <QMenuBar>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

enum Ids : UINT { kOpen = 201, kSave, kWrap, kAbout };

class Frame : public CFrameWnd {
public:
    Frame() {
        Create("frame", WS_OVERLAPPEDWINDOW, nullptr);
        CMenu file;
        file.CreatePopupMenu();
        file.AppendMenu(MF_STRING, kOpen, "&Open\tCtrl+O");
        file.AppendMenu(MF_SEPARATOR);
        file.AppendMenu(MF_STRING, kSave, "&Save");
        CMenu view;
        view.CreatePopupMenu();
        view.AppendMenu(MF_STRING, kWrap, "&Wrap");
        CMenu bar;
        bar.CreateMenu();
        bar.AppendMenu(MF_POPUP, reinterpret_cast<std::uintptr_t>(file.Detach()), "&File");
        bar.AppendMenu(MF_POPUP, reinterpret_cast<std::uintptr_t>(view.Detach()), "&View");
        SetMenu(&bar);
        EXPECT_EQ(bar.m_hMenu, nullptr);
        CreateStatusLine(1);
        m_view.Create(ES_MULTILINE | WS_VISIBLE, CRect(0, 0, 10, 10), this, AFX_IDW_PANE_FIRST);
        SetAccelerators(&m_keys);
        MoveWindow(0, 0, 400, 300);
        ShowWindow(SW_SHOW);
        Activate(*this);
        m_view.SetFocus();
    }
    ~Frame() override { DestroyWindow(); }

    void OnOpen() { m_commands.push_back(kOpen); }
    void OnSave() { m_commands.push_back(kSave); }
    void OnWrap() { m_wrap = !m_wrap; }
    void OnUpdateSave(CCmdUI* state) { state->Enable(m_canSave); }
    void OnUpdateWrap(CCmdUI* state) { state->SetCheck(m_wrap ? 1 : 0); }

    std::vector<UINT> m_commands;
    bool m_wrap = false;
    BOOL m_canSave = FALSE;
    CEdit m_view;
    CAcceleratorTable m_keys{std::vector<ACCEL>{{FVIRTKEY | FCONTROL, 'O', kOpen},
                                                {FVIRTKEY | FCONTROL | FSHIFT, 'S', kSave}}};

protected:
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Frame, CFrameWnd)
ON_COMMAND(kOpen, OnOpen)
ON_COMMAND(kSave, OnSave)
ON_COMMAND(kWrap, OnWrap)
ON_UPDATE_COMMAND_UI(kSave, OnUpdateSave)
ON_UPDATE_COMMAND_UI(kWrap, OnUpdateWrap)
END_MESSAGE_MAP()

/// Opens the menu of that letter, and chooses by another one.
void Choose(const CWnd& frame, int menu, int item) {
    PressKey(menu, Qt::AltModifier);
    ASSERT_NE(QApplication::activePopupWidget(), nullptr);
    QTest::keyClick(QApplication::activePopupWidget(), static_cast<Qt::Key>(item));
    if (QWidget* const open = QApplication::activePopupWidget())
        open->close();
    QCoreApplication::processEvents();
    Activate(frame);
}

TEST(Menu, CommandsComeFromTheMenuBar) {
    Frame frame;
    Choose(frame, Qt::Key_F, Qt::Key_O);
    EXPECT_THAT(frame.m_commands, ElementsAre(kOpen));
    Choose(frame, Qt::Key_F, Qt::Key_S); // disabled
    EXPECT_THAT(frame.m_commands, ElementsAre(kOpen));
    frame.m_canSave = TRUE;
    Choose(frame, Qt::Key_F, Qt::Key_S);
    EXPECT_THAT(frame.m_commands, ElementsAre(kOpen, kSave));
    Choose(frame, Qt::Key_V, Qt::Key_W);
    EXPECT_TRUE(frame.m_wrap);
    EXPECT_EQ(frame.GetMenu()->GetMenuState(kWrap, MF_BYCOMMAND) & MF_CHECKED, 0U);
    Choose(frame, Qt::Key_V, Qt::Key_X);
    EXPECT_NE(frame.GetMenu()->GetMenuState(kWrap, MF_BYCOMMAND) & MF_CHECKED, 0U);
}

TEST(Menu, KeysGiveCommandsAndReachNothingElse) {
    Frame frame;
    PressKey(Qt::Key_O, Qt::ControlModifier);
    PressKey(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier); // disabled
    frame.m_canSave = TRUE;
    PressKey(Qt::Key_S, Qt::ControlModifier); // not that key
    PressKey(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_THAT(frame.m_commands, ElementsAre(kOpen, kSave));
    Type("o");
    EXPECT_EQ(TextOf(frame.m_view), "o");
}

TEST(Menu, APopupBelongsToItsItem) {
    CMenu menu;
    CMenu popup;
    ASSERT_TRUE(menu.CreateMenu());
    ASSERT_TRUE(popup.CreatePopupMenu());
    popup.AppendMenu(MF_STRING, kSave, "Save");
    const auto handle = reinterpret_cast<std::uintptr_t>(popup.m_hMenu);
    EXPECT_FALSE(popup.AppendMenu(MF_POPUP, handle, "in itself"));
    ASSERT_TRUE(menu.AppendMenu(MF_POPUP, handle, "More"));
    EXPECT_FALSE(menu.AppendMenu(MF_POPUP, handle, "twice"));
    EXPECT_FALSE(popup.DestroyMenu());
    EXPECT_EQ(menu.GetMenuState(kSave, MF_BYCOMMAND), 0U);
    EXPECT_EQ(menu.GetMenuState(kOpen, MF_BYCOMMAND), static_cast<UINT>(-1));
    EXPECT_TRUE(menu.DestroyMenu());
    EXPECT_EQ(CMenu::FromHandle(reinterpret_cast<HMENU>(handle)), nullptr);
}

TEST(Menu, APopupAnswersWhatWasChosen) {
    Frame frame;
    CMenu menu;
    menu.CreatePopupMenu();
    menu.AppendMenu(MF_STRING, kOpen, "&Open");
    menu.AppendMenu(MF_STRING | MF_GRAYED, kAbout, "&About");
    const auto press = [](int key) {
        DoLater([key] {
            QTest::keyClick(QApplication::activePopupWidget(), static_cast<Qt::Key>(key));
            if (QWidget* const open = QApplication::activePopupWidget())
                open->close();
        });
    };
    press(Qt::Key_O);
    EXPECT_EQ(menu.TrackPopupMenu(TPM_RETURNCMD, 50, 50, &frame), static_cast<BOOL>(kOpen));
    EXPECT_TRUE(frame.m_commands.empty());
    press(Qt::Key_A);
    EXPECT_EQ(menu.TrackPopupMenu(TPM_RETURNCMD, 50, 50, &frame), 0);
    press(Qt::Key_O);
    EXPECT_TRUE(menu.TrackPopupMenu(0, 50, 50, &frame));
    QCoreApplication::processEvents();
    EXPECT_THAT(frame.m_commands, ElementsAre(kOpen));
}

TEST(Frame, TheViewFillsWhatTheBarsLeave) {
    Frame frame;
    CRect client;
    CRect pane;
    CRect view;
    frame.GetClientRect(client);
    frame.GetPaneRect(pane);
    frame.m_view.GetWindowRect(view);
    frame.ScreenToClient(view);
    EXPECT_EQ(view, pane);
    EXPECT_GT(pane.top, 10);
    EXPECT_LT(pane.bottom, client.bottom - 10);
    EXPECT_EQ(pane.right, client.right);
    frame.MoveWindow(0, 0, 500, 200);
    frame.m_view.GetClientRect(view);
    EXPECT_EQ(view.right, 500);
    frame.SetMessageText("ready");
    frame.SetPaneText(0, "3 rows");
    EXPECT_STREQ(frame.GetPaneText(-1), "ready");
    EXPECT_STREQ(frame.GetPaneText(0), "3 rows");
    EXPECT_STREQ(frame.GetPaneText(7), "");
}

} // namespace
