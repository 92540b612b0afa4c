#include "vnquery/result/Value.h"

#include <algorithm>
#include <mutex>

namespace vnquery {

namespace {

/// For reading from streams, which may exchange pages then: a list draws a value while it is saved.
std::mutex streams;

} // namespace

void ForEachPiece(const CByteStream& stream, const PieceReceiver& receive) {
    const DWORD length = stream.GetLength();
    if (length == 0)
        return;
    const bool isInMemory = stream.IsAllInBuffer();
    const BYTE* bytes = isInMemory ? static_cast<const BYTE*>(stream) : nullptr;
    const auto buffer = isInMemory ? nullptr : std::make_unique<BYTE[]>(kPieceSize);
    for (DWORD done = 0; done < length;) {
        const DWORD count = std::min(kPieceSize, length - done);
        if (!isInMemory) {
            const std::lock_guard lock(streams);
            stream.CopyTo(done, buffer.get(), count, kPieceSize);
        }
        receive({isInMemory ? bytes + done : buffer.get(), count});
        done += count;
    }
}

DWORD Value::GetLength() const {
    return m_stream  ? m_stream->GetLength()
           : m_range ? m_range->GetLength()
                     : static_cast<DWORD>(m_short.size());
}

void Value::Begin(Type type) {
    m_type = type;
    m_short.clear();
    m_stream.reset();
    m_range.reset();
}

void Value::Append(std::span<const BYTE> piece) {
    if (piece.empty())
        return;
    if (!m_stream && m_short.size() + piece.size() <= kMaxShort) {
        m_short.append(reinterpret_cast<const char*>(piece.data()), piece.size());
        return;
    }
    if (!m_stream) {
        m_stream = std::make_shared<CByteStream>(reinterpret_cast<const BYTE*>(m_short.data()),
                                                 static_cast<DWORD>(m_short.size()));
        m_short = {};
    }
    m_stream->Concat(piece.data(), static_cast<DWORD>(piece.size()));
}

void Value::Complete() {
    if (m_stream)
        m_stream->SetComplete(TRUE);
}

void Value::ForEachPiece(const PieceReceiver& receive) const {
    if (m_stream)
        vnquery::ForEachPiece(*m_stream, receive);
    else if (m_range)
        ForEachPieceOfRange(receive);
    else if (!m_short.empty())
        receive({reinterpret_cast<const BYTE*>(m_short.data()), m_short.size()});
}

void Value::ForEachPieceOfRange(const PieceReceiver& receive) const {
    const DWORD length = m_range->GetLength();
    const auto buffer = std::make_unique<BYTE[]>(kPieceSize);
    for (DWORD done = 0; done < length;) {
        const DWORD count = m_range->Read(done, buffer.get(), std::min(kPieceSize, length - done));
        if (count == 0)
            return;
        receive({buffer.get(), count});
        done += count;
    }
}

std::string Value::Read(DWORD offset, DWORD count) const {
    const DWORD length = GetLength();
    const DWORD taken = offset < length ? std::min(count, length - offset) : 0;
    if (!m_stream && !m_range)
        return m_short.substr(std::min<std::size_t>(offset, length), taken);
    std::string bytes(taken, '\0');
    auto* const to = reinterpret_cast<BYTE*>(bytes.data());
    if (m_range) {
        bytes.resize(m_range->Read(offset, to, taken));
    } else if (taken > 0) {
        const std::lock_guard lock(streams);
        m_stream->CopyTo(offset, to, taken, taken);
    }
    return bytes;
}

std::string Value::GetBytes() const {
    std::string bytes;
    ForEachPiece([&](std::span<const BYTE> piece) {
        bytes.append(reinterpret_cast<const char*>(piece.data()), piece.size());
    });
    return bytes;
}

} // namespace vnquery
