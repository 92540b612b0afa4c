// Programs are started by CreateProcess; documents, folders and addresses are opened by the system.
#include "src/os/StartProgram.h"

#include "src/os/Paths.h"
#include "src/os/System.h"
#include "src/os/windows/WindowsCalls.h"

#include <shellapi.h>

namespace vnbytstr::detail {

namespace {

/// The file of a program, from the PATH when it is named without a folder; empty when there is
/// none. Nothing in the current folder is meant to be run.
std::wstring FindProgram(const std::string& name) {
    const bool isBare = FolderPrefixOf(name).empty();
    const std::wstring path = windows::Widen(System::Current().GetEnvironment("PATH"));
    const std::wstring file = windows::Widen(isBare ? name : AbsoluteName(name.c_str()));
    std::wstring found(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::SearchPathW(isBare ? path.c_str() : nullptr, file.c_str(), L".exe",
                                           static_cast<DWORD>(found.size()), found.data(), nullptr);
        const bool fits = length < found.size();
        found.resize(length);
        if (fits)
            return found;
    }
}

bool IsProgram(const std::wstring& file) {
    const std::wstring_view ending =
        std::wstring_view(file).substr(file.size() < 4 ? 0 : file.size() - 4);
    return ::lstrcmpiW(std::wstring(ending).c_str(), L".exe") == 0 ||
           ::lstrcmpiW(std::wstring(ending).c_str(), L".com") == 0;
}

/// Appends an argument so that the program's runtime reads it back as it is: backslashes before a
/// quote are doubled, the quote has one of its own.
void AppendArgument(std::wstring& line, const std::wstring& argument) {
    if (!line.empty())
        line += L' ';
    if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos) {
        line += argument;
        return;
    }
    line += L'"';
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"')
            line.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        line += c;
    }
    line.append(backslashes, L'\\');
    line += L'"';
}

int ShellErrorOf(DWORD error) {
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
        return kShellFileNotFound;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_DIRECTORY:
        return kShellPathNotFound;
    case ERROR_ACCESS_DENIED:
    case 740: // ERROR_ELEVATION_REQUIRED, which not every compiler's headers have
        return kShellAccessDenied;
    case ERROR_BAD_EXE_FORMAT:
    case ERROR_EXE_MACHINE_TYPE_MISMATCH:
        return kShellBadFormat;
    default:
        return kShellNoMemory;
    }
}

int Start(const std::wstring& program, const std::string& parameters, const wchar_t* folder) {
    std::wstring line;
    AppendArgument(line, program);
    for (const std::string& argument : SplitParameters(parameters))
        AppendArgument(line, windows::Widen(argument));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, folder,
                          &startup, &process))
        return ShellErrorOf(::GetLastError());
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return kShellStarted;
}

} // namespace

int StartProgram(const char* verb, const char* file, const char* parameters, const char* folder,
                 std::string& program) {
    program = file != nullptr ? file : "";
    if (program.empty())
        return kShellFileNotFound;
    const std::string given = parameters != nullptr ? parameters : "";
    const std::wstring where = windows::Widen(folder != nullptr ? folder : "");
    const wchar_t* const start = where.empty() ? nullptr : where.c_str();
    if (start) {
        const DWORD attributes = ::GetFileAttributesW(start);
        if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
            return kShellPathNotFound;
    }
    const bool opens = verb == nullptr || *verb == '\0' || std::string_view(verb) == "open";
    if (const std::wstring found = FindProgram(program); opens && IsProgram(found))
        return Start(found, given, start);
    const std::wstring action = windows::Widen(opens ? "open" : verb);
    const HINSTANCE answer = ::ShellExecuteW(
        nullptr, action.c_str(), windows::Widen(program).c_str(),
        given.empty() ? nullptr : windows::Widen(given).c_str(), start, SW_SHOWNORMAL);
    const auto result = reinterpret_cast<std::intptr_t>(answer);
    return result > 32 ? kShellStarted : static_cast<int>(result);
}

} // namespace vnbytstr::detail
