#include "vnquery/window/TaskDialog.h"

#include "vnbytstr/window/Static.h"
#include "vnquery/result/CellText.h"
#include "vnquery/window/Commands.h"

#include <chrono>
#include <thread>

namespace vnquery {

namespace {

constexpr auto kShort = std::chrono::milliseconds(150);
constexpr UINT kLookInterval = 50; ///< milliseconds
constexpr int kIdText = 1001;
constexpr int kIdBar = 1002;

} // namespace

BEGIN_MESSAGE_MAP(TaskDialog, CDialog)
ON_WM_TIMER()
END_MESSAGE_MAP()

TaskDialog::TaskDialog(UINT title, BackgroundTask& task, CWnd* parent)
    : TextDialog(title, 200, 56, kHelpContents, parent), m_caption(Text(title)), m_task(task) {
    AddControl("STATIC", m_caption, kIdText, SS_NOPREFIX, 7, 7, 186, 9);
    AddControl("msctls_progress32", "", kIdBar, PBS_MARQUEE, 7, 19, 186, 8);
    AddButton(IDCANCEL, IDS_VQ_CANCEL, 73, 35);
}

BOOL TaskDialog::OnInitDialog() {
    SendDlgItemMessage(kIdBar, PBM_SETMARQUEE, TRUE);
    SetTimer(1, kLookInterval);
    return CDialog::OnInitDialog();
}

void TaskDialog::OnCancel() { m_task.Cancel(); }

void TaskDialog::OnTimer(std::uintptr_t) {
    if (m_task.GetState() != TaskState::Running) {
        KillTimer(1);
        EndDialog(IDOK);
        return;
    }
    const TaskProgress& progress = m_task.GetProgress();
    const std::string bytes = FormatSize(progress.GetBytes());
    const std::string text =
        progress.GetRows() > 0
            ? Text(IDS_VQ_T_PROGRESS, {m_caption, GroupDigits(progress.GetRows()), bytes})
            : Text(IDS_VQ_T_PROGRESS_BYTES, {m_caption, bytes});
    SetDlgItemText(kIdText, text.c_str());
}

bool RunTask(CWnd* parent, UINT title, BackgroundTask::Work work) {
    BackgroundTask task(std::move(work));
    const auto end = std::chrono::steady_clock::now() + kShort;
    while (task.GetState() == TaskState::Running && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (task.GetState() == TaskState::Running) {
        TaskDialog(title, task, parent).DoModal();
        if (task.GetState() == TaskState::Running)
            task.Cancel();
        task.Wait();
    }
    if (task.GetState() == TaskState::Failed)
        ShowMessage(task.GetMessage());
    return task.GetState() == TaskState::Done;
}

} // namespace vnquery
