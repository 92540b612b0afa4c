#include "src/os/MemoryRegion.h"

#include <sys/mman.h>

namespace vnbytstr {

void* AllocateRegion(std::size_t size) noexcept {
    void* const region =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return region != MAP_FAILED ? region : nullptr;
}

void FreeRegion(void* region, std::size_t size) noexcept { ::munmap(region, size); }

} // namespace vnbytstr
