#include "locale/ResourceFiles.h"

#include "locale/Trace.h"
#include "platform/framework/Module.h"
#include "platform/system/LanguageNames.h"
#include "platform/system/ResourceLibrary.h"
#include "platform/system/System.h"
#include "vnbytstr/Language.h"

#include <algorithm>

namespace vnbytstr::detail {

const std::vector<std::string_view> kLanguageCodes = {
    "SVE", "PTG", "PTB", "KOR", "JPN", "ITS", "ITA", "HEB", "FRS", "FRC",
    "FRB", "FRA", "ESN", "ENU", "DEU", "DES", "DAN", "CHT", "ARE"};

namespace {

constexpr std::string_view kEnding = ".dll";

CString ToCString(std::string_view text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

/// The folder of the program, with its slash.
std::string ProgramFolder() {
    std::string name = GetModuleFileName(AfxGetInstanceHandle());
    name.resize(name.rfind('/') + 1); // none: npos + 1 is 0
    return name;
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
    const std::string name = ProgramFolder() + prefix + language + std::string(kEnding);
    Trace("\tChecking for %s", name.c_str());
    FileStatus status;
    if (System::Current().GetFileStatus(name.c_str(), status) != 0) {
        Trace("\tDid not find it");
        return {};
    }
    Trace("\tFound it");
    return ToCString(name);
}

} // namespace vnbytstr::detail

std::vector<SInstalledLanguage> GetInstalledLanguages(const char* prefix) {
    using namespace vnbytstr;
    using namespace vnbytstr::detail;
    const std::string folder = ProgramFolder();
    const std::string_view beginning = prefix != nullptr ? prefix : "";
    std::vector<std::string> names;
    if (System::Current().ListFolder(folder.empty() ? "." : folder.c_str(), names) != 0)
        return {};
    std::sort(names.begin(), names.end());
    std::vector<SInstalledLanguage> languages;
    for (const std::string& name : names) {
        if (name.size() != beginning.size() + 3 + kEnding.size() || !name.starts_with(beginning) ||
            !name.ends_with(kEnding))
            continue;
        const CString code = ToCString(std::string_view(name).substr(beginning.size(), 3));
        languages.push_back({code, GetLanguageNameFromCode(code), ToCString(folder + name)});
    }
    return languages;
}
