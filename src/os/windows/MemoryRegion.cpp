#include "src/os/MemoryRegion.h"

#include "vnbytstr/framework/Types.h"

namespace vnbytstr {

void* AllocateRegion(std::size_t size) noexcept {
    return ::VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void FreeRegion(void* region, std::size_t /*size*/) noexcept {
    ::VirtualFree(region, 0, MEM_RELEASE);
}

} // namespace vnbytstr
