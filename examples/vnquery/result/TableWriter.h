// Writes cells and rows back to the table they came from, within one transaction.
#pragma once

#include "vnquery/result/EditPlan.h"
#include "vnquery/result/Value.h"

#include <map>
#include <optional>
#include <span>
#include <utility>
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

/// Values of a row by their columns.
using RowValues = std::map<std::size_t, NewValue>;

/// This is where a cell is written back: SqliteWriter and OdbcWriter implement it, WriteEdits
/// calls it. All functions throw Failure and Interrupted; after a Failure only the destructor may
/// be called. Without Commit the destructor undoes everything.
class TableWriter {
public:
    virtual ~TableWriter() = default;

    /// The values that the table has now; nothing when the row no longer exists.
    virtual std::optional<std::vector<Value>>
    ReadRow(const RowKey& key, std::span<const std::size_t> columns, Progress& progress) = 0;
    std::optional<Value> Read(const RowKey& key, std::size_t column, Progress& progress) {
        std::optional<std::vector<Value>> values = ReadRow(key, {&column, 1}, progress);
        return values ? std::optional(std::move(values->front())) : std::nullopt;
    }
    virtual void Update(const RowKey& key, std::size_t column, const NewValue& value,
                        Progress& progress) = 0;
    /// Inserts a row; columns without a value get their defaults. Returns how the row is found,
    /// where the database or the values tell that.
    virtual std::optional<RowKey> Insert(const RowValues& values, Progress& progress) = 0;
    virtual void Delete(const RowKey& key, Progress& progress) = 0;
    virtual void Commit() = 0;
};

/// The plan's key columns among the values of a new row; nothing when one has no value yet, or when
/// the plan has no such columns.
std::optional<RowKey> GivenKey(const EditPlan& plan, const RowValues& values);

} // namespace vnquery
