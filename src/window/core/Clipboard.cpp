// The clipboard's text.
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/WindowFunctions.h"

#include <QClipboard>
#include <QGuiApplication>

BOOL SetClipboardText(LPCSTR text) {
    if (text == nullptr)
        return FALSE;
    AfxInitWindows();
    QGuiApplication::clipboard()->setText(vnbytstr::detail::ToQString(text));
    return TRUE;
}

BOOL GetClipboardText(CString& text) {
    AfxInitWindows();
    const QString found = QGuiApplication::clipboard()->text();
    text = vnbytstr::detail::FromQString(found).c_str();
    return !found.isEmpty();
}
