// OpenSSL's single DES, the oracle of the tests.
#pragma once

#ifndef OPENSSL_SUPPRESS_DEPRECATED
#define OPENSSL_SUPPRESS_DEPRECATED // single DES is what is to be compared
#endif

#include "vnbytstr/framework/Types.h"

#include <openssl/des.h>

#include <algorithm>
#include <vector>

namespace vnbytstr::test {

/// Whole blocks, the last one filled with zeros; chained when `iv` is given, which then moves on.
/// A short key is filled with zeros.
template <class Key>
std::vector<BYTE> DesOracle(std::vector<BYTE> in, const Key& key, bool encrypt, BYTE* iv) {
    DES_cblock block{};
    std::copy_n(key.begin(), std::min<std::size_t>(key.size(), 8), block);
    DES_key_schedule schedule;
    DES_set_key_unchecked(&block, &schedule);
    in.resize((in.size() + 7) / 8 * 8);
    std::vector<BYTE> out(in.size());
    const int direction = encrypt ? DES_ENCRYPT : DES_DECRYPT;
    const auto at = [](BYTE* bytes) { return reinterpret_cast<DES_cblock*>(bytes); };
    if (iv)
        DES_ncbc_encrypt(in.data(), out.data(), static_cast<long>(in.size()), &schedule, at(iv),
                         direction);
    for (std::size_t i = 0; i < in.size() && !iv; i += 8)
        DES_ecb_encrypt(at(in.data() + i), at(out.data() + i), &schedule, direction);
    return out;
}

} // namespace vnbytstr::test
