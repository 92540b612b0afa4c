// A list with three columns in a parent that records what it is asked.
#pragma once

#include "src/charset/CodePage.h"
#include "vnbytstr/controls.h"
#include "vnbytstr/window/Application.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWidget>

#include <functional>
#include <string>
#include <vector>

namespace vnbytstr::test {

/// Makes protected members accessible and answers the zoom in place of a user.
class TestList : public CVNListBox {
public:
    using CListBoxEx::m_bCommitting;
    using CListBoxEx::m_DropTarget;
    using CListBoxEx::m_nCurColumn;
    using CListBoxEx::m_nCurRow;

    int ShowZoom(int row, int column, CString& value) override {
        zooms.push_back(std::to_string(row) + "," + std::to_string(column) + ":" +
                        static_cast<const char*>(value));
        return onZoom ? onZoom(value) : IDCANCEL;
    }

    std::vector<std::string> zooms;
    std::function<int(CString&)> onZoom;
};

class RecordingParent : public CWnd {
public:
    ~RecordingParent() override {
        if (GetSafeHwnd() != nullptr)
            DestroyWindow();
    }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (onMessage)
            onMessage(message, wParam);
        if (message < VNM_EDITORCLOSED || message > VNM_OPENCELL)
            return CWnd::WindowProc(message, wParam, lParam);
        std::string entry = message == VNM_EDITORCLOSED ? "closed"
                            : message == VNM_STOREVALUE ? "store"
                                                        : "open";
        if (message != VNM_EDITORCLOSED)
            entry += " " + std::to_string(wParam);
        if (message == VNM_STOREVALUE)
            entry += std::string(" ") + reinterpret_cast<const char*>(lParam);
        asked.push_back(entry);
        return onAsked ? onAsked(message) : 0;
    }
    /// What was asked since the last call.
    std::vector<std::string> Take() { return std::exchange(asked, {}); }
    /// From now on answers one message so, and accepts all others.
    void Answer(UINT message, LRESULT answer) {
        onAsked = [=](UINT sent) { return sent == message ? answer : 0; };
    }
    /// From now on does something when it is asked to store a value, and accepts the value.
    void OnStore(std::function<void()> act) {
        onAsked = [act = std::move(act)](UINT sent) -> LRESULT {
            if (sent == VNM_STOREVALUE)
                act();
            return 0;
        };
    }

    std::vector<std::string> asked;
    std::function<LRESULT(UINT)> onAsked;
    std::function<void(UINT, WPARAM)> onMessage; ///< before anything is done with it
};

using Asked = std::vector<std::string>;

class ListFixture : public ::testing::Test {
protected:
    static constexpr int kListLeft = 10;
    static constexpr int kListTop = 60;

    ListFixture() { AfxInitWindows(); }

    void SetUp() override { Make(0); }
    void TearDown() override {
        list.reset();
        if (parent.GetSafeHwnd() != nullptr)
            parent.DestroyWindow();
        AfxPumpMessages(0);
    }

    /// Parent of 420 x 300 and a list of 400 x 200 in it, three columns of 100 pixels, five rows.
    void Make(DWORD moreStyle, DWORD exStyle = 0) {
        if (parent.GetSafeHwnd() != nullptr)
            parent.DestroyWindow();
        ASSERT_TRUE(parent.CreateEx(exStyle, nullptr, "Parent", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                                    CRect(0, 0, 420, 300), nullptr, 0));
        list = std::make_unique<TestList>();
        ASSERT_TRUE(list->Create(
            "LISTBOX", "",
            WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_BORDER | LBS_OWNERDRAWVARIABLE |
                LBS_HASSTRINGS | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | moreStyle,
            CRect(kListLeft, kListTop, kListLeft + 400, kListTop + 200), &parent, 1000));
        list->SetNumColumns(3);
        const char* const names[] = {"Name", "City", "Number"};
        for (int column = 0; column < 3; ++column) {
            list->SetColumnName(column, names[column]);
            list->SetColumnWidth(column, 100);
        }
        list->SetColumnType(2, 1);
        for (const auto& row : kRows)
            list->AddStringItems(row[0], row[1], row[2]);
        list->EnableEditing();
        parent.SetActiveWindow();
        list->SetFocus();
        AfxPumpMessages(0);
        parent.Take();
    }

    static void Pump() { AfxPumpMessages(20); }

    QWidget* Widget() { return list->GetWidget(); }
    int RowHeight() { return static_cast<int>(list->SendMessage(LB_GETITEMHEIGHT)); }
    CPoint CellPoint(int row, int column) {
        const int top = static_cast<int>(list->SendMessage(LB_GETTOPINDEX));
        return {column * 100 + 40, (row - top) * RowHeight() + RowHeight() / 2};
    }
    /// A mouse event at a point of a window's client area, given to the widget under it.
    static void Mouse(CWnd& window, QEvent::Type type, CPoint point,
                      Qt::MouseButton button = Qt::LeftButton, Qt::KeyboardModifiers keys = {}) {
        QWidget* target = window.GetSafeHwnd() != nullptr ? window.GetWidget() : nullptr;
        if (target == nullptr)
            return; // an event before this one ended the window
        POINT screen = point;
        window.ClientToScreen(&screen);
        const QPoint global(screen.x, screen.y);
        if (QWidget* grabber = QWidget::mouseGrabber(); grabber != nullptr)
            target = grabber;
        else if (QWidget* child = target->childAt(target->mapFromGlobal(global)); child != nullptr)
            target = child;
        const QPoint local = target->mapFromGlobal(global);
        switch (type) {
        case QEvent::MouseButtonPress:
            QTest::mousePress(target, button, keys, local);
            break;
        case QEvent::MouseButtonRelease:
            QTest::mouseRelease(target, button, keys, local);
            break;
        case QEvent::MouseButtonDblClick:
            QTest::mouseDClick(target, button, keys, local);
            break;
        default: {
            QMouseEvent move(QEvent::MouseMove, local, global, Qt::NoButton, Qt::LeftButton, keys);
            QApplication::sendEvent(target, &move);
            break;
        }
        }
    }
    void Click(CPoint point, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers keys = {}) {
        Mouse(*list, QEvent::MouseButtonPress, point, button, keys);
        Mouse(*list, QEvent::MouseButtonRelease, point, button, keys);
        Pump();
        QTest::qWait(0);
    }
    void DoubleClick(CPoint point) {
        Mouse(*list, QEvent::MouseButtonDblClick, point);
        Pump();
    }
    /// A key to the window that has the focus.
    static void Key(Qt::Key key, Qt::KeyboardModifiers keys = {}) {
        QWidget* focus = QApplication::focusWidget();
        ASSERT_NE(focus, nullptr);
        QTest::keyClick(focus, key, keys);
        Pump();
    }
    static void Type(const char* text) {
        QWidget* focus = QApplication::focusWidget();
        ASSERT_NE(focus, nullptr);
        QTest::keyClicks(focus, text);
        Pump();
    }

    std::string Cell(int row, int column) {
        CString text;
        list->GetStringItem(row, column, text);
        return static_cast<const char*>(text);
    }
    /// The values of a column from top to bottom.
    std::string Column(int column) {
        std::string text;
        for (int row = 0; row < list->GetCount(); ++row)
            text += (row > 0 ? " " : "") + Cell(row, column);
        return text;
    }
    /// Opens a cell and types into it.
    void EditAndType(int row, int column, const char* text) {
        list->EditColumn(row, column);
        Type(text);
        parent.Take();
    }
    std::string EditorText() {
        CString text;
        if (list->GetActiveEditor() != nullptr)
            list->GetActiveEditor()->GetWindowText(text);
        return static_cast<const char*>(text);
    }
    /// In the list's client area.
    CRect EditorRect() {
        CRect rect;
        list->GetActiveEditor()->GetWindowRect(rect);
        list->ScreenToClient(rect);
        return rect;
    }
    bool IsOpen() { return list->GetActiveEditor() != nullptr; }
    bool IsOpenAt(int row, int column) {
        return IsOpen() && list->m_nCurRow == row && list->m_nCurColumn == column;
    }

    static constexpr const char* kRows[5][3] = {{"delta", "Graz", "10"},
                                                {"Alpha", "Linz", "9"},
                                                {"charlie", "Wien", "100"},
                                                {"bravo", "Linz", "-5"},
                                                {"echo", "Enns", "9"}};

    ScopedCodePage utf8{65001};
    RecordingParent parent;
    std::unique_ptr<TestList> list;
};

/// The same with editors: text in column 0, numbers from -10 to 200 in column 2.
class Editing : public ListFixture {
protected:
    void SetUp() override {
        ListFixture::SetUp();
        list->SetEditorType(0, kEditorText);
        list->SetEditorType(2, kEditorNumber);
        list->SetEditorRange(2, -10, 200);
    }
};

} // namespace vnbytstr::test
