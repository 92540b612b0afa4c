#include "src/globals/ReportFont.h"

#include "src/charset/CodePage.h"
#include "src/os/System.h"
#include "vnbytstr/Profile.h"

#include <string>

namespace vnbytstr::detail {

namespace {

constexpr UINT kFontRoot = 1;
constexpr const char* kFontSection = "Form Fonts";

/// The system speaks UTF-8. A family whose name the code page cannot hold could not be found again.
CString Matched(const CString& family) {
    const CodePage& ansi = CodePage::Ansi();
    const CodePage& utf8 = *CodePage::Find(65001);
    const std::u16string wide = utf8.ToWide(System::Current().MatchFontFamily(
        utf8.FromWide(ansi.ToWide(family.operator const char*()))));
    const std::string name = ansi.FromWide(wide);
    return name.empty() || ansi.ToWide(name) != wide ? family : CString(name.c_str());
}

} // namespace

ReportFont DefaultReportFont() {
    const auto number = [](const char* name, DWORD value) {
        return VNGetProfileDWORD(kFontRoot, kFontSection, name, value, 0);
    };
    CString name =
        VNGetProfileString(kFontRoot, kFontSection, "DefaultFormFontName", "CourierNew", 0);
    if (name.IsEmpty())
        name = "CourierNew";
    return {Matched(name), number("DefaultFormFontSize", 10), number("DefaultFormFontBold", 0),
            number("DefaultFormFontItalic", 0), number("DefaultFormFontCharSet", 1)};
}

} // namespace vnbytstr::detail
