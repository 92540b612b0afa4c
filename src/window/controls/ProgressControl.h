// The system class msctls_progress32.
#pragma once

#include "src/window/core/WindowInternal.h"

#include <QPointer>
#include <QProgressBar>

namespace vnbytstr::detail {

class ProgressControl final : public SystemControl {
public:
    explicit ProgressControl(Window& window) : SystemControl(window) {}

    LRESULT Proc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void MakeWidget();
    void Show();
    LRESULT MoveTo(std::int64_t position);

    QPointer<QProgressBar> m_bar;
    int m_lower = 0;
    int m_upper = 100;
    int m_position = 0;
    int m_step = 10;
    bool m_marquee = false;
};

} // namespace vnbytstr::detail
