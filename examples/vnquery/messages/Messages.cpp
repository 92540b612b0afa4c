#include "vnquery/messages/Messages.h"

#include "vnbytstr/Language.h"
#include "vnbytstr/Messages.h"
#include "vnbytstr/ProgramTexts.h"

#include <array>
#include <mutex>
#include <shared_mutex>

namespace vnquery {

namespace {

vnbytstr::ProgramTexts LoadAll() {
    LoadResourceDLL("vnurc"); // the library's texts, such as those of its list
    return vnbytstr::ProgramTexts(kTextLibraries);
}

vnbytstr::ProgramTexts& Texts() {
    static vnbytstr::ProgramTexts texts = LoadAll();
    return texts;
}

/// A query that runs may ask for a text while the user chooses another language.
std::shared_mutex g_loading;

} // namespace

void LoadTexts() {
    vnbytstr::ProgramTexts& texts = Texts();
    const std::unique_lock lock(g_loading);
    LoadResourceDLL("vnurc");
    texts.Load();
}

std::string Text(UINT id) {
    const std::shared_lock lock(g_loading);
    CString text;
    if (Texts().Find(id, text))
        return static_cast<const char*>(text);
    return "[" + std::to_string(id) + "]";
}

std::string Text(UINT id, std::initializer_list<std::string> insertions) {
    return Text(id, std::span(insertions.begin(), insertions.size()));
}

std::string Text(UINT id, std::span<const std::string> insertions) {
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

bool AreTextsRightToLeft() {
    const std::shared_lock lock(g_loading);
    return Texts().IsRightToLeft();
}

} // namespace vnquery
