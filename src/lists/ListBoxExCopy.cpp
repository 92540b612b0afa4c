// CListBoxEx: the selection as text.
#include "src/lists/CopyFormats.h"
#include "src/lists/ListRows.h"

#include "vnbytstr/window/ListBox.h"

#include <algorithm>

using namespace vnbytstr::detail;

namespace {

/// The longest text of a CString.
constexpr std::size_t kMaxCopied = 0x7FFFFFF0;

} // namespace

CString CListBoxEx::GetSelectionText(BOOL withHeadings) const {
    return GetSelectionAs(kCopyTabs, withHeadings);
}

CString CListBoxEx::GetSelectionAs(EListCopyFormat format, BOOL withHeadings) const {
    CopyWriter writer(format);
    const int last = std::max(1, m_nColumns) - 1;
    if (withHeadings && m_nColumns > 0)
        for (int column = 0; column <= last; ++column)
            writer.AddName(ViewOf(m_pColumns[static_cast<std::size_t>(column)].m_strHeading),
                           column == last);
    const int count = GetCount();
    const auto next = [this](int row) {
        return GetSafeHwnd() != nullptr ? ListBoxNextSelected(m_hWnd, row) : -1;
    };
    for (int row = next(0); row >= 0 && row < count; row = next(row + 1)) {
        m_pRows->ForEachCell(row, [&](int column, std::string_view value) {
            const bool isNull = format == kCopySql && m_pRows->IsNull(row, column, value);
            writer.AddValue(value, IsNumberColumn(column), isNull, column == last);
        });
        if (writer.Text().size() > kMaxCopied)
            return {};
    }
    return StringOf(writer.Text());
}

bool CListBoxEx::IsNumberColumn(int column) const {
    return IsColumn(column) && m_pColumns[static_cast<std::size_t>(column)].m_nSortType != 0;
}

CString CListBoxEx::GetCellAs(int row, int column, EListCopyFormat format) const {
    if (!IsCell(row, column))
        return {};
    std::string buffer;
    const std::string_view value = m_pRows->Cell(row, column, buffer);
    CopyWriter writer(format);
    writer.AddAlone(value, IsNumberColumn(column), m_pRows->IsNull(row, column, value));
    return writer.Text().size() <= kMaxCopied ? StringOf(writer.Text()) : CString();
}

BOOL CListBoxEx::CopyCell(int row, int column, EListCopyFormat format) {
    return IsCell(row, column) && SetClipboardText(GetCellAs(row, column, format));
}

BOOL CListBoxEx::CopySelection(EListCopyFormat format, BOOL withHeadings) {
    const CString text = GetSelectionAs(format, withHeadings);
    return !text.IsEmpty() && SetClipboardText(text);
}
