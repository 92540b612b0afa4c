#include "tests/support/TemporaryFolder.h"
#include "vnbytstr/ResourceLibrary.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/stat.h>

namespace vnbytstr {

TEST(ResourceLibrary, DoesNotWaitForAPipe) {
    const test::TemporaryFolder folder;
    HINSTANCE library = nullptr;
    ASSERT_EQ(::mkfifo(folder.File("pipe.dll").c_str(), 0600), 0); // would wait for a writer
    EXPECT_EQ(LoadResourceLibrary(folder.File("pipe.dll").c_str(), library), ENOEXEC);
}

} // namespace vnbytstr
