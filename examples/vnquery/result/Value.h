// One value of a result.
#pragma once

#include "vnbytstr/ByteStream.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vnquery {

class ValueSink;

/// Values are passed on in pieces of at most so many bytes.
constexpr DWORD kPieceSize = 65536;

using PieceReceiver = std::function<void(std::span<const BYTE>)>;

/// Passes the stream's bytes to `receive` in pieces of at most kPieceSize.
void ForEachPiece(const CByteStream& stream, const PieceReceiver& receive);

/// Bytes that lie somewhere else.
class ByteRange {
public:
    virtual ~ByteRange() = default;
    virtual DWORD GetLength() const = 0;
    /// Copies up to `count` bytes from `offset` on; the number of bytes copied.
    virtual DWORD Read(DWORD offset, BYTE* to, DWORD count) const = 0;
};

/// NULL, a number (its decimal text), a text (UTF-8) or bytes. Most values of most results are a
/// few bytes long and stay in the object. A longer one is a byte stream, which moves to a swap file
/// when it grows large, or refers to the result that it is from; copies share these.
class Value {
public:
    enum class Type : BYTE { Null, Number, Text, Binary };

    /// NULL.
    Value() = default;
    Value(Type type, std::string_view bytes) : m_type(type), m_short(bytes) {}
    Value(Type type, std::shared_ptr<const ByteRange> range)
        : m_type(type), m_range(std::move(range)) {}

    Type GetType() const { return m_type; }
    bool IsNull() const { return m_type == Type::Null; }
    /// In bytes.
    DWORD GetLength() const;

    /// Makes this an empty value of that type. Append then adds its bytes, and Complete ends it.
    void Begin(Type type);
    void Append(std::span<const BYTE> piece);
    void Complete();

    /// The stream, if the value is one; else null.
    CByteStream* GetStream() const { return m_stream.get(); }
    /// Up to `count` bytes from `offset` on.
    std::string Read(DWORD offset, DWORD count) const;
    void ForEachPiece(const PieceReceiver& receive) const;
    void PassTo(ValueSink& sink) const;
    /// All bytes; for values known to be of moderate length.
    std::string GetBytes() const;

private:
    void ForEachPieceOfRange(const PieceReceiver& receive) const;

    static constexpr std::size_t kMaxShort = 1024;

    Type m_type = Type::Null;
    std::string m_short;
    std::shared_ptr<CByteStream> m_stream;
    std::shared_ptr<const ByteRange> m_range;
};

} // namespace vnquery
