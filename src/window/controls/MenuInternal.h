// The menu an HMENU points to, and its form for Qt.
#pragma once

#include "vnbytstr/window/Menu.h"

#include <memory>
#include <string>
#include <vector>

class QMenu;

namespace vnbytstr::detail {

class MenuData;

struct MenuItem {
    UINT id = 0;
    UINT flags = 0; ///< MF_SEPARATOR, MF_GRAYED, MF_DISABLED, MF_CHECKED
    std::string text;
    std::unique_ptr<MenuData> popup;
};

/// A menu. The pointer is its HMENU as long as the menu lives. A popup belongs to the item it is
/// in.
class MenuData {
public:
    MenuData();
    ~MenuData();
    MenuData(const MenuData&) = delete;
    MenuData& operator=(const MenuData&) = delete;

    /// Null when the handle names no living menu.
    static MenuData* Of(HMENU menu);
    HMENU Handle() { return reinterpret_cast<HMENU>(this); }

    /// The item at a position, or with an id here or in a popup; null when there is none.
    const MenuItem* Find(UINT which, UINT flags) const;

    std::vector<MenuItem> m_items;
    bool m_owned = false; ///< by an item
    std::unique_ptr<CMenu> m_temporary;
};

/// Copies the items into a Qt menu without any; the one that is chosen leaves its id in `chosen`.
void FillQMenu(QMenu& widget, const MenuData& menu, UINT& chosen);

} // namespace vnbytstr::detail
