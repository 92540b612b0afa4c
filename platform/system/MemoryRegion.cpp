#include "platform/system/MemoryRegion.h"

#include <sys/mman.h>

#include <cstdint>

namespace vnbytstr {

namespace {

constexpr std::size_t kAlignment = std::size_t{2} << 20;

} // namespace

void* AllocateRegion(std::size_t size) noexcept {
    const std::size_t reserved = size + kAlignment;
    void* const whole =
        ::mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (whole == MAP_FAILED)
        return nullptr;
    auto* const begin = static_cast<char*>(whole);
    const std::size_t head =
        (kAlignment - reinterpret_cast<std::uintptr_t>(begin) % kAlignment) % kAlignment;
    if (head > 0)
        ::munmap(begin, head);
    ::munmap(begin + head + size, kAlignment - head);
    ::madvise(begin + head, size, MADV_HUGEPAGE);
    return begin + head;
}

void FreeRegion(void* region, std::size_t size) noexcept { ::munmap(region, size); }

} // namespace vnbytstr
