#include "src/resources/ResourceFiles.h"

#include "src/os/Paths.h"
#include "src/os/System.h"
#include "src/resources/Trace.h"
#include "vnbytstr/ResourceLibrary.h"
#include "vnbytstr/framework/Module.h"

#include <cerrno>
#include <cstring>
#include <vector>

namespace vnbytstr::detail {

namespace {

constexpr std::string_view kEnding = ".dll";

CString ToCString(std::string_view text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

std::string ErrorText(int error) {
    return error == ENOEXEC ? "It is no resource library, or a damaged one"
                            : System::Current().GetErrorText(error);
}

/// Where resource libraries are looked for, in this order, each folder with its slash: beside the
/// program, beside this library, and in the data folder of its installation.
std::vector<std::string> ResourceFolders() {
    const std::string program = GetModuleFileName(AfxGetInstanceHandle());
    const std::string library = System::Current().GetLibraryFileName();
    std::vector<std::string> folders = {std::string(FolderPrefixOf(program))};
    const std::string beside(FolderPrefixOf(library));
    if (!beside.empty() && beside != folders.front()) {
        folders.push_back(beside);
        folders.push_back(AsFolderPrefix(beside + VNBYTSTR_DATA_FROM_LIBRARY));
    }
    return folders;
}

} // namespace

CString GetResourceDLLName(const char* language, const char* prefix) {
    Trace("Entering GetResourceDLLName(\"%s\", \"%s\")", language, prefix);
    for (const std::string& folder : ResourceFolders()) {
        const std::string name = folder + prefix + language + std::string(kEnding);
        Trace("\tChecking for %s", name.c_str());
        FileStatus status;
        if (System::Current().GetFileStatus(name.c_str(), status) == 0) {
            Trace("\tFound it");
            return ToCString(name);
        }
        Trace("\tDid not find it");
    }
    return {};
}

HINSTANCE LoadResourceFile(const char* language, const char* prefix) {
    CString name = GetResourceDLLName(language, prefix);
    if (name.IsEmpty() && std::string_view(language) != kEnglish) {
        Trace("\tFalling back to ENU resources");
        name = GetResourceDLLName(kEnglish, prefix);
    }
    if (name.IsEmpty()) {
        Trace("\tCould not find any language");
        return nullptr;
    }
    HINSTANCE library = nullptr;
    if (const int error = LoadResourceLibrary(name, library))
        Trace("\tLoadLibrary(%s) failed: %s", static_cast<const char*>(name),
              ErrorText(error).c_str());
    return library;
}

std::map<std::string, std::string> FindResourceFiles(std::string_view prefix) {
    std::map<std::string, std::string> found;
    for (const std::string& folder : ResourceFolders()) {
        std::vector<std::string> names;
        if (System::Current().ListFolder(folder.empty() ? "." : folder.c_str(), names) != 0)
            continue;
        for (const std::string& name : names)
            if (name.size() == prefix.size() + 3 + kEnding.size() && name.starts_with(prefix) &&
                name.ends_with(kEnding))
                found.emplace(name.substr(prefix.size(), 3), folder + name);
    }
    return found;
}

} // namespace vnbytstr::detail
