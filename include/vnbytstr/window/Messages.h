// Messages, styles and keys of all windows, under the numbers that programs and resources use. What
// belongs to one kind of control stands in its header, what belongs to drawing in Gdi.h.
#pragma once

#include "vnbytstr/framework/MessageBoxTypes.h"
#include "vnbytstr/window/WindowTypes.h"

// --- window messages -----------------------------------------------------------------------------
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_MOVE = 0x0003;
inline constexpr UINT WM_SIZE = 0x0005;
inline constexpr UINT WM_ACTIVATE = 0x0006;
inline constexpr UINT WM_SETFOCUS = 0x0007;
inline constexpr UINT WM_KILLFOCUS = 0x0008;
inline constexpr UINT WM_ENABLE = 0x000A;
inline constexpr UINT WM_SETREDRAW = 0x000B;
inline constexpr UINT WM_SETTEXT = 0x000C;
inline constexpr UINT WM_GETTEXT = 0x000D;
inline constexpr UINT WM_GETTEXTLENGTH = 0x000E;
inline constexpr UINT WM_PAINT = 0x000F;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_ERASEBKGND = 0x0014;
inline constexpr UINT WM_SYSCOLORCHANGE = 0x0015;
inline constexpr UINT WM_SHOWWINDOW = 0x0018;
inline constexpr UINT WM_CANCELMODE = 0x001F;
inline constexpr UINT WM_SETCURSOR = 0x0020;
inline constexpr UINT WM_GETMINMAXINFO = 0x0024;
inline constexpr UINT WM_DRAWITEM = 0x002B;
inline constexpr UINT WM_MEASUREITEM = 0x002C;
inline constexpr UINT WM_DELETEITEM = 0x002D;
inline constexpr UINT WM_VKEYTOITEM = 0x002E;
inline constexpr UINT WM_CHARTOITEM = 0x002F;
inline constexpr UINT WM_SETFONT = 0x0030;
inline constexpr UINT WM_GETFONT = 0x0031;
inline constexpr UINT WM_COMPAREITEM = 0x0039;
inline constexpr UINT WM_WINDOWPOSCHANGING = 0x0046;
inline constexpr UINT WM_WINDOWPOSCHANGED = 0x0047;
inline constexpr UINT WM_NOTIFY = 0x004E;
inline constexpr UINT WM_HELP = 0x0053;
inline constexpr UINT WM_CONTEXTMENU = 0x007B;
inline constexpr UINT WM_STYLECHANGED = 0x007D;
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_NCHITTEST = 0x0084;
inline constexpr UINT WM_GETDLGCODE = 0x0087;
inline constexpr UINT WM_KEYFIRST = 0x0100;
inline constexpr UINT WM_KEYDOWN = 0x0100;
inline constexpr UINT WM_KEYUP = 0x0101;
inline constexpr UINT WM_CHAR = 0x0102; ///< one byte of the ANSI code page
inline constexpr UINT WM_SYSKEYDOWN = 0x0104;
inline constexpr UINT WM_SYSKEYUP = 0x0105;
inline constexpr UINT WM_SYSCHAR = 0x0106;
inline constexpr UINT WM_KEYLAST = 0x0108;
inline constexpr UINT WM_INITDIALOG = 0x0110;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_SYSCOMMAND = 0x0112;
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_HSCROLL = 0x0114;
inline constexpr UINT WM_VSCROLL = 0x0115;
inline constexpr UINT WM_INITMENUPOPUP = 0x0117;
inline constexpr UINT WM_CTLCOLOREDIT = 0x0133;
inline constexpr UINT WM_CTLCOLORLISTBOX = 0x0134;
inline constexpr UINT WM_CTLCOLORSTATIC = 0x0138;
inline constexpr UINT WM_MOUSEFIRST = 0x0200;
inline constexpr UINT WM_MOUSEMOVE = 0x0200;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
inline constexpr UINT WM_RBUTTONDOWN = 0x0204;
inline constexpr UINT WM_RBUTTONUP = 0x0205;
inline constexpr UINT WM_RBUTTONDBLCLK = 0x0206;
inline constexpr UINT WM_MBUTTONDOWN = 0x0207;
inline constexpr UINT WM_MBUTTONUP = 0x0208;
inline constexpr UINT WM_MBUTTONDBLCLK = 0x0209;
inline constexpr UINT WM_MOUSEWHEEL = 0x020A;
inline constexpr UINT WM_MOUSEHWHEEL = 0x020E;
inline constexpr UINT WM_MOUSELAST = 0x020E;
inline constexpr UINT WM_CAPTURECHANGED = 0x0215;
inline constexpr UINT WM_MOUSELEAVE = 0x02A3;
inline constexpr UINT WM_CUT = 0x0300;
inline constexpr UINT WM_COPY = 0x0301;
inline constexpr UINT WM_PASTE = 0x0302;
inline constexpr UINT WM_CLEAR = 0x0303;
inline constexpr UINT WM_UNDO = 0x0304;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr UINT WM_APP = 0x8000;
/// A message to a parent comes back to the child that sent it as WM_REFLECT_BASE plus its number.
inline constexpr UINT WM_REFLECT_BASE = 0xBC00;

// WM_SIZE
inline constexpr UINT SIZE_RESTORED = 0;
inline constexpr UINT SIZE_MAXIMIZED = 2;
// WM_ACTIVATE
inline constexpr UINT WA_INACTIVE = 0;
inline constexpr UINT WA_ACTIVE = 1;
// Mouse messages' wParam
inline constexpr UINT MK_LBUTTON = 0x0001;
inline constexpr UINT MK_RBUTTON = 0x0002;
inline constexpr UINT MK_SHIFT = 0x0004;
inline constexpr UINT MK_CONTROL = 0x0008;
inline constexpr UINT MK_MBUTTON = 0x0010;
inline constexpr int WHEEL_DELTA = 120;
// WM_NCHITTEST
inline constexpr int HTCLIENT = 1;
// WM_HSCROLL, WM_VSCROLL
inline constexpr UINT SB_LINEUP = 0;
inline constexpr UINT SB_LINEDOWN = 1;
inline constexpr UINT SB_PAGEUP = 2;
inline constexpr UINT SB_PAGEDOWN = 3;
inline constexpr UINT SB_THUMBPOSITION = 4;
inline constexpr UINT SB_THUMBTRACK = 5;
inline constexpr UINT SB_TOP = 6;
inline constexpr UINT SB_BOTTOM = 7;
inline constexpr UINT SB_ENDSCROLL = 8;
inline constexpr int SB_HORZ = 0;
inline constexpr int SB_VERT = 1;
// WM_GETDLGCODE
inline constexpr int DLGC_WANTARROWS = 0x0001;
inline constexpr int DLGC_WANTTAB = 0x0002;
inline constexpr int DLGC_WANTALLKEYS = 0x0004;
inline constexpr int DLGC_WANTMESSAGE = 0x0004;
inline constexpr int DLGC_HASSETSEL = 0x0008;
inline constexpr int DLGC_DEFPUSHBUTTON = 0x0010;
inline constexpr int DLGC_UNDEFPUSHBUTTON = 0x0020;
inline constexpr int DLGC_RADIOBUTTON = 0x0040;
inline constexpr int DLGC_WANTCHARS = 0x0080;
inline constexpr int DLGC_STATIC = 0x0100;
inline constexpr int DLGC_BUTTON = 0x2000;
// WM_SYSCOMMAND
inline constexpr UINT SC_CLOSE = 0xF060;

// --- window and class styles ---------------------------------------------------------------------
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_CHILD = 0x40000000;
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_DISABLED = 0x08000000;
inline constexpr DWORD WS_MAXIMIZE = 0x01000000;
inline constexpr DWORD WS_CAPTION = 0x00C00000;
inline constexpr DWORD WS_BORDER = 0x00800000;
inline constexpr DWORD WS_VSCROLL = 0x00200000;
inline constexpr DWORD WS_HSCROLL = 0x00100000;
inline constexpr DWORD WS_SYSMENU = 0x00080000;
inline constexpr DWORD WS_THICKFRAME = 0x00040000;
inline constexpr DWORD WS_GROUP = 0x00020000;
inline constexpr DWORD WS_TABSTOP = 0x00010000;
inline constexpr DWORD WS_MAXIMIZEBOX = 0x00010000;
inline constexpr DWORD WS_OVERLAPPEDWINDOW = 0x00CF0000;
inline constexpr DWORD WS_EX_DLGMODALFRAME = 0x00000001;
inline constexpr DWORD WS_EX_TOPMOST = 0x00000008;
inline constexpr DWORD WS_EX_TOOLWINDOW = 0x00000080;
inline constexpr DWORD WS_EX_CLIENTEDGE = 0x00000200;
inline constexpr DWORD WS_EX_RIGHT = 0x00001000;
inline constexpr DWORD WS_EX_RTLREADING = 0x00002000;
inline constexpr DWORD WS_EX_LEFTSCROLLBAR = 0x00004000;
inline constexpr DWORD WS_EX_CONTROLPARENT = 0x00010000;
inline constexpr DWORD WS_EX_STATICEDGE = 0x00020000;
inline constexpr DWORD WS_EX_NOACTIVATE = 0x08000000;
inline constexpr DWORD WS_EX_LAYOUTRTL = 0x00400000; ///< the window's x axis runs right to left
inline constexpr DWORD WS_EX_NOINHERITLAYOUT = 0x00100000;
inline constexpr UINT CS_DBLCLKS = 0x0008; ///< the window receives double clicks as such
inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000);

inline constexpr UINT SWP_NOSIZE = 0x0001;
inline constexpr UINT SWP_NOMOVE = 0x0002;
inline constexpr UINT SWP_NOZORDER = 0x0004;
inline constexpr UINT SWP_NOACTIVATE = 0x0010;
inline constexpr UINT SWP_FRAMECHANGED = 0x0020;
inline constexpr UINT SWP_SHOWWINDOW = 0x0040;
inline constexpr UINT SWP_HIDEWINDOW = 0x0080;
inline constexpr UINT GW_HWNDFIRST = 0;
inline constexpr UINT GW_HWNDLAST = 1;
inline constexpr UINT GW_HWNDNEXT = 2;
inline constexpr UINT GW_HWNDPREV = 3;
inline constexpr UINT GW_OWNER = 4;
inline constexpr UINT GW_CHILD = 5;
inline constexpr int GWL_STYLE = -16;
inline constexpr int GWL_EXSTYLE = -20;

// --- virtual keys --------------------------------------------------------------------------------
// A letter or digit key has its ASCII character (upper case) for its number.
inline constexpr int VK_LBUTTON = 0x01;
inline constexpr int VK_RBUTTON = 0x02;
inline constexpr int VK_MBUTTON = 0x04;
inline constexpr int VK_BACK = 0x08;
inline constexpr int VK_TAB = 0x09;
inline constexpr int VK_CLEAR = 0x0C;
inline constexpr int VK_RETURN = 0x0D;
inline constexpr int VK_SHIFT = 0x10;
inline constexpr int VK_CONTROL = 0x11;
inline constexpr int VK_MENU = 0x12;
inline constexpr int VK_PAUSE = 0x13;
inline constexpr int VK_CAPITAL = 0x14;
inline constexpr int VK_ESCAPE = 0x1B;
inline constexpr int VK_SPACE = 0x20;
inline constexpr int VK_PRIOR = 0x21;
inline constexpr int VK_NEXT = 0x22;
inline constexpr int VK_END = 0x23;
inline constexpr int VK_HOME = 0x24;
inline constexpr int VK_LEFT = 0x25;
inline constexpr int VK_UP = 0x26;
inline constexpr int VK_RIGHT = 0x27;
inline constexpr int VK_DOWN = 0x28;
inline constexpr int VK_SNAPSHOT = 0x2C;
inline constexpr int VK_INSERT = 0x2D;
inline constexpr int VK_DELETE = 0x2E;
inline constexpr int VK_HELP = 0x2F;
inline constexpr int VK_LWIN = 0x5B;
inline constexpr int VK_APPS = 0x5D;
inline constexpr int VK_NUMPAD0 = 0x60;
inline constexpr int VK_MULTIPLY = 0x6A;
inline constexpr int VK_ADD = 0x6B;
inline constexpr int VK_SUBTRACT = 0x6D;
inline constexpr int VK_DECIMAL = 0x6E;
inline constexpr int VK_DIVIDE = 0x6F;
inline constexpr int VK_F1 = 0x70;
inline constexpr int VK_F2 = 0x71;
inline constexpr int VK_F3 = 0x72;
inline constexpr int VK_F4 = 0x73;
inline constexpr int VK_F5 = 0x74;
inline constexpr int VK_F6 = 0x75;
inline constexpr int VK_F7 = 0x76;
inline constexpr int VK_F8 = 0x77;
inline constexpr int VK_F9 = 0x78;
inline constexpr int VK_F10 = 0x79;
inline constexpr int VK_F11 = 0x7A;
inline constexpr int VK_F12 = 0x7B;
inline constexpr int VK_F24 = 0x87;
inline constexpr int VK_NUMLOCK = 0x90;
inline constexpr int VK_SCROLL = 0x91;
inline constexpr int VK_OEM_1 = 0xBA;
inline constexpr int VK_OEM_PLUS = 0xBB;
inline constexpr int VK_OEM_COMMA = 0xBC;
inline constexpr int VK_OEM_MINUS = 0xBD;
inline constexpr int VK_OEM_PERIOD = 0xBE;
inline constexpr int VK_OEM_2 = 0xBF;
inline constexpr int VK_OEM_3 = 0xC0;
inline constexpr int VK_OEM_4 = 0xDB;
inline constexpr int VK_OEM_5 = 0xDC;
inline constexpr int VK_OEM_6 = 0xDD;
inline constexpr int VK_OEM_7 = 0xDE;
inline constexpr int VK_PROCESSKEY = 0xE5; ///< the key belongs to an input method

// --- owner drawing -------------------------------------------------------------------------------
inline constexpr UINT ODT_LISTBOX = 2;
inline constexpr UINT ODA_DRAWENTIRE = 0x0001;
inline constexpr UINT ODA_FOCUS = 0x0004;
inline constexpr UINT ODS_SELECTED = 0x0001;
inline constexpr UINT ODS_DISABLED = 0x0004;
inline constexpr UINT ODS_FOCUS = 0x0010;
