#include "examples/vnquery/document/QueryLayout.h"

#include "tests/support/TemporaryFolder.h"

#include "vnbytstr/Profile.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace vnquery {
namespace {

class LayoutTest : public ::testing::Test {
protected:
    LayoutTest() { setenv("VNBYTSTR_PROFILE", m_folder.File("profile.ini").c_str(), 1); }
    vnbytstr::test::TemporaryFolder m_folder;
};

TEST_F(LayoutTest, IsKeptPerQuery) {
    const QueryLayout layout = {{2, 0, 1},
                                {80, 0, 120},
                                2,
                                QueryLayout::Sort::Descending,
                                {1},
                                1,
                                {{0, ">1;,2"}, {2, "=\xC3\xBC"}}};
    EXPECT_EQ(LoadLayout("select 1", 3), DefaultLayout(3));
    ASSERT_TRUE(SaveLayout("select a,b ,c from t -- all", layout));
    EXPECT_EQ(LoadLayout("SELECT a, b, c\nFROM t", 3), layout);
    EXPECT_EQ(LoadLayout("select a, b, 'c' from t", 3), DefaultLayout(3));
    EXPECT_EQ(LoadLayout("select a,b,c from t", 4), DefaultLayout(4)) << "the table has changed";
}

TEST_F(LayoutTest, WhatDoesNotFitIsNotUsed) {
    ASSERT_TRUE(SaveLayout("q", DefaultLayout(2)));
    CProfileSectionKey kept;
    ASSERT_TRUE(VNGetProfileSectionKey(1, "Queries", kept));
    const CString name = kept.GetName(0);
    for (const char* text :
         {"", "0,1", "0,0;1,2;0,0", "0,1;1;0,0", "0,1;1,2;2,0", "0,1;1,2;0,3", "0,1;-1,2;0,0",
          "0,1;1,99999;0,0", "0,1;1,x;0,0", "0,1;1,2;0", ";;;;", "0,99999999999999999999;1,2;0,0",
          "0,1;1,2;0,0;0,1", "0,1;1,2;0,0;2", "0,1;1,2;0,0;;3", "0,1;1,2;0,0;;-1",
          "0,1;1,2;0,0;;0;2,1,x", "0,1;1,2;0,0;;0;1,2,x", "0,1;1,2;0,0;;0;x"}) {
        ASSERT_TRUE(VNWriteProfileString(1, "Queries", name, text));
        EXPECT_EQ(LoadLayout("q", 2), DefaultLayout(2)) << text;
    }
}

TEST_F(LayoutTest, TheOldestGo) {
    for (int i = 0; i < 210; ++i)
        ASSERT_TRUE(SaveLayout("select " + std::to_string(i),
                               {{0}, {100 + i}, 0, QueryLayout::Sort::None, {}, 0, {}}));
    CProfileSectionKey kept;
    ASSERT_TRUE(VNGetProfileSectionKey(1, "Queries", kept));
    EXPECT_EQ(kept.GetCount(), 200);
    EXPECT_EQ(LoadLayout("select 209", 1).widths[0], 309);
    EXPECT_EQ(LoadLayout("select 0", 1), DefaultLayout(1));
}

} // namespace
} // namespace vnquery
