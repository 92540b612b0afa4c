// Shows how far long work is, and lets it be cancelled.
#pragma once

#include "vnquery/window/TextDialog.h"
#include "vnquery/work/BackgroundTask.h"

namespace vnquery {

/// Runs the work beside the window and returns when it has ended. A short one shows nothing; a
/// longer one shows a dialog with its progress and Cancel. A failure is told in a message box.
/// Returns whether the work is done.
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
