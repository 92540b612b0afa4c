// The classes of a frame's bars: "MenuBar" and "msctls_statusbar32".
#pragma once

#include "src/window/core/WindowInternal.h"

#include <QPointer>

#include <string>
#include <vector>

class QLabel;
class QMenuBar;

namespace vnbytstr::detail {

/// Shows the menu given with kSetMenu (lParam an HMENU, which it does not own).
class MenuBarControl final : public SystemControl {
public:
    static constexpr UINT kSetMenu = WM_USER + 1;
    static constexpr UINT kGetHeight = WM_USER + 2;

    explicit MenuBarControl(Window& window) : SystemControl(window) {}
    LRESULT Proc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void Show(HMENU menu);
    QPointer<QMenuBar> m_bar;
};

/// A message and fields to its right.
class StatusControl final : public SystemControl {
public:
    static constexpr UINT kSetPanes = WM_USER + 4;
    static constexpr UINT kSetText = WM_USER + 1; ///< wParam the field (from 1; 0 the message)
    static constexpr UINT kGetText = WM_USER + 2; ///< lParam a std::string

    explicit StatusControl(Window& window) : SystemControl(window) {}
    LRESULT Proc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void MakeWidget();
    void SetPanes(std::size_t count);
    QPointer<QWidget> m_line;
    std::vector<QLabel*> m_labels;
    std::vector<std::string> m_texts;
};

} // namespace vnbytstr::detail
