#include "src/window/controls/MenuInternal.h"

#include "src/window/core/WindowInternal.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/WindowFunctions.h"

#include <QMenu>
#include <QPointer>

#include <unordered_set>

namespace vnbytstr::detail {

namespace {

std::unordered_set<const MenuData*>& LivingMenus() {
    static auto* const living = new std::unordered_set<const MenuData*>; // outlives every static
    return *living;
}

void AddItem(QMenu& widget, const MenuItem& item, UINT& chosen) {
    if ((item.flags & MF_SEPARATOR) != 0) {
        widget.addSeparator();
        return;
    }
    const QString text = ToQString(item.text);
    QAction* action = nullptr;
    if (item.popup != nullptr) {
        QMenu* const popup = widget.addMenu(text);
        FillQMenu(*popup, *item.popup, chosen);
        action = popup->menuAction();
    } else {
        action = widget.addAction(text);
        action->setCheckable((item.flags & MF_CHECKED) != 0);
        action->setChecked((item.flags & MF_CHECKED) != 0);
        QObject::connect(action, &QAction::triggered, &widget,
                         [&chosen, id = item.id] { chosen = id; });
    }
    action->setEnabled((item.flags & (MF_GRAYED | MF_DISABLED)) == 0);
}

} // namespace

MenuData::MenuData() { LivingMenus().insert(this); }

MenuData::~MenuData() {
    LivingMenus().erase(this);
    if (m_temporary != nullptr)
        m_temporary->m_hMenu = nullptr;
}

MenuData* MenuData::Of(HMENU menu) {
    auto* const data = reinterpret_cast<MenuData*>(menu);
    return LivingMenus().count(data) != 0 ? data : nullptr;
}

const MenuItem* MenuData::Find(UINT which, UINT flags) const {
    if ((flags & MF_BYPOSITION) != 0)
        return which < m_items.size() ? &m_items[which] : nullptr;
    for (const MenuItem& item : m_items) {
        if (item.popup == nullptr && (item.flags & MF_SEPARATOR) == 0 && item.id == which)
            return &item;
        if (const MenuItem* const found =
                item.popup != nullptr ? item.popup->Find(which, flags) : nullptr)
            return found;
    }
    return nullptr;
}

void FillQMenu(QMenu& widget, const MenuData& menu, UINT& chosen) {
    for (const MenuItem& item : menu.m_items)
        AddItem(widget, item, chosen);
}

} // namespace vnbytstr::detail

BOOL CMenu::TrackPopupMenu(UINT flags, int x, int y, CWnd* owner, LPCRECT) {
    using namespace vnbytstr::detail;
    MenuData* const menu = MenuData::Of(m_hMenu);
    Window* const window = Window::Of(owner);
    if (menu == nullptr || window == nullptr)
        return FALSE;
    const HWND handle = window->Handle();
    CancelCapture();
    if ((flags & TPM_NONOTIFY) == 0)
        window->Send(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(m_hMenu), 0);
    if (Window::Of(handle) == nullptr || MenuData::Of(m_hMenu) != menu)
        return FALSE;
    UINT chosen = 0;
    {
        QMenu widget(window->Widget());
        widget.setLayoutDirection(window->Widget()->layoutDirection());
        FillQMenu(widget, *menu, chosen);
        const int width = widget.sizeHint().width();
        const int shift = (flags & TPM_RIGHTALIGN) != 0    ? width
                          : (flags & TPM_CENTERALIGN) != 0 ? width / 2
                                                           : 0;
        const QPointer<QWidget> parent(window->Widget());
        widget.exec(QPoint(x - shift, y));
        if (parent == nullptr)
            return FALSE;
        widget.setParent(nullptr);
    }
    if ((flags & TPM_RETURNCMD) != 0)
        return static_cast<BOOL>(chosen);
    if (chosen != 0)
        ::PostMessage(handle, WM_COMMAND, chosen, 0);
    return chosen != 0 ? TRUE : FALSE;
}
