#include "vnbytstr/window/Menu.h"

#include "src/window/controls/MenuInternal.h"

#include <utility>

using vnbytstr::detail::MenuData;
using vnbytstr::detail::MenuItem;

IMPLEMENT_DYNAMIC(CMenu, CObject)

namespace {

constexpr UINT kStateBits = MF_GRAYED | MF_DISABLED | MF_CHECKED;

UINT StateOf(const MenuItem& item) { return item.flags | (item.popup != nullptr ? MF_POPUP : 0); }

/// Takes a popup without an owner for a menu item.
std::unique_ptr<MenuData> TakePopup(std::uintptr_t item, const MenuData* into) {
    MenuData* const popup = MenuData::Of(reinterpret_cast<HMENU>(item));
    if (popup == nullptr || popup->m_owned || popup == into)
        return nullptr;
    popup->m_owned = true;
    return std::unique_ptr<MenuData>(popup);
}

bool MakeItem(MenuItem& made, UINT flags, std::uintptr_t item, LPCTSTR text, const MenuData* into) {
    made.flags = flags & (kStateBits | MF_SEPARATOR);
    made.text = text != nullptr ? text : "";
    if ((flags & MF_POPUP) != 0) {
        made.popup = TakePopup(item, into);
        return made.popup != nullptr;
    }
    made.id = (flags & MF_SEPARATOR) != 0 ? 0 : static_cast<UINT>(item);
    return true;
}

} // namespace

CMenu::~CMenu() { DestroyMenu(); }

BOOL CMenu::CreatePopupMenu() { return m_hMenu == nullptr && Attach((new MenuData)->Handle()); }

BOOL CMenu::DestroyMenu() {
    MenuData* const menu = MenuData::Of(Detach());
    if (menu == nullptr || menu->m_owned)
        return FALSE;
    const std::unique_ptr<MenuData> ends(menu);
    return TRUE;
}

BOOL CMenu::Attach(HMENU menu) {
    if (menu == nullptr || m_hMenu != nullptr)
        return FALSE;
    m_hMenu = menu;
    return TRUE;
}

HMENU CMenu::Detach() { return std::exchange(m_hMenu, nullptr); }

CMenu* CMenu::FromHandle(HMENU handle) {
    MenuData* const menu = MenuData::Of(handle);
    if (menu == nullptr)
        return nullptr;
    if (menu->m_temporary == nullptr) {
        menu->m_temporary = std::make_unique<CMenu>();
        menu->m_temporary->m_hMenu = handle;
    }
    return menu->m_temporary.get();
}

BOOL CMenu::AppendMenu(UINT flags, std::uintptr_t item, LPCTSTR text) {
    MenuData* const menu = MenuData::Of(m_hMenu);
    MenuItem made;
    if (menu == nullptr || !MakeItem(made, flags, item, text, menu))
        return FALSE;
    menu->m_items.push_back(std::move(made));
    return TRUE;
}

UINT CMenu::GetMenuState(UINT which, UINT flags) const {
    MenuData* const menu = MenuData::Of(m_hMenu);
    const MenuItem* const item = menu != nullptr ? menu->Find(which, flags) : nullptr;
    return item != nullptr ? StateOf(*item) : static_cast<UINT>(-1);
}
