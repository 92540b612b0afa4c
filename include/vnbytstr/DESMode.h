// How DES enciphers one block after another. Apart from DES.h, since the containers need no more.
#pragma once

/// A base of CDES, whose mode is this type.
struct SDESMode {
    /// Electronic code book (each block by itself) or cipher block chaining (FIPS 81). Every value
    /// but eCBC means electronic code book.
    enum EMode : int { eECB = 0, eCBC = 1 };
};
