#include "Messages.h"

#include <vnbytstr/Language.h>
#include <vnbytstr/Messages.h>

#include <array>
#include <vector>

namespace vnquery {

namespace {

constexpr UINT kFirst = 41000;
constexpr UINT kLast = 41999;

std::vector<std::string> ReadTexts() {
    // Without a library to begin with, each text would be looked for in the English one, which
    // would be loaded every time.
    const HINSTANCE library = LoadResourceDLL("vnurc");
    std::vector<std::string> texts(kLast - kFirst + 1);
    for (UINT id = kFirst; library && id <= kLast; ++id) {
        CString text;
        if (LoadStringA(text, id, nullptr) != 0)
            texts[id - kFirst] = static_cast<const char*>(text);
    }
    return texts;
}

std::vector<std::string>& Texts() {
    static std::vector<std::string> texts = ReadTexts();
    return texts;
}

} // namespace

void LoadTexts() {
    std::vector<std::string>& texts = Texts();
    texts = ReadTexts();
}

std::string Text(UINT id) {
    const std::vector<std::string>& texts = Texts();
    const std::size_t index = id - kFirst;
    if (index < texts.size() && !texts[index].empty())
        return texts[index];
    return "[" + std::to_string(id) + "]";
}

std::string Text(UINT id, std::initializer_list<std::string> insertions) {
    std::array<const char*, 9> arguments;
    arguments.fill("");
    std::size_t count = 0;
    for (const std::string& insertion : insertions)
        arguments.at(count++) = insertion.c_str();
    CString text;
    const auto& a = arguments;
    FormatStringEx(text, Text(id).c_str(), a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8]);
    return static_cast<const char*>(text);
}

} // namespace vnquery
