// Takes the rows of a result one after the other, so that no row is kept longer than it is used.
#pragma once

#include "vnquery/result/RowSource.h"

#include <vector>

namespace vnquery {

/// A ValueSink that takes whole rows: the values of a row from left to right, then EndRow.
class RowSink : public ValueSink {
public:
    using ValueSink::ValueSink;

    void EndRow() { DoEndRow(); }

protected:
    virtual void DoEndRow() = 0;
};

/// Passes what it takes on to several others, which must outlive it. A value's bytes are asked for
/// if one of them asks for them.
class RowTee : public RowSink {
public:
    explicit RowTee(Progress* progress) : RowSink(progress) {}

    void Add(RowSink& sink) { m_sinks.push_back(&sink); }

protected:
    void DoNull() override;
    void DoInteger(long long number) override;
    void DoWhole(Value::Type type, std::string_view bytes) override;
    bool DoBegin(Value::Type type, std::optional<ULONGLONG> announced) override;
    void DoAppend(std::string_view piece) override;
    void DoEnd(ULONGLONG length) override;
    void DoEndRow() override;

private:
    std::vector<RowSink*> m_sinks;
};

/// Passes all rows of the source on, reports them, and returns their number.
/// Throws what the source and the sink throw.
std::size_t ReadRows(RowSource& source, RowSink& sink, Progress& progress);

} // namespace vnquery
