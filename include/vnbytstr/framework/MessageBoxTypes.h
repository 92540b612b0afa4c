// Flags and answers of message boxes; how a program is started and its window shown.
#pragma once

#include "vnbytstr/framework/Types.h"

#if !defined(_WIN32) // which has them

/// Type of a message box: one value of each group, combined with |.
enum MessageBoxType : UINT {
    // the buttons
    MB_OK = 0x0,
    MB_OKCANCEL = 0x1,
    MB_ABORTRETRYIGNORE = 0x2,
    MB_YESNOCANCEL = 0x3,
    MB_YESNO = 0x4,
    MB_RETRYCANCEL = 0x5,
    MB_TYPEMASK = 0xF,
    // the icon
    MB_ICONSTOP = 0x10,
    MB_ICONHAND = MB_ICONSTOP,
    MB_ICONERROR = MB_ICONSTOP,
    MB_ICONQUESTION = 0x20,
    MB_ICONEXCLAMATION = 0x30,
    MB_ICONWARNING = MB_ICONEXCLAMATION,
    MB_ICONINFORMATION = 0x40,
    MB_ICONASTERISK = MB_ICONINFORMATION,
    MB_ICONMASK = 0xF0,
    // the button that the Enter key takes, counted from the first
    MB_DEFBUTTON1 = 0x000,
    MB_DEFBUTTON2 = 0x100,
    MB_DEFBUTTON3 = 0x200,
    MB_DEFBUTTON4 = 0x300,
    MB_DEFMASK = 0xF00,
    // which windows wait for the answer
    MB_APPLMODAL = 0x0000,
    MB_SYSTEMMODAL = 0x1000,
    MB_TASKMODAL = 0x2000,
    // others
    MB_HELP = 0x4000,
    MB_SETFOREGROUND = 0x10000,
    MB_TOPMOST = 0x40000,
    MB_RIGHT = 0x80000,       ///< the text is aligned to the right
    MB_RTLREADING = 0x100000, ///< caption and text read from right to left
};

/// Which button ended a message box or dialog.
enum DialogAnswer : int {
    IDOK = 1,
    IDCANCEL = 2,
    IDABORT = 3,
    IDRETRY = 4,
    IDIGNORE = 5,
    IDYES = 6,
    IDNO = 7,
    IDCLOSE = 8,
    IDHELP = 9,
};

/// How the window of a program that is started, or of one's own, is to be shown.
enum ShowCommand : int {
    SW_HIDE = 0,
    SW_SHOWNORMAL = 1,
    SW_NORMAL = SW_SHOWNORMAL,
    SW_SHOWMINIMIZED = 2,
    SW_SHOWMAXIMIZED = 3,
    SW_MAXIMIZE = SW_SHOWMAXIMIZED,
    SW_SHOWNOACTIVATE = 4,
    SW_SHOW = 5,
    SW_MINIMIZE = 6,
    SW_SHOWMINNOACTIVE = 7,
    SW_SHOWNA = 8,
    SW_RESTORE = 9,
    SW_SHOWDEFAULT = 10,
};

#endif

namespace vnbytstr {

/// What ShellExecute returns when it did not start anything; every value above 32 is success.
enum ShellError : int {
    kShellOutOfMemory = 0,
    kShellFileNotFound = 2,
    kShellPathNotFound = 3,
    kShellAccessDenied = 5,
    kShellNoMemory = 8,
    kShellBadFormat = 11,
    kShellNoAssociation = 31, ///< there is no program for that kind of file
    kShellStarted = 33,
};

} // namespace vnbytstr
