// CEdit, the system's edit control: one line, or several with ES_MULTILINE.
//
// Every function also has its EM_ or WM_ message, for a window of the class "EDIT". Text is in the
// ANSI code page, and positions, lengths and limits count its bytes, line breaks included. A
// position inside a character counts as the character's beginning. Lines count from 0; they are
// those that the line breaks make, however they are wrapped on the screen.
//
// A text is returned byte for byte as it was set until it is edited. A typed line break is of the
// kind that comes first in the text set last (CR LF, LF or CR; CR LF when that text has no break);
// editing a text with several kinds turns them all into that kind.
//
// Typed characters come as WM_CHAR, one byte each; what an input method composes goes into the
// control directly. The usual keys of the clipboard and of undo send WM_CUT, WM_COPY, WM_PASTE and
// WM_UNDO to the control.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

// --- messages, notifications and styles ----------------------------------------------------------
inline constexpr UINT EM_GETSEL = 0x00B0;
inline constexpr UINT EM_SETSEL = 0x00B1;
inline constexpr UINT EM_SCROLLCARET = 0x00B7;
inline constexpr UINT EM_GETMODIFY = 0x00B8;
inline constexpr UINT EM_SETMODIFY = 0x00B9;
inline constexpr UINT EM_GETLINECOUNT = 0x00BA;
inline constexpr UINT EM_LINEINDEX = 0x00BB;
inline constexpr UINT EM_LINELENGTH = 0x00C1;
inline constexpr UINT EM_REPLACESEL = 0x00C2;
inline constexpr UINT EM_GETLINE = 0x00C4;
inline constexpr UINT EM_LIMITTEXT = 0x00C5;
inline constexpr UINT EM_CANUNDO = 0x00C6;
inline constexpr UINT EM_UNDO = 0x00C7;
inline constexpr UINT EM_LINEFROMCHAR = 0x00C9;
inline constexpr UINT EM_SETREADONLY = 0x00CF;
inline constexpr UINT EM_GETLIMITTEXT = 0x00D5;
inline constexpr int EN_SETFOCUS = 0x0100;
inline constexpr int EN_KILLFOCUS = 0x0200;
inline constexpr int EN_CHANGE = 0x0300;
inline constexpr int EN_UPDATE = 0x0400;
inline constexpr int EN_MAXTEXT = 0x0501;
inline constexpr DWORD ES_LEFT = 0x0000;
inline constexpr DWORD ES_CENTER = 0x0001;
inline constexpr DWORD ES_RIGHT = 0x0002;
inline constexpr DWORD ES_MULTILINE = 0x0004;
inline constexpr DWORD ES_UPPERCASE = 0x0008;
inline constexpr DWORD ES_LOWERCASE = 0x0010;
inline constexpr DWORD ES_PASSWORD = 0x0020;
inline constexpr DWORD ES_AUTOVSCROLL = 0x0040;
inline constexpr DWORD ES_AUTOHSCROLL = 0x0080;
inline constexpr DWORD ES_READONLY = 0x0800;
inline constexpr DWORD ES_WANTRETURN = 0x1000;
inline constexpr DWORD ES_NUMBER = 0x2000;
/// lParam: a text in the ANSI code page, shown while the control is empty.
inline constexpr UINT EM_SETCUEBANNER = 0x1501;
inline constexpr UINT EM_GETCUEBANNER = 0x1502; ///< wParam: the buffer, lParam: its size

class VNBYTSTR_CONTROLS_API CEdit : public CWnd {
    DECLARE_DYNAMIC(CEdit)
public:
    CEdit() = default;
    /// A child window of class "EDIT".
    virtual BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id);
    using CWnd::Create;

    /// The selection; `first` and `end` are equal when nothing is selected. The cursor is at `end`
    /// unless the user selected backwards.
    void GetSel(int& first, int& end) const;
    DWORD GetSel() const; ///< as MAKELONG; positions past 65535 do not fit
    /// Selects and puts the cursor at `end`. (0, -1): everything; first -1: nothing.
    void SetSel(int first, int end, BOOL noScroll = FALSE);
    /// Replaces the selection; the limit does not apply. Undo can revert it unless `canUndo` is
    /// FALSE.
    void ReplaceSel(LPCTSTR text, BOOL canUndo = FALSE);
    void Clear(); ///< deletes the selection
    void Cut();
    void Copy();
    void Paste();

    /// How many bytes the user may type or paste; 0: no limit. A text set by the program may be
    /// longer. Input that does not fit is cut off at a character, and the parent gets EN_MAXTEXT.
    void LimitText(int bytes = 0);

    BOOL GetModify() const; ///< changed by the user since SetWindowText or SetModify(FALSE)
    /// Sets what GetModify returns.
    void SetModify(BOOL modified = TRUE);
    /// Whether there is a change that Undo reverts, and its reverting.
    BOOL CanUndo() const;
    BOOL Undo();
    /// Whether the user can only read and copy the text.
    BOOL SetReadOnly(BOOL readOnly = TRUE);
    /// `text` is shown while the control is empty.
    BOOL SetCueBanner(LPCTSTR text);

    /// Lines of the text, at least 1.
    int GetLineCount() const;
    /// Position where a line begins (-1: the cursor's line); -1 when there is no such line.
    int LineIndex(int line = -1) const;
    /// Bytes of the line that holds a position (-1: the cursor's), without its break.
    int LineLength(int position = -1) const;
    /// The line that holds a position (-1: the selection's beginning).
    int LineFromChar(int position = -1) const;
    /// Copies a line without break and NUL, at most `size` bytes; returns how many.
    int GetLine(int line, LPTSTR buffer, int size) const;
};
