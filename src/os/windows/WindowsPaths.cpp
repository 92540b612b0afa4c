#include "src/os/FileIdentity.h"
#include "src/os/Paths.h"
#include "src/os/windows/WindowsCalls.h"

#include <algorithm>

namespace vnbytstr {

namespace {

bool IsSeparator(char c) noexcept { return c == '/' || c == '\\'; }

bool HasDrive(std::string_view name) noexcept {
    const char letter = name.empty() ? '\0' : static_cast<char>(name[0] | 0x20);
    return name.size() >= 2 && letter >= 'a' && letter <= 'z' && name[1] == ':';
}

} // namespace

/// With drive and root, or with two separators: a share or a device. "\a" and "C:a" depend on the
/// current drive and its folder.
bool IsAbsolutePath(std::string_view name) noexcept {
    if (HasDrive(name))
        return name.size() > 2 && IsSeparator(name[2]);
    return name.size() > 1 && IsSeparator(name[0]) && IsSeparator(name[1]);
}

std::string_view FolderPrefixOf(std::string_view name) noexcept {
    const std::size_t last = name.find_last_of("/\\");
    if (last != std::string_view::npos)
        return name.substr(0, last + 1);
    return name.substr(0, HasDrive(name) ? 2 : 0);
}

std::string FolderOf(std::string_view name) {
    std::string_view folder = FolderPrefixOf(name);
    if (folder.empty())
        return ".";
    const std::size_t root = HasDrive(folder) ? 3 : 1;
    if (folder.size() > root)
        folder.remove_suffix(1);
    return folder.size() == 2 && root == 3 ? std::string(folder) + "." : std::string(folder);
}

std::string_view FileNameOf(std::string_view name) noexcept {
    return name.substr(FolderPrefixOf(name).size());
}

std::string AsFolderPrefix(std::string_view folder) {
    std::string prefix(folder);
    if (!IsSeparator(prefix.back()) && !(prefix.size() == 2 && HasDrive(prefix)))
        prefix += '\\';
    return prefix;
}

std::string AbsoluteName(const char* name) {
    const windows::WideName wide(name);
    return IsAbsolutePath(name) || wide.Error() != 0 ? name : windows::Narrow(wide.Get());
}

std::string NameOfUriPath(std::string_view path) {
    const std::size_t begin = path.find_first_not_of("/\\");
    if (begin == std::string_view::npos || HasDrive(path.substr(begin)))
        return std::string(path.substr(std::min(begin, path.size())));
    return std::string(path.substr(begin > 0 ? begin - 1 : 0));
}

std::string SettingsFolder() {
    const std::string folder = System::Current().GetEnvironment("APPDATA");
    return IsAbsolutePath(folder) ? folder : std::string();
}

const char* NullDevice() noexcept { return "NUL"; }

} // namespace vnbytstr
