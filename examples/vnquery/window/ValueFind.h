// Finds a text in a value of any size.
#pragma once

#include "vnquery/result/Value.h"

#include <QString>
#include <QStringMatcher>

#include <optional>

namespace vnquery {

/// Bytes as text: UTF-8, each byte that is not as U+FFFD.
QString DecodeText(std::string_view bytes);
/// How many of the bytes make the first `units` UTF-16 units of that text.
std::size_t BytesOfUnits(std::string_view bytes, qsizetype units);
/// Up to `count` bytes without the parts of characters at their ends: `begin` goes to the next
/// character when it is within one.
std::string ReadCharacters(const Value& value, DWORD& begin, DWORD count);

/// Decimal digits, or hexadecimal ones after 0x; blanks and commas among them do not count.
std::optional<DWORD> ParseOffset(QString text);

/// Looks for a text, upper and lower case alike, from a place on, and past the value's end from the
/// other end on. It works in steps, so that the window stays responsive, and keeps no more than one
/// step's bytes.
class ValueFind {
public:
    struct Hit {
        DWORD begin, end; ///< in bytes
    };
    /// Forwards it finds a hit that begins at `from` or later, backwards one that begins before it.
    /// `needle` is not empty.
    ValueFind(Value value, const QString& needle, DWORD from, bool forward);

    /// Looks at the next 1 MB or so; false when the search is over. Throws what reading the value
    /// throws.
    bool Step();
    const std::optional<Hit>& GetHit() const { return m_hit; }
    int GetPercent() const;

private:
    void LookAt(DWORD begin, DWORD count);

    Value m_value;
    QStringMatcher m_matcher;
    QString m_needle;
    bool m_forward;
    DWORD m_at;   ///< the next step's beginning; backwards its end
    DWORD m_left; ///< bytes that no step has looked at
    std::optional<Hit> m_hit;
};

} // namespace vnquery
