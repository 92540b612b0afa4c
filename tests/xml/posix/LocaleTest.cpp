// Numbers under a locale with a comma.
#include "tests/support/TemporaryFolder.h"
#include "vnbytstr/XMLVariant.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

namespace vnbytstr::test {
namespace {

std::string TextOf(const CXMLVariant& value) {
    const CString text = value;
    return {text, static_cast<std::size_t>(text.GetLength())};
}

TEST(XMLVariantTest, WritesAPointAndReadsTheLocalesSeparator) {
    const TemporaryFolder locales;
    const std::string command = "localedef -i de_DE -f UTF-8 " + locales.File("de_DE.UTF-8");
    ASSERT_EQ(std::system((command + " >/dev/null 2>&1").c_str()), 0) << command;
    ASSERT_EQ(::setenv("LOCPATH", locales.Path().c_str(), 1), 0);
    const std::string before = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    char comma[8];
    std::snprintf(comma, sizeof comma, "%.1f", 1.5);
    EXPECT_STREQ(comma, "1,5"); // or the rest shows nothing
    EXPECT_EQ(TextOf(CXMLVariant(1234567.5)), "1234567.500000");
    EXPECT_EQ(static_cast<double>(CXMLVariant("1.5")), 1.5);
    EXPECT_EQ(static_cast<double>(CXMLVariant("1,5")), 1.5);
    EXPECT_EQ(static_cast<double>(CXMLVariant(-1e-3)), -1e-3);
    std::setlocale(LC_ALL, before.c_str());
    ::unsetenv("LOCPATH");
    EXPECT_EQ(static_cast<double>(CXMLVariant("1,5")), 1);
    EXPECT_EQ(static_cast<double>(CXMLVariant("1.5")), 1.5);
}

} // namespace
} // namespace vnbytstr::test
