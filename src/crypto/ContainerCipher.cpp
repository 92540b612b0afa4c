// The Encrypt and Decrypt members of CByteStore and CByteStream.

#include "src/bytestore/ByteStreamInternal.h"
#include "vnbytstr/CryptoException.h"
#include "vnbytstr/DES.h"

#include <algorithm>
#include <array>
#include <optional>

namespace {

constexpr DWORD kPiece = CBytePage::m_dwPageSize;

/// The first 8 bytes of a stream, wherever it lies.
struct EightBytes {
    explicit EightBytes(const CByteStream& stream)
        : count(static_cast<int>(std::min<DWORD>(stream.GetLength(), 8))) {
        if (count > 0)
            stream.CopyTo(0, bytes.data(), static_cast<DWORD>(count), 8);
    }
    std::array<BYTE, 8> bytes{};
    int count;
};

CDES MakeCipher(const CByteStream& key, const CByteStream& vector, CDES::EMode mode, bool pad) {
    const EightBytes keyBytes(key), vectorBytes(vector);
    CDES cipher(keyBytes.bytes.data(), keyBytes.count);
    cipher.SetInitializationVector(vectorBytes.bytes.data(), vectorBytes.count);
    cipher.SetMode(mode);
    cipher.SetPad(pad);
    return cipher;
}

/// One piece of at most 32768 bytes and its result.
class Piece {
public:
    /// Length of the result in Result(); nothing when the result does not fit or makes no sense.
    std::optional<DWORD> Run(CDES& cipher, bool encrypt, const BYTE* bytes, DWORD count) {
        int length = static_cast<int>(kPiece);
        try {
            if (encrypt)
                cipher.Encrypt(bytes, static_cast<int>(count), m_result.data(), length);
            else
                cipher.Decrypt(bytes, static_cast<int>(count), m_result.data(), length);
        } catch (CCryptoException* error) {
            error->Delete();
            return std::nullopt;
        }
        if (length < 0)
            return std::nullopt; // more padding than bytes
        return static_cast<DWORD>(length);
    }
    const BYTE* Result() const { return m_result.data(); }

private:
    std::array<BYTE, kPiece> m_result;
};

} // namespace

// --- store ---------------------------------------------------------------------------------------

int CByteStore::Encipher(bool encrypt, CDES& cipher, CByteStore& destination) {
    if (&destination == this) {
        CByteStore result;
        result.m_nMaxPages = m_nMaxPages;
        if (!Encipher(encrypt, cipher, result))
            return 0;
        TakeContent(result);
        return 1;
    }
    EmptyGuard guard(destination);
    Piece piece;
    DWORD index = m_dwStart;
    do {
        const DWORD count = std::min(m_dwLength - index, kPiece);
        // A partial last block is read as a whole one, so a copy with room behind it.
        std::array<BYTE, kPiece + 8> bytes;
        if (count > 0)
            CopyTo(index, bytes.data(), count, count);
        std::fill_n(bytes.begin() + count, 8, BYTE{0});
        const std::optional<DWORD> length = piece.Run(cipher, encrypt, bytes.data(), count);
        if (!length)
            return 0;
        destination.Concat(piece.Result(), *length);
        index += count;
    } while (index < m_dwLength);
    guard.Keep();
    return 1;
}

int CByteStore::Encrypt(const CByteStream& key, const CByteStream& vector, CDES::EMode mode,
                        bool pad, CByteStore& destination) {
    CDES cipher = MakeCipher(key, vector, mode, pad);
    return Encipher(true, cipher, destination);
}

int CByteStore::Decrypt(const CByteStream& key, const CByteStream& vector, CDES::EMode mode,
                        bool pad, CByteStore& destination) {
    CDES cipher = MakeCipher(key, vector, mode, pad);
    return Encipher(false, cipher, destination);
}

// --- stream --------------------------------------------------------------------------------------

int CByteStream::Encipher(bool encrypt, CDES& cipher) {
    CheckWritable();
    Piece piece;
    CByteStream result;
    result.LieAs(*this);
    DWORD index = GetStart();
    do {
        const DWORD count = std::min(GetLength() - index, kPiece);
        std::array<BYTE, kPiece + 8> bytes;
        if (count > 0)
            CopyTo(index, bytes.data(), count, count);
        std::fill_n(bytes.begin() + count, 8, BYTE{0});
        const std::optional<DWORD> length = piece.Run(cipher, encrypt, bytes.data(), count);
        if (!length)
            return 0;
        result.Concat(piece.Result(), *length);
        index += count;
    } while (index < GetLength());
    TakeContent(result);
    return 1;
}

int CByteStream::Encrypt(const CByteStream& key, const CByteStream& vector, CDES::EMode mode,
                         bool pad) {
    CDES cipher = MakeCipher(key, vector, mode, pad);
    return Encipher(true, cipher);
}

int CByteStream::Decrypt(const CByteStream& key, const CByteStream& vector, CDES::EMode mode,
                         bool pad) {
    CDES cipher = MakeCipher(key, vector, mode, pad);
    return Encipher(false, cipher);
}
