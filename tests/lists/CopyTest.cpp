// The selection as text for other programs.
#include "tests/lists/SourceFixture.h"

#include "vnbytstr/window/WindowFunctions.h"

namespace vnbytstr::test {
namespace {

TEST_F(ListFixture, TheSelectionIsCopiedInThreeForms) {
    Make(LBS_MULTIPLESEL);
    list->ResetContent();
    list->SetSeparator("\x1F");
    list->SetColumnName(1, "a \"b\"");
    list->AddStringItems("O'Hara", "Graz, Linz", "007");
    list->AddStringItems("say \"hi\"", "two\r\nlines\ttab", "-");
    list->AddStringItems("not selected", "", "");
    list->AddStringItems("", "-", "12 kg");
    EXPECT_TRUE(list->GetSelectionAs(kCopyCsv, FALSE).IsEmpty());
    EXPECT_FALSE(list->CopySelection(kCopyCsv, FALSE));
    for (const int row : {0, 1, 3})
        list->SendMessage(LB_SETSEL, TRUE, row);
    EXPECT_STREQ(list->GetSelectionAs(kCopyTabs, TRUE),
                 "Name\t\"a \"\"b\"\"\"\tNumber\r\n"
                 "O'Hara\tGraz, Linz\t007\r\n"
                 "\"say \"\"hi\"\"\"\t\"two\r\nlines\ttab\"\t-\r\n"
                 "\t-\t12 kg\r\n");
    EXPECT_STREQ(list->GetSelectionAs(kCopyCsv, TRUE),
                 "Name,\"a \"\"b\"\"\",Number\r\n"
                 "O'Hara,\"Graz, Linz\",007\r\n"
                 "\"say \"\"hi\"\"\",\"two\r\nlines\ttab\",-\r\n"
                 ",-,12 kg\r\n");
    EXPECT_STREQ(list->GetSelectionAs(kCopySql, TRUE),
                 "(\"Name\", \"a \"\"b\"\"\", \"Number\") VALUES\r\n"
                 "('O''Hara', 'Graz, Linz', 007),\r\n"
                 "('say \"hi\"', 'two\r\nlines\ttab', NULL),\r\n"
                 "('', NULL, '12 kg')");
    EXPECT_TRUE(list->CopySelection(kCopySql, FALSE));
    CString copied;
    EXPECT_TRUE(GetClipboardText(copied));
    EXPECT_EQ(copied, list->GetSelectionAs(kCopySql, FALSE));
}

TEST_F(ListFixture, OneCellIsCopiedInThreeForms) {
    list->SetSeparator("\x1F");
    list->ResetContent();
    list->AddStringItems("O'Hara, \"Jo\"\tx", "-", "007");
    const auto forms = [this](int row, int column) {
        std::string text;
        for (const EListCopyFormat format : {kCopyTabs, kCopyCsv, kCopySql})
            text += std::string(list->GetCellAs(row, column, format)) + "|";
        return text;
    };
    EXPECT_EQ(forms(0, 0), "O'Hara, \"Jo\"\tx|\"O'Hara, \"\"Jo\"\"\tx\"|'O''Hara, \"Jo\"\tx'|");
    EXPECT_EQ(forms(0, 1), "-|-|NULL|");
    EXPECT_EQ(forms(0, 2), "007|007|007|");
    EXPECT_EQ(forms(0, 3) + forms(1, 0) + forms(-1, -1), "|||||||||");
    EXPECT_TRUE(list->CopyCell(0, 1, kCopySql));
    CString copied;
    EXPECT_TRUE(GetClipboardText(copied));
    EXPECT_STREQ(copied, "NULL");
    EXPECT_FALSE(list->CopyCell(0, 3, kCopySql));
}

/// A source knows what is null better than the marker does.
TEST_F(RowSource, NullIsWhatTheSourceSays) {
    source.rows = {{"-", "a", "1"}, {"null", "b", "2"}, {"-", "c", "3"}};
    Make(LBS_EXTENDEDSEL);
    list->SetRowSource(&source);
    list->SendMessage(LB_SETSEL, TRUE, -1);
    const auto sql = [this] { return std::string(list->GetSelectionAs(kCopySql, FALSE)); };
    const auto shown = [this](const char* condition) {
        list->SetColumnFilter(0, condition);
        std::string rows = Column(1);
        list->ClearFilter();
        return rows;
    };
    EXPECT_EQ(sql(), "(NULL, 'a', 1),\r\n('null', 'b', 2),\r\n(NULL, 'c', 3)");
    EXPECT_EQ(shown("null"), "a c");
    source.isNull = [](int row, int column) {
        return row == 2                  ? ENullAnswer::ByMarker
               : row == 1 && column == 0 ? ENullAnswer::Yes
                                         : ENullAnswer::No;
    };
    list->SendMessage(LB_SETSEL, TRUE, -1);
    EXPECT_EQ(sql(), "('-', 'a', 1),\r\n(NULL, 'b', 2),\r\n(NULL, 'c', 3)");
    EXPECT_STREQ(list->GetCellAs(0, 0, kCopySql), "'-'");
    EXPECT_STREQ(list->GetCellAs(1, 0, kCopySql), "NULL");
    EXPECT_EQ(shown("null"), "b c");
    EXPECT_EQ(shown("not null"), "a");
    EXPECT_EQ(shown("=-"), "a");
    EXPECT_EQ(shown("<>x"), "a");
    EXPECT_EQ(shown("nul\""), "");
    EXPECT_EQ(shown("\"null\""), "b"); // what is seen can be found
    // In grey, if that is wished.
    list->SendMessage(LB_SETSEL, FALSE, -1);
    const QImage black = Draw();
    list->EnableGreyNulls();
    const QImage grey = Draw();
    const auto differs = [&](int row) {
        CRect area(0, row * RowHeight(), 100, (row + 1) * RowHeight());
        list->MapWindowPoints(&parent, area);
        const QRect part(area.left, area.top, area.Width(), area.Height());
        return black.copy(part) != grey.copy(part);
    };
    EXPECT_FALSE(differs(0));
    EXPECT_TRUE(differs(1));
    EXPECT_TRUE(differs(2));
}

} // namespace
} // namespace vnbytstr::test
