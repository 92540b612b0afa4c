// Runs long work while the window stays responsive.
#pragma once

#include "vnquery/tasks/BackgroundTask.h"

#include "vnbytstr/framework/Types.h"

class QWidget;

namespace vnquery {

/// Runs the work on another thread and returns when it has ended. Work that takes longer than a
/// moment shows a dialog with its progress and a Cancel button. A failure is shown in a message
/// box. Returns whether the work was done. `title` is a text's id, such as IDS_VQ_T_SAVING.
/// Without `waits` Cancel leaves the work alone, which must use nothing but what it owns.
bool RunTask(QWidget* parent, UINT title, BackgroundTask::Work work, bool waits = true);

} // namespace vnquery
