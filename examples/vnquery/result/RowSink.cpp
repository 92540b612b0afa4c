#include "vnquery/result/RowSink.h"

#include "vnquery/tasks/Progress.h"

namespace vnquery {

void RowTee::DoNull() {
    for (RowSink* sink : m_sinks)
        sink->Null();
}

void RowTee::DoInteger(long long number) {
    for (RowSink* sink : m_sinks)
        sink->Integer(number);
}

void RowTee::DoWhole(Value::Type type, std::string_view bytes) {
    for (RowSink* sink : m_sinks)
        sink->Whole(type, bytes);
}

bool RowTee::DoBegin(Value::Type type, std::optional<ULONGLONG> announced) {
    bool isAsked = false;
    for (RowSink* sink : m_sinks)
        isAsked |= sink->Begin(type, announced);
    return isAsked;
}

void RowTee::DoAppend(std::string_view piece) {
    for (RowSink* sink : m_sinks)
        sink->Append(piece.data(), piece.size());
}

void RowTee::DoEnd(ULONGLONG) {
    for (RowSink* sink : m_sinks)
        sink->End();
}

void RowTee::DoEndRow() {
    for (RowSink* sink : m_sinks)
        sink->EndRow();
}

std::size_t ReadRows(RowSource& source, RowSink& sink, Progress& progress) {
    const std::size_t columns = source.GetColumns().size();
    std::size_t rows = 0;
    while (source.Next()) {
        for (std::size_t column = 0; column < columns; ++column)
            source.Read(column, sink);
        sink.EndRow();
        sink.ReportBytes();
        progress.AddRow();
        ++rows;
    }
    return rows;
}

} // namespace vnquery
