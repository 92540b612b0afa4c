// What the tests of windows share: a top-level window that records its messages.
#pragma once

#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/Wnd.h"

#include <QApplication>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

/// A window that keeps every message it gets.
class RecordingWnd : public CWnd {
public:
    std::vector<MSG> messages;

    int Count(UINT message) const {
        return static_cast<int>(
            std::count_if(messages.begin(), messages.end(),
                          [message](const MSG& entry) { return entry.message == message; }));
    }
    /// The last one of that number; all zero when there was none.
    MSG Last(UINT message) const {
        const auto found =
            std::find_if(messages.rbegin(), messages.rend(),
                         [message](const MSG& entry) { return entry.message == message; });
        return found != messages.rend() ? *found : MSG{};
    }

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        messages.push_back({m_hWnd, message, wParam, lParam, 0, {0, 0}});
        return CWnd::WindowProc(message, wParam, lParam);
    }
};

/// A main window of 400 by 300 pixels, shown and active.
template <class Frame = RecordingWnd>
class WindowTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_frame.CreateEx(0, nullptr, "frame", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                                     CRect(0, 0, 400, 300), nullptr, 0));
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_frame.GetWidget()));
    }
    void TearDown() override {
        m_frame.DestroyWindow();
        AfxPumpMessages(0);
    }

    Frame m_frame;
};
