#include "src/window/controls/ProgressControl.h"

#include "src/window/core/WidgetDetails.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/ProgressBar.h"

#include <algorithm>

namespace vnbytstr::detail {

void ProgressControl::MakeWidget() {
    m_bar = new QProgressBar(HostParent(m_window));
    m_bar->setOrientation((m_window.Style() & PBS_VERTICAL) != 0 ? Qt::Vertical : Qt::Horizontal);
    m_bar->setTextVisible(false);
    HostControl(m_window, m_bar);
    m_bar->setFocusPolicy(Qt::NoFocus);
    m_marquee = (m_window.Style() & PBS_MARQUEE) != 0;
    Show();
}

void ProgressControl::Show() {
    // Qt shows a bar without a range as busy.
    if (m_marquee || m_lower == m_upper)
        m_bar->setRange(0, m_marquee ? 0 : 1);
    else
        m_bar->setRange(m_lower, m_upper);
    if (!m_marquee)
        m_bar->setValue(m_lower == m_upper ? 0 : m_position);
}

LRESULT ProgressControl::MoveTo(std::int64_t position) {
    const int before = m_position;
    m_position = static_cast<int>(std::clamp<std::int64_t>(position, m_lower, m_upper));
    Show();
    return before;
}

LRESULT ProgressControl::Proc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        if (answer != -1)
            MakeWidget();
        return answer;
    }
    if (m_bar == nullptr)
        return m_window.GenericProc(message, wParam, lParam);
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_STATIC;
    case PBM_SETRANGE:
    case PBM_SETRANGE32: {
        const LRESULT before = MAKELPARAM(m_lower, m_upper);
        const bool wide = message == PBM_SETRANGE32;
        const int lower = wide ? static_cast<int>(wParam) : LOWORD(lParam);
        const int upper = wide ? static_cast<int>(lParam) : HIWORD(lParam);
        m_lower = std::min(lower, upper);
        m_upper = std::max(lower, upper);
        MoveTo(m_position);
        return before;
    }
    case PBM_GETRANGE:
        if (lParam != 0) {
            auto* const range = reinterpret_cast<int*>(lParam); // lower, upper
            range[0] = m_lower;
            range[1] = m_upper;
        }
        return wParam != 0 ? m_lower : m_upper;
    case PBM_SETPOS:
        return MoveTo(static_cast<int>(wParam));
    case PBM_DELTAPOS:
        return MoveTo(std::int64_t{m_position} + static_cast<int>(wParam));
    case PBM_GETPOS:
        return m_position;
    case PBM_SETSTEP:
        return std::exchange(m_step, static_cast<int>(wParam));
    case PBM_STEPIT: {
        const std::int64_t next = std::int64_t{m_position} + m_step;
        const std::int64_t span = std::int64_t{m_upper} - m_lower + 1;
        return MoveTo(next > m_upper ? m_lower + (next - m_lower) % span : next);
    }
    case PBM_SETMARQUEE:
        m_marquee = wParam != 0 && (m_window.Style() & PBS_MARQUEE) != 0;
        Show();
        return TRUE;
    default:
        return m_window.GenericProc(message, wParam, lParam);
    }
}

} // namespace vnbytstr::detail
