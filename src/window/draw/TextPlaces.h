// Where parts of a text stand when it is drawn, for marks behind them.
#pragma once

#include "vnbytstr/window/DC.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {

/// Bytes of a text, from and up to places between characters.
struct TextPart {
    std::size_t from = 0;
    std::size_t end = 0;
    bool operator==(const TextPart&) const = default;
};

/// The rectangles of parts of a text as CDC::DrawText draws it into `rect` with `flags` and
/// DT_SINGLELINE, DT_NOPREFIX. Where an ellipsis stands for a part, that of the ellipsis; a part in
/// which the direction of writing changes has several.
std::vector<CRect> TextPlaces(const CDC& dc, std::string_view text, const RECT& rect, UINT flags,
                              std::span<const TextPart> parts);

} // namespace vnbytstr::detail
