// The resource libraries with one prefix: the same strings in every language.
#include "src/charset/CodePage.h"
#include "src/os/Paths.h"
#include "src/os/System.h"
#include "vnbytstr/ResourceLibrary.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <regex>

#ifndef RESOURCE_PREFIX
#define RESOURCE_PREFIX "vnurc"
#endif

using namespace vnbytstr;

namespace {

struct Language {
    const char* code;
    WORD language;
    bool isRightToLeft;
};

constexpr Language kLanguages[] = {
    {"ENU", 0x409, false}, {"DEU", 0x407, false}, {"FRA", 0x40C, false}, {"ESN", 0xC0A, false},
    {"ITA", 0x410, false}, {"PTB", 0x416, false}, {"JPN", 0x411, false}, {"KOR", 0x412, false},
    {"CHT", 0x404, false}, {"HEB", 0x40D, true},  {"ARE", 0xC01, true},
};

std::map<UINT, std::string> Strings(HINSTANCE library) {
    std::map<UINT, std::string> strings;
    for (const UINT id : ListResourceStrings(library)) {
        CString text;
        EXPECT_TRUE(FindResourceString(library, id, text));
        strings[id] = text;
    }
    return strings;
}

HINSTANCE Load(const char* code) {
    const std::string name(FolderPrefixOf(System::Current().GetModuleFileName()));
    HINSTANCE library = nullptr;
    EXPECT_EQ(LoadResourceLibrary((name + RESOURCE_PREFIX + code + ".dll").c_str(), library), 0)
        << code;
    return library;
}

/// What is put into a text: its insertion points in any order, since languages differ in that, and
/// behind them its printf conversions in theirs.
std::vector<std::string> Insertions(const std::string& text) {
    static const std::regex insertion("%([1-9](?![A-Za-z])"
                                      "|[-+#0]*[0-9*]*(\\.[0-9*]+)?[hljzt]*[%diouxXcsfgeGEp])");
    std::vector<std::string> points, conversions;
    for (std::sregex_iterator found(text.begin(), text.end(), insertion), end; found != end;
         ++found) {
        const std::string one = found->str();
        (one.size() == 2 && one[1] >= '1' && one[1] <= '9' ? points : conversions).push_back(one);
    }
    std::sort(points.begin(), points.end());
    points.insert(points.end(), conversions.begin(), conversions.end());
    return points;
}

TEST(ResourceTexts, AreTheSameInEveryLanguage) {
    const ScopedCodePage page(65001);
    const auto english = Strings(Load("ENU"));
    ASSERT_FALSE(english.empty());
    for (const Language& language : kLanguages) {
        const HINSTANCE library = Load(language.code);
        EXPECT_EQ(GetResourceLanguage(library), language.language);
        EXPECT_EQ(IsResourceRightToLeft(library), language.isRightToLeft);
        const auto strings = Strings(library);
        for (const auto& [id, text] : english) {
            const auto found = strings.find(id);
            if (found == strings.end()) {
                ADD_FAILURE() << language.code << " lacks " << id << ": " << text;
                continue;
            }
            EXPECT_EQ(Insertions(found->second), Insertions(text)) << language.code << " " << id;
            EXPECT_NE(found->second.find_first_not_of(" \n\t"), std::string::npos);
        }
        for (const auto& [id, text] : strings)
            EXPECT_TRUE(english.contains(id))
                << language.code << " has a string " << id << " that English has not: " << text;
    }
}

} // namespace
