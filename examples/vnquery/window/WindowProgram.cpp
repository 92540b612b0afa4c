#include "vnquery/window/WindowProgram.h"

#include "vnquery/tasks/BackgroundTask.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/window/Guard.h"
#include "vnquery/window/Icons.h"
#include "vnquery/window/MainWindow.h"
#include "vnquery/window/ProgramStyle.h"
#include "vnquery/window/Translation.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Profile.h"

#include <QApplication>

#include <cstdio>
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

/// Qt aborts when the display cannot be reached.
void EndWithoutDisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg)
        return;
    std::fprintf(stderr, "vnquery: %s\n", Text(IDS_VQ_N_DISPLAY).c_str());
    std::_Exit(kBadUsage);
}

} // namespace

int RunWindow(int argc, char** argv, const WindowStart& start) {
    RequireDisplay();
    qInstallMessageHandler(EndWithoutDisplay);
    const QApplication application(argc, argv);
    qInstallMessageHandler(nullptr);
    QApplication::setApplicationName("vnquery");
    QApplication::setDesktopFileName("vnquery");
    QApplication::setWindowIcon(Icon("vnquery"));
    UseProgramStyle();
    GetGlobals().Initialize();
    UseTextLanguage();
    auto shown = std::make_unique<MainWindow>();
    MainWindow& window = *shown;
    window.show();
    CString trouble;
    if (VNGetProfileStatus(&trouble) != ProfileSound)
        QMessageBox::warning(&window, Label(IDS_VQ_APP),
                             Sentence(static_cast<const char*>(trouble)));
    if (!start.connection.IsEmpty() && window.OpenConnection(start.connection, start.sql) &&
        !start.sql.empty())
        window.RunPieces(SqlEditor::Which::All);
    int result = QApplication::exec();
    if (window.GetEndingSignal() != 0)
        result = 128 + window.GetEndingSignal();
    shown.reset();
    if (HasLeft()) {
        std::fflush(nullptr);
        std::_Exit(result);
    }
    return result;
}

} // namespace vnquery
