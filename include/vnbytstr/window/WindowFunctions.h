// The window layer's free functions: on windows by handle, the keyboard, the mouse, the clipboard,
// colours and measures. They return 0 for a handle that names no window.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Messages.h"

// --- system metrics ------------------------------------------------------------------------------
inline constexpr int SM_CXSCREEN = 0;
inline constexpr int SM_CYSCREEN = 1;
inline constexpr int SM_CXVSCROLL = 2;
inline constexpr int SM_CYHSCROLL = 3;
inline constexpr int SM_CYCAPTION = 4;
inline constexpr int SM_CXBORDER = 5;
inline constexpr int SM_CYBORDER = 6;
inline constexpr int SM_CXICON = 11;
inline constexpr int SM_CYICON = 12;
inline constexpr int SM_CYVSCROLL = 20;
inline constexpr int SM_CXHSCROLL = 21;
inline constexpr int SM_CXFRAME = 32;
inline constexpr int SM_CYFRAME = 33;
inline constexpr int SM_CXDOUBLECLK = 36;
inline constexpr int SM_CYDOUBLECLK = 37;
inline constexpr int SM_DBCSENABLED = 42;
inline constexpr int SM_CXEDGE = 45;
inline constexpr int SM_CYEDGE = 46;
inline constexpr int SM_CXSMICON = 49;
inline constexpr int SM_CYSMICON = 50;
inline constexpr int SM_CXDRAG = 68;
inline constexpr int SM_CYDRAG = 69;
inline constexpr int SM_MIDEASTENABLED = 74;

// --- mouse pointers ------------------------------------------------------------------------------
inline constexpr int IDC_ARROW = 32512;
inline constexpr int IDC_IBEAM = 32513;
inline constexpr int IDC_WAIT = 32514;
inline constexpr int IDC_CROSS = 32515;
inline constexpr int IDC_UPARROW = 32516;
inline constexpr int IDC_SIZENWSE = 32642;
inline constexpr int IDC_SIZENESW = 32643;
inline constexpr int IDC_SIZEWE = 32644;
inline constexpr int IDC_SIZENS = 32645;
inline constexpr int IDC_SIZEALL = 32646;
inline constexpr int IDC_NO = 32648;
inline constexpr int IDC_HAND = 32649;
inline constexpr int IDC_APPSTARTING = 32650;

/// Registers a class of windows under its name (case does not matter). Returns a number above 0;
/// 0 when the name is empty or taken.
VNBYTSTR_CONTROLS_API WORD RegisterClass(const WNDCLASS* windowClass);
/// Fills `*windowClass` with the class of that name; FALSE when there is none. `instance` does not
/// matter: all modules of a process share their classes.
VNBYTSTR_CONTROLS_API BOOL GetClassInfo(HINSTANCE instance, LPCSTR name, WNDCLASS* windowClass);
VNBYTSTR_CONTROLS_API BOOL UnregisterClass(LPCSTR name, HINSTANCE instance);

VNBYTSTR_CONTROLS_API BOOL IsWindow(HWND window);
VNBYTSTR_CONTROLS_API LRESULT SendMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// The message is handled when the program next waits for events, unless the window is destroyed
/// before.
VNBYTSTR_CONTROLS_API BOOL PostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// The default treatment of a message in a window of a registered or no class.
VNBYTSTR_CONTROLS_API LRESULT DefWindowProc(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam);
VNBYTSTR_CONTROLS_API BOOL DestroyWindow(HWND window);
VNBYTSTR_CONTROLS_API HWND GetParent(HWND window);
VNBYTSTR_CONTROLS_API HWND GetDlgItem(HWND window, int id);
VNBYTSTR_CONTROLS_API int GetDlgCtrlID(HWND window);
VNBYTSTR_CONTROLS_API int GetClassName(HWND window, LPSTR buffer, int size);
VNBYTSTR_CONTROLS_API HWND GetFocus();
VNBYTSTR_CONTROLS_API HWND
SetFocus(HWND window); ///< null takes it away from the window that has it
VNBYTSTR_CONTROLS_API HWND GetActiveWindow();
VNBYTSTR_CONTROLS_API HWND GetCapture();
VNBYTSTR_CONTROLS_API HWND SetCapture(HWND window);
VNBYTSTR_CONTROLS_API BOOL ReleaseCapture();
VNBYTSTR_CONTROLS_API BOOL EnableWindow(HWND window, BOOL on);
VNBYTSTR_CONTROLS_API BOOL ShowWindow(HWND window, int command);
VNBYTSTR_CONTROLS_API BOOL InvalidateRect(HWND window, LPCRECT rect, BOOL erase);
VNBYTSTR_CONTROLS_API BOOL GetClientRect(HWND window, LPRECT rect);
VNBYTSTR_CONTROLS_API BOOL GetWindowRect(HWND window, LPRECT rect);
VNBYTSTR_CONTROLS_API LONG GetWindowLong(HWND window, int index); ///< GWL_STYLE, GWL_EXSTYLE
VNBYTSTR_CONTROLS_API LONG SetWindowLong(HWND window, int index, LONG value);
VNBYTSTR_CONTROLS_API BOOL MessageBeep(UINT type);

/// Bit 15 set: the key (VK_*) is down, as far as the messages handled so far tell; bit 0: toggled.
VNBYTSTR_CONTROLS_API short GetKeyState(int key);
/// Milliseconds, wrapping after 49.7 days (vnbytstr::System's clock).
VNBYTSTR_CONTROLS_API DWORD GetTickCount();
VNBYTSTR_CONTROLS_API BOOL GetCursorPos(LPPOINT point);
VNBYTSTR_CONTROLS_API BOOL SetCursorPos(int x, int y);
/// Sets the pointer over the window that is handling a mouse message; returns the previous one.
VNBYTSTR_CONTROLS_API HCURSOR SetCursor(HCURSOR cursor);
VNBYTSTR_CONTROLS_API HCURSOR GetCursor();
/// The system's pointer of that number (IDC_*); null for an unknown one.
VNBYTSTR_CONTROLS_API HCURSOR LoadCursor(HINSTANCE instance, int id);
/// Confines what windows of this library see of the pointer to a rectangle of the screen: mouse
/// messages outside have the nearest point inside. The pointer itself goes where the hand moves it,
/// since a window system keeps that to itself. Null ends the confinement.
VNBYTSTR_CONTROLS_API BOOL ClipCursor(LPCRECT rect);
/// The rectangle of ClipCursor, else the whole screen.
VNBYTSTR_CONTROLS_API BOOL GetClipCursor(LPRECT rect);

VNBYTSTR_CONTROLS_API int GetSystemMetrics(int index); ///< SM_*; 0 for an unknown index
VNBYTSTR_CONTROLS_API COLORREF GetSysColor(int index); ///< COLOR_*; 0 for an unknown index
/// The low word: average width of a character of the dialog font; the high word: its height.
VNBYTSTR_CONTROLS_API LONG GetDialogBaseUnits();
/// number * numerator / denominator in 64 bits, rounded to the nearest; -1 when that does not fit
/// or the denominator is 0.
VNBYTSTR_CONTROLS_API int MulDiv(int number, int numerator, int denominator);

/// The clipboard's text, to and from the ANSI code page.
VNBYTSTR_CONTROLS_API BOOL SetClipboardText(LPCSTR text);
VNBYTSTR_CONTROLS_API BOOL GetClipboardText(CString& text);

/// The files of a drop (COleDataObject::GetDrop). `index` 0xFFFFFFFF: their number; else copies the
/// name (at most `size` bytes with the NUL) and returns its length; with a null buffer the length
/// only; 0 when there is none.
VNBYTSTR_CONTROLS_API UINT DragQueryFile(HDROP drop, UINT index, LPSTR buffer, UINT size);
