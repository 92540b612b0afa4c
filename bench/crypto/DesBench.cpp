// DES against OpenSSL for every kernel of the machine, alone and through CDES; and enciphering a
// large store against copying it.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "bench/Rounds.h"

#include "src/crypto/DesKernel.h"
#include "src/os/CpuKernel.h"
#include "vnbytstr/ByteStore.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/DES.h"

#include <openssl/des.h>

#include <array>
#include <cstdlib>
#include <memory>

using namespace vnbytstr;
using namespace vnbytstr::detail;
using vnbytstr::bench::Contender;
using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;
using vnbytstr::bench::Repeat;

namespace {

constexpr std::size_t kSize = 32768;

enum class Mode { EcbEncrypt, EcbDecrypt, CbcEncrypt, CbcDecrypt };
constexpr const char* kModeNames[] = {"ECB encrypt", "ECB decrypt", "CBC encrypt", "CBC decrypt"};

bool Encrypts(Mode mode) { return mode == Mode::EcbEncrypt || mode == Mode::CbcEncrypt; }
bool Chains(Mode mode) { return mode == Mode::CbcEncrypt || mode == Mode::CbcDecrypt; }

double GoalOf(Kernel kernel, Mode mode) {
    if (mode == Mode::CbcEncrypt) // a chain, in which a kernel has nothing to do
        return 1.3;
    return kernel == Kernel::Avx512 ? 45 : kernel == Kernel::Avx2 ? 15 : 2;
}

struct Buffers {
    std::array<BYTE, 8> key = {0x13, 0x34, 0x57, 0x79, 0x9B, 0xBC, 0xDF, 0xF1};
    std::array<DWORD, 32> encrypting{};
    std::array<DWORD, 32> decrypting{};
    DES_key_schedule peer{};
    DesBlock chain{};
    DES_cblock peerChain{};
    CDES cipher{key.data(), 8};
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
    void Class(Mode mode) {
        cipher.SetMode(Chains(mode) ? CDES::eCBC : CDES::eECB);
        int length = kSize;
        if (Encrypts(mode))
            cipher.Encrypt(in.data(), kSize, out.data(), length);
        else
            cipher.Decrypt(in.data(), kSize, out.data(), length);
    }
    void Peer(Mode mode) {
        const int direction = Encrypts(mode) ? DES_ENCRYPT : DES_DECRYPT;
        if (Chains(mode)) {
            DES_ncbc_encrypt(in.data(), out.data(), kSize, &peer, &peerChain, direction);
            return;
        }
        for (std::size_t at = 0; at < kSize; at += 8) {
            DES_ecb_encrypt(reinterpret_cast<DES_cblock*>(in.data() + at),
                            reinterpret_cast<DES_cblock*>(out.data() + at), &peer, direction);
        }
    }
};

void AddBuffers(Contests& contests, Kernel kernel, Mode mode) {
    static const auto buffers = std::make_shared<Buffers>();
    static constexpr std::size_t kTurns = 4;
    const Contender peer{"OpenSSL", Repeat(kTurns, [=] { buffers->Peer(mode); })};
    const auto add = [&](const char* how, auto work) {
        const Contender ours{"ours", [=] {
                                 const Kernel before = ForceKernel(kernel);
                                 Repeat(kTurns, work)();
                                 ForceKernel(before);
                             }};
        contests.Add(
            {std::string(how) + kModeNames[static_cast<int>(mode)] + ", " + KernelName(kernel),
             static_cast<double>(kSize * kTurns),
             Contest::GigabytesPerSecond,
             {ours, peer},
             GoalOf(kernel, mode),
             25});
    };
    add("", [=] { buffers->Ours(mode); });
    add("CDES ", [=] { buffers->Class(mode); });
}

void AddStore(Contests& contests) {
    static constexpr DWORD kTotal = DWORD{1} << 30;
    static CByteStore source, destination;
    static const CByteStream key(std::array<BYTE, 8>{1, 2, 3, 4, 5, 6, 7, 8}.data(), 8);
    const auto prepare = [] {
        if (source.GetLength() == 0) {
            const std::vector<BYTE> piece(65536, 0x5A);
            for (DWORD done = 0; done < kTotal; done += 65536)
                source.Concat(piece.data(), 65536);
        }
        destination.Empty();
    };
    contests.Add({"ECB encrypt, store of 1 GiB",
                  kTotal,
                  Contest::GigabytesPerSecond,
                  {{"ours",
                    [] {
                        if (source.Encrypt(key, key, CDES::eECB, false, destination) == 0)
                            std::abort();
                    },
                    prepare},
                   {"copy", [] { destination = source; }, prepare}},
                  0.5,
                  5});
}

} // namespace

int main(int argc, char** argv) {
    Contests contests;
    for (const Kernel kernel : AvailableKernels()) {
        for (const Mode mode :
             {Mode::EcbEncrypt, Mode::EcbDecrypt, Mode::CbcEncrypt, Mode::CbcDecrypt})
            AddBuffers(contests, kernel, mode);
    }
    AddStore(contests);
    return contests.Run(argc, argv);
}
