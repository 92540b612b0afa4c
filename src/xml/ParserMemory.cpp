// Invariants of ParserMemory:
//   1. Every block begins with a header that names its region or its reserve, null for one from
//      malloc.
//   2. A region's blocks fill it without gaps from its beginning to m_used.
//   3. A region's m_live counts its blocks that are in use; with none, m_used is 0 and no block is
//      listed as free.
//   4. At most kKeptRegions regions have none in use.
#include "src/xml/ParserMemory.h"

#include "src/os/MemoryRegion.h"

#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

namespace vnbytstr::detail {

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kMinSize = 8192; // smaller blocks come from malloc
constexpr std::size_t kMaxPages =
    256; // larger blocks come from malloc, too; documents take 129 at once
constexpr std::size_t kRegionSize = 8u << 20;
constexpr std::size_t kKeptRegions = 8;
constexpr std::uint32_t kOfReserve = 1; // in place of a number of pages

} // namespace

struct alignas(16) ParserMemory::Header {
    union {
        Region* region; // null: from malloc
        Reserve* reserve;
    };
    std::uint32_t pages; // of a region; kOfReserve: of a reserve

    void* Block() { return this + 1; }
    static Header* Of(void* block) { return static_cast<Header*>(block) - 1; }
    /// Of a free block: the next one of its size.
    Header*& Next() { return *static_cast<Header**>(Block()); }
};

/// Stands at the beginning of its memory.
struct alignas(16) ParserMemory::Reserve {
    std::size_t size, used; // in bytes
    std::size_t live;       // blocks in use, and one for the time until EndReserve

    void Release() noexcept {
        if (--live == 0)
            std::free(this);
    }
};

struct ParserMemory::Region {
    explicit Region(char* memory) : m_memory(memory) {}
    ~Region() { FreeRegion(m_memory, kRegionSize); }
    Region(const Region&) = delete;
    Region& operator=(const Region&) = delete;

    /// Null when there is no room.
    Header* Take(std::size_t pages) noexcept {
        Header* header = m_free[pages];
        if (header != nullptr) {
            m_free[pages] = header->Next();
        } else {
            if (kRegionSize - m_used < pages * kPage)
                return nullptr;
            header = reinterpret_cast<Header*>(m_memory + m_used);
            *header = {{this}, static_cast<std::uint32_t>(pages)};
            m_used += pages * kPage;
        }
        ++m_live;
        return header;
    }

    char* m_memory;
    std::size_t m_used = 0;
    std::size_t m_live = 0;
    std::array<Header*, kMaxPages + 1> m_free{}; // by pages
};

ParserMemory::ParserMemory() = default;

ParserMemory::~ParserMemory() = default;

ParserMemory& ParserMemory::Process() {
    alignas(ParserMemory) static std::byte place[sizeof(ParserMemory)];
    static ParserMemory* const memory = new (place) ParserMemory;
    return *memory;
}

void* ParserMemory::allocate(XMLSize_t size) {
    if (size > PTRDIFF_MAX - sizeof(Header) - kPage)
        throw xercesc::OutOfMemoryException();
    const std::size_t whole = size + sizeof(Header);
    const std::size_t pages = (whole + kPage - 1) / kPage;
    Header* header = AllocateFromReserve(whole);
    if (header == nullptr && whole >= kMinSize && pages <= kMaxPages)
        header = AllocateFromRegions(pages);
    if (header == nullptr) {
        header = static_cast<Header*>(std::malloc(whole));
        if (header == nullptr)
            throw xercesc::OutOfMemoryException();
        *header = {{nullptr}, 0};
    }
    return header->Block();
}

/// Null when the system gives no region.
ParserMemory::Header* ParserMemory::AllocateFromRegions(std::size_t pages) {
    const std::lock_guard lock(m_mutex);
    for (auto region = m_regions.rbegin(); region != m_regions.rend(); ++region) {
        if (Header* header = (*region)->Take(pages))
            return header;
    }
    auto* const memory = static_cast<char*>(AllocateRegion(kRegionSize));
    if (memory == nullptr)
        return nullptr;
    try {
        m_regions.reserve(m_regions.size() + 1);
        m_regions.push_back(std::make_unique<Region>(memory));
    } catch (const std::bad_alloc&) {
        FreeRegion(memory, kRegionSize);
        return nullptr;
    }
    Check();
    return m_regions.back()->Take(pages);
}

ParserMemory::Header* ParserMemory::AllocateFromReserve(std::size_t whole) noexcept {
    if (m_reserve.load(std::memory_order_relaxed) == nullptr) // as good as always
        return nullptr;
    const std::lock_guard lock(m_mutex);
    Reserve* const reserve = m_reserve;
    const std::size_t size = (whole + alignof(Header) - 1) / alignof(Header) * alignof(Header);
    if (reserve == nullptr || size > reserve->size - reserve->used)
        return nullptr;
    auto* const header =
        reinterpret_cast<Header*>(reinterpret_cast<char*>(reserve) + reserve->used);
    header->reserve = reserve;
    header->pages = kOfReserve;
    reserve->used += size;
    ++reserve->live;
    return header;
}

bool ParserMemory::BeginReserve(std::size_t size) noexcept {
    const std::lock_guard lock(m_mutex);
    void* const memory = std::malloc(size);
    if (memory != nullptr)
        m_reserve = new (memory) Reserve{size, sizeof(Reserve), 1};
    return memory != nullptr;
}

void ParserMemory::EndReserve() noexcept {
    const std::lock_guard lock(m_mutex);
    if (Reserve* const reserve = m_reserve.exchange(nullptr))
        reserve->Release();
}

void ParserMemory::deallocate(void* block) {
    if (block == nullptr)
        return;
    Header* const header = Header::Of(block);
    Region* const region = header->region;
    if (header->pages == kOfReserve) {
        const std::lock_guard lock(m_mutex);
        header->reserve->Release();
        return;
    }
    if (region == nullptr) {
        std::free(header);
        return;
    }
    const std::lock_guard lock(m_mutex);
    header->Next() = region->m_free[header->pages];
    region->m_free[header->pages] = header;
    if (--region->m_live == 0)
        Empty(*region);
}

void ParserMemory::Empty(Region& region) noexcept {
    region.m_used = 0;
    region.m_free.fill(nullptr);
    const auto isEmpty = [](const auto& each) { return each->m_live == 0; };
    if (static_cast<std::size_t>(std::count_if(m_regions.begin(), m_regions.end(), isEmpty)) >
        kKeptRegions)
        m_regions.erase(std::find_if(m_regions.begin(), m_regions.end(),
                                     [&](const auto& each) { return each.get() == &region; }));
    Check();
}

void ParserMemory::Trim() noexcept {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_regions, [](const auto& region) { return region->m_live == 0; });
}

xercesc::MemoryManager* ParserMemory::getExceptionMemoryManager() {
    return xercesc::XMLPlatformUtils::fgMemoryManager;
}

std::size_t ParserMemory::RegionBytes() const {
    const std::lock_guard lock(m_mutex);
    return m_regions.size() * kRegionSize;
}

std::size_t ParserMemory::LiveBlocks() const {
    const std::lock_guard lock(m_mutex);
    std::size_t live = 0;
    for (const auto& region : m_regions)
        live += region->m_live;
    return live;
}

void ParseBudget::Begin(std::size_t bytes, std::function<void()> refuse) {
    m_refuse = std::move(refuse);
    m_left = bytes;
    m_isExceeded = false;
    m_isCounting = true;
}

void ParseBudget::Add(std::size_t bytes) noexcept { m_left += std::min(bytes, SIZE_MAX - m_left); }

bool ParseBudget::End() noexcept {
    m_isCounting = false;
    return m_isExceeded;
}

struct alignas(16) ParseBudget::Block {
    Block* previous;
    Block* next;
    std::size_t size;
};

void* ParseBudget::allocate(XMLSize_t size) {
    if (m_isCounting && size > m_left) {
        m_isCounting = false;
        m_isExceeded = true;
        m_refuse();
    }
    if (size > PTRDIFF_MAX)
        throw xercesc::OutOfMemoryException();
    auto* const block = static_cast<Block*>(ParserMemory::Process().allocate(size + sizeof(Block)));
    *block = {nullptr, m_first, size};
    if (m_first != nullptr)
        m_first->previous = block;
    m_first = block;
    m_live += size;
    if (m_isCounting)
        m_left -= size;
    return block + 1;
}

void ParseBudget::deallocate(void* memory) {
    if (memory == nullptr)
        return;
    Block* const block = static_cast<Block*>(memory) - 1;
    (block->previous != nullptr ? block->previous->next : m_first) = block->next;
    if (block->next != nullptr)
        block->next->previous = block->previous;
    m_live -= block->size;
    ParserMemory::Process().deallocate(block);
}

void ParseBudget::FreeAll() noexcept {
    while (Block* const block = m_first) {
        m_first = block->next;
        ParserMemory::Process().deallocate(block);
    }
    m_live = 0;
}

xercesc::MemoryManager* ParseBudget::getExceptionMemoryManager() {
    return ParserMemory::Process().getExceptionMemoryManager();
}

void ParserMemory::Check() const noexcept {
#ifndef NDEBUG
    std::size_t empty = 0;
    for (const auto& region : m_regions) {
        assert(region->m_used <= kRegionSize);
        assert(region->m_live > 0 || region->m_used == 0);
        empty += region->m_live == 0;
    }
    assert(empty <= kKeptRegions + 1); // one has just been added and is about to be used
#endif
}

} // namespace vnbytstr::detail
