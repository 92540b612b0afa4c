#include "vnquery/window/RunTask.h"

#include "vnquery/result/CellText.h"
#include "vnquery/window/Label.h"

#include <QCloseEvent>
#include <QEventLoop>
#include <QMessageBox>
#include <QProgressDialog>
#include <QTimer>

#include <chrono>
#include <thread>

namespace vnquery {

namespace {

constexpr auto kShort = std::chrono::milliseconds(150);
constexpr auto kLookInterval = std::chrono::milliseconds(50);

/// Stays until the work has ended, however the user asks for that: without it the window could be
/// used while the work uses it.
class StayingDialog : public QProgressDialog {
public:
    using QProgressDialog::QProgressDialog;
    void reject() override { Q_EMIT canceled(); }

protected:
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        Q_EMIT canceled();
    }
};

void ShowDialog(QWidget* parent, const std::string& title, BackgroundTask& task, bool waits) {
    StayingDialog dialog(QString::fromStdString(title), PlainLabel(IDS_VQ_CANCEL), 0, 0, parent);
    dialog.setWindowTitle(Label(IDS_VQ_APP));
    dialog.setWindowModality(Qt::ApplicationModal);
    // Connected by names, which only names disconnect; it would hide the dialog.
    QObject::disconnect(&dialog, SIGNAL(canceled()), &dialog, SLOT(cancel()));
    QEventLoop loop;
    QObject::connect(&dialog, &QProgressDialog::canceled, [&] {
        task.Cancel();
        if (!waits)
            loop.quit();
    });
    dialog.show();
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (task.GetState() != TaskState::Running)
            return loop.quit();
        const TaskProgress& progress = task.GetProgress();
        const std::string bytes = FormatSize(progress.GetBytes());
        if (progress.GetRows() > 0)
            dialog.setLabelText(
                Label(IDS_VQ_T_PROGRESS, {title, GroupDigits(progress.GetRows()), bytes}));
        else if (progress.GetBytes() > 0)
            dialog.setLabelText(Label(IDS_VQ_T_PROGRESS_BYTES, {title, bytes}));
    });
    timer.start(kLookInterval);
    loop.exec();
}

} // namespace

bool RunTask(QWidget* parent, UINT title, BackgroundTask::Work work, bool waits) {
    auto running = std::make_unique<BackgroundTask>(std::move(work));
    BackgroundTask& task = *running;
    const auto end = std::chrono::steady_clock::now() + kShort;
    while (task.GetState() == TaskState::Running && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (task.GetState() == TaskState::Running)
        ShowDialog(parent, Text(title), task, waits);
    if (!waits && task.GetState() == TaskState::Running) {
        LetEnd(std::move(running));
        return false;
    }
    task.Wait();
    if (task.GetState() == TaskState::Failed)
        QMessageBox::warning(parent, Label(IDS_VQ_APP), Sentence(task.GetMessage()));
    return task.GetState() == TaskState::Done;
}

} // namespace vnquery
