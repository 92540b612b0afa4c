#include "vnbytstr/window/Menu.h"

#include "src/window/controls/MenuInternal.h"
#include "src/window/core/WindowInternal.h"
#include "vnbytstr/window/WindowFunctions.h"

#include <algorithm>

using vnbytstr::detail::MenuData;
using vnbytstr::detail::MenuItem;

IMPLEMENT_DYNAMIC(CMenu, CObject)

namespace {

constexpr UINT kStateBits = MF_GRAYED | MF_DISABLED | MF_CHECKED;

UINT StateOf(const MenuItem& item) { return item.flags | (item.popup != nullptr ? MF_POPUP : 0); }

/// A popup that belongs to nobody yet, for an item to take.
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

BOOL CMenu::CreateMenu() { return m_hMenu == nullptr && Attach((new MenuData)->Handle()); }
BOOL CMenu::CreatePopupMenu() { return CreateMenu(); }

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
    return InsertMenu(static_cast<UINT>(-1), flags | MF_BYPOSITION, item, text);
}

BOOL CMenu::InsertMenu(UINT before, UINT flags, std::uintptr_t item, LPCTSTR text) {
    MenuData* menu = MenuData::Of(m_hMenu);
    if (menu == nullptr)
        return FALSE;
    auto place = menu->m_items.end();
    if (const MenuItem* const next = menu->Find(before, flags, &menu))
        place = menu->m_items.begin() + (next - menu->m_items.data());
    else if ((flags & MF_BYPOSITION) == 0)
        return FALSE;
    MenuItem made;
    if (!MakeItem(made, flags, item, text, menu))
        return FALSE;
    menu->m_items.insert(place, std::move(made));
    return TRUE;
}

BOOL CMenu::ModifyMenu(UINT which, UINT flags, std::uintptr_t item, LPCTSTR text) {
    MenuData* menu = MenuData::Of(m_hMenu);
    MenuItem* const found = menu != nullptr ? menu->Find(which, flags, &menu) : nullptr;
    MenuItem made;
    if (found == nullptr || !MakeItem(made, flags, item, text, menu))
        return FALSE;
    *found = std::move(made);
    return TRUE;
}

BOOL CMenu::DeleteMenu(UINT which, UINT flags) {
    MenuData* menu = MenuData::Of(m_hMenu);
    const MenuItem* const found = menu != nullptr ? menu->Find(which, flags, &menu) : nullptr;
    if (found == nullptr)
        return FALSE;
    menu->m_items.erase(menu->m_items.begin() + (found - menu->m_items.data()));
    return TRUE;
}

BOOL CMenu::RemoveMenu(UINT which, UINT flags) {
    MenuData* const menu = MenuData::Of(m_hMenu);
    MenuItem* const found = menu != nullptr ? menu->Find(which, flags) : nullptr;
    if (found != nullptr && found->popup != nullptr) {
        found->popup->m_owned = false;
        static_cast<void>(found->popup.release()); // the caller's from here on
    }
    return DeleteMenu(which, flags);
}

UINT CMenu::CheckMenuItem(UINT which, UINT flags) {
    MenuData* const menu = MenuData::Of(m_hMenu);
    MenuItem* const item = menu != nullptr ? menu->Find(which, flags) : nullptr;
    if (item == nullptr)
        return static_cast<UINT>(-1);
    const UINT before = StateOf(*item);
    item->flags = (item->flags & ~MF_CHECKED) | (flags & MF_CHECKED);
    item->radio = false;
    return before;
}

UINT CMenu::EnableMenuItem(UINT which, UINT flags) {
    MenuData* const menu = MenuData::Of(m_hMenu);
    MenuItem* const item = menu != nullptr ? menu->Find(which, flags) : nullptr;
    if (item == nullptr)
        return static_cast<UINT>(-1);
    const UINT before = StateOf(*item);
    constexpr UINT kOff = MF_GRAYED | MF_DISABLED;
    item->flags = (item->flags & ~kOff) | (flags & kOff);
    return before;
}

BOOL CMenu::CheckMenuRadioItem(UINT first, UINT last, UINT check, UINT flags) {
    MenuData* const menu = MenuData::Of(m_hMenu);
    if (menu == nullptr || menu->Find(check, flags) == nullptr || check < first || check > last)
        return FALSE;
    for (UINT which = first; which <= last; ++which)
        if (MenuItem* const item = menu->Find(which, flags)) {
            item->flags = (item->flags & ~MF_CHECKED) | (which == check ? MF_CHECKED : 0);
            item->radio = which == check;
        }
    return TRUE;
}

BOOL CMenu::SetDefaultItem(UINT which, BOOL byPosition) {
    MenuData* const menu = MenuData::Of(m_hMenu);
    if (menu == nullptr)
        return FALSE;
    MenuItem* const chosen = menu->Find(which, byPosition ? MF_BYPOSITION : MF_BYCOMMAND);
    for (MenuItem& item : menu->m_items)
        item.isDefault = &item == chosen;
    return chosen != nullptr ? TRUE : FALSE;
}

UINT CMenu::GetMenuState(UINT which, UINT flags) const {
    MenuData* const menu = MenuData::Of(m_hMenu);
    const MenuItem* const item = menu != nullptr ? menu->Find(which, flags) : nullptr;
    return item != nullptr ? StateOf(*item) : static_cast<UINT>(-1);
}

int CMenu::GetMenuString(UINT which, CString& text, UINT flags) const {
    MenuData* const menu = MenuData::Of(m_hMenu);
    const MenuItem* const item = menu != nullptr ? menu->Find(which, flags) : nullptr;
    text = item != nullptr ? item->text.c_str() : "";
    return text.GetLength();
}

UINT CMenu::GetMenuItemCount() const {
    const MenuData* const menu = MenuData::Of(m_hMenu);
    return menu != nullptr ? static_cast<UINT>(menu->m_items.size()) : static_cast<UINT>(-1);
}

UINT CMenu::GetMenuItemID(int position) const {
    MenuData* const menu = MenuData::Of(m_hMenu);
    const MenuItem* const item =
        menu != nullptr ? menu->Find(static_cast<UINT>(position), MF_BYPOSITION) : nullptr;
    return item == nullptr || item->popup != nullptr ? static_cast<UINT>(-1) : item->id;
}

CMenu* CMenu::GetSubMenu(int position) const {
    MenuData* const menu = MenuData::Of(m_hMenu);
    const MenuItem* const item =
        menu != nullptr ? menu->Find(static_cast<UINT>(position), MF_BYPOSITION) : nullptr;
    return item != nullptr && item->popup != nullptr ? FromHandle(item->popup->Handle()) : nullptr;
}

// --- keys ---------------------------------------------------------------------------------------

struct CAcceleratorTable::Keys {
    std::vector<ACCEL> list;
};

CAcceleratorTable::CAcceleratorTable() : m_keys(std::make_unique<Keys>()) {}
CAcceleratorTable::CAcceleratorTable(std::span<const ACCEL> keys) : CAcceleratorTable() {
    Set(keys);
}
CAcceleratorTable::~CAcceleratorTable() = default;

void CAcceleratorTable::Set(std::span<const ACCEL> keys) {
    m_keys->list.assign(keys.begin(), keys.end());
}

namespace {

bool IsKey(const ACCEL& key, const MSG& message) {
    if ((key.fVirt & FVIRTKEY) == 0)
        return (message.message == WM_CHAR || message.message == WM_SYSCHAR) &&
               ((key.fVirt & FALT) != 0) == (message.message == WM_SYSCHAR) &&
               key.key == message.wParam;
    const auto isDown = [](int vk) { return GetKeyState(vk) < 0; };
    return (message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN) &&
           key.key == message.wParam && ((key.fVirt & FSHIFT) != 0) == isDown(VK_SHIFT) &&
           ((key.fVirt & FCONTROL) != 0) == isDown(VK_CONTROL) &&
           ((key.fVirt & FALT) != 0) == isDown(VK_MENU);
}

/// Learns whether a command can be given.
class EnabledUI final : public CCmdUI {
public:
    void Enable(BOOL on) override {
        CCmdUI::Enable(on);
        m_enabled = on != FALSE;
    }
    bool m_enabled = true;
};

} // namespace

BOOL CAcceleratorTable::Translate(CWnd* window, const MSG* message) const {
    if (window == nullptr || message == nullptr)
        return FALSE;
    const auto& keys = m_keys->list;
    const auto found = std::find_if(keys.begin(), keys.end(),
                                    [&](const ACCEL& key) { return IsKey(key, *message); });
    if (found == keys.end())
        return FALSE;
    EnabledUI state;
    state.m_nID = found->cmd;
    window->OnCmdMsg(found->cmd, CN_UPDATE_COMMAND_UI, &state);
    if (state.m_enabled)
        window->SendMessage(WM_COMMAND, MAKEWPARAM(found->cmd, 1), 0);
    return TRUE;
}
