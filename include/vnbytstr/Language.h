// The language of the user interface, and the texts of its resource libraries.
//
// A resource library holds a program's texts in one language. It is a PE file beside the program,
// or see LoadResourceDLL, named by a prefix, a language code and ".dll" (vnurcDEU.dll). A code has
// three capital letters, as Windows abbreviates the names of languages: SVE PTG PTB KOR JPN ITS ITA
// HEB FRS FRC FRB FRA ESN ENU DEU DES DAN CHT ARE. ENU, English, is what everything falls back to.
//
// None of these functions throws. They run on the thread of the user interface: LoadResourceDLL and
// LoadStringA set the process-wide AfxGetResourceHandle, LoadStringA for the time of the call.
//
// With VNBYTSTR_TRACE=1 in the environment (read when the system seam is installed) each step is
// reported on standard error.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <vector>

/// The language code to use: "UILanguage" under "Options" of the profile (root 3) as it stands
/// there, unchecked; if it is not set, the code of the system's locale (LC_ALL, LC_MESSAGES,
/// LANG), or of the nearest language, or "ENU".
VNBYTSTR_API CString GetUILanguage();

/// Loads the library of the user interface's language, or else the English one, and makes it the
/// one that resources come from (AfxGetResourceHandle). Each is looked for beside the program, then
/// beside this library, then in the data folder of its installation. Returns null when there is
/// neither, or when it cannot be loaded. The library stays loaded. A null prefix is empty.
VNBYTSTR_API HINSTANCE LoadResourceDLL(const char* prefix);

/// Loads a string: from the current resource library, else from `module` (unless null or the same),
/// else from vnurcENU.dll. Returns its length in bytes of the ANSI code page, or 0 with an empty
/// `text` when none of them has it.
VNBYTSTR_API int LoadStringA(CString& text, UINT id, HINSTANCE module);

/// The display name of the language of a code: its name in that language ("Deutsch (Schweiz)"), in
/// English where the ANSI code page cannot hold that, and the code itself when it is not known. A
/// null code is empty.
VNBYTSTR_API CString GetLanguageNameFromCode(const char* code);

/// A resource library that is installed.
struct SInstalledLanguage {
    CString m_strCode; ///< what stands between the prefix and ".dll"
    CString m_strName; ///< as GetLanguageNameFromCode gives it
    CString m_strFile; ///< full name
};
/// The resource libraries with that prefix (null is empty) and a three-letter code where
/// LoadResourceDLL looks, the first of each code, by code, for lists that a user chooses from. A
/// folder that cannot be read counts as empty.
VNBYTSTR_API std::vector<SInstalledLanguage> GetInstalledLanguages(const char* prefix);

/// Whether the current resource library is English; also when none was loaded, since texts then
/// come from the English one.
VNBYTSTR_API BOOL ResourcesAreEnglish();
/// Whether the texts of the current resource library run from right to left: its version
/// information says so (a FileDescription that begins with two left-to-right marks, U+200E), or
/// its language is written that way.
VNBYTSTR_API BOOL ResourcesAreBiDi();
/// Whether the system's own texts are English: its locale's language is, or it has none ("C").
VNBYTSTR_API BOOL SystemResourcesAreEnglish();
