// Writes cells back to the table they came from, within one transaction.
#pragma once

#include "vnquery/result/EditPlan.h"
#include "vnquery/result/Value.h"

#include <optional>
#include <vector>

namespace vnquery {

class Progress;

/// What finds a row: its number, or the values of the plan's key columns in their order.
struct RowKey {
    std::optional<long long> rowId;
    std::vector<const Value*> values;
};

/// What a cell is to become.
struct NewValue {
    bool isDefault = false; ///< what the database puts there by itself; `value` is NULL then
    Value value;
};

/// All functions throw Failure, after which nothing but the destructor is called, and Interrupted.
/// Without Commit the destructor undoes everything.
class TableWriter {
public:
    virtual ~TableWriter() = default;

    /// The value as it is in the table now; nothing when the row is not there.
    virtual std::optional<Value> Read(const RowKey& key, std::size_t column,
                                      Progress& progress) = 0;
    virtual void Update(const RowKey& key, std::size_t column, const NewValue& value,
                        Progress& progress) = 0;
    virtual void Commit() = 0;
};

} // namespace vnquery
