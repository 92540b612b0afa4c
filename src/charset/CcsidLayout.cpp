#include "src/charset/CcsidLayout.h"

#include <unicode/ushape.h>

#include <algorithm>
#include <new>

namespace vnbytstr::detail {

namespace {

bool EndsParagraph(char16_t unit) noexcept {
    return unit == 0x0A || unit == 0x0D || unit == 0x85 || unit == 0x2029;
}

UBiDiLevel Level(EBidiDirection direction) noexcept {
    return direction == bidiLeftToRight   ? UBiDiLevel{0}
           : direction == bidiRightToLeft ? UBiDiLevel{1}
                                          : static_cast<UBiDiLevel>(UBIDI_DEFAULT_LTR);
}

UBiDiOrder Order(EBidiOrder order) noexcept {
    return order == bidiVisual ? UBIDI_VISUAL : UBIDI_LOGICAL;
}

} // namespace

bool ChangesLayout(const SCCSIDLayout& layout) noexcept {
    return layout.eFromOrder != layout.eToOrder || layout.eFromDirection != layout.eToDirection ||
           layout.eShaping != bidiShapingNone;
}

BidiParagraphs::BidiParagraphs(const SCCSIDLayout& layout) : m_layout(layout) {
    UErrorCode error = U_ZERO_ERROR;
    m_transform.reset(ubiditransform_open(&error));
    if (U_FAILURE(error))
        throw std::bad_alloc();
}

void BidiParagraphs::Clear() {
    m_pending.clear();
    m_positions.clear();
    m_ready.clear();
    m_start = m_searched = 0;
}

bool BidiParagraphs::Next(bool flush) {
    m_ready.clear();
    const std::size_t size = m_pending.size();
    while (m_searched < size && !EndsParagraph(m_pending[m_searched]) &&
           m_searched - m_start < kMaxLength)
        ++m_searched;
    if (m_searched == size && (!flush || m_start == size)) {
        m_pending.erase(0, m_start);
        m_positions.erase(m_positions.begin(),
                          m_positions.begin() + static_cast<std::ptrdiff_t>(m_start));
        m_searched -= m_start;
        m_start = 0;
        return false;
    }
    m_readyPosition = m_positions[m_start];
    Transform(std::u16string_view(m_pending).substr(m_start, m_searched - m_start));
    if (m_searched < size && EndsParagraph(m_pending[m_searched]))
        m_ready += m_pending[m_searched++];
    m_start = m_searched;
    return true;
}

void BidiParagraphs::Transform(std::u16string_view text) {
    if (text.empty())
        return;
    std::uint32_t shaping = 0;
    if (m_layout.eShaping != bidiShapingNone)
        shaping =
            (m_layout.eShaping == bidiShape ? U_SHAPE_LETTERS_SHAPE : U_SHAPE_LETTERS_UNSHAPE) |
            U_SHAPE_LENGTH_GROW_SHRINK;
    m_ready.resize(text.size() * 2 + 16); // a ligature taken apart gives two letters
    UErrorCode error = U_ZERO_ERROR;
    const std::uint32_t size = ubiditransform_transform(
        m_transform.get(), text.data(), static_cast<int32_t>(text.size()), m_ready.data(),
        static_cast<int32_t>(m_ready.size()), Level(m_layout.eFromDirection),
        Order(m_layout.eFromOrder), Level(m_layout.eToDirection), Order(m_layout.eToOrder),
        m_layout.bMirror ? UBIDI_MIRRORING_ON : UBIDI_MIRRORING_OFF, shaping, &error);
    if (error == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    if (U_FAILURE(error))
        m_ready = text; // better in the wrong order than lost
    else
        m_ready.resize(size);
}

} // namespace vnbytstr::detail
