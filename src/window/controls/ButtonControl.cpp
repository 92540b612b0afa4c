#include "src/window/controls/ButtonControl.h"

#include "src/window/controls/DialogKeys.h"
#include "src/window/core/WidgetDetails.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/Button.h"

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>

namespace vnbytstr::detail {

namespace {

// ButtonControl decides what a click checks; Qt's own change of state is turned off.
class CheckBoxWidget final : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

protected:
    void nextCheckState() override {}
};

class RadioButtonWidget final : public QRadioButton {
public:
    explicit RadioButtonWidget(QWidget* parent) : QRadioButton(parent) { setAutoExclusive(false); }

protected:
    void nextCheckState() override {}
};

class PushButtonWidget final : public QPushButton {
public:
    using QPushButton::QPushButton;

protected:
    void nextCheckState() override {}
};

} // namespace

ButtonControl::~ButtonControl() {
    if (m_button != nullptr)
        m_button->disconnect();
}

DWORD ButtonControl::Kind() const { return m_window.Style() & BS_TYPEMASK; }

bool ButtonControl::IsPush() const {
    return Kind() == BS_PUSHBUTTON || Kind() == BS_DEFPUSHBUTTON || Kind() == BS_USERBUTTON ||
           Kind() == BS_OWNERDRAW;
}

bool ButtonControl::IsRadio() const {
    return Kind() == BS_RADIOBUTTON || Kind() == BS_AUTORADIOBUTTON;
}

LRESULT ButtonControl::Proc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        if (answer != -1)
            MakeWidget();
        return answer;
    }
    if (m_button != nullptr || m_group != nullptr)
        if (const auto answer = ButtonProc(message, wParam, lParam))
            return *answer;
    return m_window.GenericProc(message, wParam, lParam);
}

void ButtonControl::MakeWidget() {
    QWidget* const parent = HostParent(m_window);
    if (Kind() == BS_GROUPBOX) {
        m_group = new QGroupBox(parent);
        HostControl(m_window, m_group);
        m_group->setFocusPolicy(Qt::NoFocus);
        // The controls in the frame are its siblings; the mouse is theirs.
        m_window.Widget()->setAttribute(Qt::WA_TransparentForMouseEvents);
        ShowText();
        return;
    }
    if (IsPush() || (m_window.Style() & BS_PUSHLIKE) != 0) {
        auto* const push = new PushButtonWidget(parent);
        push->setAutoDefault(false);
        push->setDefault(Kind() == BS_DEFPUSHBUTTON);
        push->setCheckable(!IsPush());
        m_button = push;
    } else if (IsRadio()) {
        m_button = new RadioButtonWidget(parent);
    } else {
        auto* const box = new CheckBoxWidget(parent);
        box->setTristate(Kind() == BS_3STATE || Kind() == BS_AUTO3STATE);
        m_button = box;
    }
    HostControl(m_window, m_button);
    if ((m_window.Style() & BS_LEFTTEXT) != 0)
        m_button->setLayoutDirection(
            m_button->layoutDirection() == Qt::LeftToRight ? Qt::RightToLeft : Qt::LeftToRight);
    QObject::connect(m_button, &QAbstractButton::clicked, m_button, [this] {
        const WindowWidget::EventScope scope;
        Clicked();
    });
    ShowText();
}

void ButtonControl::ShowText() {
    const QString text = ToQString(m_window.Text());
    if (m_button != nullptr)
        m_button->setText(text);
    else
        m_group->setTitle(text);
}

void ButtonControl::ShowCheck() {
    const QSignalBlocker quiet(m_button);
    if (auto* const box = qobject_cast<QCheckBox*>(m_button.data()))
        box->setCheckState(m_check == BST_CHECKED         ? Qt::Checked
                           : m_check == BST_INDETERMINATE ? Qt::PartiallyChecked
                                                          : Qt::Unchecked);
    else
        m_button->setChecked(m_check != BST_UNCHECKED);
    m_button->update();
}

void ButtonControl::CheckInGroup() {
    for (Window* const other : ControlsOfGroup(m_window))
        if (other != &m_window && (other->Style() & BS_TYPEMASK) == BS_AUTORADIOBUTTON &&
            dynamic_cast<ButtonControl*>(other->Control()) != nullptr)
            other->Send(BM_SETCHECK, BST_UNCHECKED);
    m_check = BST_CHECKED;
}

void ButtonControl::Clicked() {
    if (Kind() == BS_AUTOCHECKBOX)
        m_check = m_check == BST_UNCHECKED ? BST_CHECKED : BST_UNCHECKED;
    else if (Kind() == BS_AUTO3STATE)
        m_check = (m_check + 1) % 3;
    else if (Kind() == BS_AUTORADIOBUTTON)
        CheckInGroup();
    if (!IsPush())
        ShowCheck();
    m_window.NotifyCommand(BN_CLICKED);
}

void ButtonControl::SetStyle(DWORD style) {
    const DWORD kind = style & BS_TYPEMASK;
    auto* const push = qobject_cast<QPushButton*>(m_button.data());
    const bool toPush = kind == BS_PUSHBUTTON || kind == BS_DEFPUSHBUTTON;
    if (m_button == nullptr || toPush != IsPush())
        return;
    m_window.ChangeClassStyle(BS_TYPEMASK, kind);
    if (push != nullptr && toPush) {
        push->setDefault(kind == BS_DEFPUSHBUTTON);
        push->update();
    }
}

LRESULT ButtonControl::DialogCode() const {
    if (m_group != nullptr)
        return DLGC_STATIC;
    if (IsRadio())
        return DLGC_BUTTON | DLGC_RADIOBUTTON;
    if (Kind() == BS_DEFPUSHBUTTON)
        return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
    return IsPush() ? DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON : DLGC_BUTTON;
}

std::optional<LRESULT> ButtonControl::ButtonProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_GETDLGCODE:
        return DialogCode();
    case WM_SETTEXT: {
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        ShowText();
        return answer;
    }
    case BM_GETCHECK:
        return m_check;
    case BM_SETCHECK: {
        if (m_button == nullptr || IsPush())
            return 0;
        const bool third = Kind() == BS_3STATE || Kind() == BS_AUTO3STATE;
        m_check = wParam == BST_INDETERMINATE && third ? BST_INDETERMINATE
                  : wParam != BST_UNCHECKED            ? BST_CHECKED
                                                       : BST_UNCHECKED;
        ShowCheck();
        return 0;
    }
    case BM_GETSTATE:
        return m_button == nullptr
                   ? 0
                   : m_check | (m_button->isDown() ? static_cast<int>(BST_PUSHED) : 0) |
                         (m_button->hasFocus() ? static_cast<int>(BST_FOCUS) : 0);
    case BM_SETSTYLE:
        SetStyle(static_cast<DWORD>(wParam));
        return 0;
    case BM_CLICK:
        if (m_button != nullptr && m_button->isEnabled())
            Clicked();
        return 0;
    case WM_KEYDOWN:
        // Arrow keys are the dialog's; Qt would move the focus.
        if (wParam >= VK_LEFT && wParam <= VK_DOWN)
            return 0;
        return std::nullopt;
    case WM_SETFOCUS:
    case WM_KILLFOCUS: {
        const HWND window = m_window.Handle();
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        if (Window::Of(window) != nullptr && (m_window.Style() & BS_NOTIFY) != 0)
            m_window.NotifyCommand(message == WM_SETFOCUS ? BN_SETFOCUS : BN_KILLFOCUS);
        return answer;
    }
    case WM_LBUTTONDBLCLK:
        if ((m_window.Style() & BS_NOTIFY) != 0) {
            const HWND window = m_window.Handle();
            m_window.NotifyCommand(BN_DBLCLK);
            if (Window::Of(window) == nullptr)
                return 0;
        }
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

} // namespace vnbytstr::detail
