// The system class BUTTON.
#pragma once

#include "src/window/core/WindowInternal.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QPointer>

#include <optional>

namespace vnbytstr::detail {

class ButtonControl final : public SystemControl {
public:
    explicit ButtonControl(Window& window) : SystemControl(window) {}
    ~ButtonControl() override;

    LRESULT Proc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    DWORD Kind() const;
    bool IsPush() const;
    bool IsRadio() const;
    void MakeWidget();
    void ShowText();
    void ShowCheck();
    void Clicked();
    void CheckInGroup();
    std::optional<LRESULT> ButtonProc(UINT message, WPARAM wParam, LPARAM lParam);
    void SetStyle(DWORD style);
    LRESULT DialogCode() const;

    QPointer<QAbstractButton> m_button; ///< null for a group box
    QPointer<QGroupBox> m_group;
    int m_check = 0;
};

} // namespace vnbytstr::detail
