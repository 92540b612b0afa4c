// Windows: making and ending, messages, input.
#include "tests/window/WindowFixture.h"
#include "vnbytstr/window/ListBox.h"

#include <QPointer>
#include <QVBoxLayout>

#include <memory>

namespace {

constexpr UINT kChildId = 7;
constexpr UINT kPrivate = WM_USER + 5;

/// A child with a map, a reflected notification and a handler per kind of entry.
class ChildWnd : public RecordingWnd {
public:
    CPoint pressed;
    std::string typed;
    int reflected = 0;
    bool keepReflected = false;
    std::vector<std::string>* ends = nullptr;

protected:
    void OnLButtonDown(UINT flags, CPoint point) {
        pressed = point;
        CWnd::OnLButtonDown(flags, point);
        SetCapture();
    }
    void OnChar(UINT ch, UINT, UINT) { typed += static_cast<char>(ch); }
    LRESULT OnPrivate(WPARAM wParam, LPARAM lParam) {
        return static_cast<LRESULT>(wParam) + lParam;
    }
    BOOL OnReflected() {
        ++reflected;
        return keepReflected;
    }
    UINT OnGetDlgCode() { return DLGC_WANTCHARS; }
    void OnDestroy() {
        if (ends != nullptr)
            ends->emplace_back("child destroy");
    }
    void PostNcDestroy() override {
        if (ends != nullptr)
            ends->emplace_back("child end");
    }
    DECLARE_MESSAGE_MAP()
};
BEGIN_MESSAGE_MAP(ChildWnd, CWnd)
ON_WM_LBUTTONDOWN()
ON_WM_CHAR()
ON_WM_GETDLGCODE()
ON_WM_DESTROY()
ON_MESSAGE(kPrivate, OnPrivate)
ON_CONTROL_REFLECT_EX(LBN_SELCHANGE, OnReflected)
END_MESSAGE_MAP()

class FrameWnd : public RecordingWnd {
public:
    int commands = 0;
    int notifications = 0;
    bool swallowF2 = false;
    int translated = 0;
    std::vector<std::string> ends;

    BOOL PreTranslateMessage(MSG* message) override {
        ++translated;
        return swallowF2 && message->message == WM_KEYDOWN && message->wParam == VK_F2;
    }

protected:
    void OnCommand100() { ++commands; }
    void OnChanged() { ++notifications; }
    void OnDestroy() { ends.emplace_back("frame destroy"); }
    void PostNcDestroy() override { ends.emplace_back("frame end"); }
    DECLARE_MESSAGE_MAP()
};
BEGIN_MESSAGE_MAP(FrameWnd, CWnd)
ON_COMMAND(100, OnCommand100)
ON_CONTROL(LBN_SELCHANGE, kChildId, OnChanged)
ON_WM_DESTROY()
END_MESSAGE_MAP()

class Wnd : public WindowTest<FrameWnd> {
protected:
    void SetUp() override {
        WindowTest::SetUp();
        ASSERT_TRUE(m_child.Create(nullptr, "child", WS_VISIBLE | WS_TABSTOP,
                                   CRect(10, 20, 110, 80), &m_frame, kChildId));
    }
    ChildWnd m_child;
};

} // namespace

TEST_F(Wnd, CreationSendsItsMessagesInOrder) {
    std::vector<UINT> first;
    for (const MSG& message : m_child.messages)
        if (message.message == WM_NCCREATE || message.message == WM_CREATE ||
            message.message == WM_SIZE || message.message == WM_SHOWWINDOW)
            first.push_back(message.message);
    ASSERT_GE(first.size(), 3U);
    EXPECT_EQ(first[0], WM_NCCREATE);
    EXPECT_EQ(first[1], WM_CREATE);
    EXPECT_EQ(m_child.Last(WM_SIZE).lParam, MAKELPARAM(100, 60));
    EXPECT_EQ(m_frame.GetDlgItem(kChildId), &m_child);
    EXPECT_EQ(m_child.GetParent(), &m_frame);
    EXPECT_TRUE(m_child.IsWindowVisible());
    CWnd unknown;
    EXPECT_FALSE(unknown.Create("no such class", "", WS_VISIBLE, CRect(), &m_frame, 1));
    EXPECT_FALSE(unknown.Create(nullptr, "", WS_VISIBLE, CRect(), nullptr, 1));
    EXPECT_EQ(unknown.m_hWnd, nullptr);
}

TEST_F(Wnd, EndsParentFirstAndObjectsLast) {
    m_child.ends = &m_frame.ends;
    HWND child = m_child.m_hWnd;
    const QPointer<QWidget> widget(m_child.GetWidget());
    m_frame.DestroyWindow();
    EXPECT_EQ(m_frame.ends, (std::vector<std::string>{"frame destroy", "child destroy", "child end",
                                                      "frame end"}));
    EXPECT_FALSE(::IsWindow(child));
    EXPECT_EQ(::SendMessage(child, WM_GETTEXTLENGTH, 0, 0), 0);
    EXPECT_EQ(m_child.m_hWnd, nullptr);
    EXPECT_TRUE(widget.isNull());
}

TEST_F(Wnd, AWindowMayEndInItsOwnMessage) {
    struct Ending : CWnd {
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
            if (message == WM_LBUTTONDOWN || message == WM_CHAR) {
                DestroyWindow();
                return 0;
            }
            return CWnd::WindowProc(message, wParam, lParam);
        }
    };
    for (const bool byKey : {false, true}) {
        Ending window;
        ASSERT_TRUE(window.Create(nullptr, "", WS_VISIBLE, CRect(0, 0, 50, 50), &m_frame, 3));
        if (byKey)
            QTest::keyClick(window.GetWidget(), Qt::Key_A);
        else
            QTest::mousePress(window.GetWidget(), Qt::LeftButton);
        EXPECT_EQ(window.m_hWnd, nullptr);
        AfxPumpMessages(0);
    }
}

TEST_F(Wnd, RoutesMessagesThroughTheMap) {
    EXPECT_EQ(m_child.SendMessage(kPrivate, 40, 2), 42);
    EXPECT_TRUE(m_child.PostMessage(kPrivate, 1, 1));
    EXPECT_EQ(m_child.Count(kPrivate), 1);
    AfxPumpMessages(0);
    EXPECT_EQ(m_child.Count(kPrivate), 2);
    m_frame.SendMessage(WM_COMMAND, MAKEWPARAM(100, 0), 0);
    EXPECT_EQ(m_frame.commands, 1);

    // A control hears of its own notification first, and may keep it.
    const auto notify = [&] {
        m_frame.SendMessage(WM_COMMAND, MAKEWPARAM(kChildId, LBN_SELCHANGE),
                            reinterpret_cast<LPARAM>(m_child.m_hWnd));
    };
    notify();
    EXPECT_EQ(m_child.reflected, 1);
    EXPECT_EQ(m_frame.notifications, 1);
    m_child.keepReflected = true;
    notify();
    EXPECT_EQ(m_child.reflected, 2);
    EXPECT_EQ(m_frame.notifications, 1);
}

TEST_F(Wnd, MouseMessagesCarryClientCoordinatesAndFollowTheCapture) {
    QTest::mousePress(m_child.GetWidget(), Qt::LeftButton, Qt::ControlModifier, QPoint(30, 40));
    EXPECT_EQ(m_child.pressed, CPoint(30, 40));
    EXPECT_EQ(m_child.Last(WM_LBUTTONDOWN).wParam, MK_LBUTTON | MK_CONTROL);
    EXPECT_EQ(m_child.Count(WM_SETCURSOR), 1);
    ASSERT_EQ(CWnd::GetCapture(), &m_child);
    QTest::mouseMove(m_frame.GetWidget(), QPoint(5, 5));
    EXPECT_EQ(CPoint(m_child.Last(WM_MOUSEMOVE).lParam), CPoint(-5, -15));
    EXPECT_EQ(m_frame.Count(WM_MOUSEMOVE), 0);

    // The pointer is kept inside the clip.
    CRect clip(0, 0, 20, 20);
    m_child.MapWindowPoints(nullptr, clip);
    ::ClipCursor(clip);
    QTest::mouseMove(m_child.GetWidget(), QPoint(90, 50));
    EXPECT_EQ(CPoint(m_child.Last(WM_MOUSEMOVE).lParam), CPoint(19, 19));
    ::ClipCursor(nullptr);

    // Disabling takes the mouse away.
    m_child.EnableWindow(FALSE);
    EXPECT_EQ(m_child.Count(WM_CANCELMODE), 1);
    EXPECT_EQ(CWnd::GetCapture(), nullptr);
    EXPECT_EQ(m_child.Last(WM_ENABLE).wParam, 0U);
    EXPECT_FALSE(m_child.IsWindowEnabled());
    EXPECT_TRUE(m_child.EnableWindow(TRUE));
    QTest::mouseDClick(m_child.GetWidget(), Qt::LeftButton);
    EXPECT_EQ(m_child.Count(WM_LBUTTONDBLCLK), 1);
    ::ReleaseCapture();
}

TEST_F(Wnd, KeysBecomeKeyAndCharacterMessages) {
    m_child.SetFocus();
    EXPECT_EQ(CWnd::GetFocus(), &m_child);
    EXPECT_EQ(m_child.Count(WM_SETFOCUS), 1);
    QTest::keyClick(m_child.GetWidget(), 'A');
    EXPECT_EQ(m_child.Last(WM_KEYDOWN).wParam, static_cast<WPARAM>('A'));
    EXPECT_EQ(m_child.Count(WM_KEYUP), 1);
    QTest::keyClick(m_child.GetWidget(), Qt::Key_Backspace);
    QTest::keyClick(m_child.GetWidget(), Qt::Key_Delete);
    QTest::keyClick(m_child.GetWidget(), Qt::Key_Left);
    QTest::keyClick(m_child.GetWidget(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(m_child.typed, "A\b\x03");
    QTest::keyPress(m_child.GetWidget(), Qt::Key_Shift, Qt::ShiftModifier);
    EXPECT_LT(::GetKeyState(VK_SHIFT), 0);
    QTest::keyRelease(m_child.GetWidget(), Qt::Key_Shift);
    EXPECT_GE(::GetKeyState(VK_SHIFT), 0);
    QTest::keyClick(m_child.GetWidget(), Qt::Key_X, Qt::AltModifier);
    EXPECT_EQ(m_child.Last(WM_SYSKEYDOWN).wParam, static_cast<WPARAM>('X'));

    // What an input method makes arrives byte by byte.
    m_child.typed.clear();
    QInputMethodEvent commit;
    commit.setCommitString(QString::fromUtf8("é漢"));
    QApplication::sendEvent(m_child.GetWidget(), &commit);
    EXPECT_EQ(m_child.typed, "é漢");
}

TEST_F(Wnd, ParentsSeeKeysBeforeTheFocusAndOnce) {
    m_child.SetFocus();
    m_frame.swallowF2 = true;
    QTest::keyPress(m_child.GetWidget(), Qt::Key_F2);
    EXPECT_EQ(m_child.Count(WM_KEYDOWN), 0);
    m_frame.translated = 0;
    QTest::keyPress(m_child.GetWidget(), Qt::Key_F3);
    EXPECT_EQ(m_child.Count(WM_KEYDOWN), 1);
    EXPECT_EQ(m_frame.translated, 1);
    EXPECT_EQ(m_frame.Count(WM_KEYDOWN), 0);

    CWnd next;
    ASSERT_TRUE(next.Create(nullptr, "", WS_VISIBLE | WS_TABSTOP, CRect(0, 0, 5, 5), &m_frame, 9));
    QTest::keyClick(m_child.GetWidget(), Qt::Key_Tab);
    EXPECT_EQ(CWnd::GetFocus(), &next);
    EXPECT_EQ(m_child.Count(WM_KILLFOCUS), 1);
    QTest::keyClick(next.GetWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(CWnd::GetFocus(), &m_child);
}

TEST_F(Wnd, PlacesAndStyles) {
    m_child.messages.clear();
    m_child.MoveWindow(1, 2, 30, 40);
    CRect rect;
    m_child.GetWindowRect(rect);
    m_frame.ScreenToClient(rect);
    EXPECT_EQ(rect, CRect(1, 2, 31, 42));
    EXPECT_EQ(m_child.Count(WM_WINDOWPOSCHANGING), 1);
    EXPECT_EQ(m_child.Count(WM_SIZE), 1);
    m_child.ShowWindow(SW_HIDE);
    EXPECT_FALSE(m_child.IsWindowVisible());
    EXPECT_EQ(m_child.GetStyle() & WS_VISIBLE, 0U);
    m_child.ShowWindow(SW_SHOW);
    EXPECT_TRUE(m_child.ModifyStyleEx(0, WS_EX_CLIENTEDGE, SWP_FRAMECHANGED));
    EXPECT_FALSE(m_child.ModifyStyleEx(0, WS_EX_CLIENTEDGE));
    m_child.GetClientRect(rect);
    EXPECT_EQ(rect, CRect(0, 0, 26, 36));
    m_child.SetWindowText("caption");
    CString text;
    m_child.GetWindowText(text);
    EXPECT_STREQ(text, "caption");
    char cut[4];
    EXPECT_EQ(m_child.GetWindowText(cut, 4), 3);
    EXPECT_STREQ(cut, "cap");
    int fired = 0;
    m_child.SetTimer(4, 1);
    for (int i = 0; i < 200 && fired == 0; ++i) {
        AfxPumpMessages(5);
        fired = m_child.Count(WM_TIMER);
    }
    EXPECT_EQ(m_child.Last(WM_TIMER).wParam, 4U);
    EXPECT_TRUE(m_child.KillTimer(4));
    EXPECT_FALSE(m_child.KillTimer(4));
}

TEST_F(Wnd, MirroredWindowsCountFromTheRight) {
    CWnd mirrored;
    ASSERT_TRUE(mirrored.CreateEx(WS_EX_LAYOUTRTL, nullptr, "", WS_CHILD | WS_VISIBLE,
                                  CRect(0, 0, 200, 100), &m_frame, 2));
    RecordingWnd inner;
    ASSERT_TRUE(inner.Create(nullptr, "", WS_VISIBLE, CRect(10, 0, 60, 50), &mirrored, 3));
    EXPECT_EQ(inner.GetWidget()->geometry(), QRect(140, 0, 50, 50));
    EXPECT_NE(inner.GetExStyle() & WS_EX_LAYOUTRTL, 0U);
    QTest::mousePress(inner.GetWidget(), Qt::LeftButton, {}, QPoint(49, 7));
    EXPECT_EQ(CPoint(inner.Last(WM_LBUTTONDOWN).lParam), CPoint(0, 7));
    CPoint point(3, 4);
    inner.ClientToScreen(&point);
    inner.ScreenToClient(&point);
    EXPECT_EQ(point, CPoint(3, 4));
}

TEST_F(Wnd, ClassesAreRegisteredOnce) {
    WNDCLASS known{};
    EXPECT_FALSE(::GetClassInfo(nullptr, "OwnClass", &known));
    WNDCLASS own{};
    own.lpfnWndProc = ::DefWindowProc;
    own.style = CS_DBLCLKS;
    own.lpszClassName = "OwnClass";
    EXPECT_NE(::RegisterClass(&own), 0);
    EXPECT_EQ(::RegisterClass(&own), 0);
    EXPECT_TRUE(::GetClassInfo(nullptr, "ownclass", &known));
    CWnd window;
    EXPECT_TRUE(window.Create("OWNCLASS", "", WS_VISIBLE, CRect(0, 0, 9, 9), &m_frame, 4));
    EXPECT_FALSE(::UnregisterClass("OwnClass", nullptr));
    window.DestroyWindow();
    EXPECT_TRUE(::UnregisterClass("OwnClass", nullptr));
    EXPECT_TRUE(::GetClassInfo(nullptr, "ListBox", &known));
}

TEST_F(Wnd, TheProgramEndsWithTheAnswerItIsToldAndDrawsAgainWhenItMay) {
    struct Program : CWinApp {
        BOOL OnIdle(LONG) override {
            PostQuitMessage(7);
            return FALSE;
        }
    } program;
    EXPECT_EQ(program.Run(), 7);
    m_child.SetRedraw(FALSE);
    EXPECT_FALSE(m_child.GetWidget()->updatesEnabled());
    m_child.SetRedraw();
    EXPECT_TRUE(m_child.GetWidget()->updatesEnabled());
}

TEST(WndInQt, LivesInALayoutAndEndsWithIt) {
    AfxInitWindows();
    RecordingWnd window;
    {
        QWidget host;
        auto* layout = new QVBoxLayout(&host);
        ASSERT_TRUE(window.CreateInWidget(&host, nullptr, "", WS_VISIBLE, CRect(0, 0, 9, 9), 1));
        layout->addWidget(window.GetWidget());
        layout->setContentsMargins(0, 0, 0, 0);
        host.resize(222, 111);
        host.show();
        EXPECT_EQ(window.Last(WM_SIZE).lParam, MAKELPARAM(222, 111));
        EXPECT_EQ(window.GetParent(), nullptr);
        EXPECT_EQ(CWnd::FromWidget(window.GetWidget()), &window);
    }
    EXPECT_EQ(window.m_hWnd, nullptr);
    EXPECT_EQ(window.Count(WM_NCDESTROY), 1);
}

TEST(WndHelpers, MulDivRoundsAndRefuses) {
    EXPECT_EQ(MulDiv(1, 1, 2), 1);
    EXPECT_EQ(MulDiv(-1, 1, 2), -1);
    EXPECT_EQ(MulDiv(100, 33, 100), 33);
    EXPECT_EQ(MulDiv(2000000000, 3, 4), 1500000000);
    EXPECT_EQ(MulDiv(2000000000, 3, 1), -1);
    EXPECT_EQ(MulDiv(5, 5, 0), -1);
}
