// Tests that run once per kernel of the machine.
#pragma once

#include "src/os/CpuKernel.h"

#include <gtest/gtest.h>

#include <string>

namespace vnbytstr::test {

class ScopedKernel {
public:
    explicit ScopedKernel(Kernel kernel) : m_before(ForceKernel(kernel)) {}
    ~ScopedKernel() { ForceKernel(m_before); }
    ScopedKernel(const ScopedKernel&) = delete;
    ScopedKernel& operator=(const ScopedKernel&) = delete;

private:
    Kernel m_before;
};

class KernelTest : public ::testing::TestWithParam<Kernel> {
private:
    ScopedKernel m_kernel{GetParam()};
};

/// Instantiates the tests of a class that derives from KernelTest.
#define VNBYTSTR_FOR_ALL_KERNELS(suite)                                                            \
    INSTANTIATE_TEST_SUITE_P(                                                                      \
        AllKernels, suite,                                                                         \
        ::testing::ValuesIn(vnbytstr::AvailableKernels().begin(),                                  \
                            vnbytstr::AvailableKernels().end()),                                   \
        [](const auto& info) { return std::string(vnbytstr::KernelName(info.param)); })

} // namespace vnbytstr::test
