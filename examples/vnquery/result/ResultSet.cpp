#include "vnquery/result/ResultSet.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Progress.h"

#include <algorithm>
#include <iterator>

namespace vnquery {

namespace {

constexpr ULONGLONG kMaxPages = 256; ///< 8 MB

} // namespace

void ResultSet::Fetch(RowSource& source, Progress& progress) {
    RowReader reader(source, progress);
    while (reader.ReadRow(*this))
        continue;
}

void ResultSet::PassTo(RowSink& sink, Progress& progress) const {
    for (std::size_t row = 0; row < m_rows; ++row) {
        for (std::size_t column = 0; column < m_columns.size(); ++column)
            At(row, column).PassTo(sink);
        sink.EndRow();
        sink.ReportBytes();
        progress.AddRow();
    }
}

void ResultSet::Append(ResultSet&& other) {
    std::ranges::move(other.m_values, std::back_inserter(m_values));
    m_rowIds.insert(m_rowIds.end(), other.m_rowIds.begin(), other.m_rowIds.end());
    m_rows += other.m_rows;
    other.m_values.clear();
    other.m_rowIds.clear();
    other.m_rows = 0;
}

std::optional<long long> ResultSet::GetRowId(std::size_t row) const {
    return row < m_rowIds.size() ? m_rowIds[row] : std::optional<long long>();
}

bool RowReader::ReadRow(ResultSet& result) {
    std::size_t column = 0;
    try {
        if (!m_source.Next())
            return false;
        for (; column < result.GetColumnCount(); ++column) {
            ValueKeeper sink(result.m_values.emplace_back(), m_progress);
            m_source.Read(column, sink);
            sink.ReportBytes();
            ReleaseMemory(result.m_values.back());
        }
    } catch (CException* error) {
        throw Failure(kFileFailed, Text(IDS_VQ_CANNOT_KEEP, {CellName(m_row, column)}) + ": " +
                                       TakeMessage(error));
    }
    if (!m_source.GetEditPlan().rowIdName.empty())
        result.m_rowIds.push_back(m_source.GetRowId());
    ++result.m_rows;
    ++m_row;
    m_progress.AddRow();
    return true;
}

/// Each value in a store keeps some of its pages in memory. Beyond kMaxPages in all, a new value
/// releases its pages once it is complete.
void RowReader::ReleaseMemory(const Value& value) {
    CByteStream* stream = value.GetStream();
    if (!stream || !stream->GetStore())
        return;
    if (m_pages >= kMaxPages)
        stream->ReleasePages();
    m_pages += stream->GetStore()->GetResidentPageCount();
}

std::string CellName(std::size_t row, std::size_t column) {
    return Text(IDS_VQ_CELL, {std::to_string(row + 1), std::to_string(column + 1)});
}

} // namespace vnquery
