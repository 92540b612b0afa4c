#include "vnbytstr/DES.h"

#include "src/crypto/DesKernel.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/CryptoException.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <utility>
#include <vector>

namespace {

using vnbytstr::detail::DesBlock;
using vnbytstr::detail::WithMemoryException;

constexpr int kBlock = 8;
// What the message of a too small output buffer names.
constexpr int kEncryptLine = 767;
constexpr int kDecryptLine = 868;

void TakeEight(BYTE* to, const BYTE* from, int length) {
    std::memset(to, 0, kBlock);
    const std::size_t count = std::min<std::size_t>(static_cast<unsigned>(length), kBlock);
    if (count > 0)
        std::memcpy(to, from, count);
}

int RoundDown(int length) { return length - length % kBlock; }

void CheckRoom(int& room, ULONGLONG needed, int line) {
    room = room < 0 ? 0 : RoundDown(room);
    if (static_cast<ULONGLONG>(room) < needed)
        throw new CCryptoException(0, line, "des.cpp");
}

} // namespace

CDES::CDES(const BYTE* key, int length) {
    Init();
    SetKey(key, length);
}

CDES::CDES(const char* key) {
    Init();
    SetKey(key);
}

void CDES::Init() {
    std::memset(m_key, 0, sizeof m_key);
    std::memset(m_vector, 0, sizeof m_vector);
    std::memset(m_encryptSchedule, 0, sizeof m_encryptSchedule);
    std::memset(m_decryptSchedule, 0, sizeof m_decryptSchedule);
    m_encryptBuilt = m_decryptBuilt = m_chainSaved = m_segmented = m_pad = false;
    m_chain[0] = m_chain[1] = 0;
    m_mode = eECB;
}

void CDES::SetKey(const BYTE* key, int length) {
    TakeEight(m_key, key, length);
    m_encryptBuilt = m_decryptBuilt = m_chainSaved = m_segmented = false;
}

void CDES::SetKey(const char* key) {
    SetKey(reinterpret_cast<const BYTE*>(key),
           static_cast<int>(std::min<std::size_t>(std::strlen(key), kBlock)));
}

void CDES::SetInitializationVector(const BYTE* vector, int length) {
    TakeEight(m_vector, vector, length);
}

void CDES::SetInitializationVector(const char* vector) {
    SetInitializationVector(reinterpret_cast<const BYTE*>(vector),
                            static_cast<int>(std::min<std::size_t>(std::strlen(vector), kBlock)));
}

void CDES::BuildInternalKey(bool encrypt) {
    DWORD(&schedule)[32] = encrypt ? m_encryptSchedule : m_decryptSchedule;
    vnbytstr::detail::BuildDesSchedule(m_key, encrypt, schedule);
    (encrypt ? m_encryptBuilt : m_decryptBuilt) = true;
}

void CDES::ComputeBlock(DWORD* block, const DWORD* schedule) {
    vnbytstr::detail::ComputeDesBlock(block, vnbytstr::detail::ConstDesSchedule(schedule, 32));
}

// --- buffers -------------------------------------------------------------------------------------

void CDES::Encrypt(const BYTE* input, int length, BYTE* output, int& outputLength) {
    length = std::max(length, 0);
    if (!output) {
        const int rounded = length > INT_MAX - kBlock ? INT_MAX - INT_MAX % kBlock
                                                      : RoundDown(length + (m_pad ? 8 : 7));
        outputLength = rounded;
        return;
    }
    const int padding = m_pad ? kBlock - length % kBlock : 0;
    const ULONGLONG total = static_cast<ULONGLONG>(length) + static_cast<unsigned>(padding);
    // The last block is written whole, so there must be room for it.
    CheckRoom(outputLength, total, kEncryptLine);
    outputLength = static_cast<int>(total);
    if (!m_encryptBuilt)
        BuildInternalKey(true);

    const bool chained = m_mode == eCBC;
    DesBlock chain = vnbytstr::detail::LoadDesBlock(m_vector);
    if (m_chainSaved)
        chain = {m_chain[0], m_chain[1]};
    const auto run = [&](const BYTE* from, BYTE* to, std::size_t blocks) {
        if (chained)
            vnbytstr::detail::DesCbcEncrypt(from, to, blocks, m_encryptSchedule, chain);
        else
            vnbytstr::detail::DesEcb(from, to, blocks, m_encryptSchedule);
    };
    // The bytes after the last whole block, read before the output may cover them.
    const int whole = RoundDown(length);
    std::array<BYTE, kBlock> last{};
    std::copy(input + whole, input + length, last.begin());
    run(input, output, static_cast<std::size_t>(whole / kBlock));
    if (m_pad) {
        std::fill(last.begin() + (length - whole), last.end(), static_cast<BYTE>(padding));
        run(last.data(), output + whole, 1);
    }
    if (m_segmented && chained) {
        m_chain[0] = chain[0];
        m_chain[1] = chain[1];
        m_chainSaved = true;
    }
    if (!m_pad && whole < length) // does not enter the chain
        run(last.data(), output + whole, 1);
}

void CDES::Decrypt(const BYTE* input, int length, BYTE* output, int& outputLength) {
    length = std::max(length, 0);
    if (!output) {
        outputLength = length;
        return;
    }
    CheckRoom(outputLength, static_cast<ULONGLONG>(length), kDecryptLine);
    outputLength = length;
    if (!m_decryptBuilt)
        BuildInternalKey(false);
    const auto blocks = (static_cast<std::size_t>(length) + 7) / kBlock;
    if (m_mode == eCBC) {
        DesBlock chain = vnbytstr::detail::LoadDesBlock(m_vector);
        if (m_chainSaved)
            chain = {m_chain[0], m_chain[1]};
        vnbytstr::detail::DesCbcDecrypt(input, output, blocks, m_decryptSchedule, chain);
        if (m_segmented) {
            m_chain[0] = chain[0];
            m_chain[1] = chain[1];
            m_chainSaved = true;
        }
    } else {
        vnbytstr::detail::DesEcb(input, output, blocks, m_decryptSchedule);
    }
    if (m_pad && length > 0)
        outputLength -= output[length - 1];
}

// --- streams -------------------------------------------------------------------------------------

namespace {

/// Runs one direction over a stream, with lengths modulo 65536.
template <class Direction>
void OverStream(CByteStream& stream, Direction direction) {
    constexpr DWORD kLengths = 65536;
    const auto length = static_cast<int>(std::min<DWORD>(stream.GetLength(), INT_MAX));
    int needed = 0;
    direction(nullptr, length, nullptr, needed);
    // One that is too long fails whatever its bytes are, so they are not copied out of a store.
    std::vector<BYTE> copy;
    const BYTE* data = nullptr;
    if (stream.IsAllInBuffer() || stream.GetLength() >= kLengths)
        data = stream;
    if (!data || length % kBlock != 0) { // a partial last block is read as a whole one
        WithMemoryException([&] { copy.resize(static_cast<std::size_t>(length) + kBlock); });
        if (length > 0)
            stream.CopyTo(0, copy.data(), static_cast<DWORD>(length), static_cast<DWORD>(length));
        data = copy.data();
    }
    const WORD room = static_cast<WORD>(needed);
    auto result =
        WithMemoryException([=] { return std::vector<BYTE>(room + std::size_t{kBlock}); });
    int resultLength = room;
    direction(data, length, result.data(), resultLength);
    CByteStream made;
    made.SetReadOnlyBuffer(result.data(), std::min(static_cast<WORD>(resultLength), room));
    stream = std::as_const(made);
}

} // namespace

void CDES::Encrypt(CByteStream& stream) {
    OverStream(stream, [this](const BYTE* in, int length, BYTE* out, int& outLength) {
        Encrypt(in, length, out, outLength);
    });
}

void CDES::Decrypt(CByteStream& stream) {
    OverStream(stream, [this](const BYTE* in, int length, BYTE* out, int& outLength) {
        Decrypt(in, length, out, outLength);
    });
}
