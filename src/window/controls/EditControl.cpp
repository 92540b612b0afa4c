#include "src/window/controls/EditControl.h"

#include "src/window/core/WidgetDetails.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/Wnd.h"

#include <QAbstractScrollArea>
#include <QScopedValueRollback>

#include <algorithm>
#include <cstring>

namespace vnbytstr::detail {

namespace {

/// The first line break's kind; CR LF for a text without one.
std::string FirstBreak(std::string_view text) {
    const std::size_t at = text.find_first_of("\r\n");
    if (at == std::string_view::npos || text.substr(at, 2) == "\r\n")
        return "\r\n";
    return std::string(text.substr(at, 1));
}

} // namespace

LRESULT EditControl::Proc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        if (answer != -1)
            Create(*reinterpret_cast<const CREATESTRUCT*>(lParam));
        return answer;
    }
    if (m_field != nullptr && m_field->Widget() != nullptr) {
        for (const auto proc : {&EditControl::TextProc, &EditControl::EditProc,
                                &EditControl::LineProc, &EditControl::KeyProc})
            if (const auto answer = (this->*proc)(message, wParam, lParam))
                return *answer;
    }
    return m_window.GenericProc(message, wParam, lParam);
}

void EditControl::Create(const CREATESTRUCT& create) {
    const DWORD style = m_window.Style();
    EditFieldStyle look;
    look.multiline = IsMultiline();
    look.wrap = (style & ES_AUTOHSCROLL) == 0;
    look.center = (style & ES_CENTER) != 0;
    look.right = (style & ES_RIGHT) != 0 || (m_window.ExStyle() & WS_EX_RIGHT) != 0;
    look.mirrored = m_window.IsMirrored();
    look.vScroll = m_window.WantsScrollBar(SB_VERT);
    look.hScroll = m_window.WantsScrollBar(SB_HORZ);
    m_field = MakeEditField(look, *this, HostParent(m_window));
    m_field->m_rules.upper = (style & ES_UPPERCASE) != 0;
    m_field->m_rules.lower = (style & ES_LOWERCASE) != 0;
    m_field->m_rules.digits = (style & ES_NUMBER) != 0;
    m_field->SetReadOnly((style & ES_READONLY) != 0);
    m_field->SetPassword((style & ES_PASSWORD) != 0);
    m_messages.emplace(*m_field, IsMultiline(), (style & ES_PASSWORD) != 0);
    HostControl(m_window, m_field->Widget());
    if (const auto* area = qobject_cast<QAbstractScrollArea*>(m_field->Widget()))
        m_window.RouteEvents(area->viewport());
    SetText(create.lpszName);
}

LRESULT EditControl::Notify(int code) { return m_window.NotifyCommand(code); }

// --- what the field tells -----------------------------------------------------------------------

void EditControl::FieldChanged() {
    const WindowWidget::EventScope scope;
    if (m_setting)
        return;
    m_original.reset();
    m_modified = true;
    const HWND window = m_window.Handle();
    Notify(EN_UPDATE);
    if (Window::Of(window) != nullptr)
        Notify(EN_CHANGE);
}

void EditControl::FieldFull() {
    const WindowWidget::EventScope scope;
    Notify(EN_MAXTEXT);
}

void EditControl::FieldCommand(UINT message) {
    const WindowWidget::EventScope scope;
    m_window.Send(message);
}

// --- the text -----------------------------------------------------------------------------------

void EditControl::SetText(const char* text) {
    const HWND window = m_window.Handle();
    {
        const QScopedValueRollback<bool> setting(m_setting, true);
        const std::string_view bytes(text != nullptr ? text : "");
        m_messages->SetBreak(IsMultiline() ? FirstBreak(bytes) : "\n");
        m_original = std::string(bytes);
        m_messages->ForgetTyped();
        m_field->SetText(m_messages->Units(bytes));
        m_modified = false;
    }
    if (IsMultiline())
        return;
    Notify(EN_UPDATE);
    if (Window::Of(window) != nullptr)
        Notify(EN_CHANGE);
}

std::string EditControl::Text() const {
    return m_original ? *m_original : m_messages->Bytes(m_field->Text());
}

void EditControl::SetSelection(int first, int end) {
    if (first < 0) {
        const int cursor = m_field->Cursor();
        m_field->Select(cursor, cursor, false);
        return;
    }
    // Most often the whole text is selected, which needs no counting.
    const int anchor = first == 0 ? 0 : m_messages->ToUnits(first);
    const int cursor = end < 0 ? m_field->Length() : end == 0 ? 0 : m_messages->ToUnits(end);
    m_field->Select(anchor, cursor, false);
}

void EditControl::ReplaceSelection(const char* text, bool canUndo) {
    const HWND window = m_window.Handle();
    m_field->Insert(m_messages->Units(text != nullptr ? text : ""));
    if (Window::Of(window) != nullptr && !canUndo)
        m_field->EmptyUndo();
}

std::optional<LRESULT> EditControl::TextProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_SETTEXT:
        SetText(reinterpret_cast<const char*>(lParam));
        return TRUE;
    case WM_GETTEXT:
        return CopyOut(Text(), reinterpret_cast<char*>(lParam), static_cast<std::size_t>(wParam));
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(Text().size());
    case EM_UNDO:
        return m_messages->Proc(WM_UNDO);
    default:
        return m_messages->Proc(message);
    }
}

std::optional<LRESULT> EditControl::EditProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case EM_GETSEL:
        return m_messages->GetSelection(wParam, lParam);
    case EM_SETSEL:
        SetSelection(static_cast<int>(wParam), static_cast<int>(lParam));
        return 1;
    case EM_REPLACESEL:
        ReplaceSelection(reinterpret_cast<const char*>(lParam), wParam != 0);
        return 0;
    case EM_SCROLLCARET:
        m_field->ScrollToCursor();
        return 1;
    case EM_LIMITTEXT:
        m_messages->SetLimit(wParam);
        return 0;
    case EM_GETLIMITTEXT:
        return static_cast<LRESULT>(m_field->m_rules.limit);
    case EM_GETMODIFY:
        return m_modified ? TRUE : FALSE;
    case EM_SETMODIFY:
        m_modified = wParam != 0;
        return 0;
    case EM_CANUNDO:
        return m_field->CanUndo() ? TRUE : FALSE;
    case EM_SETREADONLY:
        m_field->SetReadOnly(wParam != 0);
        m_window.ChangeClassStyle(ES_READONLY, wParam != 0 ? ES_READONLY : 0);
        return TRUE;
    case EM_SETCUEBANNER:
        m_cue = lParam != 0 ? reinterpret_cast<const char*>(lParam) : "";
        m_field->SetCue(ToQString(m_cue));
        return TRUE;
    case EM_GETCUEBANNER:
        CopyOut(m_cue, reinterpret_cast<char*>(wParam), static_cast<std::size_t>(lParam));
        return m_cue.empty() ? FALSE : TRUE;
    default:
        return std::nullopt;
    }
}

std::optional<LRESULT> EditControl::LineProc(UINT message, WPARAM wParam, LPARAM lParam) {
    // The line that holds a position in bytes (-1: the unit `whenNone`), and the unit it begins at.
    const auto lineOf = [this](int position, int whenNone) {
        const QString before =
            m_field->Text().left(position < 0 ? whenNone : m_messages->ToUnits(position));
        return std::pair(static_cast<int>(before.count(u'\n')),
                         static_cast<int>(before.lastIndexOf(u'\n')) + 1);
    };
    switch (message) {
    case EM_GETLINECOUNT:
        return IsMultiline() ? m_field->Text().count(u'\n') + 1 : 1;
    case EM_LINEINDEX: {
        const int line = static_cast<int>(wParam);
        if (line < 0)
            return m_messages->ToBytes(lineOf(-1, m_field->Cursor()).second);
        const QString text = m_field->Text();
        qsizetype start = 0;
        for (int i = 0; i < line; ++i) {
            start = text.indexOf(u'\n', start) + 1;
            if (start == 0 || !IsMultiline())
                return -1;
        }
        return m_messages->ToBytes(static_cast<int>(start));
    }
    case EM_LINELENGTH: {
        const int start = lineOf(static_cast<int>(wParam), m_field->Cursor()).second;
        return static_cast<LRESULT>(
            m_messages->Bytes(m_field->Text().mid(start).section(u'\n', 0, 0)).size());
    }
    case EM_LINEFROMCHAR:
        return lineOf(static_cast<int>(wParam), m_field->SelectionStart()).first;
    case EM_GETLINE: {
        auto* const buffer = reinterpret_cast<char*>(lParam);
        WORD size = 0;
        std::memcpy(&size, buffer, sizeof size);
        const int line = static_cast<int>(wParam);
        const std::string text = m_messages->Bytes(m_field->Text().section(u'\n', line, line));
        return static_cast<LRESULT>(text.copy(buffer, size)); // without a NUL: callers expect it so
    }
    default:
        return std::nullopt;
    }
}

// --- keys and focus -----------------------------------------------------------------------------

LRESULT EditControl::DialogCode(const MSG* message) const {
    LRESULT code = DLGC_WANTARROWS | DLGC_HASSETSEL | DLGC_WANTCHARS;
    if (IsMultiline() && (m_window.Style() & ES_WANTRETURN) != 0 && message != nullptr &&
        (message->message == WM_KEYDOWN || message->message == WM_CHAR) &&
        message->wParam == VK_RETURN)
        code |= DLGC_WANTMESSAGE;
    return code;
}

std::optional<LRESULT> EditControl::KeyProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CHAR:
        if (IsComposed(m_window) || !m_messages->TypeByte(static_cast<char>(wParam)))
            return std::nullopt;
        return 0;
    case WM_KEYDOWN:
        if (m_arrowKeys != nullptr && (wParam == VK_UP || wParam == VK_DOWN)) {
            m_arrowKeys->ArrowKey(wParam == VK_UP);
            return 0;
        }
        return std::nullopt;
    case WM_GETDLGCODE:
        return DialogCode(reinterpret_cast<const MSG*>(lParam));
    case WM_SETFOCUS:
    case WM_KILLFOCUS: {
        const HWND window = m_window.Handle();
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        if (Window::Of(window) != nullptr)
            Notify(message == WM_SETFOCUS ? EN_SETFOCUS : EN_KILLFOCUS);
        return answer;
    }
    default:
        return std::nullopt;
    }
}

} // namespace vnbytstr::detail
