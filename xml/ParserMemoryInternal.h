// Where the parser and its documents live.
#pragma once

#include <xercesc/framework/MemoryManager.hpp>

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace vnbytstr::detail {

/// The parser's memory manager. A document is made of large blocks that come and go together: they
/// are cut from regions of large pages. A freed block is used again, and a region goes back to the
/// system when nothing in it is in use (two are kept for the next document). Small blocks, and very
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

    /// Gives back every region that nothing uses.
    void Trim() noexcept;
    /// Bytes of regions held, and how many blocks in them are in use.
    std::size_t RegionBytes() const;
    std::size_t LiveBlocks() const;

private:
    struct Region;
    struct Header;

    Header* AllocateFromRegions(std::size_t pages);
    void Empty(Region& region) noexcept;
    void Check() const noexcept;

    mutable std::mutex m_mutex;
    std::vector<std::unique_ptr<Region>> m_regions; // the last one was added last
};

} // namespace vnbytstr::detail
