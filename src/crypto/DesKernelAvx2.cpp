#include "src/crypto/DesKernelVector.h"

#if defined(__x86_64__)

#include <array>
#include <cstring>

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

#include "src/crypto/DesBitslice.h"

namespace vnbytstr::detail {

void DesRunAvx2(const std::uint8_t* in, std::uint8_t* out, std::size_t groups,
                const DesKeyMasks& masks, std::uint8_t* previous) {
    using Vector = std::uint64_t __attribute__((vector_size(32)));
    DesRun<Vector>(in, out, groups, masks, previous);
}

} // namespace vnbytstr::detail

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

#endif
