#include "vnbytstr/window/ToolTip.h"

#include "src/window/core/WindowWidget.h"

#include <QApplication>
#include <QToolTip>
#include <QWindow>

using namespace vnbytstr::detail;

namespace {

/// Qt takes a text that looks like HTML for HTML.
QString Plain(LPCSTR text) {
    const QString plain = ToQString(text != nullptr ? text : "");
    return plain.isEmpty() ? plain
                           : QStringLiteral("<p style='white-space:pre'>") + plain.toHtmlEscaped() +
                                 QStringLiteral("</p>");
}

CString& LastTip() {
    static CString last;
    return last;
}

/// The pointer goes through a tooltip to the window below, which needs its moves.
void LetPointerThrough() {
    for (QWidget* top : QApplication::topLevelWidgets())
        if (top->inherits("QTipLabel")) {
            top->setAttribute(Qt::WA_TransparentForMouseEvents);
            if (QWindow* const window = top->windowHandle())
                window->setFlag(Qt::WindowTransparentForInput);
        }
}

} // namespace

void ShowTip(HWND handle, POINT point, LPCSTR text, LPCRECT rect) {
    Window* const window = Window::Of(handle);
    if (window == nullptr)
        return;
    LastTip() = text;
    const QRect area = rect != nullptr ? window->ToWidget(*rect) : window->ClientArea();
    QToolTip::showText(window->ClientToGlobal(point), Plain(text), window->Widget(), area);
    LetPointerThrough();
}

void HideTip() { QToolTip::hideText(); }

CString GetShownTip() { return QToolTip::isVisible() ? LastTip() : CString(); }
