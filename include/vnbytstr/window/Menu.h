// CMenu, a menu that pops up.
//
// A chosen item sends WM_COMMAND with its id to the window that the menu is opened for, unless
// TrackPopupMenu is to return the id. That window gets WM_INITMENUPOPUP before the menu opens. '&'
// marks an item's letter; text after a tab is shown as its key.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

// --- flags of items and of popups ----------------------------------------------------------------
inline constexpr UINT MF_BYCOMMAND = 0x0000;
inline constexpr UINT MF_BYPOSITION = 0x0400;
inline constexpr UINT MF_STRING = 0x0000;
inline constexpr UINT MF_GRAYED = 0x0001;
inline constexpr UINT MF_DISABLED = 0x0002;
inline constexpr UINT MF_CHECKED = 0x0008;
inline constexpr UINT MF_POPUP = 0x0010;
inline constexpr UINT MF_SEPARATOR = 0x0800;
inline constexpr UINT TPM_LEFTALIGN = 0x0000;
inline constexpr UINT TPM_CENTERALIGN = 0x0004;
inline constexpr UINT TPM_RIGHTALIGN = 0x0008;
inline constexpr UINT TPM_NONOTIFY = 0x0080;
inline constexpr UINT TPM_RETURNCMD = 0x0100;

/// A menu. The destructor destroys it, unless it has become a popup of another menu, which then
/// owns it.
class VNBYTSTR_CONTROLS_API CMenu : public CObject {
    DECLARE_DYNAMIC(CMenu)
public:
    CMenu() = default;
    ~CMenu() override;

    BOOL CreatePopupMenu();  ///< an empty menu; FALSE when there is one
    BOOL DestroyMenu();      ///< with its popups
    BOOL Attach(HMENU menu); ///< takes a handle; FALSE when it is null or there is one
    HMENU Detach();          ///< gives the handle away
    /// The handle; null when there is none.
    operator HMENU() const { return m_hMenu; }
    /// The object for a handle; null for null. It lives as long as the handle.
    static CMenu* FromHandle(HMENU menu);

    /// `item`: the command's id; with MF_POPUP the popup's HMENU, which this menu then owns.
    BOOL AppendMenu(UINT flags, std::uintptr_t item = 0, LPCTSTR text = nullptr);
    /// An item's state as MF_*, -1 when there is no such item. By command it looks into popups too.
    UINT GetMenuState(UINT which, UINT flags) const;

    /// Opens the popup at a place of the screen and waits for a choice, which `owner` gets as
    /// WM_COMMAND. Returns its id with TPM_RETURNCMD (then no WM_COMMAND comes), else TRUE; 0 when
    /// nothing was chosen.
    BOOL TrackPopupMenu(UINT flags, int x, int y, CWnd* owner, LPCRECT rect = nullptr);

    /// The handle.
    HMENU m_hMenu = nullptr;
};
