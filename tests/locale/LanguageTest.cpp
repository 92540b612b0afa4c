#include "vnbytstr/Language.h"

#include <gtest/gtest.h>

namespace {

TEST(Language, FindsTheEnglishLibraryBesideTheProgram) {
    CString text;
    EXPECT_GT(LoadStringA(text, 34588, nullptr), 0);
    EXPECT_STREQ(text, "<BLOB>");
}

} // namespace
