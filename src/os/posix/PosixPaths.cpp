#include "src/os/Paths.h"

#include "src/os/System.h"

namespace vnbytstr {

bool IsAbsolutePath(std::string_view name) noexcept { return name.starts_with('/'); }

std::string FolderOf(std::string_view name) {
    const std::size_t slash = name.rfind('/');
    if (slash == std::string_view::npos)
        return ".";
    return std::string(name.substr(0, slash > 0 ? slash : 1));
}

std::string_view FolderPrefixOf(std::string_view name) noexcept {
    return name.substr(0, name.rfind('/') + 1); // without a slash npos + 1 is 0
}

std::string_view FileNameOf(std::string_view name) noexcept {
    return name.substr(name.rfind('/') + 1);
}

std::string AsFolderPrefix(std::string_view folder) {
    std::string prefix(folder);
    if (!prefix.ends_with('/'))
        prefix += '/';
    return prefix;
}

std::string AbsoluteName(const char* name) {
    std::string folder;
    if (IsAbsolutePath(name) || *name == '\0' || System::Current().ResolveName(".", folder) != 0)
        return name;
    return AsFolderPrefix(folder) + name;
}

std::string NameOfUriPath(std::string_view path) { return std::string(path); }

std::string SettingsFolder() {
    System& system = System::Current();
    std::string folder = system.GetEnvironment("XDG_CONFIG_HOME");
    if (IsAbsolutePath(folder))
        return folder;
    folder = system.GetEnvironment("HOME");
    return folder.empty() ? folder : folder + "/.config";
}

const char* NullDevice() noexcept { return "/dev/null"; }

} // namespace vnbytstr
