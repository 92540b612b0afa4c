// Enciphers files with single DES, for existing peers only: it protects nothing today.
#pragma once

#include "vnbytstr/DES.h"

#include <string>

namespace vnquery {

struct DesRequest {
    bool encrypt;
    std::string input;
    std::string output;
    std::string key;    ///< hex digits of 8 bytes
    std::string vector; ///< the same, for chained mode
    CDES::EMode mode;
    bool pad;
};

/// Enciphers or deciphers a file in pages of 32768 bytes, see CByteStore::Encrypt. Throws
/// Failure; an older file with the output's name then stays as it was.
void CipherFile(const DesRequest& request);

} // namespace vnquery
