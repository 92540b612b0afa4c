// Which cells of a result can be written back, and how a row is found again in its table.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace vnquery {

/// Why a cell is not editable.
enum class ReadOnlyReason {
    None,         ///< it is editable
    NotATable,    ///< the rows are not those of one table
    NoKey,        ///< the table has no key, or not all columns of it are selected
    Key,          ///< the column is what the row is found by
    Computed,     ///< no column of the table, or one that the database computes
    OtherDatabase ///< another database has been opened since the query
};

/// A column of the result and what it is in the table.
struct EditColumn {
    std::string name;       ///< in the table; "" for an expression
    std::string defaultSql; ///< what the database puts there by itself, as SQL; "" for nothing
    ReadOnlyReason readOnly =
        ReadOnlyReason::None; ///< a column of its own is barred with Key or Computed
    bool isNullable = true;
    int sqlType = 0; ///< ODBC's, with the size and digits that go with it
    std::size_t sqlSize = 0;
    int sqlDigits = 0;
};

struct EditPlan {
    ReadOnlyReason readOnly = ReadOnlyReason::NotATable; ///< None: some columns are editable
    std::string schema;                                  ///< "" where there is none
    std::string table;
    std::string rowIdName;               ///< name of the rows' number; "" when there is none
    std::vector<std::size_t> keyColumns; ///< without a number: columns of the result that are key
    std::vector<EditColumn> columns;     ///< as many as the result has, when readOnly is None

    /// Takes the columns with these names in the table as what a row is found by, when the result
    /// has all of them. `equal` compares two names.
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
