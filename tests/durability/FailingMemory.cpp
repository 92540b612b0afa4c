#include "tests/durability/FailingMemory.h"

#include <unicode/uclean.h>

#include <cerrno>
#include <cstdlib>

// glibc's functions, under names that are not replaced.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
}

namespace {

// Of one thread.
bool g_isOn = false;
bool g_fromThenOn = false;
unsigned g_at = 0;
unsigned g_seen = 0;
bool g_hasFailed = false;

bool Fails() {
    if (!g_isOn)
        return false;
    ++g_seen;
    if (g_seen != g_at && !(g_fromThenOn && g_seen > g_at))
        return false;
    g_hasFailed = true;
    errno = ENOMEM;
    return true;
}

void* IcuAllocate(const void*, std::size_t size) { return __libc_malloc(size); }
void* IcuReallocate(const void*, void* block, std::size_t size) {
    return __libc_realloc(block, size);
}
void IcuFree(const void*, void* block) { __libc_free(block); }

} // namespace

extern "C" {
[[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept {
    return Fails() ? nullptr : __libc_malloc(size);
}
[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) noexcept {
    return Fails() ? nullptr : __libc_calloc(count, size);
}
[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) noexcept {
    return Fails() ? nullptr : __libc_realloc(block, size);
}
[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment,
                                                   std::size_t size) noexcept {
    return Fails() ? nullptr : __libc_memalign(alignment, size);
}
[[gnu::visibility("default")]] void free(void* block) noexcept { __libc_free(block); }
}

namespace vnbytstr::test {

void FailMemory(const MemoryFault& fault) {
    g_at = fault.at;
    g_fromThenOn = fault.fromThenOn;
    g_seen = 0;
    g_hasFailed = false;
    g_isOn = true;
}

bool StopFailing() {
    g_isOn = false;
    return g_hasFailed;
}

void SpareIcu() {
    UErrorCode error = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, IcuAllocate, IcuReallocate, IcuFree, &error);
}

} // namespace vnbytstr::test
