// One value of a result.
#pragma once

#include "vnbytstr/ByteStream.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vnquery {

/// Bytes that values travel in.
constexpr DWORD kPieceSize = 65536;

using PieceReceiver = std::function<void(std::span<const BYTE>)>;

/// Hands the stream's bytes on in pieces of at most kPieceSize, wherever they lie.
void ForEachPiece(const CByteStream& stream, const PieceReceiver& receive);

/// NULL, a number (its decimal text), a text (UTF-8) or bytes. Most values of most results are a
/// few bytes long: they stay in the object. A longer one is a byte stream, which takes itself to a
/// swap file when it grows large.
class Value {
public:
    enum class Type : BYTE { Null, Number, Text, Binary };

    Type GetType() const { return m_type; }
    bool IsNull() const { return m_type == Type::Null; }
    DWORD GetLength() const; ///< bytes

    /// Makes the value an empty one of that type; Append then brings its bytes, Complete says that
    /// these were all.
    void Begin(Type type);
    void Append(std::span<const BYTE> piece);
    void Complete();

    /// The stream of a longer value, null for others.
    CByteStream* GetStream() const { return m_stream.get(); }
    /// The bytes of a value that is no stream.
    std::string_view GetShort() const { return m_short; }
    void ForEachPiece(const PieceReceiver& receive) const;
    /// All bytes; for values known to be of moderate length.
    std::string GetBytes() const;

private:
    static constexpr std::size_t kMaxShort = 1024;

    Type m_type = Type::Null;
    std::string m_short;
    std::unique_ptr<CByteStream> m_stream;
};

} // namespace vnquery
