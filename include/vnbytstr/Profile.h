// The program's settings: named values in sections below a settings root.
//
// They are kept in one readable text file: VNBYTSTR_PROFILE when that is set, else
// $XDG_CONFIG_HOME/vnbytstr/profile.ini, else $HOME/.config/vnbytstr/profile.ini. It is UTF-8 and
// may be edited by hand. A new one is for its owner alone (mode 0600); one that is there keeps its
// mode, owner and group, also when root saves. /dev/null as its name means no settings: defaults
// are read, and what is written is forgotten. Any other device, a pipe or a folder counts as a file
// that can be neither read nor written.
//
//     [3/Options]
//     MaxCachePages=64
//
// Section names and value names are any byte strings without NUL, and so are values; upper and
// lower case differ. In memory they are in the ANSI code page. What stands for something else in
// the file (control characters, a blank at either end, '%', '=' in a name, ']' in a section, '[',
// '#' or ';' at a name's beginning) and bytes that are not characters are written as %XX. Of two
// lines with one name the later one counts. A name that the ANSI code page cannot show is not found
// or listed, and stays in the file; a value that it cannot show stays as it is until it is set to
// anything other than the text read from it.
//
// Reading is cheap enough to be done often: the file is read once and looked at again, for changes
// of other processes, at most once per tick. Writing goes through to the disk at once and changes
// the file in one step; changes of several processes at the same time all count, and a process
// killed at any moment leaves the old file or the new one. (Where a new file cannot stand in for
// the old one, as in a folder that takes no new names, it is overwritten in place; see
// FileReplacement.h.)
// The file is locked meanwhile, through a file beside it with ".lock" after its name. A save waits
// for another program's lock for 2 seconds at most; file systems without locks do without. Use a
// CProfileBatch for many values.
//
// On Windows VNBYTSTR_PROFILE may be "registry:" with the name of a key: the settings are then
// values of the registry below that key of the current user ("registry:" alone: vnbytstr in
// Software), the example above as the text MaxCachePages in the key Options in its key 3. Names and
// texts are written as in the file, and numbers (REG_DWORD) are read as well; values of other
// types, and other keys, stay as they are. Sections and values are listed by name. A save counts in
// one step for this library, also when its process is killed, but other programs may see half of
// it; they take part in no lock. Names that differ in case alone are told apart. Longer names than
// the registry has (255 characters in a section's, 16383 in a value's) cannot be saved.
//
// A file that cannot be read (or is longer than 64 MiB) gives what was read of it last, else the
// defaults, with a message; it is tried again at every tick, and not written in the meantime. One
// that is damaged (a line that is not UTF-8 or holds a NUL; or neither section nor comment in it)
// is used as far as it can be read, with a message; before it is first changed it is kept beside
// the new one as profile.ini.damaged-1 (or the next free number). Messages go to standard
// error unless VNSetProfileHandler has set a handler.
//
// All functions may be called from every thread. None throws but CMemoryException; a change is then
// not saved. A null section or name gives the default, or FALSE.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <string>
#include <utility>
#include <vector>

// `root` selects a settings root: 3 holds "Options" and "Global Variables", 1 "Form Fonts" and the
// placement of dialogs; other numbers are separate roots too. `reserved` is 0.

/// The value as a number (decimal digits, or hexadecimal after 0x, up to 0xFFFFFFFF); the default
/// when there is no such value or it is no such number.
VNBYTSTR_API DWORD VNGetProfileDWORD(UINT root, const char* section, const char* name,
                                     DWORD defaultValue, UINT reserved = 0);
/// The value as text; the default when there is no such value (null: the empty text).
VNBYTSTR_API CString VNGetProfileString(UINT root, const char* section, const char* name,
                                        const char* defaultValue, UINT reserved = 0);
/// Sets a value, as decimal digits. FALSE when that could not be saved (with a message): the
/// settings are then unchanged.
VNBYTSTR_API BOOL VNWriteProfileDWORD(UINT root, const char* section, const char* name, DWORD value,
                                      UINT reserved = 0);
/// Sets a value; null removes it. FALSE as above.
VNBYTSTR_API BOOL VNWriteProfileString(UINT root, const char* section, const char* name,
                                       const char* value, UINT reserved = 0);
/// Whether there is such a value.
VNBYTSTR_API BOOL VNIsProfileValue(UINT root, const char* section, const char* name);
/// Removes a section with all its values (its comments stay). TRUE also when there was none; FALSE
/// when that could not be saved.
VNBYTSTR_API BOOL VNDeleteProfileSection(UINT root, const char* section);

/// The values of a section as they were when it was opened, in the order of the file.
class VNBYTSTR_API CProfileSectionKey {
public:
    /// Number of values.
    int GetCount() const { return static_cast<int>(m_values.size()); }
    /// Name and value at `index`, from 0; empty past the end.
    CString GetName(int index) const { return IsIndex(index) ? At(index).first : CString(); }
    CString GetString(int index) const { return IsIndex(index) ? At(index).second : CString(); }

private:
    friend VNBYTSTR_API BOOL VNGetProfileSectionKey(UINT root, const char* section,
                                                    CProfileSectionKey& key);
    bool IsIndex(int index) const { return index >= 0 && index < GetCount(); }
    const std::pair<CString, CString>& At(int index) const {
        return m_values[static_cast<std::size_t>(index)];
    }

    std::vector<std::pair<CString, CString>> m_values;
};

/// The state of the settings.
enum EProfileStatus : int {
    ProfileSound = 0,
    ProfileDamaged = 1,   ///< some of the file cannot be read
    ProfileNotSaved = 2,  ///< the last save of this process failed
    ProfileUnreadable = 3 ///< the file cannot be read; defaults, or what was read last, are in use
};
/// The most serious state that holds now. `text` (unless null) receives its message: what
/// happened, to which file, and what to do; empty when all is well.
VNBYTSTR_API EProfileStatus VNGetProfileStatus(CString* text = nullptr);

/// Called with each message about the settings, instead of printing it on standard error: on the
/// thread whose call failed, with no lock held, so that it may call the functions here. The text is
/// valid during the call. Exceptions that it throws are dropped.
using VNProfileHandler = void (*)(EProfileStatus status, const char* text, void* context);
/// Sets the process's handler; null removes it. `context` is passed to it.
VNBYTSTR_API void VNSetProfileHandler(VNProfileHandler handler, void* context = nullptr);

/// Opens a section to go through its values. FALSE, with no values, when it has none.
VNBYTSTR_API BOOL VNGetProfileSectionKey(UINT root, const char* section, CProfileSectionKey& key);

/// Several changes that are saved together, in their order: the file is written once, and either
/// all of them are saved or none. One thread at a time uses a batch.
class VNBYTSTR_API CProfileBatch {
public:
    /// A null section or name is ignored; a null value removes the value.
    void WriteDWORD(UINT root, const char* section, const char* name, DWORD value);
    void WriteString(UINT root, const char* section, const char* name, const char* value);
    void DeleteSection(UINT root, const char* section);
    /// Saves and forgets the changes. FALSE when that failed: the settings are then
    /// unchanged, and the batch still has the changes. A batch that is never saved changes nothing.
    BOOL Commit();

private:
    enum class EKind { Set, Remove, RemoveSection };
    struct SChange {
        EKind eKind;
        UINT uRoot;
        std::string strSection, strName, strValue;
    };
    std::vector<SChange> m_changes;
};
