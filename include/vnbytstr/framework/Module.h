// The module state: which module is the program, and where its resources come from. What is loaded
// from there: see ResourceLibrary.h.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/MessageBoxTypes.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

/// The program's module handle. Never null; it has no strings of its own.
VNBYTSTR_API HINSTANCE AfxGetInstanceHandle();

/// The module that resources are loaded from: the program's until AfxSetResourceHandle. One for the
/// process; threads that load resources while another sets it may get those of either.
VNBYTSTR_API HINSTANCE AfxGetResourceHandle();
/// Sets the module that resources are loaded from (null: the program's). The library stays its
/// loader's; see vnbytstr::LoadResourceLibrary.
VNBYTSTR_API void AfxSetResourceHandle(HINSTANCE module);

/// Name of the program: that of its file, without folder and without an ending ".exe".
VNBYTSTR_API CString AfxGetAppName();

/// Puts `format` with its insertion points filled into `out`: `%1` to `%9` stand for the first to
/// the ninth of the `count` texts, in any order and any number. One past the count gives "?", a
/// null text nothing. A percent sign before anything else stands for itself. A null format is
/// empty. `out` may be one of the texts.
VNBYTSTR_API void AfxFormatStrings(CString& out, const char* format, const char* const* texts,
                                   int count);

/// Shows a message box with the program's name as its caption, through
/// vnbytstr::Interaction::Current(). `type` is made of MB_ values; `helpId` is the message's help
/// identifier, 0 when it has none. Returns the ID value of the button, 0 when there could be no
/// box.
VNBYTSTR_API int AfxMessageBox(const char* text, UINT type = MB_OK, UINT helpId = 0);
