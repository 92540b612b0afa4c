// A window's scroll bars, and what the user does with them as messages.
//
// While the thumb is dragged, the bar may stand elsewhere than where its window has put it
// (SetScroll); afterwards, and when the window does not follow otherwise, it goes back there.
#include "src/window/core/HandInput.h"
#include "src/window/core/WindowInternal.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/WindowFunctions.h"

#include <QPointer>
#include <QScrollBar>
#include <QSignalBlocker>

#include <algorithm>

namespace vnbytstr::detail {
namespace {

class Bar {
public:
    Bar(QScrollBar& bar, HWND window, UINT message)
        : m_bar(&bar), m_window(window), m_message(message) {}

    void Send(UINT code, int position = 0) const {
        const Window::Busy busy;
        const WindowWidget::EventScope scope; // the bar outlives its window until the event ends
        if (Window* window = Window::Of(m_window))
            window->Send(m_message, MAKEWPARAM(static_cast<int>(code), position), 0);
    }
    void OnAction(int action) const {
        const QPointer<QScrollBar> bar = m_bar;
        const int before = bar->value();
        const bool isDragged = bar->isSliderDown();
        const bool wasDown = (ButtonsDown() & Qt::LeftButton) != 0;
        if (action == QAbstractSlider::SliderMove)
            Send(SB_THUMBTRACK, bar->sliderPosition());
        else if (const UINT code = CodeOf(action); code != SB_ENDSCROLL)
            Send(code);
        else
            return;
        if (!bar)
            return;
        const bool isReleased = wasDown && (ButtonsDown() & Qt::LeftButton) == 0;
        if (isReleased) { // a message box got the release
            const QSignalBlocker quiet(bar);
            bar->setSliderDown(false);
        }
        if (bar->value() == before && (!isDragged || isReleased))
            PutBack(); // the window did not follow
    }
    void OnReleased() const {
        const QPointer<QScrollBar> bar = m_bar;
        Send(SB_THUMBPOSITION, bar->sliderPosition());
        Send(SB_ENDSCROLL);
        if (bar)
            PutBack();
    }

private:
    static UINT CodeOf(int action) {
        switch (action) {
        case QAbstractSlider::SliderSingleStepAdd:
            return SB_LINEDOWN;
        case QAbstractSlider::SliderSingleStepSub:
            return SB_LINEUP;
        case QAbstractSlider::SliderPageStepAdd:
            return SB_PAGEDOWN;
        case QAbstractSlider::SliderPageStepSub:
            return SB_PAGEUP;
        case QAbstractSlider::SliderToMinimum:
            return SB_TOP;
        case QAbstractSlider::SliderToMaximum:
            return SB_BOTTOM;
        default:
            return SB_ENDSCROLL;
        }
    }
    void PutBack() const {
        const Window* const window = Window::Of(m_window);
        const QSignalBlocker quiet(m_bar);
        if (window != nullptr)
            m_bar->setValue(window->ScrolledTo(m_bar->orientation() == Qt::Vertical));
        m_bar->update();
    }

    QScrollBar* m_bar; ///< valid when a member is called
    HWND m_window;
    UINT m_message;
};

} // namespace

void Window::ShowScrollBar(int bar, bool show) {
    const DWORD bit = bar == SB_VERT ? WS_VSCROLL : WS_HSCROLL;
    QScrollBar*& widget = m_bars[bar == SB_VERT ? 1 : 0];
    const bool made = show && widget == nullptr;
    if (made) {
        widget = new QScrollBar(bar == SB_VERT ? Qt::Vertical : Qt::Horizontal, m_widget);
        widget->setFocusPolicy(Qt::NoFocus);
        widget->setCursor(Qt::ArrowCursor);
        const Bar told(*widget, Handle(), bar == SB_VERT ? WM_VSCROLL : WM_HSCROLL);
        QObject::connect(widget, &QAbstractSlider::actionTriggered, m_widget,
                         [told](int action) { told.OnAction(action); });
        QObject::connect(widget, &QAbstractSlider::sliderReleased, m_widget,
                         [told] { told.OnReleased(); });
    }
    if (widget != nullptr && show == widget->isHidden())
        widget->setVisible(show);
    if (!made && show == ((m_style & bit) != 0))
        return;
    m_style = show ? m_style | bit : m_style & ~bit;
    UpdateLayout();
    m_widget->update();
}

void Window::SetScroll(int bar, int minimum, int maximum, int page, int position, bool enabled) {
    QScrollBar* widget = ScrollBar(bar);
    if (widget == nullptr)
        return;
    widget->setEnabled(enabled);
    widget->setPageStep(std::max(page, 1));
    widget->setRange(minimum, std::max(minimum, maximum - std::max(page, 1) + 1));
    widget->setValue(position);
    m_scrolledTo[bar == SB_VERT ? 1 : 0] = widget->value();
}

} // namespace vnbytstr::detail
