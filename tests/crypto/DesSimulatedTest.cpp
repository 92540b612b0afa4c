// The AVX-512 source, compiled over instructions made of simpler ones, so that its logic is tried
// on every machine.
#define OPENSSL_SUPPRESS_DEPRECATED
#define VNBYTSTR_SIMULATE_AVX512
#define DesRunAvx512 DesRunAvx512Simulated
#include "src/crypto/DesKernelAvx512.cpp"

#include "src/crypto/DesKernel.h"

#include <gtest/gtest.h>
#include <openssl/des.h>

#include <random>
#include <vector>

using namespace vnbytstr;
using namespace vnbytstr::detail;

TEST(DesSimulatedAvx512, AgreesWithOpenSsl) {
    std::mt19937 random{5};
    std::array<BYTE, 8> key;
    std::array<BYTE, 8> iv;
    for (std::size_t i = 0; i < 8; ++i) {
        key[i] = static_cast<BYTE>(random());
        iv[i] = static_cast<BYTE>(random());
    }
    std::vector<BYTE> in(2 * 4096);
    for (BYTE& byte : in)
        byte = static_cast<BYTE>(random());
    std::array<DWORD, 32> schedule;
    BuildDesSchedule(key, false, schedule);
    DesKeyMasks masks;
    MakeDesKeyMasks(schedule, masks);

    DES_key_schedule theirs;
    DES_set_key_unchecked(reinterpret_cast<DES_cblock*>(key.data()), &theirs);
    std::vector<BYTE> expected(in.size());
    std::array<BYTE, 8> theirIv = iv;
    DES_ncbc_encrypt(in.data(), expected.data(), static_cast<long>(in.size()), &theirs,
                     reinterpret_cast<DES_cblock*>(theirIv.data()), DES_DECRYPT);
    std::vector<BYTE> out(in.size());
    DesRunAvx512Simulated(in.data(), out.data(), 2, masks, iv.data());
    EXPECT_EQ(out, expected);
    EXPECT_EQ(iv, theirIv);
}
