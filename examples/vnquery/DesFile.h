// Files enciphered with single DES, for existing peers only: it protects nothing today.
#pragma once

#include <vnbytstr/vnbytstr.h>

#include <string>

namespace vnquery {

struct DesRequest {
    bool encrypt;
    std::string input;
    std::string output;
    std::string key;    ///< hex digits of 8 bytes
    std::string vector; ///< the same; for chained mode
    CDES::EMode mode;
    bool pad;
};

/// Enciphers or deciphers a file, in pages of 32768 bytes as CByteStore::Encrypt describes. Throws
/// Failure; an older file under the output's name is then as it was.
void RunDes(const DesRequest& request);

} // namespace vnquery
