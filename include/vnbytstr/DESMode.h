// How DES enciphers one block after the other; known to the containers, which need no more of CDES.
#pragma once

/// Holds the type that CDES calls EMode.
struct SDESMode {
    /// Electronic code book: each block alone. Cipher block chaining (FIPS 81).
    enum EMode : int { eECB = 0, eCBC = 1 };
};
