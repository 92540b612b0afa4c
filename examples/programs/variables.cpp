// Global variables in the user's profile, and messages in the language of the user interface. Try
// it with LC_ALL=de_DE.UTF-8 as well.
#include <vnbytstr/vnbytstr.h>

#include <cstdio>

int main() {
    LoadResourceDLL("vnurc"); // the library's own texts, for instance vnurcDEU.dll

    CGlobalVars& variables = GetGlobals();
    variables.Initialize(); // the built-in ones, then what the profile has
    const CString marker("(none)");
    variables.SetGlobalVarValue(CGlobalVars::TLXCP_TENULL, &marker);
    int added = 0;
    variables.AddGlobalVariable("REGION", "north", added);
    variables.SaveToRegistry(); // with "SaveGlobals" in the profile the user's own ones, too

    CString description;
    CGlobalVars::GetDescriptionFromID(CGlobalVars::TLXCP_TENULL, description);
    std::printf("%s: %s\n", static_cast<const char*>(description),
                static_cast<const char*>(CGlobalVars::Get(CGlobalVars::TLXCP_TENULL)));

    // Insertion points may stand in another order in each language.
    CString text;
    FormatStringEx(text, "%2 of %1", CGlobalVars::Get("REGION"), "12");
    std::printf("%s, shown in %s\n", static_cast<const char*>(text),
                static_cast<const char*>(GetLanguageNameFromCode(GetUILanguage())));
    return 0;
}
