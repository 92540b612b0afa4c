#include "vnquery/window/RowText.h"

namespace vnquery {

std::string DisplayCell(const ResultSet& result, const PendingEdits& edits, CellPlace place,
                        const CellFormat& format) {
    const NewValue* edit = edits.IsEmpty() ? nullptr : edits.Find(place);
    if (!edit)
        return FormatCell(result.At(place.first, place.second), format);
    return edit->isDefault ? format.defaultText : FormatCell(edit->value, format);
}

std::string DisplayRow(const ResultSet& result, const PendingEdits& edits, std::size_t row,
                       const std::vector<std::size_t>& columns, const CellFormat& format) {
    std::string text;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (i > 0)
            text += kCellSeparator;
        text += DisplayCell(result, edits, {row, columns[i]}, format);
    }
    return text;
}

} // namespace vnquery
