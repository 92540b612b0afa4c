// Writes cells back to the table they came from, within one transaction.
#pragma once

#include "vnquery/result/EditPlan.h"
#include "vnquery/result/Value.h"

#include <optional>
#include <vector>

namespace vnquery {

class Progress;

/// Identifies a row: its number, or the values of the plan's key columns in their order.
struct RowKey {
    std::optional<long long> rowId;
    std::vector<Value> values;
};

/// The new value of a cell.
struct NewValue {
    bool isDefault = false; ///< the column's default; `value` is NULL then
    Value value;
};

/// This is where a cell is written back: SqliteWriter and OdbcWriter implement it, WriteEdits
/// calls it. All functions throw Failure and Interrupted; after a Failure only the destructor may
/// be called. Without Commit the destructor undoes everything.
class TableWriter {
public:
    virtual ~TableWriter() = default;

    /// The value that the table has now; nothing when the row no longer exists.
    virtual std::optional<Value> Read(const RowKey& key, std::size_t column,
                                      Progress& progress) = 0;
    virtual void Update(const RowKey& key, std::size_t column, const NewValue& value,
                        Progress& progress) = 0;
    virtual void Commit() = 0;
};

} // namespace vnquery
