// NativeSystem: language, fonts and the terminal.
#include "src/os/NativeSystem.h"
#include "src/os/windows/WindowsCalls.h"

#include "src/os/MessageWindow.h"

#include <algorithm>

namespace vnbytstr {

namespace {

constexpr std::size_t kMaxAnswer = 4096; // characters of a line that is typed

/// "de_AT" of "de-AT"; without the script of names such as "sr-Latn-RS".
std::string PosixName(std::wstring_view name) {
    const std::size_t first = name.find(L'-'), last = name.rfind(L'-');
    std::string text = windows::Narrow(name.substr(0, first));
    if (last != std::wstring_view::npos)
        text += "_" + windows::Narrow(name.substr(last + 1));
    return text;
}

std::string CharsetName(UINT codePage) {
    if (codePage == CP_UTF8)
        return "UTF-8";
    return codePage == 874 ? "TIS-620" : "CP" + std::to_string(codePage);
}

std::string FromEnvironment(System& system, const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        std::string value = system.GetEnvironment(variable);
        if (!value.empty())
            return value;
    }
    return {};
}

bool IsConsole(HANDLE stream) noexcept {
    DWORD mode = 0;
    return ::GetConsoleMode(stream, &mode) != 0;
}

void WriteError(const std::string& text) {
    const HANDLE stream = ::GetStdHandle(STD_ERROR_HANDLE);
    DWORD written = 0; // a failure cannot be reported anywhere
    if (IsConsole(stream)) {
        const std::wstring wide = windows::Widen(text);
        ::WriteConsoleW(stream, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
    } else
        ::WriteFile(stream, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

} // namespace

/// The variables first, which programs from POSIX systems set; else what the user has chosen, with
/// the system's ANSI code page.
std::string NativeSystem::GetTextLocale() {
    if (std::string value = FromEnvironment(*this, "LC_CTYPE"); !value.empty())
        return value;
    std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
    ::GetUserDefaultLocaleName(name.data(), LOCALE_NAME_MAX_LENGTH);
    return PosixName(name.data()) + "." + CharsetName(::GetACP());
}

std::string NativeSystem::GetMessagesLocale() {
    if (std::string value = FromEnvironment(*this, "LC_MESSAGES"); !value.empty())
        return value;
    std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
    ::LCIDToLocaleName(MAKELCID(::GetUserDefaultUILanguage(), SORT_DEFAULT), name.data(),
                       LOCALE_NAME_MAX_LENGTH, 0);
    return PosixName(name.data());
}

namespace {

int CALLBACK TakeFamily(const LOGFONTW* font, const TEXTMETRICW*, DWORD, LPARAM result) {
    *reinterpret_cast<std::wstring*>(result) = font->lfFaceName;
    return 0; // the first will do
}

} // namespace

std::string NativeSystem::MatchFontFamily(const std::string& family) {
    const HDC context = ::CreateCompatibleDC(nullptr);
    if (!context)
        return {};
    std::wstring found;
    const std::wstring wanted[] = {windows::Widen(family), L"Consolas", L"Courier New"};
    for (const std::wstring& name : wanted) {
        LOGFONTW font{};
        font.lfCharSet = DEFAULT_CHARSET;
        if (found.empty() && !name.empty() && name.size() < LF_FACESIZE) {
            std::copy(name.begin(), name.end(), font.lfFaceName);
            ::EnumFontFamiliesExW(context, &font, TakeFamily, reinterpret_cast<LPARAM>(&found), 0);
        }
    }
    ::DeleteDC(context);
    return windows::Narrow(found);
}

void NativeSystem::WriteDiagnostic(const char* text) { WriteError(std::string(text) + "\n"); }

bool NativeSystem::AskAtTerminal(const char* question, std::string& answer) {
    const HANDLE stream = ::GetStdHandle(STD_INPUT_HANDLE);
    if (!IsConsole(stream))
        return false;
    WriteError(question);
    std::wstring line;
    std::array<wchar_t, 256> piece;
    while (line.empty() || (line.back() != L'\n' && line.size() <= kMaxAnswer)) {
        DWORD size = 0;
        if (!::ReadConsoleW(stream, piece.data(), static_cast<DWORD>(piece.size()), &size,
                            nullptr) ||
            size == 0 || piece[0] == L'\x1A') // Ctrl+Z, the end of the input
            return false;
        line.append(piece.data(), size);
    }
    answer = windows::Narrow(line);
    return true;
}

int detail::ShowMessageWindow(const char* text, const char* caption, UINT type) {
    const HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
    if (::GetConsoleWindow() || (error && error != INVALID_HANDLE_VALUE))
        return 0;
    return ::MessageBoxW(::GetActiveWindow(), windows::Widen(text ? text : "").c_str(),
                         windows::Widen(caption ? caption : "").c_str(), type);
}

} // namespace vnbytstr
