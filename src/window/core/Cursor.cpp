// The mouse pointer: its place, its shape, and the rectangle it is confined to.
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/WindowFunctions.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <optional>
#include <utility>

namespace vnbytstr::detail {
namespace {

struct CursorState {
    HWND window = nullptr; // that got the last mouse message; may have been destroyed
    int id = IDC_ARROW;
    std::optional<QRect> clip;
};

CursorState& State() {
    static CursorState state;
    return state;
}

} // namespace

void SetCursorWindow(HWND window) { State().window = window; }

QPoint ConfineToClip(QPoint global) {
    if (!State().clip)
        return global;
    const QRect& clip = *State().clip;
    return {std::clamp(global.x(), clip.left(), std::max(clip.left(), clip.right())),
            std::clamp(global.y(), clip.top(), std::max(clip.top(), clip.bottom()))};
}

} // namespace vnbytstr::detail

using vnbytstr::detail::State;
using vnbytstr::detail::Window;

BOOL GetCursorPos(LPPOINT point) {
    if (point == nullptr)
        return FALSE;
    AfxInitWindows();
    const QPoint at = QCursor::pos();
    *point = CPoint(at.x(), at.y());
    return TRUE;
}

BOOL SetCursorPos(int x, int y) {
    AfxInitWindows();
    QCursor::setPos(x, y);
    return TRUE;
}

HCURSOR SetCursor(HCURSOR cursor) {
    AfxInitWindows();
    const int before =
        std::exchange(State().id, static_cast<int>(reinterpret_cast<std::uintptr_t>(cursor)));
    Qt::CursorShape shape = Qt::ArrowCursor;
    switch (State().id) {
    case 0:
        shape = Qt::BlankCursor;
        break;
    case IDC_IBEAM:
        shape = Qt::IBeamCursor;
        break;
    case IDC_WAIT:
        shape = Qt::WaitCursor;
        break;
    case IDC_CROSS:
        shape = Qt::CrossCursor;
        break;
    case IDC_UPARROW:
        shape = Qt::UpArrowCursor;
        break;
    case IDC_SIZENWSE:
        shape = Qt::SizeFDiagCursor;
        break;
    case IDC_SIZENESW:
        shape = Qt::SizeBDiagCursor;
        break;
    case IDC_SIZEWE:
        shape = Qt::SizeHorCursor;
        break;
    case IDC_SIZENS:
        shape = Qt::SizeVerCursor;
        break;
    case IDC_SIZEALL:
        shape = Qt::SizeAllCursor;
        break;
    case IDC_NO:
        shape = Qt::ForbiddenCursor;
        break;
    case IDC_HAND:
        shape = Qt::PointingHandCursor;
        break;
    case IDC_APPSTARTING:
        shape = Qt::BusyCursor;
        break;
    default:
        break;
    }
    Window* window = Window::Of(State().window);
    if (window != nullptr && window->Widget()->cursor().shape() != shape)
        window->Widget()->setCursor(shape);
    return reinterpret_cast<HCURSOR>(static_cast<std::uintptr_t>(before));
}

HCURSOR GetCursor() { return reinterpret_cast<HCURSOR>(static_cast<std::uintptr_t>(State().id)); }

HCURSOR LoadCursor(HINSTANCE /*instance*/, int id) {
    const bool known = (id >= IDC_ARROW && id <= IDC_UPARROW) ||
                       (id >= IDC_SIZENWSE && id <= IDC_SIZEALL) || id == IDC_NO ||
                       id == IDC_HAND || id == IDC_APPSTARTING;
    return known ? reinterpret_cast<HCURSOR>(static_cast<std::uintptr_t>(id)) : nullptr;
}

BOOL ClipCursor(LPCRECT rect) {
    if (rect == nullptr)
        State().clip.reset();
    else
        State().clip = QRect(rect->left, rect->top, std::max(rect->right - rect->left, 1),
                             std::max(rect->bottom - rect->top, 1));
    return TRUE;
}

BOOL GetClipCursor(LPRECT rect) {
    if (rect == nullptr)
        return FALSE;
    AfxInitWindows();
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QRect clip = State().clip        ? *State().clip
                       : screen != nullptr ? screen->virtualGeometry()
                                           : QRect();
    *rect = CRect(clip.x(), clip.y(), clip.x() + clip.width(), clip.y() + clip.height());
    return TRUE;
}
