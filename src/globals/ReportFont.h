// The font of reports that were given none.
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
/// for it. The size stays in points: the families that are matched come in every size, so a height
/// in pixels is for whoever draws.
ReportFont DefaultReportFont();

} // namespace vnbytstr::detail
