// The conditions of a filter, without windows: against a table, and against a plain model.
#include "vnbytstr/RowFilter.h"
#include "src/charset/CodePage.h"
#include "src/charset/Collation.h"
#include "src/lists/ContainedText.h"
#include "src/lists/FilterPlaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace vnbytstr::test {
namespace {

using detail::ContainedText;
using detail::FilterPlaces;

bool Matches(std::string_view typed, std::string_view cell, bool isNumber = false) {
    CRowFilter filter;
    filter.SetCondition(0, typed, isNumber);
    return filter.Matches([&](int) { return cell; });
}

TEST(RowFilter, WhatMayBeTyped) {
    const ScopedCodePage utf8(65001);
    const struct {
        const char* typed;
        bool isNumber;
        const char* matching; // separated by '|'
        const char* different;
    } cases[] = {
        {"graz", false, "Graz|grazia|in GRAZ", "gra|gratz|"},
        {" graz ", false, "Graz", "gra"},
        {"\"graz ", false, "Graz 1", "Graz"},
        {"\"<5\"", false, "x<5", "4"},
        {"=graz", false, "graz|GRAZ", "Graz 1|gra"},
        {"=\"\"", false, "", "x"},
        {"<>\"\"", false, "x", "|-"},
        {"!=graz", false, "linz|", "Graz|-"},
        {"<m", false, "a|LINZ|", "M|n|Zell|-"},
        {">=M", false, "m|n|Zell", "l|LINZ|"},
        {"b..d", false, "b|C|d", "a|da|"},
        {"..b", false, "a|B|", "c"},
        {"2024-01-10..2024-02-01", false, "2024-01-10|2024-01-31|2024-02-01",
         "2024-02-02|2023-12-01"},
        {"null", false, "-", "null|x|"},
        {"IS  NOT null", false, "x|", "-"},
        {"\"null\"", false, "null", "-|x"},
        {"<>null", false, "x", "-"},
        {"12", true, "12|412.5", "1.2"},
        {"=12", true, "12|12.0|+012|1.2e1|120E-1| 12 ", "12.01|x||-|12x"},
        {"<>12", true, "13|0", "12.00|x||-"},
        {"<0", true, "-1|-0.0000000000000000000000001|-1e-400", "0|-0|1|x|"},
        {">9007199254740992", true, "9007199254740993|1e400", "9007199254740992|9e15|x"},
        {"-5..5.5", true, "-5|0|5.50", "-5.01|5.51|x|-"},
        {"..-3", true, "-3|-10", "-2|3"},
        {"Ä", false, "ä|xÄ", "a|Ã"},
        {"ΣΑΣ", false, "σασ|ςσας ΣΑΣ", "σα"},
    };
    for (const auto& c : cases) {
        CRowFilter filter;
        filter.SetCondition(0, c.typed, c.isNumber);
        EXPECT_TRUE(filter.IsValid(0)) << c.typed;
        for (const bool wanted : {true, false}) {
            std::string rest = wanted ? c.matching : c.different;
            for (std::size_t end = 0; end != std::string::npos;) {
                end = rest.find('|');
                const std::string cell = rest.substr(0, end);
                EXPECT_EQ(Matches(c.typed, cell, c.isNumber), wanted) << c.typed << " and " << cell;
                rest.erase(0, end == std::string::npos ? end : end + 1);
            }
        }
    }
}

TEST(RowFilter, WhatIsNotCompleteRestrictsNothing) {
    for (const char* typed : {">", "<=", "<>", "..", "\"", "\"\""})
        EXPECT_TRUE(Matches(typed, "x")) << typed;
    CRowFilter filter;
    filter.SetCondition(1, "<abc", true);
    EXPECT_FALSE(filter.IsValid(1));
    EXPECT_TRUE(filter.IsEmpty());
    EXPECT_EQ(filter.GetCondition(1), "<abc");
    filter.SetCondition(1, "<5", true);
    EXPECT_TRUE(filter.IsValid(1));
    EXPECT_FALSE(filter.IsEmpty());
    filter.SetCondition(1, "");
    EXPECT_TRUE(filter.IsEmpty());
    filter.SetCondition(-1, "x");
    EXPECT_TRUE(filter.IsEmpty());
}

TEST(RowFilter, AllConditionsMustHold) {
    CRowFilter filter;
    filter.SetCondition(4, "b");
    filter.SetCondition(1, ">3", true);
    const std::vector<int> columns(filter.GetColumns().begin(), filter.GetColumns().end());
    EXPECT_EQ(columns, (std::vector<int>{1, 4}));
    const auto row = [](const char* one, const char* four) {
        return [=](int column) { return std::string_view(column == 1 ? one : four); };
    };
    EXPECT_TRUE(filter.Matches(row("4", "abc")));
    EXPECT_FALSE(filter.Matches(row("3", "abc")));
    EXPECT_FALSE(filter.Matches(row("4", "ac")));
}

TEST(RowFilter, NarrowingNeverLosesARow) {
    // Whatever filter narrows another must match fewer texts than it.
    const char* const typed[] = {"",     "a", "ab",    "b", "=ab", "<b",       "<c", "a..c",
                                 "null", "-", "\"a\"", "B", "<>a", "not null", "A b"};
    const char* const cells[] = {"", "a", "ab", "AB", "b", "c", "-", "xaby", "a b", "null"};
    int narrowing = 0;
    for (const char* one : typed)
        for (const char* other : typed) {
            CRowFilter narrow, wide;
            narrow.SetCondition(0, one);
            wide.SetCondition(0, other);
            if (!narrow.Narrows(wide))
                continue;
            ++narrowing;
            for (const char* cell : cells)
                EXPECT_TRUE(!Matches(one, cell) || Matches(other, cell))
                    << one << ", " << other << ", " << cell;
        }
    EXPECT_GT(narrowing, 30);
    CRowFilter longer, before;
    longer.SetCondition(0, "graz");
    before.SetCondition(0, "Gra");
    EXPECT_TRUE(longer.Narrows(before));
    EXPECT_FALSE(before.Narrows(longer));
    before.SetCondition(1, "x");
    EXPECT_FALSE(longer.Narrows(before));
}

TEST(RowFilter, NumbersCompareAsExactDecimals) {
    // Against 128-bit integers: numbers with 6 decimals, written in several ways.
    std::mt19937_64 random(7);
    const auto written = [&random](long long millionths) {
        const long long size = std::llabs(millionths);
        std::string text = std::to_string(size / 1000000) + '.' +
                           std::to_string(1000000 + size % 1000000).substr(1);
        if (random() % 2 == 0)
            text = "000" + text + "00";
        if (random() % 3 == 0) { // the point three places to the left, and e3
            const std::size_t point = text.find('.');
            text.erase(point, 1);
            text.insert(0, 4, '0');
            text.insert(point + 4 - 3, ".");
            text += "e3";
        }
        return (millionths < 0 ? "-" : "") + text;
    };
    for (int i = 0; i < 2000; ++i) {
        const long long spread = i % 2 == 0 ? 3 : 4'000'000'000'000;
        const auto pick = [&] {
            return static_cast<long long>(random() % (2 * spread + 1)) - spread;
        };
        const long long low = pick(), high = pick(), cell = pick();
        const std::string text = written(cell);
        EXPECT_EQ(Matches("<" + written(low), text, true), cell < low) << low << ' ' << text;
        EXPECT_EQ(Matches("=" + written(low), text, true), cell == low) << low << ' ' << text;
        EXPECT_EQ(Matches(written(low) + ".." + written(high), text, true),
                  low <= cell && cell <= high)
            << low << ' ' << high << ' ' << text;
    }
}

/// The first place where `text` occurs in `in`, both in lower case and character by character.
std::optional<std::size_t> PlainFind(const CodePage& page, std::string text, std::string in) {
    page.MakeLower(text);
    page.MakeLower(in);
    for (std::size_t at = 0; at <= in.size();) {
        if (in.compare(at, text.size(), text) == 0)
            return at;
        if (at == in.size())
            break;
        at += page.CharLength(in.data() + at, in.data() + in.size());
    }
    return std::nullopt;
}

TEST(ContainedText, AgreesWithAPlainSearchInEveryKindOfCodePage) {
    std::mt19937 random(3);
    for (const UINT number : {65001u, 1252u, 932u, 54936u}) {
        const ScopedCodePage scoped(number);
        const CodePage& page = CodePage::Ansi();
        // Characters whose second byte may be an ASCII letter, and pairs of both cases.
        std::vector<std::string> letters{"a", "A", "b", "B", "k"};
        for (const char16_t* wide : {u"ä", u"Ä", u"表", u"ア", u"ソ"})
            if (const std::string text = page.FromWide(wide); text != "?")
                letters.push_back(text);
        const auto make = [&](std::size_t count) {
            std::string text;
            for (; count > 0; --count)
                text += letters[random() % letters.size()];
            return text;
        };
        for (int i = 0; i < 3000; ++i) {
            const std::string in = make(random() % (i % 4 == 0 ? 60 : 12));
            const std::string text = make(1 + random() % 3);
            const std::size_t found = ContainedText(text).Find(in);
            const auto expected = PlainFind(page, text, in);
            ASSERT_EQ(found, expected.value_or(std::string::npos)) << number << ' ' << i;
        }
    }
}

TEST(FilterPlaces, RowsKeepTheirPlaces) {
    // Against a list of (name, shown) in the order without the filter.
    struct Entry {
        int name;
        bool isShown;
    };
    std::mt19937 random(5);
    std::vector<Entry> model;
    std::vector<int> shown, aside; // names, as the list box would keep them
    for (int i = 0; i < 20; ++i) {
        model.push_back({i, true});
        shown.push_back(i);
    }
    FilterPlaces places;
    places.Begin(20);
    int next = 20;
    for (int turn = 0; turn < 400; ++turn) {
        const auto rows = static_cast<int>(shown.size());
        if (turn % 4 == 0) {
            std::vector<DWORD> wanted;
            for (const DWORD number : places.InOrder())
                if (random() % 3 != 0)
                    wanted.push_back(number);
            const std::vector<DWORD> rest = places.ShowOnly(wanted);
            std::vector<int> all = shown;
            all.insert(all.end(), aside.begin(), aside.end());
            shown.clear();
            aside.clear();
            for (const DWORD number : wanted)
                shown.push_back(all[number]);
            for (const DWORD number : rest)
                aside.push_back(all[number]);
            for (Entry& entry : model)
                entry.isShown = std::count(shown.begin(), shown.end(), entry.name) > 0;
        } else if (turn % 4 == 1) {
            places.Appended(rows + 1);
            shown.push_back(next);
            model.push_back({next++, true});
        } else if (rows > 0) {
            const int row = static_cast<int>(random()) & 0x7FFF;
            const int at = row % rows;
            const auto place = std::find_if(model.begin(), model.end(), [&](const Entry& entry) {
                return entry.name == shown[static_cast<std::size_t>(at)];
            });
            if (turn % 4 == 2) {
                places.Removed(at);
                model.erase(place);
                shown.erase(shown.begin() + at);
            } else {
                places.Inserted(at);
                model.insert(place, {next, true});
                shown.insert(shown.begin() + at, next++);
            }
        }
        ASSERT_EQ(places.TotalCount(), static_cast<int>(model.size()));
        int row = 0;
        for (int place = 0; place < places.TotalCount(); ++place) {
            const Entry& entry = model[static_cast<std::size_t>(place)];
            ASSERT_EQ(places.RowAt(place), entry.isShown ? row : -1) << turn;
            if (entry.isShown) {
                ASSERT_EQ(shown[static_cast<std::size_t>(row)], entry.name);
                ASSERT_EQ(places.PlaceOf(row++), place);
            }
        }
        ASSERT_EQ(places.ShownCount(), row);
        ASSERT_EQ(places.PlaceOf(row), -1);
    }
}

} // namespace
} // namespace vnbytstr::test
