// A program's own texts, in one resource library per language.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

namespace vnbytstr {

/// The texts of a program that is built on this library. Their resource libraries are named by a
/// prefix and found as those of this library are (see Language.h): ProgramTexts("films") loads
/// filmsDEU.dll. They do not touch the library that LoadResourceDLL makes current, which this
/// library's own texts come from; a program loads "vnurc" with that as before. CMake makes them
/// with vnbytstr_add_resource_library.
///
/// None of these functions throws. Find and IsRightToLeft may be called from several threads at a
/// time, but not during Load.
class VNBYTSTR_API ProgramTexts {
public:
    /// Loads the texts, see Load. A null prefix is empty.
    explicit ProgramTexts(const char* prefix);
    ~ProgramTexts();
    ProgramTexts(const ProgramTexts&) = delete;
    ProgramTexts& operator=(const ProgramTexts&) = delete;

    /// Loads the library of the user interface's language (GetUILanguage), or the English one where
    /// there is none. To be called again when that language has changed. False when there is
    /// neither, or when the one that was found cannot be loaded: the texts loaded before then stay.
    bool Load();

    /// Puts a text, in the ANSI code page, into `text`: that of the loaded language or, where it
    /// has none, the English one. False, with an empty `text`, when neither has it.
    bool Find(UINT id, CString& text) const;

    /// Whether the loaded texts run from right to left, as ResourcesAreBiDi says it.
    bool IsRightToLeft() const;

private:
    CString m_prefix;
    HINSTANCE m_library = nullptr; ///< null: none is loaded
    HINSTANCE m_english = nullptr; ///< null: there is none; may be m_library
};

} // namespace vnbytstr
