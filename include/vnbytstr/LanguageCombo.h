// A combo box for choosing the language of the user interface.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/ComboBox.h"
#include "vnbytstr/window/Export.h"

/// Fills a combo box with the languages whose resource libraries (named by `prefix`, such as
/// "vnurc") are installed, and selects the one in use (GetUILanguage), or English if that one is
/// not installed.
VNBYTSTR_CONTROLS_API void FillUILanguageCombo(CComboBox& combo, const char* prefix);

/// The code of the language selected in a combo box that FillUILanguageCombo filled; empty when no
/// item is selected.
VNBYTSTR_CONTROLS_API CString GetUILanguageOfCombo(const CComboBox& combo);
