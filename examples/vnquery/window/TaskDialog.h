// Shows the progress of long work, with a Cancel button.
#pragma once

#include "vnquery/tasks/BackgroundTask.h"
#include "vnquery/window/TextDialog.h"

namespace vnquery {

/// Runs the work on another thread and returns when it has ended. Longer work shows a dialog with
/// its progress and a Cancel button. A failure is shown in a message box. Returns whether the work
/// was done.
bool RunTask(CWnd* parent, UINT title, BackgroundTask::Work work);

/// The dialog of RunTask.
class TaskDialog : public TextDialog {
public:
    TaskDialog(UINT title, BackgroundTask& task, CWnd* parent);

protected:
    BOOL OnInitDialog() override;
    void OnOK() override {}
    void OnCancel() override;
    void OnTimer(std::uintptr_t id);
    DECLARE_MESSAGE_MAP()

private:
    std::string m_caption;
    BackgroundTask& m_task;
};

} // namespace vnquery
