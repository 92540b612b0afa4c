// Reordering and shaping of bidirectional text between the two halves of a translation.
#pragma once

#include "vnbytstr/Ccsid.h"

#include <unicode/ubiditransform.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {

/// Whether `layout` changes anything.
bool ChangesLayout(const SCCSIDLayout& layout) noexcept;

/// Takes UTF-16 in pieces and gives it back paragraph by paragraph in the new layout.
class BidiParagraphs {
public:
    explicit BidiParagraphs(const SCCSIDLayout& layout);

    /// Appends a unit that came from the byte at `position`.
    void Append(char16_t unit, ULONGLONG position) {
        m_pending += unit;
        m_positions.push_back(position);
    }
    /// Prepares the next paragraph; with `flush` also an unfinished last one. False when there is
    /// none.
    bool Next(bool flush);
    /// The prepared paragraph, with its line end.
    std::u16string_view Ready() const noexcept { return m_ready; }
    /// Position of the first byte of that paragraph.
    ULONGLONG ReadyPosition() const noexcept { return m_readyPosition; }
    void Clear();

private:
    /// Units of a paragraph. Text without line ends is cut there.
    static constexpr std::size_t kMaxLength = std::size_t{1} << 24;

    void Transform(std::u16string_view text);

    struct Closer {
        void operator()(UBiDiTransform* transform) const noexcept {
            ubiditransform_close(transform);
        }
    };

    SCCSIDLayout m_layout;
    std::unique_ptr<UBiDiTransform, Closer> m_transform;
    std::u16string m_pending;           // not laid out yet, from m_start on
    std::vector<ULONGLONG> m_positions; // of its units
    std::size_t m_start = 0;
    std::size_t m_searched = 0; // no paragraph ends before this unit
    std::u16string m_ready;
    ULONGLONG m_readyPosition = 0;
};

} // namespace vnbytstr::detail
