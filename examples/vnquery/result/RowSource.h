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

/// Takes one value in pieces: a source gives its type, its bytes and, if known, their number.
class ValueSink {
public:
    ValueSink(Value& value, Progress& progress) : m_value(value), m_progress(progress) {}

    /// Without Begin the value stays NULL.
    void Begin(Value::Type type) { m_value.Begin(type); }
    /// Any number of bytes. Throws Interrupted on a signal to end.
    void Append(const void* bytes, std::size_t count);
    /// Ends the value. Throws Failure when another number of bytes was announced than arrived.
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
    /// The kind of each column, by its type.
    virtual const std::vector<ColumnKind>& GetKinds() const = 0;
    /// How the result can be written back; only a source for SourceUse::Editing finds that out.
    virtual const EditPlan& GetEditPlan() const = 0;
    /// The current row's number in its table, if the plan has row numbers and the row has one.
    virtual std::optional<long long> GetRowId() const { return {}; }
    /// Goes to the next row, in the first call to the first one; false after the last row.
    virtual bool Next() = 0;
    /// Reads a value of the current row. Each column is read once, from left to right.
    virtual void Read(std::size_t column, ValueSink& sink) = 0;
};

/// What a source is opened for.
enum class SourceUse { ReadOnly, Editing };

} // namespace vnquery
