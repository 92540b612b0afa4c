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

/// Finds out whether a command is enabled.
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
