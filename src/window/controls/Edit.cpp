#include "vnbytstr/window/Edit.h"

#include <algorithm>
#include <limits>

IMPLEMENT_DYNAMIC(CEdit, CWnd)

BOOL CEdit::Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    return CWnd::Create("EDIT", nullptr, style | WS_CHILD, rect, parent, id);
}

void CEdit::GetSel(int& first, int& end) const {
    DWORD from = 0;
    DWORD to = 0;
    SendMessage(EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
    first = static_cast<int>(from);
    end = static_cast<int>(to);
}

DWORD CEdit::GetSel() const { return static_cast<DWORD>(SendMessage(EM_GETSEL)); }

void CEdit::SetSel(int first, int end, BOOL noScroll) {
    SendMessage(EM_SETSEL, static_cast<WPARAM>(first), end);
    if (!noScroll)
        SendMessage(EM_SCROLLCARET);
}

void CEdit::ReplaceSel(LPCTSTR text, BOOL canUndo) {
    SendMessage(EM_REPLACESEL, static_cast<WPARAM>(canUndo), reinterpret_cast<LPARAM>(text));
}

void CEdit::Clear() { SendMessage(WM_CLEAR); }
void CEdit::Cut() { SendMessage(WM_CUT); }
void CEdit::Copy() { SendMessage(WM_COPY); }
void CEdit::Paste() { SendMessage(WM_PASTE); }

void CEdit::LimitText(int bytes) {
    SendMessage(EM_LIMITTEXT, static_cast<WPARAM>(std::max(bytes, 0)));
}

BOOL CEdit::GetModify() const { return static_cast<BOOL>(SendMessage(EM_GETMODIFY)); }

void CEdit::SetModify(BOOL modified) { SendMessage(EM_SETMODIFY, static_cast<WPARAM>(modified)); }

BOOL CEdit::CanUndo() const { return static_cast<BOOL>(SendMessage(EM_CANUNDO)); }
BOOL CEdit::Undo() { return static_cast<BOOL>(SendMessage(EM_UNDO)); }
BOOL CEdit::SetReadOnly(BOOL readOnly) {
    return static_cast<BOOL>(SendMessage(EM_SETREADONLY, static_cast<WPARAM>(readOnly)));
}

BOOL CEdit::SetCueBanner(LPCTSTR text) {
    return static_cast<BOOL>(SendMessage(EM_SETCUEBANNER, 0, reinterpret_cast<LPARAM>(text)));
}

int CEdit::GetLineCount() const { return static_cast<int>(SendMessage(EM_GETLINECOUNT)); }

int CEdit::LineIndex(int line) const {
    return static_cast<int>(SendMessage(EM_LINEINDEX, static_cast<WPARAM>(line)));
}

int CEdit::LineLength(int position) const {
    return static_cast<int>(SendMessage(EM_LINELENGTH, static_cast<WPARAM>(position)));
}

int CEdit::LineFromChar(int position) const {
    return static_cast<int>(SendMessage(EM_LINEFROMCHAR, static_cast<WPARAM>(position)));
}

int CEdit::GetLine(int line, LPTSTR buffer, int size) const {
    if (buffer == nullptr || size <= 0 || line < 0)
        return 0;
    // The message carries the buffer's size in its first two bytes, so it takes a buffer of two.
    char small[2] = {};
    char* const place = size < 2 ? small : buffer;
    const auto room = static_cast<WORD>(std::min<int>(size, std::numeric_limits<WORD>::max()));
    std::copy_n(reinterpret_cast<const char*>(&room), sizeof room, place);
    const auto count = static_cast<int>(
        SendMessage(EM_GETLINE, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(place)));
    if (place == small)
        buffer[0] = small[0];
    return count;
}
