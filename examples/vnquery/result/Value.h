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

/// NULL, a number (its decimal text), a text (UTF-8) or bytes. Most values of most results are a
/// few bytes long and stay in the object. A longer one is a byte stream, which moves to a swap file
/// when it grows large.
class Value {
public:
    enum class Type : BYTE { Null, Number, Text, Binary };

    Type GetType() const { return m_type; }
    bool IsNull() const { return m_type == Type::Null; }
    /// In bytes.
    DWORD GetLength() const;

    /// Makes this an empty value of that type. Append then adds its bytes, and Complete ends it.
    void Begin(Type type);
    void Append(std::span<const BYTE> piece);
    void Complete();

    /// The stream of a longer value, null for others.
    CByteStream* GetStream() const { return m_stream.get(); }
    /// The bytes of a value that is not a stream.
    std::string_view GetShort() const { return m_short; }
    void ForEachPiece(const PieceReceiver& receive) const;
    void PassTo(ValueSink& sink) const;
    /// All bytes; for values known to be of moderate length.
    std::string GetBytes() const;

private:
    static constexpr std::size_t kMaxShort = 1024;

    Type m_type = Type::Null;
    std::string m_short;
    std::unique_ptr<CByteStream> m_stream;
};

} // namespace vnquery
