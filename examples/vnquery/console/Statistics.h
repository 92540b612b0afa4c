// How much a query has read, and how much memory and disk that takes.
#pragma once

#include "vnquery/console/KeptValues.h"

namespace vnquery {

/// Counts what it takes.
class Statistics : public RowSink {
public:
    Statistics() : RowSink(nullptr) {}

    /// Prints to standard error: rows, values, bytes, what the kept values take in memory and in
    /// swap files, the names and sizes of these files, and the peak memory of the process.
    void Print(const KeptValues& kept) const;

protected:
    void DoNull() override { ++m_values; }
    void DoWhole(Value::Type type, std::string_view bytes) override;
    bool DoBegin(Value::Type type, std::optional<ULONGLONG> announced) override;
    void DoAppend(std::string_view) override {}
    void DoEnd(ULONGLONG length) override { m_bytes += length; }
    void DoEndRow() override { ++m_rows; }

private:
    ULONGLONG m_rows = 0;
    ULONGLONG m_values = 0;
    ULONGLONG m_bytes = 0;
};

} // namespace vnquery
