// Loaded resource libraries: PE files (vnurcENU.dll) whose string tables hold a program's texts in
// one language. 32- and 64-bit ones are read; no code in them is run.
//
// A handle stays valid until it has been freed as often as it was loaded. Loading a file again
// gives the same handle. All functions may be called from every thread; invalid handles are
// refused. A file that is too long, not a PE file or damaged gives ENOEXEC, in a time bounded by
// its length.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Module.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <string>
#include <vector>

namespace vnbytstr {

/// The running program as a module. It has no resources.
VNBYTSTR_API HINSTANCE GetApplicationInstance() noexcept;

/// Loads a resource library. Returns 0 and its handle, or an errno value and null.
VNBYTSTR_API int LoadResourceLibrary(const char* file, HINSTANCE& library);
/// Loads a library again by the handle it was freed with, without reading the file. False when it
/// has been forgotten since.
VNBYTSTR_API bool ReviveResourceLibrary(HINSTANCE library);
/// Frees a handle. False when it is not a valid one, or the program's.
VNBYTSTR_API bool FreeResourceLibrary(HINSTANCE library);
/// The name `library` was loaded by, or the program's full name; empty when it is no handle.
VNBYTSTR_API std::string GetModuleFileName(HINSTANCE library);

/// Puts a string, in the ANSI code page, into `text`. False, with `text` unchanged, when there is
/// none or an empty one.
VNBYTSTR_API bool FindResourceString(HINSTANCE library, UINT id, CString& text);
/// The ids that have a string, in ascending order.
VNBYTSTR_API std::vector<UINT> ListResourceStrings(HINSTANCE library);

/// Windows LANGID of a library's strings (1033 for English of the United States; the language is
/// the lower 10 bits); 0 when it is neutral, unknown or no library.
VNBYTSTR_API WORD GetResourceLanguage(HINSTANCE library);
/// Whether the texts of a library run from right to left. The library says so as Windows programs
/// do, by two left-to-right marks (U+200E) at the beginning of the FileDescription in its version
/// information; or its language is written that way.
VNBYTSTR_API bool IsResourceRightToLeft(HINSTANCE library);

} // namespace vnbytstr

/// Loads a string from the module that resources come from. Returns its length in bytes, 0 and an
/// empty text when there is none.
VNBYTSTR_API int AfxLoadString(UINT id, CString& text);

/// As AfxMessageBox (Module.h) with a string resource (the empty text when there is none); a
/// `helpId` of 0xFFFFFFFF stands for the string's id.
VNBYTSTR_API int AfxMessageBox(UINT textId, UINT type = MB_OK, UINT helpId = 0xFFFFFFFF);
