// What edit controls and combo boxes do alike, and what list boxes and combo boxes do alike.
#include "tests/window/ControlHost.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/window/ComboBox.h"
#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/ListBox.h"

#include <QClipboard>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::Each;
using testing::ElementsAre;
using vnbytstr::ScopedCodePage;

struct FieldClass {
    const char* name;
    DWORD style;
    UINT limit;
    UINT getSelection;
};

class Field : public testing::TestWithParam<FieldClass> {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_field.Create(GetParam().name, "", GetParam().style | WS_CHILD | WS_VISIBLE,
                                   CRect(10, 10, 200, 100), &m_host, 1));
    }
    void TypeBytes(const char* bytes) {
        for (; *bytes != '\0'; ++bytes)
            m_field.SendMessage(WM_CHAR, static_cast<BYTE>(*bytes));
    }
    std::string Paste(const QString& text) {
        m_field.SetWindowText("");
        QApplication::clipboard()->setText(text);
        m_field.SendMessage(WM_PASTE);
        return TextOf(m_field);
    }
    ControlHost m_host;
    CWnd m_field;
};

TEST_P(Field, BytesBecomeACharacterWhenItIsWhole) {
    const ScopedCodePage utf8(65001);
    TypeBytes("a\xE2\x82");
    EXPECT_EQ(TextOf(m_field), "a");
    TypeBytes("\xAC"
              "b");
    EXPECT_EQ(TextOf(m_field), "a\xE2\x82\xAC"
                               "b");
    TypeBytes("\xE2\x82");
    m_field.SetWindowText(""); // and the beginning of a character with it
    TypeBytes("c\x01");
    EXPECT_EQ(TextOf(m_field), "c");
}

TEST_P(Field, TrailBytesAreNoKeys) {
    const ScopedCodePage japanese(932);
    TypeBytes("\x83\x5C"); // the trail byte is a backslash by itself
    EXPECT_EQ(TextOf(m_field), "\x83\x5C");
    EXPECT_EQ(m_field.SendMessage(GetParam().getSelection), MAKELPARAM(2, 2));
}

TEST_P(Field, ALinePastesTheFirstOneWithinItsLimit) {
    const ScopedCodePage utf8(65001);
    for (const char* const text : {"one\r\ntwo", "one\ntwo", "one\rtwo", "one"})
        EXPECT_EQ(Paste(text), "one") << text;
    m_field.SendMessage(GetParam().limit, 5);
    EXPECT_EQ(Paste(QStringLiteral("\u00C4\u00D6\u00DC")),
              "\xC3\x84\xC3\x96"); // cut at a character
    m_field.SendMessage(GetParam().limit, 0);
    EXPECT_EQ(Paste(QStringLiteral("\u00C4\u00D6\u00DC")), "\xC3\x84\xC3\x96\xC3\x9C");
}

TEST_P(Field, CutsClearsAndGoesBack) {
    m_field.SetFocus(); // a combo box selects its text then
    EXPECT_EQ(Paste("text"), "text");
    EXPECT_TRUE(m_field.SendMessage(WM_UNDO));
    EXPECT_EQ(TextOf(m_field), "");
    EXPECT_FALSE(m_field.SendMessage(WM_UNDO));
    m_field.SendMessage(WM_CUT); // nothing is selected
    EXPECT_EQ(QApplication::clipboard()->text(), "text");
}

INSTANTIATE_TEST_SUITE_P(
    Classes, Field,
    testing::Values(FieldClass{"EDIT", ES_AUTOHSCROLL, EM_LIMITTEXT, EM_GETSEL},
                    FieldClass{"COMBOBOX", CBS_DROPDOWN, CB_LIMITTEXT, CB_GETEDITSEL},
                    FieldClass{"COMBOBOX", CBS_SIMPLE, CB_LIMITTEXT, CB_GETEDITSEL}));

TEST(Finding, ListsAndComboBoxesFollowTheCasesOfTheCodePage) {
    struct Case {
        UINT page;
        const char* item;
        const char* wanted;
        bool begins;
        bool is;
    };
    static constexpr Case cases[] = {
        {65001, "\xC3\x84rger", "\xC3\xA4RGER", true, true}, // A umlaut in both cases
        {65001, "\xC3\xA4rger", "\xC3\x84", true, false},    // and the other way round
        {1252, "\xC4rger", "\xE4rger", true, true},          // of one byte
        {1251, "\xC4\xEE\xEC", "\xE4\xEE\xEC", true, true},  // the same bytes in Cyrillic
        {65001, "Kelvin",
         "\xE2\x84\xAA"
         "elvin",
         false, false}, // the sign is not the letter
        {65001, "Strasse",
         "Stra\xC3\x9F"
         "e",
         false, false},
        {932, "\x83\x41", "\x83\x61", false, false}, // the trail byte is no letter
        {65001, "Item", "", true, false},
        {65001, "I", "Item", false, false},
    };
    ControlHost host;
    CWnd list;
    CWnd combo;
    ASSERT_TRUE(list.Create("LISTBOX", "", WS_CHILD, CRect(0, 0, 9, 9), &host, 1));
    ASSERT_TRUE(
        combo.Create("COMBOBOX", "", WS_CHILD | CBS_DROPDOWNLIST, CRect(0, 0, 9, 9), &host, 2));
    for (const Case& entry : cases) {
        const ScopedCodePage page(entry.page);
        list.SendMessage(LB_RESETCONTENT);
        combo.SendMessage(CB_RESETCONTENT);
        for (const char* const text : {"?", entry.item}) {
            list.SendMessage(LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
            combo.SendMessage(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
        }
        const auto wanted = reinterpret_cast<LPARAM>(entry.wanted);
        EXPECT_THAT((std::vector{list.SendMessage(LB_FINDSTRING, 0, wanted),
                                 combo.SendMessage(CB_FINDSTRING, 0, wanted)}),
                    Each(entry.begins ? 1 : -1))
            << entry.item;
        EXPECT_THAT((std::vector{list.SendMessage(LB_FINDSTRINGEXACT, 0, wanted),
                                 combo.SendMessage(CB_FINDSTRINGEXACT, 0, wanted)}),
                    Each(entry.is ? 1 : -1))
            << entry.item;
    }
}

} // namespace
