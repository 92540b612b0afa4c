#include "vnbytstr/window/Application.h"

#include "src/window/core/AccessibleTableInternal.h"
#include "src/window/core/HandInput.h"
#include "src/window/core/WindowInteraction.h"
#include "src/window/core/WindowInternal.h"

#include "src/os/System.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

IMPLEMENT_DYNAMIC(CWinApp, CCmdTarget)
BEGIN_MESSAGE_MAP(CWinApp, CCmdTarget)
END_MESSAGE_MAP()

namespace {

CWinApp* program = nullptr;
bool quitWanted = false;
int quitCode = 0;

} // namespace

CWinApp::CWinApp(LPCTSTR name) : m_pszAppName(name) { program = this; }

CWinApp::~CWinApp() {
    if (program == this)
        program = nullptr;
}

BOOL CWinApp::InitInstance() { return TRUE; }
int CWinApp::ExitInstance() { return quitCode; }
BOOL CWinApp::OnIdle(LONG /*count*/) { return FALSE; }
BOOL CWinApp::PreTranslateMessage(MSG* /*message*/) { return FALSE; }

int CWinApp::Run() {
    AfxInitWindows();
    LONG idle = 0;
    QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    const auto awake =
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, [&idle] { idle = 0; });
    const auto blocking =
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, [this, &idle] {
            if (m_pMainWnd != nullptr && !::IsWindow(m_pMainWnd->m_hWnd))
                QCoreApplication::exit(quitCode);
            else if (OnIdle(idle++))
                QTimer::singleShot(0, [] {});
        });
    if (!quitWanted)
        quitCode = QCoreApplication::exec();
    quitWanted = false;
    QObject::disconnect(awake);
    QObject::disconnect(blocking);
    return ExitInstance();
}

int CWinApp::Main() {
    AfxInitWindows();
    return InitInstance() ? Run() : ExitInstance();
}

CWinApp* AfxGetApp() { return program; }

CWnd* AfxGetMainWnd() { return program != nullptr ? program->m_pMainWnd : nullptr; }

void AfxPostQuitMessage(int exitCode) {
    quitCode = exitCode;
    quitWanted = true;
    QCoreApplication::exit(exitCode);
    quitWanted = QThread::currentThread()->loopLevel() == 0;
}

void PostQuitMessage(int exitCode) { AfxPostQuitMessage(exitCode); }

BOOL AfxCanOpenWindows() {
    if (qApp != nullptr)
        return TRUE;
    auto& system = vnbytstr::System::Current();
    for (const char* variable : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
        if (!system.GetEnvironment(variable).empty())
            return TRUE;
    return FALSE;
}

void AfxInitWindows(int* argc, char** argv) {
    static bool ready = false;
    if (ready && qApp != nullptr)
        return;
    ready = true;
    if (qApp == nullptr) { // else a Qt program made it
        static int noCount = 1;
        static char name[] = "vnbytstr";
        static char* noArguments[] = {name, nullptr};
        // Never deleted: windows may be static objects.
        static QApplication* application = new QApplication(argc != nullptr ? *argc : noCount,
                                                            argv != nullptr ? argv : noArguments);
        static_cast<void>(application);
    }
    // Installed after Qt's own, so that these are asked first.
    vnbytstr::InstallWindowInteraction();
    vnbytstr::detail::InstallAccessibility();
    vnbytstr::detail::WatchHand();
}

void AfxPumpMessages(int milliseconds) {
    AfxInitWindows();
    if (milliseconds > 0) {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
    } else {
        QCoreApplication::processEvents();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
