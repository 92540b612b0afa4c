// Which cells of a result can be written back, and how a row is found again in its table.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace vnquery {

/// Why a cell is not editable.
enum class ReadOnlyReason {
    None,      ///< it is editable
    NotATable, ///< the rows are not those of one table
    NoKey,     ///< the table has no key, or not all columns of it are selected
    Key,       ///< the column identifies the row
    Computed,  ///< an expression, or a column that the database computes
    Deleted    ///< the row is marked for deletion
};

/// A column of the result, as the table has it.
struct EditColumn {
    /// In the table; "" for an expression.
    std::string name;
    /// The column's default as SQL; "" for none.
    std::string defaultSql;
    /// None, Key or Computed.
    ReadOnlyReason readOnly = ReadOnlyReason::None;
    bool isNullable = true;
    /// The database gives a new row its value.
    bool isFilled = false;
    /// ODBC's type, with its size and digits.
    int sqlType = 0;
    std::size_t sqlSize = 0;
    int sqlDigits = 0;
};

struct EditPlan {
    /// None: some columns are editable.
    ReadOnlyReason readOnly = ReadOnlyReason::NotATable;
    /// "" without one.
    std::string schema;
    std::string table;
    /// Name of the column with the row's number; "" without one.
    std::string rowIdName;
    /// Without row numbers: the columns of the result that make up the key.
    std::vector<std::size_t> keyColumns;
    /// One for each column of the result, when readOnly is None.
    std::vector<EditColumn> columns;

    /// Makes the table's columns with these names the key, when the result has all of them. `equal`
    /// compares two names.
    template <typename Equal>
    void SetKey(const std::vector<std::string>& names, Equal equal) {
        for (const std::string& name : names) {
            const auto column =
                std::find_if(columns.begin(), columns.end(), [&](const EditColumn& candidate) {
                    return equal(candidate.name, name);
                });
            if (column == columns.end())
                return;
            column->readOnly = ReadOnlyReason::Key;
            keyColumns.push_back(static_cast<std::size_t>(column - columns.begin()));
        }
        if (!keyColumns.empty())
            readOnly = ReadOnlyReason::None;
    }

    ReadOnlyReason GetReadOnlyReason(std::size_t column) const {
        return readOnly != ReadOnlyReason::None ? readOnly : columns[column].readOnly;
    }
};

} // namespace vnquery
