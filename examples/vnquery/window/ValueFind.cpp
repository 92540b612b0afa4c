#include "vnquery/window/ValueFind.h"

#include "vnquery/result/CellText.h"

#include <algorithm>

namespace vnquery {

namespace {

constexpr DWORD kStep = 1 << 20;
constexpr DWORD kMaxBytesPerUnit = 3;
constexpr std::string_view kMark = "\xEF\xBB\xBF"; ///< which QString::fromUtf8 leaves out

bool IsContinuation(char ch) { return (static_cast<unsigned char>(ch) & 0xC0) == 0x80; }

/// Bytes of a character that the end of the text cuts.
std::size_t CutBytes(std::string_view text) {
    for (std::size_t cut = 1; cut <= std::min<std::size_t>(3, text.size()); ++cut) {
        const char lead = text[text.size() - cut];
        if (!IsContinuation(lead))
            return static_cast<unsigned char>(lead) >= (cut == 1   ? 0xC0
                                                        : cut == 2 ? 0xE0
                                                                   : 0xF0)
                       ? cut
                       : 0;
    }
    return 0;
}

} // namespace

QString DecodeText(std::string_view bytes) {
    const QString text = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    return bytes.starts_with(kMark) ? QChar(QChar::ByteOrderMark) + text : text;
}

std::size_t BytesOfUnits(std::string_view bytes, qsizetype units) {
    std::size_t at = 0;
    while (units > 0 && at < bytes.size()) {
        char32_t character = 0;
        const std::size_t length = DecodeUtf8(bytes.substr(at), character);
        at += std::max<std::size_t>(length, 1);
        units -= length == 4 ? 2 : 1;
    }
    return at;
}

std::string ReadCharacters(const Value& value, DWORD& begin, DWORD count) {
    std::string bytes = value.Read(begin, count);
    for (int i = 0; i < 3 && begin > 0 && !bytes.empty() && IsContinuation(bytes[0]); ++i) {
        bytes.erase(0, 1);
        ++begin;
    }
    if (begin + bytes.size() < value.GetLength())
        bytes.resize(bytes.size() - CutBytes(bytes));
    return bytes;
}

std::optional<DWORD> ParseOffset(QString text) {
    bool isNumber = false;
    text.remove(u' ').remove(u',');
    const bool isHex = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const uint number = text.toUInt(&isNumber, isHex ? 16 : 10);
    return isNumber ? std::optional<DWORD>(number) : std::nullopt;
}

ValueFind::ValueFind(Value value, const QString& needle, DWORD from, bool forward)
    : m_value(std::move(value)), m_matcher(needle, Qt::CaseInsensitive), m_needle(needle),
      m_forward(forward), m_at(from), m_left(m_value.GetLength()) {}

int ValueFind::GetPercent() const {
    const ULONGLONG length = std::max<DWORD>(m_value.GetLength(), 1);
    return static_cast<int>((length - m_left) * 100 / length);
}

bool ValueFind::Step() {
    const DWORD length = m_value.GetLength();
    if (m_hit || m_left == 0)
        return false;
    if (m_forward && m_at >= length)
        m_at = 0;
    else if (!m_forward && m_at == 0)
        m_at = length;
    const DWORD count = std::min({kStep, m_left, m_forward ? length - m_at : m_at});
    const DWORD begin = m_forward ? m_at : m_at - count;
    LookAt(begin, count);
    m_at = m_forward ? begin + count : begin;
    m_left -= count;
    return !m_hit && m_left > 0;
}

/// Looks for hits that begin among these bytes; they may end after them. A character that the ends
/// cut is several U+FFFD, one for each byte.
void ValueFind::LookAt(DWORD begin, DWORD count) {
    const DWORD tail = kMaxBytesPerUnit * static_cast<DWORD>(m_needle.size());
    const std::string bytes = m_value.Read(begin, count + tail);
    const QString text = DecodeText(bytes);
    const qsizetype limit = DecodeText(std::string_view(bytes).substr(0, count)).size();
    const qsizetype found = m_forward ? m_matcher.indexIn(text)
                                      : text.lastIndexOf(m_needle, limit - 1, Qt::CaseInsensitive);
    if (found < 0 || found >= limit)
        return;
    const auto start = static_cast<DWORD>(BytesOfUnits(bytes, found));
    const std::string_view rest = std::string_view(bytes).substr(start);
    m_hit =
        Hit{begin + start, begin + start + static_cast<DWORD>(BytesOfUnits(rest, m_needle.size()))};
}

} // namespace vnquery
