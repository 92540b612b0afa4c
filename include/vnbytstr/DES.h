// CDES: the Data Encryption Standard, for existing peers.
//
// Single DES has a key of 56 bits, which can be found by trial within a day. It serves peers that
// know nothing else; it protects nothing today.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

class CByteStream;

/// Enciphers and deciphers with single DES (FIPS 46-3) in electronic code book or cipher block
/// chaining mode (FIPS 81), on request with padding (PKCS #5) and in segments.
///
/// Threads: one at a time.
class VNBYTSTR_API CDES {
public:
    /// Every value but eCBC means electronic code book.
    enum EMode : int { eECB = 0, eCBC = 1 };

    /// Key, initialization vector and mode zero; no padding, not segmented.
    CDES() { Init(); }
    CDES(const BYTE* key, int length);
    CDES(const char* key);

    /// Takes the first 8 bytes of the key (zeros for those missing; a negative length is 8; parity
    /// bits do not matter). Ends a segmented run and clears the segmented flag.
    void SetKey(const BYTE* key, int length);
    /// The text's characters are the key's bytes.
    void SetKey(const char* key);
    /// Takes the first 8 bytes in the same way. Does not end a segmented run.
    void SetInitializationVector(const BYTE* vector, int length);
    void SetInitializationVector(const char* vector);
    /// The 8 bytes kept.
    const BYTE* GetKey() const { return m_key; }
    const BYTE* GetInitializationVector() const { return m_vector; }

    /// The mode of operation; see EMode.
    EMode GetMode() const { return m_mode; }
    void SetMode(EMode mode) { m_mode = mode; }
    /// Whether Encrypt appends 1 to 8 bytes of padding and Decrypt takes them off. What Decrypt
    /// takes off is what the last byte says, unchecked: damaged data gives a wrong length, and no
    /// error.
    bool GetPad() const { return m_pad; }
    void SetPad(bool pad) { m_pad = pad; }
    /// Whether the next chained call goes on where the one before ended. The first begins with the
    /// initialization vector; only SetKey ends the run.
    bool GetSegmented() const { return m_segmented; }
    void SetSegmented(bool segmented) { m_segmented = segmented; }

    /// Enciphers `length` bytes. With `output` null, only sets `outputLength` to the room needed:
    /// `length` rounded up to a multiple of 8, with padding to the next higher one. Else
    /// `outputLength` is the room before and the result's length after, which without padding is
    /// `length`, although the last 8 bytes are written whole: keep the rounded length for Decrypt.
    /// A partial last block is filled with zeros and does not enter the chain of a segmented run.
    /// `output` may be `input`; otherwise they must not overlap. CCryptoException with code 0 when
    /// the room, rounded down to a multiple of 8, is less than the result's length; nothing is
    /// written then and `outputLength` is left rounded down. A room that holds the length but not
    /// the whole last block is too small too.
    void Encrypt(const BYTE* input, int length, BYTE* output, int& outputLength);
    /// Deciphers. With `output` null, sets `outputLength` to `length`. A partial last block is read
    /// as a whole one, so `input` needs room up to a multiple of 8. Errors as with Encrypt.
    void Decrypt(const BYTE* input, int length, BYTE* output, int& outputLength);

    /// Replaces the content of the stream, wherever it lies. Lengths are taken modulo 65536, so
    /// these are for results below 65536 bytes: longer ones throw CCryptoException with code 0, or
    /// CCacheException(2) from a stream in a store, and leave the stream unchanged. Use Encrypt and
    /// Decrypt of CByteStream for those. Without padding the rest of a partial last block is cut
    /// off, and Decrypt refuses such a length with code 0: encipher whole blocks, or pad.
    void Encrypt(CByteStream& stream);
    void Decrypt(CByteStream& stream);

protected:
    /// The state of a new object, common to the constructors.
    void Init();
    /// Derives the round keys for one direction.
    void BuildInternalKey(bool encrypt);
    /// One block of two words, in place.
    static void ComputeBlock(DWORD* block, const DWORD* schedule);
    void EncryptBlock(DWORD* block) const { ComputeBlock(block, m_encryptSchedule); }
    void DecryptBlock(DWORD* block) const { ComputeBlock(block, m_decryptSchedule); }

private:
    BYTE m_key[8];
    BYTE m_vector[8];
    DWORD m_encryptSchedule[32];
    DWORD m_decryptSchedule[32];
    bool m_encryptBuilt;
    bool m_decryptBuilt;
    bool m_chainSaved;
    bool m_segmented;
    DWORD m_chain[2];
    EMode m_mode;
    bool m_pad;
};
