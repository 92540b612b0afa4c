// The system class STATIC.
#pragma once

#include "src/window/core/WindowInternal.h"

#include <QLabel>
#include <QPointer>

#include <optional>

namespace vnbytstr::detail {

class LabelWidget;

class StaticControl final : public SystemControl {
public:
    explicit StaticControl(Window& window) : SystemControl(window) {}
    ~StaticControl() override;

    LRESULT Proc(UINT message, WPARAM wParam, LPARAM lParam) override;
    /// Makes the label's mnemonic lead to the control that follows it.
    void FindPartner();

private:
    void MakeWidget();
    void ShowContents();
    std::optional<LRESULT> StaticProc(UINT message, WPARAM wParam, LPARAM lParam);

    QPointer<LabelWidget> m_label;
    HBITMAP m_bitmap = nullptr;
};

} // namespace vnbytstr::detail
