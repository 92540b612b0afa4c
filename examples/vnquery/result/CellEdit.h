// What the user types into a cell, and what it means.
#pragma once

#include "vnquery/result/CellText.h"
#include "vnquery/result/ColumnKind.h"
#include "vnquery/result/EditPlan.h"
#include "vnquery/result/TableWriter.h"

#include <string>
#include <string_view>

namespace vnquery {

/// Why a text cannot go into a cell.
enum class EditFault {
    None,
    NotANumber,  ///< the column holds numbers
    NotNullable, ///< the column takes no NULL
    Bytes        ///< the column holds bytes, which come from a file or are typed as x'00FF'
};

/// Reads what was typed: the null marker, the default marker, or a value. A text that equals a
/// marker is typed, and shown (see FormatCell), in double quotes.
EditFault ParseCell(std::string_view typed, ColumnKind kind, const EditColumn& column,
                    const CellFormat& format, NewValue& value);

/// The same without markers: for a text that was edited in the value window.
EditFault ParseText(std::string_view text, ColumnKind kind, NewValue& value);

/// Whether the value can be edited in its cell: a short one, all of whose characters are shown
/// unchanged.
bool IsEditableInCell(const Value& value, const CellFormat& format);
/// A text of an edit field, whose line breaks are LF or CR LF, with the line breaks of `original`: LF
/// unless it has CR LF.
std::string FromFieldText(std::string_view text, std::string_view original);

/// Whether two values have the same bytes and are both NULL, both bytes, or both neither: a number
/// equals a text with the same characters.
bool AreSame(const Value& a, const Value& b);

} // namespace vnquery
