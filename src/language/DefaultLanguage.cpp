#include "src/language/DefaultLanguage.h"

#include "src/charset/LanguageNames.h"
#include "src/os/System.h"
#include "src/resources/Trace.h"

#include <algorithm>
#include <string>

namespace vnbytstr::detail {

const std::vector<std::string_view> kLanguageCodes = {
    "SVE", "PTG", "PTB", "KOR", "JPN", "ITS", "ITA", "HEB", "FRS", "FRC",
    "FRB", "FRA", "ESN", "ENU", "DEU", "DES", "DAN", "CHT", "ARE"};

CString MapLanguage(std::string_view name, bool isOld) {
    if (std::find(kLanguageCodes.begin(), kLanguageCodes.end(), name) != kLanguageCodes.end())
        return CString(name.data(), static_cast<int>(name.size()));
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

} // namespace vnbytstr::detail
