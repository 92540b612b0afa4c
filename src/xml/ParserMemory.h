// Where the parser and its documents live.
#pragma once

#include <xercesc/framework/MemoryManager.hpp>

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace vnbytstr::detail {

/// The parser's memory manager. A document is made of large blocks that come and go together: they
/// are cut from regions. A freed block is used again. Of the regions in which nothing is in use, up
/// to 64 MiB are kept for the next document, for as long as any wrapper lives: giving pages back
/// and getting them again takes far longer than the parser's own freeing. Small blocks, and very
/// large ones, come from malloc.
///
/// May be used from every thread. Throws xercesc::OutOfMemoryException.
class ParserMemory final : public xercesc::MemoryManager {
public:
    ParserMemory();
    ~ParserMemory() override;

    /// The one that the parser platform gets. It is never destroyed: an application may go on using
    /// the platform after the last of our documents.
    static ParserMemory& Process();

    void* allocate(XMLSize_t size) override;
    void deallocate(void* block) override;
    xercesc::MemoryManager* getExceptionMemoryManager() override;

    /// From now on blocks come first from a reserve of `size` bytes that is allocated here. False
    /// when memory runs out.
    bool BeginReserve(std::size_t size) noexcept;
    /// Ends that. The reserve is freed with the last block from it.
    void EndReserve() noexcept;
    /// Gives back every region that nothing uses.
    void Trim() noexcept;
    /// Bytes of regions held, for tests.
    std::size_t RegionBytes() const;
    /// Blocks in use in them, for tests.
    std::size_t LiveBlocks() const;

private:
    struct Region;
    struct Header;
    struct Reserve;

    Header* AllocateFromRegions(std::size_t pages);
    Header* AllocateFromReserve(std::size_t whole) noexcept;
    void Empty(Region& region) noexcept;
    void Check() const noexcept;

    mutable std::mutex m_mutex;
    std::vector<std::unique_ptr<Region>> m_regions; // the last one was added last
    std::atomic<Reserve*> m_reserve{nullptr};
};

/// What a parse may take: this, and so much for each byte of the document (an element takes some
/// 60).
inline constexpr std::size_t kBudgetBase = std::size_t{256} << 20;
inline constexpr std::size_t kBudgetPerByte = 512;

/// The memory of one wrapper's parser: the process's, with a budget for each parse. Nothing leaks.
///
/// Entities can make a small document ask for any amount of work, and the parser's own limit does
/// not see all of it (it passes over those in the defaults of attributes); but whatever it does
/// takes memory, a block of 150 KB for every resolved entity alone. What is given back does not
/// count.
///
/// The parser leaks some blocks when a broken document type makes it give up; a document can make
/// that megabytes. All blocks are listed, and those left when the parser is destroyed are freed.
class ParseBudget final : public xercesc::MemoryManager {
public:
    ParseBudget() = default;
    ~ParseBudget() override { FreeAll(); }

    /// Begins a parse: `bytes` may be taken, then `refuse` is called once, which throws. What comes
    /// after that, on the way out, is not counted.
    void Begin(std::size_t bytes, std::function<void()> refuse);
    void Add(std::size_t bytes) noexcept;
    /// Returns whether the budget was exceeded.
    bool End() noexcept;

    void* allocate(XMLSize_t size) override;
    void deallocate(void* block) override;
    xercesc::MemoryManager* getExceptionMemoryManager() override;

    /// Bytes in use.
    std::size_t LiveBytes() const noexcept { return m_live; }
    /// Frees what is left. No object that uses it may still exist.
    void FreeAll() noexcept;

private:
    struct Block;

    bool m_isCounting = false;
    bool m_isExceeded = false;
    std::size_t m_left = 0;
    std::size_t m_live = 0;
    Block* m_first = nullptr; // of all in use
    std::function<void()> m_refuse;
};

} // namespace vnbytstr::detail
