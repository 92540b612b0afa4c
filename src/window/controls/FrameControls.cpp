#include "src/window/controls/FrameControls.h"

#include "src/window/controls/MenuInternal.h"
#include "src/window/core/WidgetDetails.h"
#include "src/window/core/WindowWidget.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>

namespace vnbytstr::detail {

LRESULT MenuBarControl::Proc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        m_bar = new QMenuBar(HostParent(m_window));
        m_bar->setNativeMenuBar(false);
        HostControl(m_window, m_bar);
        m_bar->setFocusPolicy(Qt::NoFocus);
    }
    if (m_bar != nullptr) {
        switch (message) {
        case kSetMenu:
            Show(reinterpret_cast<HMENU>(lParam));
            return TRUE;
        case kGetHeight:
            return m_bar->heightForWidth(std::max(static_cast<int>(wParam), 1));
        case WM_GETDLGCODE:
            return DLGC_STATIC;
        default:
            break;
        }
    }
    return m_window.GenericProc(message, wParam, lParam);
}

void MenuBarControl::Show(HMENU handle) {
    m_bar->clear();
    for (auto* const old : m_bar->findChildren<QMenu*>(Qt::FindDirectChildrenOnly))
        old->deleteLater();
    MenuData* const menu = MenuData::Of(handle);
    Window* const frame = m_window.Parent();
    if (menu == nullptr || frame == nullptr)
        return;
    const HWND owner = frame->Handle();
    int position = 0;
    for (MenuItem& item : menu->m_items) {
        const int index = position++;
        const QString text = ToQString(item.text);
        QAction* action = nullptr;
        if (item.popup != nullptr) {
            QMenu* const popup = MakeQMenu(*item.popup, owner, index, m_bar);
            popup->setTitle(text);
            action = m_bar->addMenu(popup);
        } else if ((item.flags & MF_SEPARATOR) == 0) {
            action = m_bar->addAction(text);
            QObject::connect(action, &QAction::triggered, m_bar,
                             [owner, id = item.id] { PostMessage(owner, WM_COMMAND, id, 0); });
        }
        if (action != nullptr)
            action->setEnabled((item.flags & (MF_GRAYED | MF_DISABLED)) == 0);
    }
}

LRESULT StatusControl::Proc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE)
        MakeWidget();
    if (m_line != nullptr) {
        switch (message) {
        case kSetPanes:
            SetPanes(static_cast<std::size_t>(wParam));
            return TRUE;
        case kSetText:
            if (wParam >= m_labels.size())
                return FALSE;
            m_texts[wParam] = lParam != 0 ? reinterpret_cast<const char*>(lParam) : "";
            m_labels[wParam]->setText(ToQString(m_texts[wParam]));
            return TRUE;
        case kGetText:
            if (wParam >= m_labels.size())
                return FALSE;
            *reinterpret_cast<std::string*>(lParam) = m_texts[wParam];
            return TRUE;
        case WM_GETDLGCODE:
            return DLGC_STATIC;
        default:
            break;
        }
    }
    return m_window.GenericProc(message, wParam, lParam);
}

void StatusControl::MakeWidget() {
    m_line = new QWidget(HostParent(m_window));
    auto* const layout = new QHBoxLayout(m_line);
    layout->setContentsMargins(6, 0, 6, 0);
    layout->setSpacing(12);
    HostControl(m_window, m_line);
    m_line->setFocusPolicy(Qt::NoFocus);
    SetPanes(0);
}

void StatusControl::SetPanes(std::size_t count) {
    m_texts.resize(count + 1);
    while (m_labels.size() > count + 1) {
        delete m_labels.back();
        m_labels.pop_back();
    }
    while (m_labels.size() < count + 1) {
        auto* const label = new QLabel(m_line);
        label->setTextFormat(Qt::PlainText);
        const bool message = m_labels.empty();
        if (message)
            label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        static_cast<QHBoxLayout*>(m_line->layout())->addWidget(label, message ? 1 : 0);
        m_labels.push_back(label);
    }
}

} // namespace vnbytstr::detail
