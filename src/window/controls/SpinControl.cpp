#include "src/window/controls/SpinControl.h"

#include "src/window/controls/DialogKeys.h"
#include "src/window/core/WidgetDetails.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/WindowFunctions.h"
#include "vnbytstr/window/Wnd.h"

#include <QBoxLayout>
#include <QLocale>

#include <algorithm>

namespace vnbytstr::detail {

namespace {

constexpr int kFirstRepeatMs = 400;
constexpr int kRepeatMs = 60;

char GroupSeparator(const Window& window) {
    if ((window.Style() & UDS_NOTHOUSANDS) != 0)
        return '\0';
    const std::string separator = FromQString(QLocale().groupSeparator());
    return separator.size() == 1 ? separator.front() : '\0';
}

} // namespace

SpinControl::~SpinControl() {
    TakeKeys(false);
    if (m_widget != nullptr)
        for (auto* const arrow : m_widget->findChildren<QToolButton*>())
            arrow->disconnect();
}

LRESULT SpinControl::Proc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        if (answer != -1)
            MakeWidget();
        return answer;
    }
    if (m_widget != nullptr)
        if (const auto answer = SpinProc(message, wParam, lParam))
            return *answer;
    return m_window.GenericProc(message, wParam, lParam);
}

void SpinControl::MakeWidget() {
    m_widget = new QWidget(HostParent(m_window));
    auto* const layout = new QBoxLayout(
        IsHorizontal() ? QBoxLayout::RightToLeft : QBoxLayout::TopToBottom, m_widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(MakeArrow(m_widget, true));
    layout->addWidget(MakeArrow(m_widget, false));
    HostControl(m_window, m_widget);
    m_widget->setFocusPolicy(Qt::NoFocus); // the buddy keeps the focus
    m_timer = std::make_unique<QTimer>();
    QObject::connect(m_timer.get(), &QTimer::timeout, m_timer.get(), [this] {
        const WindowWidget::EventScope scope;
        Repeat();
    });
    if ((m_window.Style() & UDS_AUTOBUDDY) != 0) {
        const auto siblings = SiblingsOf(m_window);
        const auto self = std::find(siblings.begin(), siblings.end(), &m_window);
        if (self != siblings.end() && self != siblings.begin())
            SetBuddy((*(self - 1))->Handle());
    }
}

QToolButton* SpinControl::MakeArrow(QWidget* parent, bool up) {
    auto* const arrow = new QToolButton(parent);
    arrow->setArrowType(IsHorizontal() ? (up ? Qt::RightArrow : Qt::LeftArrow)
                                       : (up ? Qt::UpArrow : Qt::DownArrow));
    arrow->setFocusPolicy(Qt::NoFocus);
    arrow->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    arrow->setMinimumSize(1, 1);
    QObject::connect(arrow, &QAbstractButton::pressed, arrow, [this, up] {
        const WindowWidget::EventScope scope;
        Press(up);
    });
    QObject::connect(arrow, &QAbstractButton::released, arrow, [this] {
        const WindowWidget::EventScope scope;
        Release();
    });
    return arrow;
}

// --- buddy --------------------------------------------------------------------------------------

void SpinControl::TakeKeys(bool take) {
    Window* const buddy = Window::Of(m_buddy);
    auto* const edit = buddy != nullptr ? dynamic_cast<EditControl*>(buddy->Control()) : nullptr;
    if (edit == nullptr)
        return;
    if (take && (m_window.Style() & UDS_ARROWKEYS) != 0)
        edit->SetArrowKeys(this);
    else if (!take && edit->ArrowKeys() == this)
        edit->SetArrowKeys(nullptr);
}

LRESULT SpinControl::SetBuddy(HWND buddy) {
    TakeKeys(false);
    const HWND before = std::exchange(m_buddy, Window::Of(buddy) != nullptr ? buddy : nullptr);
    TakeKeys(true);
    PlaceAtBuddy();
    return reinterpret_cast<LRESULT>(before);
}

void SpinControl::PlaceAtBuddy() {
    Window* const buddy = Window::Of(m_buddy);
    const bool right = (m_window.Style() & UDS_ALIGNRIGHT) != 0;
    if (buddy == nullptr || buddy->Parent() == nullptr || buddy->Parent() != m_window.Parent() ||
        (!right && (m_window.Style() & UDS_ALIGNLEFT) == 0))
        return;
    const CRect place = buddy->Parent()->ToClient(buddy->Widget()->geometry());
    const int width =
        IsHorizontal() ? 2 * GetSystemMetrics(SM_CXHSCROLL) : GetSystemMetrics(SM_CXVSCROLL);
    const UINT flags = SWP_NOZORDER | SWP_NOACTIVATE;
    buddy->SetPos(nullptr, right ? place.left : place.left + width, place.top,
                  std::max(place.Width() - width, 0), place.Height(), flags);
    m_window.SetPos(nullptr, right ? place.right - width : place.left, place.top, width,
                    place.Height(), flags);
}

void SpinControl::ReadBuddy(bool* error) {
    if (error != nullptr)
        *error = false;
    const Window* const buddy = Window::Of(m_buddy);
    if (buddy == nullptr || (m_window.Style() & UDS_SETBUDDYINT) == 0)
        return;
    char text[64] = {};
    ::SendMessage(m_buddy, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    const auto number = m_counter.Parse(text, GroupSeparator(m_window));
    if (number)
        m_counter.SetPosition(*number);
    else if (error != nullptr)
        *error = true;
}

void SpinControl::WriteBuddy() {
    if ((m_window.Style() & UDS_SETBUDDYINT) == 0 || Window::Of(m_buddy) == nullptr)
        return;
    const std::string text = m_counter.Text(m_counter.Position(), GroupSeparator(m_window));
    ::SendMessage(m_buddy, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

// --- stepping -----------------------------------------------------------------------------------

bool SpinControl::Step(bool up, int seconds) {
    ReadBuddy();
    const HWND window = m_window.Handle();
    NMUPDOWN notice{};
    notice.hdr = {window, m_window.Id(), UDN_DELTAPOS};
    notice.iPos = m_counter.Position();
    notice.iDelta = m_counter.Delta(up, seconds);
    const LRESULT refused =
        m_window.NotifyParent(WM_NOTIFY, m_window.Id(), reinterpret_cast<LPARAM>(&notice));
    if (Window::Of(window) == nullptr)
        return false;
    if (refused != 0)
        return true;
    m_counter.SetPosition(m_counter.After(notice.iDelta, (m_window.Style() & UDS_WRAP) != 0));
    WriteBuddy();
    if (Window::Of(window) == nullptr)
        return false;
    m_window.NotifyParent(IsHorizontal() ? WM_HSCROLL : WM_VSCROLL,
                          MAKEWPARAM(SB_THUMBPOSITION, m_counter.Position()),
                          reinterpret_cast<LPARAM>(window));
    return Window::Of(window) != nullptr;
}

void SpinControl::Press(bool up) {
    m_up = up;
    m_heldMs = 0;
    m_timer->start(kFirstRepeatMs);
    if (Window* const buddy = Window::Of(m_buddy);
        buddy != nullptr && (m_window.Style() & UDS_ARROWKEYS) != 0)
        SetFocus(m_buddy);
    Step(up, 0);
}

void SpinControl::Repeat() {
    m_heldMs += m_timer->interval();
    m_timer->setInterval(kRepeatMs);
    Step(m_up, m_heldMs / 1000);
}

void SpinControl::Release() {
    m_timer->stop();
    m_window.NotifyParent(IsHorizontal() ? WM_HSCROLL : WM_VSCROLL,
                          MAKEWPARAM(SB_ENDSCROLL, m_counter.Position()),
                          reinterpret_cast<LPARAM>(m_window.Handle()));
}

void SpinControl::ArrowKey(bool up) {
    if ((m_window.Style() & WS_DISABLED) == 0 && Step(up, 0))
        Release();
}

std::optional<LRESULT> SpinControl::SpinProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_STATIC;
    case UDM_SETRANGE:
        m_counter.SetRange(static_cast<std::int16_t>(HIWORD(lParam)),
                           static_cast<std::int16_t>(LOWORD(lParam)));
        return 0;
    case UDM_GETRANGE:
        return MAKELPARAM(m_counter.Upper(), m_counter.Lower());
    case UDM_SETRANGE32:
        m_counter.SetRange(static_cast<int>(wParam), static_cast<int>(lParam));
        return 0;
    case UDM_GETRANGE32:
        if (wParam != 0)
            *reinterpret_cast<int*>(wParam) = m_counter.Lower();
        if (lParam != 0)
            *reinterpret_cast<int*>(lParam) = m_counter.Upper();
        return 0;
    case UDM_SETPOS:
    case UDM_SETPOS32: {
        ReadBuddy();
        const int before =
            m_counter.SetPosition(message == UDM_SETPOS ? static_cast<std::int16_t>(LOWORD(lParam))
                                                        : static_cast<int>(lParam));
        WriteBuddy();
        return before;
    }
    case UDM_GETPOS:
    case UDM_GETPOS32: {
        bool error = false;
        ReadBuddy(&error);
        if (message == UDM_GETPOS)
            return MAKELPARAM(m_counter.Position(), error ? 1 : 0);
        if (lParam != 0)
            *reinterpret_cast<BOOL*>(lParam) = error ? TRUE : FALSE;
        return m_counter.Position();
    }
    case UDM_SETBUDDY:
        return SetBuddy(reinterpret_cast<HWND>(wParam));
    case UDM_GETBUDDY:
        return reinterpret_cast<LRESULT>(Window::Of(m_buddy) != nullptr ? m_buddy : nullptr);
    default:
        return std::nullopt;
    }
}

} // namespace vnbytstr::detail
