// The part of the system seam that is about this process: its number, its environment, its files,
// and the terminal it was started from.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

#include <string>

namespace vnbytstr {

/// What the system calls itself.
struct SystemVersion {
    enum Platform : DWORD { Win32s = 0, Windows9x = 1, NtFamily = 2 };
    DWORD platform = NtFamily;
    DWORD major = 0;
    DWORD minor = 0;
};

/// Every function may be called from every thread.
class VNBYTSTR_API Processes {
public:
    virtual ~Processes() = default;

    virtual DWORD GetProcessId() = 0;
    /// Whether this process may act on every user's files.
    virtual bool IsPrivileged() = 0;
    /// Value of an environment variable; an unset one and an empty one are both empty.
    virtual std::string GetEnvironment(const char* name) = 0;
    /// Full name of the running program's file; empty when the system does not tell.
    virtual std::string GetModuleFileName() = 0;
    /// Full name of the file that holds this library's code: the shared library's, or the program's
    /// where the library is linked into it. Empty when the system does not tell.
    virtual std::string GetLibraryFileName() = 0;
    /// The version whose behaviour programs may count on: the NT family's 10.0 on POSIX machines,
    /// where all that depends on a version is there.
    virtual SystemVersion GetVersion() = 0;
    /// Writes a line for the user at the terminal to standard error. Failures are ignored.
    virtual void WriteDiagnostic(const char* text) = 0;
    /// Writes `question` to standard error and reads the answer, a line, from standard input.
    /// False, and nothing is asked, when standard input is not a terminal; false when it ends
    /// before the line does.
    virtual bool AskAtTerminal(const char* question, std::string& answer) = 0;
};

} // namespace vnbytstr
