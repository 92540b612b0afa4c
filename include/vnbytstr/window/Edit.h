// CEdit, the system's edit control: one line, or several with ES_MULTILINE.
//
// All of it also goes by EM_ and WM_ messages, to a window of the class "EDIT". Text is in the ANSI
// code page, and positions, lengths and limits count its bytes, line breaks included. A position
// inside a character counts as the character's beginning. Lines count from 0; they are those that
// the line breaks make, however they are wrapped on the screen.
//
// A text comes back byte for byte as it was set until somebody changes it. A line break that is
// typed is the kind that the text set last has first (CR LF, LF or CR), CR LF when it has none;
// a text with several kinds has that one kind throughout once it is changed.
//
// Typed characters come as WM_CHAR, one byte each; what an input method composes goes into the
// control directly. The usual keys of the clipboard and of undo send WM_CUT, WM_COPY, WM_PASTE and
// WM_UNDO to the control.
#pragma once

#include "vnbytstr/window/Wnd.h"

/// lParam: a text in the ANSI code page, shown while the control is empty.
inline constexpr UINT EM_SETCUEBANNER = 0x1501;
inline constexpr UINT EM_GETCUEBANNER = 0x1502; ///< wParam: the buffer, lParam: its size

class VNBYTSTR_API CEdit : public CWnd {
    DECLARE_DYNAMIC(CEdit)
public:
    CEdit() = default;
    /// A child window of class "EDIT".
    virtual BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id);
    using CWnd::Create;

    /// The selection; `first` and `end` are equal when there is none. The cursor is at `end` unless
    /// the user selected backwards.
    void GetSel(int& first, int& end) const;
    DWORD GetSel() const; ///< as MAKELONG; positions past 65535 do not fit
    /// Selects and puts the cursor at `end`. (0, -1): everything; first -1: nothing.
    void SetSel(int first, int end, BOOL noScroll = FALSE);
    /// Replaces the selection. The limit does not apply. Undo goes back unless `canUndo` is FALSE.
    void ReplaceSel(LPCTSTR text, BOOL canUndo = FALSE);
    void Clear(); ///< deletes the selection
    void Cut();
    void Copy();
    void Paste();

    /// How many bytes may be typed or pasted; 0: as many as there may be. A text set by the program
    /// may be longer. What does not fit is cut off at a character, and the parent gets EN_MAXTEXT.
    void LimitText(int bytes = 0);

    BOOL GetModify() const; ///< changed by the user since SetWindowText or SetModify(FALSE)
    void SetModify(BOOL modified = TRUE);
    BOOL CanUndo() const;
    BOOL Undo();
    BOOL SetReadOnly(BOOL readOnly = TRUE);
    /// `text` is shown while the control is empty.
    BOOL SetCueBanner(LPCTSTR text);

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
