#include "src/os/StartProgram.h"

namespace vnbytstr::detail {

std::vector<std::string> SplitParameters(std::string_view parameters) {
    std::vector<std::string> arguments;
    std::string current;
    bool isQuoted = false, isOpen = false;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const char c = parameters[i];
        if (c == '\\' && i + 1 < parameters.size() && parameters[i + 1] == '"') {
            current += '"';
            isOpen = true;
            ++i;
        } else if (c == '"') {
            isQuoted = !isQuoted;
            isOpen = true;
        } else if ((c == ' ' || c == '\t') && !isQuoted) {
            if (isOpen)
                arguments.push_back(std::move(current));
            current.clear();
            isOpen = false;
        } else {
            current += c;
            isOpen = true;
        }
    }
    if (isOpen)
        arguments.push_back(std::move(current));
    return arguments;
}

} // namespace vnbytstr::detail
