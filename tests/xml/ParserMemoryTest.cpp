#include "src/xml/ParserMemory.h"
#include "src/xml/DocumentParser.h"
#include "vnbytstr/XercesWrapper.h"

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/Wrapper4InputSource.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>

#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <string>
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
    const std::size_t sizes[] = {0,     1,      40,     8175,    8176,    8177,  16384,
                                 65536, 131072, 524304, 1048560, 1048561, 700000};
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
    EXPECT_LE(memory.RegionBytes(), 64u << 20);
    memory.Trim();
    EXPECT_EQ(memory.RegionBytes(), 0u);
    memory.deallocate(nullptr);
    EXPECT_THROW(memory.allocate(SIZE_MAX), xercesc::OutOfMemoryException);
    EXPECT_THROW(memory.allocate(SIZE_MAX / 2), xercesc::OutOfMemoryException);
}

TEST(ParserMemoryTest, ABudgetEndsOnceAndForgetsNothing) {
    detail::ParseBudget budget;
    const std::size_t before = ParserMemory::Process().LiveBlocks();
    void* const early = budget.allocate(100000); // is not counted yet
    budget.Begin(1000, [] { throw 1; });
    void* const first = budget.allocate(900);
    budget.deallocate(first);
    EXPECT_THROW(budget.allocate(101), int); // what was given back does not count
    EXPECT_NE(budget.allocate(5000), nullptr);
    EXPECT_TRUE(budget.End());
    budget.Begin(10, [] { throw 1; });
    budget.Add(SIZE_MAX);
    EXPECT_NE(budget.allocate(50000), nullptr);
    EXPECT_FALSE(budget.End());
    budget.deallocate(early);
    EXPECT_EQ(budget.LiveBytes(), 55000u);
    EXPECT_EQ(ParserMemory::Process().LiveBlocks(), before + 1);
    budget.FreeAll();
    EXPECT_EQ(budget.LiveBytes(), 0u);
    EXPECT_EQ(ParserMemory::Process().LiveBlocks(), before);
}

// Wherever the budget ends: the parser comes to an end, too, and can be thrown away.
TEST(ParserMemoryTest, AParseMayEndAtAnyAllocation) {
    using namespace xercesc;
    const CXercesWrapper platform;
    const std::string text =
        "<!DOCTYPE a [<!ENTITY e 'x<b/>'><!ENTITY f '&e;'><!ELEMENT a (b,(c|d)*)>"
        "<!ATTLIST a x CDATA '1' y CDATA #IMPLIED>]>"
        "<a y='&lt;'>&f;<!--c--><![CDATA[d]]><?p i?>" +
        std::string(30000, 't') + "</a>";
    unsigned refused = 0, loaded = 0;
    const auto parse = [&](std::size_t bytes) {
        detail::ParseBudget budget;
        MemoryManager* const memory = &budget;
        auto* const parser = new (memory) detail::DocumentParser(memory);
        budget.Begin(bytes, [&] { parser->Refuse(u"the end"); });
        const MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                       "x");
        Wrapper4InputSource input(const_cast<MemBufInputSource*>(&source), false);
        try {
            parser->parse(&input);
        } catch (...) { // of whatever family
        }
        ++(budget.End() ? refused : loaded);
        parser->release();
    };
    for (std::size_t bytes = 0; loaded < 3 && bytes < (8u << 20);
         bytes += bytes < 20000 ? 61 : 1999)
        parse(bytes);
    EXPECT_GT(refused, 300u);
    EXPECT_EQ(loaded, 3u);
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
