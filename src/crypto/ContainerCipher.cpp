// The Encrypt and Decrypt members of CByteStore and CByteStream.

#include "src/bytestore/Containers.h"
#include "vnbytstr/ByteStream.h"
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
    /// Length of the result in Result(); empty when the result does not fit or is not possible.
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

/// Appends the cipher's result for all that `source` holds to `result`; false when it fails.
template <class Source, class Result>
bool RunPieces(Source& source, bool encrypt, CDES& cipher, Result& result) {
    DWORD index, end;
    source.GetRange(index, end);
    Piece piece;
    do {
        const DWORD count = std::min(end - index, kPiece);
        // A partial last block is read as a whole one: a copy with zeros after the bytes.
        std::array<BYTE, kPiece + 8> bytes;
        if (count > 0)
            source.CopyTo(index, bytes.data(), count, count);
        std::fill_n(bytes.begin() + count, 8, BYTE{0});
        const std::optional<DWORD> length = piece.Run(cipher, encrypt, bytes.data(), count);
        if (!length)
            return false;
        result.Concat(piece.Result(), *length);
        index += count;
    } while (index < end);
    return true;
}

} // namespace

// --- store ---------------------------------------------------------------------------------------

int CByteStore::Encipher(bool encrypt, CDES& cipher, CByteStore& destination) {
    if (&destination == this) {
        CByteStore result;
        result.TakeLimits(*this);
        if (!RunPieces(*this, encrypt, cipher, result))
            return 0;
        TakeContent(result);
        return 1;
    }
    vnbytstr::detail::EmptyGuard guard(destination);
    if (!RunPieces(*this, encrypt, cipher, destination))
        return 0;
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

int CByteStream::Encipher(bool encrypt, const CByteStream& key, const CByteStream& vector,
                          CDES::EMode mode, bool pad) {
    if (m_pStore) {
        const auto inPlace = encrypt ? &CByteStore::Encrypt : &CByteStore::Decrypt;
        const BOOL complete = GetComplete();
        const int done = (m_pStore->*inPlace)(key, vector, mode, pad, *m_pStore);
        m_pStore->SetComplete(complete);
        return done;
    }
    CDES cipher = MakeCipher(key, vector, mode, pad);
    CheckWritable();
    CByteStream result;
    if (!RunPieces(*this, encrypt, cipher, result))
        return 0;
    TakeContent(result);
    return 1;
}

int CByteStream::Encrypt(const CByteStream& key, const CByteStream& vector, CDES::EMode mode,
                         bool pad) {
    return Encipher(true, key, vector, mode, pad);
}

int CByteStream::Decrypt(const CByteStream& key, const CByteStream& vector, CDES::EMode mode,
                         bool pad) {
    return Encipher(false, key, vector, mode, pad);
}
