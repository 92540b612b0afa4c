// Which variant of the hot kernels runs. Every kernel exists in a plain version, which is always
// there and is the oracle of the others; the faster ones are chosen at run time by what the
// processor has. VNBYTSTR_KERNEL=plain|avx2|avx512 in the environment sets an upper bound, once per
// process.
#pragma once

#include "vnbytstr/framework/Export.h"

#include <span>

namespace vnbytstr {

/// Ordered: a later one needs all that an earlier one needs.
enum class Kernel : unsigned char {
    Plain,  ///< portable C++
    Avx2,   ///< AVX2 and BMI2
    Avx512, ///< AVX-512 F, BW, VL, DQ, VBMI, VBMI2, IFMA and GFNI
};

/// The kernel in use: the best of the machine within the bounds set.
VNBYTSTR_API Kernel ActiveKernel() noexcept;

/// The kernels this machine has, Plain first.
VNBYTSTR_API std::span<const Kernel> AvailableKernels() noexcept;

/// Makes `kernel` the one in use (the best available one when the machine lacks it); returns the
/// one before. For tests and benchmarks.
VNBYTSTR_API Kernel ForceKernel(Kernel kernel) noexcept;

/// "plain", "avx2" or "avx512".
VNBYTSTR_API const char* KernelName(Kernel kernel) noexcept;

} // namespace vnbytstr
