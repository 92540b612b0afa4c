// Which allocator the blocks handed to callers come from, and of what size. This program's operator
// new marks its blocks, so that a block of malloc given to operator delete, or one of operator new
// given to free, is found out; and it can fail.
#include "vnbytstr/StringPersistence.h"
#include "vnbytstr/TextEncoding.h"
#include "vnbytstr/framework/MemFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

namespace {

constexpr std::size_t kMagic = 0x5EC0DEAB10C4BEEF;
struct Header {
    std::size_t magic, size;
};
bool g_fails = false;      ///< the next operator new(nothrow) gives null
std::size_t g_foreign = 0; ///< blocks given to operator delete that are not operator new's
std::size_t g_freed = 0;

void* Allocate(std::size_t size) {
    auto* header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
    if (header == nullptr)
        return nullptr;
    *header = {kMagic, size};
    return header + 1;
}

void Release(void* block) noexcept {
    if (block == nullptr)
        return;
    Header* header = static_cast<Header*>(block) - 1;
    if (header->magic != kMagic) {
        ++g_foreign;
        return;
    }
    ++g_freed;
    header->magic = 0;
    std::free(header);
}

std::size_t SizeOf(const char* block) {
    Header header;
    std::memcpy(&header, block - sizeof header, sizeof header);
    return header.magic == kMagic ? header.size : ~std::size_t{0};
}

char* NewBlock(const char* text) {
    auto* block = static_cast<char*>(::operator new(std::strlen(text)));
    std::memcpy(block, text, std::strlen(text));
    return block;
}

} // namespace

void* operator new(std::size_t size) {
    if (void* block = Allocate(size))
        return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return g_fails ? nullptr : Allocate(size);
}
void* operator new[](std::size_t size) { return ::operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { Release(block); }
void operator delete(void* block, std::size_t) noexcept { Release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Release(block); }
void operator delete[](void* block) noexcept { Release(block); }
void operator delete[](void* block, std::size_t) noexcept { Release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Release(block); }

TEST(Blocks, HexTextTakesAndGivesOperatorNew) {
    char* buffer = NewBlock("abc");
    char* const before = buffer;
    DWORD length = 99;
    g_fails = true;
    EXPECT_FALSE(FormatBufferAsHex(buffer, 3, length));
    g_fails = false;
    EXPECT_EQ(buffer, before);
    EXPECT_EQ(length, 99u);
    EXPECT_EQ(std::string(buffer, 3), "abc");
    const std::size_t freed = g_freed;
    EXPECT_TRUE(FormatBufferAsHex(buffer, 3, length));
    EXPECT_EQ(g_freed, freed + 1);
    EXPECT_EQ(SizeOf(buffer), 7u);
    EXPECT_STREQ(buffer, "616263");
    EXPECT_TRUE(FormatBufferAsHex(buffer, 0, length));
    EXPECT_EQ(SizeOf(buffer), 1u);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(length, 0u);
    ::operator delete(buffer);
    EXPECT_EQ(g_foreign, 0u);
}

TEST(Blocks, UrlTextIsOfOperatorNew) {
    char none = 'x';
    char* result = &none;
    g_fails = true;
    EXPECT_EQ(URLEncodeStr("abc", result, false), 0u);
    g_fails = false;
    EXPECT_EQ(result, &none);
    struct Case {
        const char* source;
        bool last;
        std::size_t size;
    };
    for (const Case& one :
         {Case{"abc", true, 19}, Case{"abc", false, 19}, Case{"", true, 1}, Case{"", false, 2}}) {
        URLEncodeStr(one.source, result, one.last);
        EXPECT_EQ(SizeOf(result), one.size);
        ::operator delete(result);
    }
    EXPECT_EQ(g_foreign, 0u);
}

TEST(Blocks, TextOfAFileIsOfMalloc) {
    for (const char* content : {"", "plain",
                                "\xFF\xFE"
                                "ab"}) {
        CMemFile file;
        file.Write(content, static_cast<UINT>(std::strlen(content)));
        file.SeekToBegin();
        char* text = nullptr;
        bool converted = false, hadMark = false;
        ReadStringFromFile(file, text, converted, hadMark);
        // A block of operator new would begin behind its header, where free finds no block.
        text = static_cast<char*>(std::realloc(text, 100));
        EXPECT_NE(text, nullptr);
        std::free(text);
    }
}
