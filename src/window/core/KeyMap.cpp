#include "src/window/core/KeyMap.h"

#include "src/window/core/WindowInternal.h"
#include "vnbytstr/window/Messages.h"

#include <QKeyEvent>

#include <algorithm>
#include <iterator>

namespace vnbytstr::detail {

namespace {

struct KeyPair {
    int qt;
    int vk;
};
constexpr KeyPair kKeyTable[] = {
    {Qt::Key_Escape, VK_ESCAPE},
    {Qt::Key_Tab, VK_TAB},
    {Qt::Key_Backtab, VK_TAB},
    {Qt::Key_Backspace, VK_BACK},
    {Qt::Key_Return, VK_RETURN},
    {Qt::Key_Enter, VK_RETURN},
    {Qt::Key_Insert, VK_INSERT},
    {Qt::Key_Delete, VK_DELETE},
    {Qt::Key_Pause, VK_PAUSE},
    {Qt::Key_Print, VK_SNAPSHOT},
    {Qt::Key_Clear, VK_CLEAR},
    {Qt::Key_Home, VK_HOME},
    {Qt::Key_End, VK_END},
    {Qt::Key_Left, VK_LEFT},
    {Qt::Key_Up, VK_UP},
    {Qt::Key_Right, VK_RIGHT},
    {Qt::Key_Down, VK_DOWN},
    {Qt::Key_PageUp, VK_PRIOR},
    {Qt::Key_PageDown, VK_NEXT},
    {Qt::Key_Shift, VK_SHIFT},
    {Qt::Key_Control, VK_CONTROL},
    {Qt::Key_Alt, VK_MENU},
    {Qt::Key_CapsLock, VK_CAPITAL},
    {Qt::Key_NumLock, VK_NUMLOCK},
    {Qt::Key_ScrollLock, VK_SCROLL},
    {Qt::Key_Menu, VK_APPS},
    {Qt::Key_Meta, VK_LWIN},
    {Qt::Key_Help, VK_HELP},
    {Qt::Key_Space, VK_SPACE},
    {Qt::Key_Semicolon, VK_OEM_1},
    {Qt::Key_Equal, VK_OEM_PLUS},
    {Qt::Key_Plus, VK_OEM_PLUS},
    {Qt::Key_Comma, VK_OEM_COMMA},
    {Qt::Key_Minus, VK_OEM_MINUS},
    {Qt::Key_Period, VK_OEM_PERIOD},
    {Qt::Key_Slash, VK_OEM_2},
    {Qt::Key_QuoteLeft, VK_OEM_3},
    {Qt::Key_BracketLeft, VK_OEM_4},
    {Qt::Key_Backslash, VK_OEM_5},
    {Qt::Key_BracketRight, VK_OEM_6},
    {Qt::Key_Apostrophe, VK_OEM_7},
};

} // namespace

int VirtualKey(const QKeyEvent& event) {
    const int key = event.key();
    if ((event.modifiers() & Qt::KeypadModifier) != 0) {
        if (key >= Qt::Key_0 && key <= Qt::Key_9)
            return VK_NUMPAD0 + (key - Qt::Key_0);
        switch (key) {
        case Qt::Key_Plus:
            return VK_ADD;
        case Qt::Key_Minus:
            return VK_SUBTRACT;
        case Qt::Key_Asterisk:
            return VK_MULTIPLY;
        case Qt::Key_Slash:
            return VK_DIVIDE;
        case Qt::Key_Comma:
        case Qt::Key_Period:
            return VK_DECIMAL;
        default:
            break;
        }
    }
    if ((key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z))
        return key;
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return VK_F1 + (key - Qt::Key_F1);
    const auto* end = std::end(kKeyTable);
    const auto* found =
        std::find_if(std::begin(kKeyTable), end, [key](KeyPair pair) { return pair.qt == key; });
    return found != end ? found->vk : 0;
}

std::string KeyText(const QKeyEvent& event, int vk) {
    const bool control = (event.modifiers() & Qt::ControlModifier) != 0;
    const bool alt = (event.modifiers() & Qt::AltModifier) != 0;
    switch (vk) {
    case VK_BACK:
        return control ? "\x7F" : "\b";
    case VK_RETURN:
        return control ? "\n" : "\r";
    case VK_TAB:
        return "\t";
    case VK_ESCAPE:
        return "\x1B";
    case VK_DELETE:
    case VK_INSERT:
        return {};
    default:
        break;
    }
    if (control && !alt) {
        if (vk >= 'A' && vk <= 'Z')
            return std::string(1, static_cast<char>(vk - 'A' + 1));
        if (vk == VK_OEM_5)
            return "\x1C";
    }
    return FromQString(event.text());
}

} // namespace vnbytstr::detail
