#include "vnbytstr/window/ToolTip.h"

#include "src/window/core/WindowWidget.h"

#include <QToolTip>

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

} // namespace

void ShowTip(HWND handle, POINT point, LPCSTR text, LPCRECT rect) {
    Window* const window = Window::Of(handle);
    if (window == nullptr)
        return;
    LastTip() = text;
    const QRect area = rect != nullptr ? window->ToWidget(*rect) : window->ClientArea();
    QToolTip::showText(window->ClientToGlobal(point), Plain(text), window->Widget(), area);
}

void HideTip() { QToolTip::hideText(); }

CString GetShownTip() { return QToolTip::isVisible() ? LastTip() : CString(); }
