// Help pages, opened from the window.
#pragma once

class QDialog;
class QWidget;

namespace vnquery {

/// Opens a help page by its number in the index, in the desktop's browser. A message box over the
/// window says why there is none: also later, when xdg-open has found nothing to open it with.
void ShowHelp(QWidget* parent, unsigned topic);

/// F1 in the dialog opens that help page.
void AddHelp(QDialog* dialog, unsigned topic);

} // namespace vnquery
