// The selection as text for other programs.
#include "tests/lists/ListFixture.h"

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

} // namespace
} // namespace vnbytstr::test
