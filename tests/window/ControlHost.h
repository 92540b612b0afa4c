// A top-level window that writes down what its controls tell it.
#pragma once

#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/Messages.h"
#include "vnbytstr/window/SpinButton.h"
#include "vnbytstr/window/Wnd.h"

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

inline void Activate(const CWnd& window);

class ControlHost : public CWnd {
public:
    explicit ControlHost(DWORD exStyle = 0) {
        CreateEx(exStyle, nullptr, "host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, CRect(0, 0, 400, 300),
                 nullptr, 0);
        Activate(*this);
    }
    ~ControlHost() override { DestroyWindow(); }

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_COMMAND)
            m_told.emplace_back(LOWORD(wParam), static_cast<std::int16_t>(HIWORD(wParam)));
        if (message == WM_VSCROLL || message == WM_HSCROLL)
            m_scrolled.emplace_back(LOWORD(wParam), static_cast<std::int16_t>(HIWORD(wParam)));
        if (message == WM_NOTIFY) {
            auto* const header = reinterpret_cast<NMHDR*>(lParam);
            if (header->code == UDN_DELTAPOS) {
                const auto* const delta = reinterpret_cast<NMUPDOWN*>(lParam);
                m_deltas.emplace_back(delta->iPos, delta->iDelta);
                return m_refuse ? 1 : 0;
            }
        }
        if (message == WM_COMMAND && m_destroyOnCommand)
            GetDlgItem(LOWORD(wParam))->DestroyWindow();
        return CWnd::WindowProc(message, wParam, lParam);
    }

    /// The codes that the control with that id told since the last time.
    std::vector<int> Codes(int id) {
        std::vector<int> codes;
        for (const auto& [from, code] : std::exchange(m_told, {}))
            if (from == id)
                codes.push_back(code);
        return codes;
    }

    std::vector<std::pair<int, int>> m_told;
    std::vector<std::pair<int, int>> m_scrolled;
    std::vector<std::pair<int, int>> m_deltas;
    bool m_refuse = false;
    bool m_destroyOnCommand = false;
};

/// Waits until keys come to the window. The offscreen platform activates popups, and gives nothing
/// back when they close.
inline void Activate(const CWnd& window) {
    QWidget* const widget = window.GetWidget()->window();
    widget->activateWindow();
    static_cast<void>(QTest::qWaitFor(
        [widget] { return QApplication::focusWindow() == widget->windowHandle(); }));
}

/// A key as the platform sends it: to the window, and from there to what has the focus.
inline void PressKey(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    if (QWindow* const window = QApplication::focusWindow())
        QTest::keyClick(window, static_cast<Qt::Key>(key), modifiers);
    else
        ADD_FAILURE() << "no window has the focus";
}
inline void Type(const char* text) {
    for (; *text != '\0'; ++text)
        PressKey(QTest::asciiToKey(*text),
                 *text >= 'A' && *text <= 'Z' ? Qt::ShiftModifier : Qt::NoModifier);
}
inline void Click(const CWnd& window, CPoint point) {
    const QWidget* const widget = window.GetWidget();
    QWidget* const top = widget->window();
    QTest::mouseClick(top->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      widget->mapTo(top, QPoint(point.x, point.y)));
}

/// Does something once the events that wait have been handled: inside a dialog's or menu's loop.
inline void DoLater(std::function<void()> what) {
    auto* const timer = new QTimer(qApp);
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, what = std::move(what)] {
        timer->deleteLater();
        what();
    });
    timer->start(0);
}

inline std::string TextOf(const CWnd& window) {
    CString text;
    window.GetWindowText(text);
    return {text, static_cast<std::size_t>(text.GetLength())};
}
