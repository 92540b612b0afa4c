// The profile file's content as plain text: a model of maps is the oracle.
#include "src/settings/ProfileFile.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace vnbytstr::detail {
namespace {

const CodePage& Page(UINT number) { return *CodePage::Find(number); }

using Entries = std::vector<std::pair<std::string, std::string>>;

Entries EntriesOf(const ProfileFile& file, UINT root, std::string_view section) {
    Entries entries;
    file.ForEach(root, section, [&](const std::string& name, const std::string& value) {
        entries.emplace_back(name, value);
    });
    return entries;
}

/// Sections and their entries in the order of their making.
struct Model {
    std::map<std::pair<UINT, std::string>, Entries> sections;

    Entries::iterator Place(Entries& entries, const std::string& name) {
        return std::find_if(entries.begin(), entries.end(),
                            [&](const auto& entry) { return entry.first == name; });
    }
    void ExpectSame(const ProfileFile& file) {
        for (const auto& [key, entries] : sections) {
            EXPECT_EQ(EntriesOf(file, key.first, key.second), entries);
            EXPECT_EQ(file.HasSection(key.first, key.second), !entries.empty());
            for (const auto& [name, value] : entries) {
                const std::string* found = file.Find(key.first, key.second, name);
                ASSERT_NE(found, nullptr);
                EXPECT_EQ(*found, value);
            }
        }
    }
};

class ProfileFilePages : public testing::TestWithParam<UINT> {};
INSTANTIATE_TEST_SUITE_P(Pages, ProfileFilePages, testing::Values(65001u, 1252u, 932u, 54936u));

TEST_P(ProfileFilePages, RandomNamesAndValuesComeBackWhole) {
    const CodePage& page = Page(GetParam());
    std::mt19937 random(7);
    const auto below = [&](std::size_t n) {
        return std::uniform_int_distribution<std::size_t>(0, n - 1)(random);
    };
    const std::string marks = " %=[];#\n\r\t/AZ09\x7F";
    const auto text = [&] {
        std::string bytes;
        const std::size_t kind = below(3);
        for (std::size_t size = below(kind == 0 ? 3 : 9); size > 0; --size)
            bytes += below(2) ? marks[below(marks.size())] : static_cast<char>(1 + below(255));
        return bytes;
    };
    std::vector<std::string> names;
    for (int i = 0; i < 40; ++i)
        names.push_back(text());
    Model model;
    ProfileFile file(page);
    for (int step = 0; step < 4000; ++step) {
        const UINT root = below(2) ? 1 : 3;
        const std::string section = names[below(4)], name = names[below(names.size())],
                          value = text();
        Entries& entries = model.sections[{root, section}];
        const auto place = model.Place(entries, name);
        const std::size_t action = below(20);
        if (action == 0) {
            EXPECT_EQ(file.RemoveSection(root, section) || entries.empty(), true);
            entries.clear();
        } else if (action < 5) {
            EXPECT_EQ(file.Remove(root, section, name), place != entries.end());
            if (place != entries.end())
                entries.erase(place);
        } else {
            const bool changes = place == entries.end() || place->second != value;
            EXPECT_EQ(file.Set(root, section, name, value), changes);
            if (place == entries.end())
                entries.emplace_back(name, value);
            else
                place->second = value;
        }
        if (step % 100 == 99) {
            const std::string written = file.Text();
            ProfileFile again(written, page);
            EXPECT_EQ(again.DamagedLine(), 0u);
            EXPECT_EQ(again.Text(), written);
            model.ExpectSame(again);
            if (below(2))
                file = std::move(again);
        }
    }
    model.ExpectSame(file);
}

TEST(ProfileFile, WritesWhatPeopleCanRead) {
    ProfileFile file(Page(65001));
    file.Set(3, "Options", "MaxCachePages", "64");
    file.Set(3, "Global Variables", "#A", "");
    file.Set(3, "Global Variables", "A%", " lead and trail ");
    file.Set(3, "Global Variables", " [x]=1", "a=b;[c]#\r\n");
    file.Set(1, "F]o", "\xC3\xBC\xFF", "\xE2\x82\xAC\xC2\x85");
    file.Set(3, "Options", "UILanguage", "DEU");
    EXPECT_EQ(file.Text(), "[3/Options]\n"
                           "MaxCachePages=64\n"
                           "UILanguage=DEU\n"
                           "\n"
                           "[3/Global Variables]\n"
                           "%23A=\n"
                           "A%25=%20lead and trail%20\n"
                           "%20[x]%3D1=a=b;[c]#%0D%0A\n"
                           "\n"
                           "[1/F%5Do]\n"
                           "\xC3\xBC%FF=\xE2\x82\xAC%C2%85\n");
}

TEST(ProfileFile, KeepsLinesItDoesNotKnow) {
    const std::string text = "; made by hand\r\n"
                             "\n"
                             "[3/Options]\n"
                             "  MaxCachePages = 64\t\n"
                             "what is this\n"
                             "; SaveGlobals=1\n"
                             "MaxCachePages=65\n"
                             "\n"
                             "\n"
                             "[strange header]\n"
                             "a=b\n"
                             "[ 3/x]\n"
                             "[3/Options]\n"
                             "UILanguage=50%\n"
                             "[1/Form Fonts]\n"
                             "# only a comment\n"
                             "DefaultFormFontSize=10";
    ProfileFile file(text, Page(65001));
    EXPECT_EQ(file.DamagedLine(), 0u);
    EXPECT_EQ(*file.Find(3, "Options", "MaxCachePages"), "65"); // the later line
    EXPECT_EQ(*file.Find(3, "Options", "UILanguage"), "50%");
    EXPECT_EQ(file.Find(3, "options", "UILanguage"), nullptr);
    EXPECT_TRUE(file.Set(3, "Options", "SaveGlobals", "0"));
    EXPECT_TRUE(file.RemoveSection(1, "Form Fonts"));
    EXPECT_FALSE(file.HasSection(1, "Form Fonts"));
    EXPECT_EQ(file.Text(), "; made by hand\r\n"
                           "\n"
                           "[3/Options]\n"
                           "what is this\n"
                           "; SaveGlobals=1\n"
                           "MaxCachePages=65\n"
                           "\n"
                           "\n"
                           "UILanguage=50%\n"
                           "SaveGlobals=0\n"
                           "[strange header]\n"
                           "a=b\n"
                           "[ 3/x]\n"
                           "[1/Form Fonts]\n"
                           "# only a comment\n");
}

TEST(ProfileFile, TellsDamageFromOddities) {
    const auto damaged = [](std::string_view text) {
        return ProfileFile(text, Page(65001)).DamagedLine();
    };
    EXPECT_EQ(damaged(""), 0u);
    EXPECT_EQ(damaged("\n\n"), 0u);
    EXPECT_EQ(damaged("\xEF\xBB\xBF; a mark\n"), 0u);
    EXPECT_EQ(damaged("; empty\nx=y\n"), 0u);
    EXPECT_EQ(damaged("[3/A]\nx=\xC3\xA4\nx=\xC3"), 3u); // cut in the middle of a letter
    EXPECT_EQ(damaged("[3/A]\nx=1\nxy"), 0u);            // cut in the middle of a line
    EXPECT_EQ(damaged("[3/A]\nx=y\xFFz\n"), 2u);
    EXPECT_EQ(damaged(std::string_view("[3/A]\nx=\0\n", 10)), 2u);
    EXPECT_EQ(damaged("PK zip or so\n"), 1u);
    EXPECT_EQ(damaged("[other]\nx=1\n"), 1u);
    // What can be read of a damaged file is.
    const ProfileFile file("[3/A]\na=1\nb=\xFF\nc=3\n", Page(65001));
    EXPECT_EQ(EntriesOf(file, 3, "A"), (Entries{{"a", "1"}, {"c", "3"}}));
}

TEST(ProfileFile, TextIsTheSameInEveryCodePage) {
    ProfileFile western(Page(1252));
    western.Set(3, "S",
                "gr\xF6\xDF"
                "e",
                "12 \x80");
    EXPECT_EQ(western.Text(), "[3/S]\ngr\xC3\xB6\xC3\x9F"
                              "e=12 \xE2\x82\xAC\n");
    ProfileFile japanese("[3/S]\nname=\xE3\x82\xBD\xEF\xBC\x9D\n\xC3\xA4=1\n", Page(932));
    EXPECT_EQ(*japanese.Find(3, "S", "name"), "\x83\x5C\x81\x81");
}

TEST(ProfileFile, WhatThePageCannotShowStays) {
    // Two names, and two sections, that all read "?" in the western page.
    const std::string others = "\xE3\x81\x82=1\n\xE3\x81\x84=2\n",
                      money = "MONEY=\xE6\x97\xA5\xE6\x9C\xAC \xE2\x82\xAC 5\n",
                      sections = "[3/\xE3\x81\x82]\na=1\n[3/\xE3\x81\x84]\nb=2\n";
    ProfileFile file("[3/S]\n" + others + money + sections, Page(1252));
    EXPECT_EQ(EntriesOf(file, 3, "S"), (Entries{{"MONEY", "?? \x80 5"}}));
    EXPECT_EQ(file.Find(3, "S", "?"), nullptr);
    EXPECT_FALSE(file.HasSection(3, "?"));
    EXPECT_FALSE(file.Set(3, "S", "MONEY", "?? \x80 5")); // nothing has changed
    EXPECT_TRUE(file.Set(3, "S", "?", "x"));
    EXPECT_TRUE(file.RemoveSection(3, "S"));
    EXPECT_EQ(file.Text(), "[3/S]\n" + others + sections);
    EXPECT_TRUE(file.Set(3, "S", "MONEY", "?? \x80 5")); // as it was before the section went
    EXPECT_TRUE(file.Set(3, "S", "?", "y"));
    EXPECT_EQ(file.Text(), "[3/S]\n" + others + money + "?=y\n" + sections);
    EXPECT_TRUE(file.Set(3, "S", "MONEY", "5"));
    EXPECT_EQ(file.Text(), "[3/S]\n" + others + "MONEY=5\n?=y\n" + sections);
    // One name here, two in UTF-8: the later line counts, and no line is lost but by removal.
    ProfileFile bytes("[3/S]\n%FF=1\n\xC3\xBF=2\n[3/%FF]\na=1\n[3/\xC3\xBF]\na=2\n", Page(1252));
    EXPECT_EQ(*bytes.Find(3, "S", "\xFF"), "2");
    EXPECT_EQ(*bytes.Find(3, "\xFF", "a"), "1");
    EXPECT_EQ(EntriesOf(bytes, 3, "S").size(), 1u);
    EXPECT_TRUE(bytes.Set(3, "S", "\xFF", "3"));
    EXPECT_EQ(bytes.Text(), "[3/S]\n%FF=1\n\xC3\xBF=3\n[3/%FF]\na=1\n[3/\xC3\xBF]\na=2\n");
    EXPECT_TRUE(bytes.Remove(3, "S", "\xFF"));
    EXPECT_EQ(bytes.Text(), "[3/S]\n[3/%FF]\na=1\n[3/\xC3\xBF]\na=2\n");
}

} // namespace
} // namespace vnbytstr::detail
