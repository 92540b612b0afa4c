// The choice of the interface language as a combo box.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/ComboBox.h"

/// Fills a combo box with the languages whose resource libraries (named by `prefix`, such as
/// "vnurc") are installed, each under its own name, and selects the one in use
/// (GetUILanguage), English when that is not there.
VNBYTSTR_API void FillUILanguageCombo(CComboBox& combo, const char* prefix);

/// The code of the language selected in a combo box that FillUILanguageCombo filled; empty when
/// none is.
VNBYTSTR_API CString GetUILanguageOfCombo(const CComboBox& combo);
