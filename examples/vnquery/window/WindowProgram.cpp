#include "vnquery/window/WindowProgram.h"

#include "vnquery/tasks/Failure.h"
#include "vnquery/window/Guard.h"
#include "vnquery/window/Icons.h"
#include "vnquery/window/MainWindow.h"
#include "vnquery/window/Translation.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Profile.h"

#include <QApplication>

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
    const QApplication application(argc, argv);
    QApplication::setApplicationName("vnquery");
    QApplication::setDesktopFileName("vnquery");
    QApplication::setWindowIcon(Icon("vnquery"));
    GetGlobals().Initialize();
    UseTextLanguage();
    MainWindow window;
    window.show();
    CString trouble;
    if (VNGetProfileStatus(&trouble) != ProfileSound)
        QMessageBox::warning(&window, Label(IDS_VQ_APP),
                             Sentence(static_cast<const char*>(trouble)));
    if (!start.connection.IsEmpty() && window.OpenConnection(start.connection, start.sql) &&
        !start.sql.empty())
        window.RunPieces(SqlEditor::Which::All);
    const int result = QApplication::exec();
    return window.GetEndingSignal() != 0 ? 128 + window.GetEndingSignal() : result;
}

} // namespace vnquery
