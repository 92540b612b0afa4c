// The files an HDROP points to.
#pragma once

#include "vnbytstr/window/WindowTypes.h"

#include <string>
#include <vector>

namespace vnbytstr::detail {

struct DropFiles {
    std::vector<std::string> names;
    bool belongsToDataObject = false; ///< DragFinish leaves it alone
};

} // namespace vnbytstr::detail
