// CWinApp, the program: its message loop and main window.
//
// A framework-style program derives from it and calls Run; a Qt program does not need it. The first
// window creates the Qt application object unless there is one.
#pragma once

#include "vnbytstr/window/CmdTarget.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

class VNBYTSTR_CONTROLS_API CWinApp : public CCmdTarget {
    DECLARE_DYNAMIC(CWinApp)
public:
    /// At most one at a time.
    explicit CWinApp(LPCTSTR name = nullptr);
    ~CWinApp() override;

    /// Makes the main window (m_pMainWnd); FALSE ends the program with ExitInstance.
    virtual BOOL InitInstance();
    /// The loop: handles messages until the program is told to quit, then calls ExitInstance.
    /// Returns its answer.
    virtual int Run();
    virtual int ExitInstance();
    /// Called when there is nothing to do; `count` counts calls since the last message. TRUE: call
    /// again when there is time.
    virtual BOOL OnIdle(LONG count);
    virtual BOOL PreTranslateMessage(MSG* message);
    /// InitInstance, Run.
    int Main();

    CWnd* m_pMainWnd = nullptr; ///< Run returns when it is destroyed
    CString m_pszAppName;       ///< what the constructor was given

protected:
    DECLARE_MESSAGE_MAP()
};

/// The program's object; null when it has not created one.
VNBYTSTR_CONTROLS_API CWinApp* AfxGetApp();
/// CWinApp's main window; null when there is no program object or it has no window.
VNBYTSTR_CONTROLS_API CWnd* AfxGetMainWnd();
/// Makes the innermost message loop return `exitCode`.
VNBYTSTR_CONTROLS_API void AfxPostQuitMessage(int exitCode);
VNBYTSTR_CONTROLS_API void PostQuitMessage(int exitCode);
/// Whether this process can open windows: there is a display, or a Qt platform is chosen
/// (QT_QPA_PLATFORM). Without, AfxInitWindows would end the process with Qt's message.
VNBYTSTR_CONTROLS_API BOOL AfxCanOpenWindows();
/// Creates the Qt application object unless there is one. `argc` and `argv` (may be null) are those
/// of main and must live as long as the program.
VNBYTSTR_CONTROLS_API void AfxInitWindows(int* argc = nullptr, char** argv = nullptr);
/// Handles messages for that long; 0: only those that are waiting.
VNBYTSTR_CONTROLS_API void AfxPumpMessages(int milliseconds = 50);
