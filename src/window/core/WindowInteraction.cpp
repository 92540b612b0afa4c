#include "src/window/core/WindowInteraction.h"

#include "vnbytstr/ResourceLibrary.h"

#include "src/window/core/WindowInternal.h"
#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/Wnd.h"

#include "messages/ResourceIds.h"
#include "vnbytstr/framework/Module.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QThread>

#include <vector>

namespace vnbytstr {
namespace {

struct Button {
    int answer;
    UINT label;
    const char* english;
    QMessageBox::ButtonRole role;
};
constexpr Button kOk{IDOK, IDS_BUTTON_OK, "OK", QMessageBox::AcceptRole};
constexpr Button kCancel{IDCANCEL, IDS_BUTTON_CANCEL, "Cancel", QMessageBox::RejectRole};
constexpr Button kAbort{IDABORT, IDS_BUTTON_ABORT, "Abort", QMessageBox::RejectRole};
constexpr Button kRetry{IDRETRY, IDS_BUTTON_RETRY, "Retry", QMessageBox::AcceptRole};
constexpr Button kIgnore{IDIGNORE, IDS_BUTTON_IGNORE, "Ignore", QMessageBox::AcceptRole};
constexpr Button kYes{IDYES, IDS_BUTTON_YES, "Yes", QMessageBox::YesRole};
constexpr Button kNo{IDNO, IDS_BUTTON_NO, "No", QMessageBox::NoRole};

std::vector<Button> ButtonsOf(UINT type) {
    switch (type & MB_TYPEMASK) {
    case MB_OKCANCEL:
        return {kOk, kCancel};
    case MB_ABORTRETRYIGNORE:
        return {kAbort, kRetry, kIgnore};
    case MB_YESNOCANCEL:
        return {kYes, kNo, kCancel};
    case MB_YESNO:
        return {kYes, kNo};
    case MB_RETRYCANCEL:
        return {kRetry, kCancel};
    default:
        return {kOk};
    }
}

QMessageBox::Icon IconOf(UINT type) {
    switch (type & MB_ICONMASK) {
    case MB_ICONSTOP:
        return QMessageBox::Critical;
    case MB_ICONQUESTION:
        return QMessageBox::Question;
    case MB_ICONEXCLAMATION:
        return QMessageBox::Warning;
    case MB_ICONINFORMATION:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

QString LabelOf(const Button& button) {
    CString label;
    return AfxLoadString(button.label, label) > 0 ? detail::ToQString(label.operator const char*())
                                                  : QString::fromLatin1(button.english);
}

void SendHelp(QWidget* owner, UINT helpContext) {
    detail::Window* window = detail::Window::Of(owner);
    CWnd* target = window != nullptr ? window->ObjectOrTemporary() : AfxGetMainWnd();
    if (target == nullptr)
        return;
    HELPINFO info{};
    info.cbSize = sizeof info;
    info.iContextType = 1;
    info.dwContextId = helpContext;
    target->SendMessage(WM_HELP, 0, reinterpret_cast<LPARAM>(&info));
}

void Align(QMessageBox& box, UINT type) {
    box.setLayoutDirection((type & MB_RTLREADING) != 0 ? Qt::RightToLeft : Qt::LeftToRight);
    if ((type & MB_RIGHT) != 0)
        for (QLabel* label : box.findChildren<QLabel*>())
            if (!label->text().isEmpty())
                label->setAlignment(Qt::AlignRight | Qt::AlignAbsolute | Qt::AlignVCenter);
}

int ShowBox(const char* text, const char* caption, UINT type, UINT helpContext) {
    detail::CancelCapture();
    QWidget* owner = QApplication::activeModalWidget();
    if (owner == nullptr)
        owner = QApplication::activeWindow();
    QMessageBox box(IconOf(type), detail::ToQString(caption != nullptr ? caption : ""),
                    detail::ToQString(text != nullptr ? text : ""), QMessageBox::NoButton, owner);
    box.setTextFormat(Qt::PlainText);
    if ((type & MB_TOPMOST) != 0)
        box.setWindowFlag(Qt::WindowStaysOnTopHint);
    const std::vector<Button> buttons = ButtonsOf(type);
    const std::size_t wanted = (type & MB_DEFMASK) / MB_DEFBUTTON2;
    std::vector<QAbstractButton*> shown;
    for (const Button& button : buttons) {
        QPushButton* made = box.addButton(LabelOf(button), button.role);
        shown.push_back(made);
        if (shown.size() == 1 || shown.size() == wanted + 1)
            box.setDefaultButton(made);
        if (button.answer == IDCANCEL || buttons.size() == 1)
            box.setEscapeButton(made);
    }
    if ((type & MB_HELP) != 0) {
        auto* help = box.addButton(QMessageBox::Help);
        help->disconnect(); // it must not close the box
        QObject::connect(help, &QAbstractButton::clicked, &box,
                         [owner, helpContext] { SendHelp(owner, helpContext); });
    }
    Align(box, type);
    box.exec();
    for (std::size_t i = 0; i < shown.size(); ++i)
        if (box.clickedButton() == shown[i])
            return buttons[i].answer;
    return 0;
}

} // namespace

int WindowInteraction::MessageBox(const char* text, const char* caption, UINT type,
                                  UINT helpContext) {
    if (qApp == nullptr && !AfxCanOpenWindows())
        return ConsoleInteraction::MessageBox(text, caption, type, helpContext);
    AfxInitWindows();
    if (QThread::currentThread() == qApp->thread())
        return ShowBox(text, caption, type, helpContext);
    int answer = 0;
    QMetaObject::invokeMethod(
        qApp, [&] { answer = ShowBox(text, caption, type, helpContext); },
        Qt::BlockingQueuedConnection);
    return answer;
}

void InstallWindowInteraction() {
    static bool done = false;
    if (done)
        return;
    done = true;
    static WindowInteraction window;
    // An Interaction installed by the program (or a test) stays.
    if (Interaction* before = Interaction::Install(&window); before != nullptr)
        Interaction::Install(before);
}

} // namespace vnbytstr
