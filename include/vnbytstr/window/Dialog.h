// CDialog, a window of controls, modal (DoModal) or not (Create), described in code.
//
//     const CDialogTemplate::Item items[] = {
//         {"STATIC", "&Name:", 0xFFFF, 0, 7, 9, 40, 8},
//         {"EDIT", "", IDC_NAME, ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, 50, 7, 120, 14},
//         {"BUTTON", "OK", IDOK, BS_DEFPUSHBUTTON | WS_TABSTOP, 65, 30, 50, 14},
//         {"BUTTON", "Cancel", IDCANCEL, WS_TABSTOP, 120, 30, 50, 14},
//     };
//     CMyDialog dialog({"Rename", 177, 51, items}, this);
//     if (dialog.DoModal() == IDOK) ...
//
// Tab and Shift+Tab go from one WS_TABSTOP control to the next, the arrow keys inside a group (from
// one WS_GROUP to the next), Enter presses the default button, Escape sends IDCANCEL, Alt and a
// letter goes to the control whose text (or the label before it) marks that letter with '&'. A
// control that asks for a key with WM_GETDLGCODE gets it.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

#include <span>

// --- styles and messages -------------------------------------------------------------------------
inline constexpr DWORD DS_MODALFRAME = 0x0080;
inline constexpr DWORD DS_CENTER = 0x0800;
inline constexpr UINT DM_GETDEFID = WM_USER + 0;
inline constexpr UINT DM_SETDEFID = WM_USER + 1;
inline constexpr WORD DC_HASDEFID = 0x534B;

/// What a dialog looks like, in dialog units: a quarter of the font's average width, an eighth of
/// its height. Texts are in the ANSI code page and, as the items, must live until the dialog is
/// made.
struct CDialogTemplate {
    /// A control: its window class, text, id, style and place in the dialog.
    struct Item {
        /// Window class, text, id, place and styles.
        LPCSTR className;
        LPCSTR text;
        UINT id;
        DWORD style; ///< WS_CHILD and WS_VISIBLE are added
        short x;
        short y;
        short cx;
        short cy;
        DWORD exStyle = 0;
    };
    /// Title, size, controls and styles.
    LPCSTR title;
    short cx; ///< of the client area
    short cy; ///< of the client area
    std::span<const Item> items;
    DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_CENTER;
    DWORD exStyle = 0;
    /// The font; null: the default one.
    LPCSTR face = nullptr;
    short points = 9;
};

class VNBYTSTR_CONTROLS_API CDialog : public CWnd {
    DECLARE_DYNAMIC(CDialog)
public:
    CDialog() = default;
    /// For DoModal. `parent` null: the active window.
    explicit CDialog(const CDialogTemplate& description, CWnd* parent = nullptr);
    ~CDialog() override;

    /// As the constructor; FALSE when there is a window already.
    BOOL InitModalIndirect(const CDialogTemplate& description, CWnd* parent = nullptr);
    /// Makes a dialog that does not wait; it is shown with WS_VISIBLE or ShowWindow.
    BOOL CreateIndirect(const CDialogTemplate& description, CWnd* parent = nullptr);
    /// Shows the dialog over its disabled parent until EndDialog; returns its argument, -1 when the
    /// dialog could not be made, IDABORT when the program quits meanwhile.
    virtual int DoModal();
    void EndDialog(int result);

    /// Called when the controls have been created. TRUE: give the focus to the first control;
    /// FALSE: leave it where it is.
    virtual BOOL OnInitDialog();
    virtual void OnOK();     ///< EndDialog(IDOK); a dialog made with CreateIndirect is hidden
    virtual void OnCancel(); ///< EndDialog(IDCANCEL), likewise

    /// Gives the focus, and selects the text of an edit control.
    void GotoDlgCtrl(CWnd* control) const;
    DWORD GetDefID() const; ///< the default button's id, with DC_HASDEFID in the high word; or 0
    void SetDefID(UINT id);
    /// Dialog units to pixels.
    void MapDialogRect(LPRECT rect) const;

    /// A button's state: BST_*.
    UINT IsDlgButtonChecked(int id) const;
    /// Checks one of the radio buttons with ids first to last and unchecks the others.
    void CheckRadioButton(int first, int last, int check);
    int GetCheckedRadioButton(int first, int last) const; ///< 0 when none is checked

    BOOL PreTranslateMessage(MSG* message) override;
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

protected:
    void PostNcDestroy() override;
    void OnClose();
    DECLARE_MESSAGE_MAP()

private:
    BOOL Build(CWnd* parent);
    BOOL MakeItems();
    void Measure();
    void FocusFirst();
    void NextFrom(CWnd* control, bool back) const;
    void RunLoop();

    CDialogTemplate m_template{};
    CWnd* m_parent = nullptr;
    CFont m_font;
    SIZE m_units{1, 1}; ///< average width and height of a character
    UINT m_defaultId = 0;
    int m_result = -1;
    vnbytstr::HostEventLoop* m_loop = nullptr;
    BOOL m_hasTemplate = FALSE;
    BOOL m_modal = FALSE;
    BOOL m_ended = FALSE;
};

/// Handles a keyboard message among the children of any window as a dialog does: Tab, arrows,
/// Enter, Escape, letters with Alt. TRUE: handled.
VNBYTSTR_CONTROLS_API BOOL IsDialogMessage(HWND dialog, MSG* message);
