// File names as text: what is absolute, and what separates folders. Only this header's functions
// know; each folder for a system (posix, windows) implements them.
//
// Names are byte strings everywhere in the library. On POSIX systems they are passed to the system
// as they are. A system whose own names are UTF-16 takes them for UTF-8, in these functions and in
// FileSystem, and those that are not valid UTF-8 for text in its ANSI code page; the names that it
// gives are UTF-8.
#pragma once

#include "vnbytstr/framework/Export.h"

#include <string>
#include <string_view>

namespace vnbytstr {

/// Whether the name means the same file in every current folder.
VNBYTSTR_API bool IsAbsolutePath(std::string_view name) noexcept;

/// The name with the current folder before it when it is relative, so that it goes on meaning the
/// same file when the program changes its folder. Links stay; the file need not exist.
VNBYTSTR_API std::string AbsoluteName(const char* name);

/// The folder part of a file name without its last separator (but the root keeps it); "." when the
/// name has none.
VNBYTSTR_API std::string FolderOf(std::string_view name);

/// The folder part with its last separator; empty when the name has none.
VNBYTSTR_API std::string_view FolderPrefixOf(std::string_view name) noexcept;

/// What follows the folder part: the name in its folder; empty after a separator at the end.
VNBYTSTR_API std::string_view FileNameOf(std::string_view name) noexcept;

/// The folder with a separator at its end, so that a file's name can be appended. Not for an empty
/// name.
VNBYTSTR_API std::string AsFolderPrefix(std::string_view folder);

/// The file name that the path of a "file:" URI stands for, its escapes resolved: the path itself
/// on POSIX systems; on Windows without the slashes before a drive, and never another machine's
/// file.
VNBYTSTR_API std::string NameOfUriPath(std::string_view path);

/// The folder for this user's settings of programs; empty when the environment does not tell. On
/// POSIX systems by the XDG base directory rules: XDG_CONFIG_HOME when it is absolute, else
/// .config in HOME. On Windows APPDATA.
VNBYTSTR_API std::string SettingsFolder();

/// The device that reads as an empty file.
VNBYTSTR_API const char* NullDevice() noexcept;

} // namespace vnbytstr
