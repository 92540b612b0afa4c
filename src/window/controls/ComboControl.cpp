#include "src/window/controls/ComboControl.h"

#include "src/charset/Collation.h"
#include "src/window/controls/ComboWidgets.h"
#include "src/window/controls/TextMatch.h"
#include "src/window/core/WidgetDetails.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/ComboBox.h"

#include <QLineEdit>
#include <QScopedValueRollback>

#include <algorithm>
#include <cstring>

namespace vnbytstr::detail {

ComboControl::~ComboControl() {
    if (m_combo != nullptr)
        m_combo->Forget();
    if (m_simple != nullptr)
        m_simple->Forget();
}

LRESULT ComboControl::Proc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        if (answer != -1)
            Create();
        return answer;
    }
    if (m_combo != nullptr || m_simple != nullptr) {
        for (const auto proc : {&ComboControl::ItemProc, &ComboControl::FieldProc,
                                &ComboControl::WindowProc, &ComboControl::KeyProc})
            if (const auto answer = (this->*proc)(message, wParam, lParam))
                return *answer;
    }
    return m_window.GenericProc(message, wParam, lParam);
}

void ComboControl::Notify(int code) { m_window.NotifyCommand(code); }

namespace {

EditFieldStyle LookOf(const Window& window) {
    EditFieldStyle look;
    look.right = (window.ExStyle() & WS_EX_RIGHT) != 0;
    look.mirrored = window.IsMirrored();
    return look;
}

} // namespace

// --- making -------------------------------------------------------------------------------------

void ComboControl::Create() {
    const DWORD kind = m_window.Style() & CBS_DROPDOWNLIST;
    m_droppedHeight = m_window.Widget()->height();
    // The list scrolls, the window does not.
    m_window.ShowScrollBar(SB_VERT, false);
    if (kind == CBS_SIMPLE)
        CreateSimple();
    else
        CreateDropDown(kind == CBS_DROPDOWN);
    if (kind != CBS_SIMPLE)
        m_window.SetPos(nullptr, 0, 0, m_window.Widget()->width(), FieldHeight(),
                        SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    if (m_field != nullptr)
        ShowInField(m_window.Text());
}

void ComboControl::CreateDropDown(bool editable) {
    m_combo = new ComboWidget(*this, HostParent(m_window));
    HostControl(m_window, m_combo);
    if (!editable)
        return;
    QLineEdit* line = nullptr;
    m_field = MakeLineField(*this, LookOf(m_window), line);
    m_messages.emplace(*m_field, false, false);
    m_combo->TakeLine(line);
    m_window.RouteEvents(line);
}

void ComboControl::CreateSimple() {
    QLineEdit* line = nullptr;
    m_field = MakeLineField(*this, LookOf(m_window), line);
    m_messages.emplace(*m_field, false, false);
    m_simple = new SimpleComboWidget(*this, line, HostParent(m_window));
    HostControl(m_window, m_simple);
    m_window.RouteEvents(line);
}

int ComboControl::FieldHeight() const {
    if (m_fieldHeight > 0)
        return m_fieldHeight + 6;
    return QFontMetrics(m_window.QtFont()).height() + 8;
}

// --- what the widget tells ----------------------------------------------------------------------

void ComboControl::FieldChanged() {
    const WindowWidget::EventScope scope;
    if (m_setting)
        return;
    m_current = -1;
    const HWND window = m_window.Handle();
    Notify(CBN_EDITUPDATE);
    if (Window::Of(window) != nullptr)
        Notify(CBN_EDITCHANGE);
}

void ComboControl::FieldCommand(UINT message) { m_window.Send(message); }

void ComboControl::Picked(int index) {
    const WindowWidget::EventScope scope;
    if (m_setting || !Has(index))
        return;
    m_pickedWhileOpen = true;
    const bool changed = index != m_current;
    m_current = index;
    if (m_field != nullptr) {
        ShowInField(m_items[static_cast<std::size_t>(index)].text);
        m_field->Select(0, m_field->Length(), false);
    }
    const HWND window = m_window.Handle();
    Notify(CBN_SELENDOK);
    if (changed && Window::Of(window) != nullptr)
        Notify(CBN_SELCHANGE);
}

void ComboControl::PopupShown() {
    const WindowWidget::EventScope scope;
    m_pickedWhileOpen = false;
    Notify(CBN_DROPDOWN);
}

void ComboControl::PopupHidden() {
    const WindowWidget::EventScope scope;
    const HWND window = m_window.Handle();
    if (!m_pickedWhileOpen)
        Notify(CBN_SELENDCANCEL);
    if (Window::Of(window) != nullptr)
        Notify(CBN_CLOSEUP);
}

// --- items --------------------------------------------------------------------------------------

std::optional<LRESULT> ComboControl::ItemProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const int index = static_cast<int>(wParam);
    const auto* const text = reinterpret_cast<const char*>(lParam);
    switch (message) {
    case CB_ADDSTRING:
        return Add(text);
    case CB_INSERTSTRING:
        return Insert(index == -1 ? static_cast<int>(m_items.size()) : index, text);
    case CB_DELETESTRING:
        return Delete(index);
    case CB_RESETCONTENT:
        Reset();
        return CB_OKAY;
    case CB_GETCOUNT:
        return static_cast<LRESULT>(m_items.size());
    case CB_GETCURSEL:
        return m_current;
    case CB_SETCURSEL:
        return Select(index);
    case CB_FINDSTRING:
        return Find(index, text, false);
    case CB_FINDSTRINGEXACT:
        return Find(index, text, true);
    case CB_SELECTSTRING: {
        const int found = Find(index, text, false);
        return found < 0 ? CB_ERR : Select(found);
    }
    case CB_GETLBTEXT:
    case CB_GETLBTEXTLEN: {
        if (!Has(index))
            return CB_ERR;
        const std::string& item = m_items[static_cast<std::size_t>(index)].text;
        if (message == CB_GETLBTEXT)
            std::memcpy(reinterpret_cast<char*>(lParam), item.c_str(), item.size() + 1);
        return static_cast<LRESULT>(item.size());
    }
    case CB_GETITEMDATA:
        return Has(index) ? static_cast<LRESULT>(m_items[static_cast<std::size_t>(index)].data)
                          : CB_ERR;
    case CB_SETITEMDATA:
        if (!Has(index))
            return CB_ERR;
        m_items[static_cast<std::size_t>(index)].data = static_cast<std::uintptr_t>(lParam);
        return CB_OKAY;
    case CB_INITSTORAGE:
        m_items.reserve(m_items.size() + std::min<std::size_t>(wParam, 1u << 20));
        return static_cast<LRESULT>(m_items.capacity());
    default:
        return std::nullopt;
    }
}

LRESULT ComboControl::Add(const char* text) {
    if (text == nullptr)
        return CB_ERR;
    if ((m_window.Style() & CBS_SORT) == 0)
        return Insert(static_cast<int>(m_items.size()), text);
    const auto& order = Collation::Current();
    const std::string_view added(text);
    const auto place = std::upper_bound(m_items.begin(), m_items.end(), added,
                                        [&](std::string_view left, const Item& right) {
                                            return order.Compare(left, right.text) < 0;
                                        });
    return Insert(static_cast<int>(place - m_items.begin()), text);
}

LRESULT ComboControl::Insert(int index, const char* text) {
    if (text == nullptr || index < 0 || index > static_cast<int>(m_items.size()))
        return CB_ERR;
    const QScopedValueRollback<bool> setting(m_setting, true);
    m_items.insert(m_items.begin() + index, Item{text, 0});
    if (m_current >= index)
        ++m_current;
    if (m_combo != nullptr)
        m_combo->InsertKeepingField(index, ToQString(text));
    else
        m_simple->Insert(index, ToQString(text));
    return index;
}

LRESULT ComboControl::Delete(int index) {
    if (!Has(index))
        return CB_ERR;
    const QScopedValueRollback<bool> setting(m_setting, true);
    m_items.erase(m_items.begin() + index);
    const bool current = m_current == index;
    if (current)
        m_current = -1;
    else if (m_current > index)
        --m_current;
    if (m_combo != nullptr)
        m_combo->RemoveKeepingField(index, m_current);
    else
        m_simple->Remove(index);
    return static_cast<LRESULT>(m_items.size());
}

void ComboControl::Reset() {
    const QScopedValueRollback<bool> setting(m_setting, true);
    m_items.clear();
    m_current = -1;
    if (m_combo != nullptr)
        m_combo->clear();
    else
        m_simple->Clear();
    if (m_field != nullptr)
        m_field->SetText(QString());
}

int ComboControl::Find(int after, const char* text, bool whole) const {
    if (text == nullptr)
        return CB_ERR;
    return TextMatch(text).Find(after, static_cast<int>(m_items.size()), whole, [this](int index) {
        return std::string_view(m_items[static_cast<std::size_t>(index)].text);
    });
}

LRESULT ComboControl::Select(int index) {
    const QScopedValueRollback<bool> setting(m_setting, true);
    m_current = Has(index) ? index : -1;
    if (m_combo != nullptr)
        m_combo->setCurrentIndex(m_current);
    else
        m_simple->Select(m_current);
    if (m_field != nullptr)
        ShowInField(m_current >= 0 ? m_items[static_cast<std::size_t>(m_current)].text
                                   : std::string());
    return m_current >= 0 ? m_current : CB_ERR;
}

// --- the field ----------------------------------------------------------------------------------

void ComboControl::ShowInField(const std::string& text) {
    const QScopedValueRollback<bool> setting(m_setting, true);
    m_messages->ForgetTyped();
    m_field->SetText(ToQString(text));
}

std::optional<LRESULT> ComboControl::FieldProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const bool isText =
        message == WM_SETTEXT || message == WM_GETTEXT || message == WM_GETTEXTLENGTH;
    if (m_field == nullptr && !isText)
        return message == CB_LIMITTEXT ? std::optional<LRESULT>(TRUE) : std::nullopt;
    switch (message) {
    case WM_SETTEXT:
        if (m_field == nullptr)
            return CB_ERR;
        ShowInField(lParam != 0 ? reinterpret_cast<const char*>(lParam) : "");
        return TRUE;
    case WM_GETTEXT:
    case WM_GETTEXTLENGTH: {
        const std::string text = m_field != nullptr ? FromQString(m_field->Text())
                                 : Has(m_current)
                                     ? m_items[static_cast<std::size_t>(m_current)].text
                                     : std::string();
        if (message == WM_GETTEXTLENGTH)
            return static_cast<LRESULT>(text.size());
        return CopyOut(text, reinterpret_cast<char*>(lParam), static_cast<std::size_t>(wParam));
    }
    case CB_LIMITTEXT:
        m_messages->SetLimit(wParam);
        return TRUE;
    case CB_GETEDITSEL:
        return m_messages->GetSelection(wParam, lParam);
    default:
        return m_messages->Proc(message);
    }
}

// --- window, keys, focus ------------------------------------------------------------------------

std::optional<LRESULT> ComboControl::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_WINDOWPOSCHANGING: {
        // Callers give the height including the dropped list; the window is as high as the field.
        auto* const place = reinterpret_cast<WINDOWPOS*>(lParam);
        if (m_combo != nullptr && (place->flags & SWP_NOSIZE) == 0) {
            if (place->cy != FieldHeight())
                m_droppedHeight = place->cy;
            place->cy = FieldHeight();
        }
        return std::nullopt;
    }
    case WM_SETFONT: {
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        if (m_combo != nullptr)
            m_window.SetPos(nullptr, 0, 0, m_window.Widget()->width(), FieldHeight(),
                            SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        return answer;
    }
    case CB_SHOWDROPDOWN:
        if (m_combo != nullptr) {
            if (wParam != 0)
                m_combo->showPopup();
            else
                m_combo->hidePopup();
        }
        return TRUE;
    case CB_GETDROPPEDSTATE:
        return m_simple != nullptr || m_combo->IsOpen() ? TRUE : FALSE;
    case CB_GETDROPPEDCONTROLRECT: {
        const QWidget* const widget = m_window.Widget();
        const QPoint corner = widget->mapToGlobal(QPoint(0, 0));
        *reinterpret_cast<RECT*>(lParam) = {
            corner.x(), corner.y(), corner.x() + widget->width(),
            corner.y() + std::max(widget->height(), m_combo != nullptr ? m_droppedHeight : 0)};
        return TRUE;
    }
    case CB_GETITEMHEIGHT:
        if (static_cast<int>(wParam) == -1)
            return FieldHeight() - 6;
        return QFontMetrics(m_window.QtFont()).height();
    case CB_SETITEMHEIGHT:
        if (static_cast<int>(wParam) == -1) {
            m_fieldHeight = static_cast<int>(std::clamp<LPARAM>(lParam, 1, 255));
            if (m_combo != nullptr)
                m_window.SetPos(nullptr, 0, 0, m_window.Widget()->width(), FieldHeight(),
                                SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        }
        return CB_OKAY;
    default:
        return std::nullopt;
    }
}

std::optional<LRESULT> ComboControl::KeyProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CHAR:
        if (IsComposed(m_window) || m_field == nullptr ||
            !m_messages->TypeByte(static_cast<char>(wParam)))
            return std::nullopt;
        return 0;
    case WM_GETDLGCODE: {
        LRESULT code = DLGC_WANTARROWS | DLGC_WANTCHARS;
        const auto* const key = reinterpret_cast<const MSG*>(lParam);
        // An open list takes the keys that close it.
        if (m_combo != nullptr && m_combo->IsOpen() && key != nullptr &&
            (key->wParam == VK_RETURN || key->wParam == VK_ESCAPE))
            code |= DLGC_WANTMESSAGE;
        return code;
    }
    case WM_SETFOCUS:
    case WM_KILLFOCUS: {
        const HWND window = m_window.Handle();
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        if (Window::Of(window) == nullptr)
            return answer;
        if (m_field != nullptr && message == WM_SETFOCUS)
            m_field->Select(0, m_field->Length(), false);
        if (message == WM_KILLFOCUS && m_combo != nullptr && m_combo->IsOpen())
            m_combo->hidePopup();
        if (Window::Of(window) != nullptr)
            Notify(message == WM_SETFOCUS ? CBN_SETFOCUS : CBN_KILLFOCUS);
        return answer;
    }
    default:
        return std::nullopt;
    }
}

} // namespace vnbytstr::detail
