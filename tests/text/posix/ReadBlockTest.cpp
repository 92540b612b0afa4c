// The memory that a string is read into.
#include "tests/support/Text.h"
#include "vnbytstr/StringPersistence.h"
#include "vnbytstr/framework/MemFile.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using namespace std::string_literals;
using namespace vnbytstr::test;

TEST(StringPersistence, TheBlockIsTwiceTheFile) {
    for (const std::string& bytes :
         {std::string(5000, 'x'), "\xFF\xFE"s + std::string(5000, '\x30')}) {
        CMemFile file;
        Fill(file, bytes);
        char* text = nullptr;
        bool converted = false, hadMark = false;
        const DWORD length = ReadStringFromFile(file, text, converted, hadMark);
        EXPECT_GE(::malloc_usable_size(text), 2 * std::size_t{length});
        // Zeros after the text, for readers that take it for UTF-16.
        EXPECT_EQ(std::string(text + (converted ? std::strlen(text) : length), 2), "\0\0"s);
        std::free(text);
    }
}

} // namespace
