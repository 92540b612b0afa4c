#include "src/os/CpuKernel.h"

#include "src/os/System.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <string>

namespace vnbytstr {

namespace {

constexpr std::array kAll = {Kernel::Plain, Kernel::Avx2, Kernel::Avx512};

bool MachineHas(Kernel kernel) noexcept {
#if defined(__x86_64__)
    switch (kernel) {
    case Kernel::Plain:
        return true;
    case Kernel::Avx2:
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
    case Kernel::Avx512:
        return MachineHas(Kernel::Avx2) && __builtin_cpu_supports("avx512f") &&
               __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
               __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vbmi") &&
               __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("avx512ifma") &&
               __builtin_cpu_supports("gfni");
    }
    return false;
#else
    return kernel == Kernel::Plain;
#endif
}

std::span<const Kernel> Detect() noexcept {
    std::size_t count = 1;
    while (count < kAll.size() && MachineHas(kAll[count]))
        ++count;
    return std::span(kAll).first(count);
}

Kernel InitialKernel() noexcept {
    const std::string wanted = System::Current().GetEnvironment("VNBYTSTR_KERNEL");
    Kernel best = AvailableKernels().back();
    for (Kernel kernel : AvailableKernels()) {
        if (wanted == KernelName(kernel))
            best = kernel;
    }
    return best;
}

std::atomic<Kernel>& Active() noexcept {
    static std::atomic<Kernel> active{InitialKernel()};
    return active;
}

} // namespace

Kernel ActiveKernel() noexcept { return Active().load(std::memory_order_relaxed); }

std::span<const Kernel> AvailableKernels() noexcept {
    static const std::span<const Kernel> available = Detect();
    return available;
}

Kernel ForceKernel(Kernel kernel) noexcept {
    return Active().exchange(std::min(kernel, AvailableKernels().back()));
}

const char* KernelName(Kernel kernel) noexcept {
    switch (kernel) {
    case Kernel::Plain:
        return "plain";
    case Kernel::Avx2:
        return "avx2";
    case Kernel::Avx512:
        return "avx512";
    }
    return "";
}

} // namespace vnbytstr
