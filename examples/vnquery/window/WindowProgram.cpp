#include "vnquery/window/WindowProgram.h"

#include "vnquery/tasks/Failure.h"
#include "vnquery/window/MainWindow.h"
#include "vnquery/window/WindowText.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Profile.h"

#include <cstdlib>

namespace vnquery {

namespace {

bool IsSet(const char* variable) {
    const char* const value = std::getenv(variable);
    return value && *value;
}

/// Without a display Qt would end the process.
void RequireDisplay() {
    if (!IsSet("DISPLAY") && !IsSet("WAYLAND_DISPLAY") && !IsSet("QT_QPA_PLATFORM"))
        throw Failure(kBadUsage, Text(IDS_VQ_CL_NO_DISPLAY));
}

} // namespace

int RunWindow(int argc, char** argv, const WindowStart& start) {
    RequireDisplay();
    AfxInitWindows(&argc, argv);
    GetGlobals().Initialize();
    CWinApp application("vnquery");
    MainWindow window;
    application.m_pMainWnd = &window;
    if (!window.Open())
        throw Failure(kFileFailed, Text(IDS_VQ_CL_NO_DISPLAY));
    CString trouble;
    if (VNGetProfileStatus(&trouble) != ProfileSound)
        ShowMessage(ToString(trouble));
    if (!start.connection.IsEmpty())
        window.GetView().SetConnection(start.connection);
    window.GetView().SetSql(start.sql);
    if (!start.connection.IsEmpty() && !start.sql.empty())
        window.GetView().Run();
    const int result = application.Run();
    return window.GetEndingSignal() != 0 ? 128 + window.GetEndingSignal() : result;
}

} // namespace vnquery
