#include "vnbytstr/framework/Exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace {

using ::testing::HasSubstr;

std::string Message(const CException& error) {
    char buffer[1000] = "untouched";
    UINT help = 99;
    const BOOL said = error.GetErrorMessage(buffer, sizeof buffer, &help);
    EXPECT_EQ(help, 0u);
    EXPECT_EQ(said != FALSE, buffer[0] != '\0');
    return buffer;
}

TEST(Exception, MessageNamesFileCauseAndSystemError) {
    try {
        CFileException::ThrowOsError(ENOSPC, "/data/result.ixf");
    } catch (CFileException* error) {
        EXPECT_EQ(error->m_cause, CFileException::diskFull);
        EXPECT_EQ(error->m_lOsError, ENOSPC);
        EXPECT_EQ(error->m_strFileName, "/data/result.ixf");
        const std::string text = Message(*error);
        EXPECT_THAT(text, HasSubstr("\"/data/result.ixf\""));
        EXPECT_THAT(text, HasSubstr("no room on the disk"));
        EXPECT_THAT(text, HasSubstr("No space left on device"));
        error->Delete();
    }
    for (int cause = CFileException::genericException; cause <= CFileException::endOfFile; ++cause)
        EXPECT_THAT(Message(CFileException(cause)), HasSubstr("The file "));
    for (int cause = CArchiveException::genericException; cause <= CArchiveException::badSchema;
         ++cause)
        EXPECT_THAT(Message(CArchiveException(cause, "a.dat")),
                    HasSubstr("The archive \"a.dat\" "));
    EXPECT_EQ(Message(CUserException()), "");
}

TEST(Exception, MessageIsCutBetweenCharacters) {
    const CFileException error(CFileException::fileNotFound, -1,
                               "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
    const std::string whole = Message(error);
    const std::size_t name = whole.find('\xC3');
    ASSERT_NE(name, std::string::npos);
    // How much of the name is left when the buffer ends after n of its bytes.
    const std::size_t left[] = {0, 0, 2, 2, 2, 5, 5, 5, 5, 9};
    for (std::size_t n = 0; n <= 9; ++n) {
        std::string buffer(name + n + 1, 'x');
        EXPECT_TRUE(error.GetErrorMessage(buffer.data(), static_cast<UINT>(buffer.size())));
        EXPECT_EQ(std::string(buffer.c_str()), whole.substr(0, name + left[n])) << n;
    }
    EXPECT_FALSE(error.GetErrorMessage(nullptr, 10));
    char untouched = 'u';
    EXPECT_FALSE(error.GetErrorMessage(&untouched, 0));
    EXPECT_EQ(untouched, 'u');
}

TEST(Exception, ClassesAreKnownAtRunTime) {
    const CFileException error(CFileException::hardIO);
    EXPECT_TRUE(error.IsKindOf(RUNTIME_CLASS(CException)));
    EXPECT_FALSE(error.IsKindOf(RUNTIME_CLASS(CArchiveException)));
    EXPECT_STREQ(error.GetRuntimeClass()->m_lpszClassName, "CFileException");
}

TEST(Exception, MemoryExceptionOutlivesDelete) {
    for (int i = 0; i < 2; ++i) {
        try {
            AfxThrowMemoryException();
        } catch (CException* error) {
            EXPECT_THAT(Message(*error), HasSubstr("not enough memory"));
            error->Delete();
        }
    }
}

} // namespace
