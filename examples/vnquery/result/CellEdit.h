// What a person types into a cell, and what it means.
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
    Bytes        ///< the column holds bytes, which come from a file
};

/// Reads what was typed: the null marker, the default marker, or a value. A text that reads like a
/// marker is typed, and shown (see FormatCell), in double quotes.
EditFault ParseCell(std::string_view typed, ColumnKind kind, const EditColumn& column,
                    const CellFormat& format, NewValue& value);

/// A text as it was edited in full, without markers.
EditFault ParseText(std::string_view text, ColumnKind kind, NewValue& value);

/// Whether the value is shown as it is, so that it can be edited in its cell: a short one without
/// characters that are shown as something else.
bool IsEditableInCell(const Value& value, const CellFormat& format);
/// Whether an edit field could hold the value in full: text without NUL, in UTF-8, up to 1 MB.
bool IsEditableInField(const Value& value);

/// Line breaks as an edit field has them (CR LF), and back as they were in `original`: LF alone
/// where it had no others.
std::string ToFieldText(std::string_view text);
std::string FromFieldText(std::string_view text, std::string_view original);

/// Whether two values are the same, type and bytes. A number and a text with the same characters
/// are.
bool AreSame(const Value& a, const Value& b);

} // namespace vnquery
