#include "src/resources/ResourceFiles.h"

#include "src/charset/LanguageNames.h"
#include "src/os/System.h"
#include "src/resources/Trace.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/ResourceLibrary.h"
#include "vnbytstr/framework/Module.h"

#include <algorithm>
#include <map>

namespace vnbytstr::detail {

const std::vector<std::string_view> kLanguageCodes = {
    "SVE", "PTG", "PTB", "KOR", "JPN", "ITS", "ITA", "HEB", "FRS", "FRC",
    "FRB", "FRA", "ESN", "ENU", "DEU", "DES", "DAN", "CHT", "ARE"};

namespace {

constexpr std::string_view kEnding = ".dll";

CString ToCString(std::string_view text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

std::string FolderOf(std::string file) {
    file.resize(file.rfind('/') + 1); // none: npos + 1 is 0
    return file;
}

/// Where resource libraries are looked for, in this order, each folder with its slash: beside the
/// program, beside this library, and in the data folder of its installation.
std::vector<std::string> ResourceFolders() {
    std::vector<std::string> folders = {FolderOf(GetModuleFileName(AfxGetInstanceHandle()))};
    const std::string beside = FolderOf(System::Current().GetLibraryFileName());
    if (!beside.empty() && beside != folders.front()) {
        folders.push_back(beside);
        folders.push_back(beside + VNBYTSTR_DATA_FROM_LIBRARY + "/");
    }
    return folders;
}

} // namespace

CString MapLanguage(std::string_view name, bool isOld) {
    if (std::find(kLanguageCodes.begin(), kLanguageCodes.end(), name) != kLanguageCodes.end())
        return ToCString(name);
    Trace("\t%.*s is not recognized", static_cast<int>(name.size()), name.data());
    const std::string_view family = name.substr(0, 2);
    const char* mapped = "ENU";
    if (family == "FR")
        mapped = "FRA";
    else if (family == "DE")
        mapped = "DEU";
    else if (family == "IT")
        mapped = "ITA";
    else if (family == "AR")
        mapped = "ARE";
    else if (family == "ES")
        mapped = "ESN";
    else if (family == "PT" && isOld)
        mapped = "PTB";
    Trace("\tMapped to %s", mapped);
    return mapped;
}

CString GetDefaultUILanguage() {
    Trace("Entering GetDefaultUILanguage()");
    System& system = System::Current();
    const SystemVersion version = system.GetVersion();
    const bool isOld = version.platform == SystemVersion::NtFamily && version.major <= 4;
    const std::string name = AbbreviatedLanguageName(system.GetMessagesLocale());
    Trace("\tGetLocalInfo() returns %s", name.c_str());
    return MapLanguage(name, isOld);
}

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

} // namespace vnbytstr::detail

std::vector<SInstalledLanguage> GetInstalledLanguages(const char* prefix) {
    using namespace vnbytstr;
    using namespace vnbytstr::detail;
    const std::string_view beginning = prefix != nullptr ? prefix : "";
    std::map<std::string, std::string> found; // by name; the first folder that has it counts
    for (const std::string& folder : ResourceFolders()) {
        std::vector<std::string> names;
        if (System::Current().ListFolder(folder.empty() ? "." : folder.c_str(), names) != 0)
            continue;
        for (const std::string& name : names)
            if (name.size() == beginning.size() + 3 + kEnding.size() &&
                name.starts_with(beginning) && name.ends_with(kEnding))
                found.emplace(name, folder + name);
    }
    std::vector<SInstalledLanguage> languages;
    for (const auto& [name, file] : found) {
        const CString code = ToCString(std::string_view(name).substr(beginning.size(), 3));
        languages.push_back({code, GetLanguageNameFromCode(code), ToCString(file)});
    }
    return languages;
}
