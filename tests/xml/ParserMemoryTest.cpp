#include "xml/ParserMemoryInternal.h"

#include <xercesc/util/OutOfMemoryException.hpp>

#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace vnbytstr::test {
namespace {

using detail::ParserMemory;

TEST(ParserMemoryTest, BlocksDoNotOverlapAndAreUsedAgain) {
    ParserMemory memory;
    std::mt19937 random(1);
    struct Block {
        std::size_t size;
        unsigned char mark;
    };
    std::map<void*, Block> blocks;
    const std::size_t sizes[] = {0,     1,     40,     8175,   8176,   8177,
                                 16384, 65536, 131072, 262128, 262129, 700000};
    const auto free = [&](std::map<void*, Block>::iterator at) {
        const auto* bytes = static_cast<unsigned char*>(at->first);
        for (std::size_t i = 0; i < at->second.size; i += 97)
            ASSERT_EQ(bytes[i], at->second.mark);
        memory.deallocate(at->first);
        blocks.erase(at);
    };
    for (int step = 0; step < 6000; ++step) {
        if (blocks.size() > 300 || (!blocks.empty() && random() % 2 == 0)) {
            free(std::next(blocks.begin(), static_cast<std::ptrdiff_t>(random() % blocks.size())));
        } else {
            const std::size_t size = sizes[random() % std::size(sizes)];
            void* const block = memory.allocate(size);
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
            const auto mark = static_cast<unsigned char>(random());
            std::memset(block, mark, size);
            ASSERT_TRUE(blocks.emplace(block, Block{size, mark}).second);
        }
    }
    while (!blocks.empty())
        free(blocks.begin());
    EXPECT_EQ(memory.LiveBlocks(), 0u);
    EXPECT_LE(memory.RegionBytes(), 16u << 20); // the rest went back
    memory.Trim();
    EXPECT_EQ(memory.RegionBytes(), 0u);
    memory.deallocate(nullptr);
    EXPECT_THROW(memory.allocate(SIZE_MAX), xercesc::OutOfMemoryException);
    EXPECT_THROW(memory.allocate(SIZE_MAX / 2), xercesc::OutOfMemoryException);
}

TEST(ParserMemoryTest, ThreadsMayFreeWhatOthersTook) {
    ParserMemory memory;
    std::vector<void*> blocks(400);
    const auto inTwo = [&](auto work) {
        std::thread other([&] { work(0); });
        work(1);
        other.join();
    };
    for (int round = 0; round < 5; ++round) {
        inTwo([&](std::size_t half) {
            for (std::size_t i = half; i < blocks.size(); i += 2)
                blocks[i] = memory.allocate(10000 + i * 300);
        });
        inTwo([&](std::size_t half) {
            for (std::size_t i = 1 - half; i < blocks.size(); i += 2)
                memory.deallocate(blocks[i]);
        });
    }
    EXPECT_EQ(memory.LiveBlocks(), 0u);
}

} // namespace
} // namespace vnbytstr::test
