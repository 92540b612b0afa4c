#include "src/window/controls/EditControl.h"

#include "src/charset/CodePage.h"
#include "src/window/core/WidgetDetails.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/Wnd.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QClipboard>
#include <QScopedValueRollback>

#include <algorithm>
#include <cstring>

namespace vnbytstr::detail {

namespace {

/// The kind of line break that a text has first.
std::string FirstBreak(std::string_view text) {
    const std::size_t at = text.find_first_of("\r\n");
    if (at == std::string_view::npos || text.substr(at, 2) == "\r\n")
        return "\r\n";
    return std::string(text.substr(at, 1));
}

LRESULT CopyOut(std::string_view text, char* buffer, std::size_t size) {
    if (buffer == nullptr || size == 0)
        return 0;
    const std::size_t count = std::min(text.size(), size - 1);
    std::memcpy(buffer, text.data(), count);
    buffer[count] = '\0';
    return static_cast<LRESULT>(count);
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
    const DWORD style = m_window.m_style;
    EditFieldStyle look;
    look.multiline = IsMultiline();
    look.wrap = (style & ES_AUTOHSCROLL) == 0;
    look.center = (style & ES_CENTER) != 0;
    look.right = (style & ES_RIGHT) != 0 || (m_window.m_exStyle & WS_EX_RIGHT) != 0;
    look.vScroll = m_window.m_wantsVScroll;
    look.hScroll = m_window.m_wantsHScroll;
    m_field = MakeEditField(look, *this, HostParent(m_window));
    m_field->m_rules.upper = (style & ES_UPPERCASE) != 0;
    m_field->m_rules.lower = (style & ES_LOWERCASE) != 0;
    m_field->m_rules.digits = (style & ES_NUMBER) != 0;
    m_field->SetReadOnly((style & ES_READONLY) != 0);
    m_password = (style & ES_PASSWORD) != 0 ? '*' : '\0';
    m_field->SetPassword(m_password != 0);
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
        m_break = IsMultiline() ? FirstBreak(bytes) : "\n";
        m_field->m_rules.breakBytes = m_break.size();
        QString shown = ToQString(bytes);
        if (IsMultiline())
            shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
        m_original = std::string(bytes);
        m_typed.clear();
        m_field->SetText(shown);
        m_modified = false;
    }
    if (IsMultiline())
        return;
    Notify(EN_UPDATE);
    if (Window::Of(window) != nullptr)
        Notify(EN_CHANGE);
}

std::string EditControl::Wire(const QString& text) const {
    std::string bytes = FromQString(text);
    if (m_break == "\n")
        return bytes;
    std::string out;
    out.reserve(bytes.size());
    for (const char byte : bytes) {
        if (byte == '\n')
            out += m_break;
        else
            out += byte;
    }
    return out;
}

std::string EditControl::Text() const { return m_original ? *m_original : Wire(m_field->Text()); }

int EditControl::ToBytes(int units) const {
    return static_cast<int>(Wire(m_field->Text().left(units)).size());
}

int EditControl::ToUnits(int bytes) const {
    const std::string text = Wire(m_field->Text());
    if (bytes >= static_cast<int>(text.size()))
        return m_field->Length();
    const auto& page = CodePage::Ansi();
    const std::size_t start = page.CharStart(text, static_cast<std::size_t>(std::max(bytes, 0)));
    QString before = ToQString(std::string_view(text).substr(0, start));
    if (m_break == "\r\n")
        before.remove(u'\r');
    return static_cast<int>(before.size());
}

void EditControl::SetSelection(int first, int end) {
    if (first < 0) {
        const int cursor = m_field->Cursor();
        m_field->Select(cursor, cursor, false);
        return;
    }
    // The ends are most often those of the text; they need no counting.
    const int anchor = first == 0 ? 0 : ToUnits(first);
    m_field->Select(anchor, end < 0 ? m_field->Length() : end == 0 ? 0 : ToUnits(end), false);
}

LRESULT EditControl::GetSelection(WPARAM first, LPARAM end) const {
    const int from = ToBytes(m_field->SelectionStart());
    const int to = ToBytes(m_field->SelectionEnd());
    if (first != 0)
        *reinterpret_cast<DWORD*>(first) = static_cast<DWORD>(from);
    if (end != 0)
        *reinterpret_cast<DWORD*>(end) = static_cast<DWORD>(to);
    return from > 0xFFFF || to > 0xFFFF ? -1 : MAKELPARAM(from, to);
}

void EditControl::ReplaceSelection(const char* text, bool canUndo) {
    QString added = ToQString(text != nullptr ? text : "");
    if (IsMultiline())
        added.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    const HWND window = m_window.Handle();
    m_field->Insert(added);
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
    case WM_CUT:
    case WM_COPY:
        if (m_password == 0 && m_field->SelectionStart() != m_field->SelectionEnd())
            m_field->Copy();
        if (message == WM_COPY || m_password != 0 || m_field->IsReadOnly())
            return 0;
        m_field->Insert(QString());
        return 0;
    case WM_PASTE:
        Paste();
        return 0;
    case WM_CLEAR:
        if (!m_field->IsReadOnly())
            m_field->Insert(QString());
        return 0;
    case WM_UNDO:
    case EM_UNDO: {
        const bool can = m_field->CanUndo() && !m_field->IsReadOnly();
        if (can)
            m_field->Undo();
        return can ? TRUE : FALSE;
    }
    default:
        return std::nullopt;
    }
}

void EditControl::Paste() {
    QString text = QApplication::clipboard()->text();
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (!IsMultiline())
        text = text.section(u'\n', 0, 0); // a line takes the first one, as ever
    if (!text.isEmpty())
        m_field->InsertFromUser(text);
}

std::optional<LRESULT> EditControl::EditProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case EM_GETSEL:
        return GetSelection(wParam, lParam);
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
        m_field->m_rules.limit =
            wParam == 0 ? EditRules::NoLimit
                        : std::min(static_cast<std::size_t>(wParam), EditRules::NoLimit);
        return 0;
    case EM_GETMODIFY:
        return m_modified ? TRUE : FALSE;
    case EM_SETMODIFY:
        m_modified = wParam != 0;
        return 0;
    case EM_CANUNDO:
        return m_field->CanUndo() ? TRUE : FALSE;
    case EM_SETREADONLY:
        m_field->SetReadOnly(wParam != 0);
        m_window.m_style =
            wParam != 0 ? m_window.m_style | ES_READONLY : m_window.m_style & ~ES_READONLY;
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
    // The line and its beginning, in units, that holds a position of -1 or in bytes.
    const auto lineOf = [this](int position, int whenNone) {
        const QString before = m_field->Text().left(position < 0 ? whenNone : ToUnits(position));
        return std::pair(static_cast<int>(before.count(u'\n')),
                         static_cast<int>(before.lastIndexOf(u'\n')) + 1);
    };
    switch (message) {
    case EM_GETLINECOUNT:
        return IsMultiline() ? m_field->Text().count(u'\n') + 1 : 1;
    case EM_LINEINDEX: {
        const int line = static_cast<int>(wParam);
        if (line < 0)
            return ToBytes(lineOf(-1, m_field->Cursor()).second);
        const QString text = m_field->Text();
        qsizetype start = 0;
        for (int i = 0; i < line; ++i) {
            start = text.indexOf(u'\n', start) + 1;
            if (start == 0 || !IsMultiline())
                return -1;
        }
        return ToBytes(static_cast<int>(start));
    }
    case EM_LINELENGTH: {
        const int start = lineOf(static_cast<int>(wParam), m_field->Cursor()).second;
        return static_cast<LRESULT>(Wire(m_field->Text().mid(start).section(u'\n', 0, 0)).size());
    }
    case EM_LINEFROMCHAR:
        return lineOf(static_cast<int>(wParam), m_field->SelectionStart()).first;
    case EM_GETLINE: {
        auto* const buffer = reinterpret_cast<char*>(lParam);
        WORD size = 0;
        std::memcpy(&size, buffer, sizeof size);
        const int line = static_cast<int>(wParam);
        const std::string text = Wire(m_field->Text().section(u'\n', line, line));
        return static_cast<LRESULT>(text.copy(buffer, size)); // no NUL, as callers know it
    }
    default:
        return std::nullopt;
    }
}

// --- keys and focus -----------------------------------------------------------------------------

/// False: a control character, which is its key's business.
bool EditControl::TypeByte(char byte) {
    if (m_typed.empty() && (static_cast<BYTE>(byte) < 0x20 || byte == 0x7F))
        return false;
    m_typed += byte;
    const char* const begin = m_typed.data();
    if (!CodePage::Ansi().IsCutShort(begin, begin + m_typed.size()))
        m_field->InsertFromUser(ToQString(std::exchange(m_typed, {})));
    return true;
}

LRESULT EditControl::DialogCode(const MSG* message) const {
    LRESULT code = DLGC_WANTARROWS | DLGC_HASSETSEL | DLGC_WANTCHARS;
    if (IsMultiline() && (m_window.m_style & ES_WANTRETURN) != 0 && message != nullptr &&
        (message->message == WM_KEYDOWN || message->message == WM_CHAR) &&
        message->wParam == VK_RETURN)
        code |= DLGC_WANTMESSAGE;
    return code;
}

std::optional<LRESULT> EditControl::KeyProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CHAR:
        if (IsComposed(m_window) || !TypeByte(static_cast<char>(wParam)))
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
