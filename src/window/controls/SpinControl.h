// The system class msctls_updown32.
#pragma once

#include "src/window/controls/EditControl.h"
#include "src/window/controls/SpinCounter.h"
#include "src/window/core/WindowInternal.h"
#include "vnbytstr/window/SpinButton.h"

#include <QPointer>
#include <QTimer>
#include <QToolButton>

#include <optional>

namespace vnbytstr::detail {

class SpinControl final : public SystemControl, public ArrowKeyTaker {
public:
    explicit SpinControl(Window& window) : SystemControl(window) {}
    ~SpinControl() override;

    LRESULT Proc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void ArrowKey(bool up) override;

private:
    void MakeWidget();
    QToolButton* MakeArrow(QWidget* parent, bool up);
    std::optional<LRESULT> SpinProc(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT SetBuddy(HWND buddy);
    void TakeKeys(bool take);
    void PlaceAtBuddy();
    void Press(bool up);
    void Release();
    void Repeat();
    /// One step with its notifications; false when they destroyed this window.
    bool Step(bool up, int seconds);
    void ReadBuddy(bool* error = nullptr);
    void WriteBuddy();
    bool IsHorizontal() const { return (m_window.Style() & UDS_HORZ) != 0; }

    SpinCounter m_counter;
    HWND m_buddy = nullptr;
    QPointer<QWidget> m_widget;
    std::unique_ptr<QTimer> m_timer;
    bool m_up = false;
    int m_heldMs = 0;
};

} // namespace vnbytstr::detail
