// Where rows come from: an SQLite file, or a server through ODBC.
#pragma once

#include "vnquery/result/ColumnKind.h"
#include "vnquery/result/EditPlan.h"
#include "vnquery/result/ValueSink.h"

#include <optional>
#include <string>
#include <vector>

namespace vnquery {

/// The rows of one query, from the first to the last. All functions throw Failure when the database
/// reports an error, and Interrupted on a signal to end.
class RowSource {
public:
    virtual ~RowSource() = default;

    /// The columns' headings.
    virtual const std::vector<std::string>& GetColumns() const = 0;
    /// The kind of each column, by its type.
    virtual const std::vector<ColumnKind>& GetKinds() const = 0;
    /// How the result can be written back; only a source for SourceUse::Editing finds that out.
    virtual const EditPlan& GetEditPlan() const = 0;
    /// How many rows a statement has inserted, updated or deleted, as far as the database tells;
    /// nothing for a query. Known after the last row.
    virtual std::optional<long long> GetChangedRows() const { return {}; }
    /// The current row's number in its table, if the plan has row numbers and the row has one.
    virtual std::optional<long long> GetRowId() const { return {}; }
    /// Goes to the next row, in the first call to the first one; false after the last row.
    virtual bool Next() = 0;
    /// Gives a value of the current row to `sink`. Each column is read once, from left to right.
    virtual void Read(std::size_t column, ValueSink& sink) = 0;
};

/// What a source is opened for.
enum class SourceUse { ReadOnly, Editing };

} // namespace vnquery
