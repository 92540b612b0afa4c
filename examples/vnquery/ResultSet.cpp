#include "ResultSet.h"

#include "CellText.h"
#include "Failure.h"
#include "Progress.h"

#include <algorithm>

namespace vnquery {

namespace {

constexpr ULONGLONG kMaxPages = 256; ///< 8 MB

} // namespace

void ValueSink::Append(const void* bytes, std::size_t count) {
    const BYTE* next = static_cast<const BYTE*>(bytes);
    for (std::size_t left = count; left > 0;) {
        const std::size_t piece = std::min<std::size_t>(left, kPieceSize);
        m_value.Append({next, piece});
        m_progress.AddBytes(piece);
        next += piece;
        left -= piece;
    }
}

void ValueSink::End(std::optional<ULONGLONG> announced) {
    if (announced && *announced != m_value.GetLength())
        throw Failure(kQueryFailed, "the database announced a value of " + GroupDigits(*announced) +
                                        " bytes and delivered " + GroupDigits(m_value.GetLength()) +
                                        ". Nothing is kept of it; run the query again.");
    m_value.Complete();
}

void ResultSet::Fetch(RowSource& source, Progress& progress) {
    std::size_t column = 0;
    try {
        while (source.Next()) {
            for (column = 0; column < m_columns.size(); ++column) {
                ValueSink sink(m_values.emplace_back(), progress);
                source.Read(column, sink);
                ReleaseMemory(m_values.back());
            }
            ++m_rows;
            progress.AddRow();
        }
    } catch (CException* error) {
        throw Failure(kFileFailed, "cannot keep " + CellName(m_rows, column) +
                                       " of the result: " + TakeMessage(error));
    }
}

/// Each value in a store keeps some of its pages in memory. Once these are many, those of a new
/// value go when it is complete.
void ResultSet::ReleaseMemory(const Value& value) {
    CByteStream* stream = value.GetStream();
    if (!stream || !stream->GetStore())
        return;
    if (m_pages >= kMaxPages)
        stream->ReleasePages();
    m_pages += stream->GetStore()->GetResidentPageCount();
}

std::string CellName(std::size_t row, std::size_t column) {
    return "row " + std::to_string(row + 1) + ", column " + std::to_string(column + 1);
}

} // namespace vnquery
