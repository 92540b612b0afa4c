// DES on 32 KiB buffers against OpenSSL, for every kernel of the machine.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "crypto/DesKernel.h"
#include "platform/system/CpuKernel.h"

#include <benchmark/benchmark.h>
#include <openssl/des.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

using namespace vnbytstr;
using namespace vnbytstr::detail;

namespace {

constexpr std::size_t kSize = 32768;

enum class Mode { EcbEncrypt, EcbDecrypt, CbcEncrypt, CbcDecrypt };
constexpr const char* kModeNames[] = {"ECB encrypt", "ECB decrypt", "CBC encrypt", "CBC decrypt"};

struct Case {
    Kernel kernel;
    Mode mode;
    std::vector<double> ours, peer; // MB/s of each run
};

struct Buffers {
    std::array<BYTE, 8> key = {0x13, 0x34, 0x57, 0x79, 0x9B, 0xBC, 0xDF, 0xF1};
    std::array<DWORD, 32> encrypting{};
    std::array<DWORD, 32> decrypting{};
    DES_key_schedule peer{};
    DesBlock chain{};
    DES_cblock peerChain{};
    std::vector<BYTE> in = std::vector<BYTE>(kSize, 0x5A);
    std::vector<BYTE> out = std::vector<BYTE>(kSize);

    Buffers() {
        BuildDesSchedule(key, true, encrypting);
        BuildDesSchedule(key, false, decrypting);
        DES_set_key_unchecked(reinterpret_cast<DES_cblock*>(key.data()), &peer);
    }
    void Ours(Mode mode) {
        constexpr std::size_t kBlocks = kSize / 8;
        switch (mode) {
        case Mode::EcbEncrypt:
            return DesEcb(in.data(), out.data(), kBlocks, encrypting);
        case Mode::EcbDecrypt:
            return DesEcb(in.data(), out.data(), kBlocks, decrypting);
        case Mode::CbcEncrypt:
            return DesCbcEncrypt(in.data(), out.data(), kBlocks, encrypting, chain);
        case Mode::CbcDecrypt:
            return DesCbcDecrypt(in.data(), out.data(), kBlocks, decrypting, chain);
        }
    }
    void Peer(Mode mode) {
        const bool encrypt = mode == Mode::EcbEncrypt || mode == Mode::CbcEncrypt;
        const int direction = encrypt ? DES_ENCRYPT : DES_DECRYPT;
        if (mode == Mode::CbcEncrypt || mode == Mode::CbcDecrypt) {
            DES_ncbc_encrypt(in.data(), out.data(), kSize, &peer, &peerChain, direction);
            return;
        }
        for (std::size_t at = 0; at < kSize; at += 8) {
            DES_ecb_encrypt(reinterpret_cast<DES_cblock*>(in.data() + at),
                            reinterpret_cast<DES_cblock*>(out.data() + at), &peer, direction);
        }
    }
};

template <class Work>
double Rate(int turns, const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < turns; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - start;
    return static_cast<double>(kSize) * turns / taken.count();
}

void Run(benchmark::State& state, Case& item) {
    Buffers buffers;
    const Kernel before = ForceKernel(item.kernel);
    for (auto _ : state) {
        item.ours.push_back(Rate(10, [&] { buffers.Ours(item.mode); }));
        item.peer.push_back(Rate(4, [&] { buffers.Peer(item.mode); }));
    }
    ForceKernel(before);
}

double Median(std::vector<double>& values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::vector<Case> cases;
    for (const Kernel kernel : AvailableKernels()) {
        for (const Mode mode :
             {Mode::EcbEncrypt, Mode::EcbDecrypt, Mode::CbcEncrypt, Mode::CbcDecrypt})
            cases.push_back({kernel, mode, {}, {}});
    }
    const auto name = [](const Case& item) {
        return std::string(kModeNames[static_cast<int>(item.mode)]) + ", " +
               KernelName(item.kernel);
    };
    for (Case& item : cases)
        benchmark::RegisterBenchmark(name(item).c_str(), [&item](benchmark::State& state) {
            Run(state, item);
        })->Iterations(25);
    benchmark::RunSpecifiedBenchmarks();
    std::printf("\n%-24s %10s %10s %8s\n", "MB/s, medians", "ours", "OpenSSL", "ratio");
    for (Case& item : cases) {
        const double ours = Median(item.ours);
        const double peer = Median(item.peer);
        std::printf("%-24s %10.1f %10.1f %8.2f\n", name(item).c_str(), ours, peer, ours / peer);
    }
}
