// The font of reports for which none was chosen.
#pragma once

#include "vnbytstr/framework/String.h"

namespace vnbytstr::detail {

struct ReportFont {
    CString name;  ///< a family the system has
    DWORD size;    ///< points
    DWORD bold;    ///< 0 or 1
    DWORD italic;  ///< 0 or 1
    DWORD charSet; ///< as Windows numbers them, 1: any
};

/// The default form font of the profile (root 1, "Form Fonts"), with the family that the system has
/// for it. The size stays in points: the matched families come in every size, so the height in
/// pixels is left to the code that draws.
ReportFont DefaultReportFont();

} // namespace vnbytstr::detail
