// Where rows come from: an SQLite file, or a server through ODBC.
#pragma once

#include "vnquery/result/ColumnKind.h"
#include "vnquery/result/EditPlan.h"
#include "vnquery/result/Value.h"

#include <optional>
#include <string>
#include <vector>

namespace vnquery {

class Progress;

/// Takes one value in pieces. A source tells the type, the bytes and, where it knows it, how many
/// there should have been.
class ValueSink {
public:
    ValueSink(Value& value, Progress& progress) : m_value(value), m_progress(progress) {}

    /// A value that is not begun stays NULL.
    void Begin(Value::Type type) { m_value.Begin(type); }
    /// Any length; goes on in pieces of at most kPieceSize. Throws Interrupted on a signal to end.
    void Append(const void* bytes, std::size_t count);
    /// Ends the value. Throws Failure when it was announced as longer or shorter than what came.
    void End(std::optional<ULONGLONG> announced = {});

private:
    Value& m_value;
    Progress& m_progress;
};

/// The rows of one query, from the first to the last. All functions throw Failure when the database
/// reports an error, and Interrupted on a signal to end.
class RowSource {
public:
    virtual ~RowSource() = default;

    /// The columns' headings.
    virtual const std::vector<std::string>& GetColumns() const = 0;
    /// What their types say, one for each.
    virtual const std::vector<ColumnKind>& GetKinds() const = 0;
    /// How the result could be written back. Told only by a source that was asked to find out.
    virtual const EditPlan& GetEditPlan() const = 0;
    /// The current row's number in its table, where the plan has one and the row too.
    virtual std::optional<long long> GetRowId() const { return {}; }
    /// Goes to the next row, at first to the first; false when there is none.
    virtual bool Next() = 0;
    /// Reads a column's value of the current row. Columns are read once each, from the left.
    virtual void Read(std::size_t column, ValueSink& sink) = 0;
};

/// What a source finds out beside the rows.
enum class SourceUse { ReadOnly, Editing };

} // namespace vnquery
