#include "vnquery/console/KeptValues.h"

#include "vnquery/files/ValueSaver.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/result/ResultSet.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>

namespace vnquery {

namespace {

constexpr ULONGLONG kMaxPages = 256; ///< 8 MB

template <class Action>
void WithPlace(const KeptValues::Place& place, Action&& action) {
    try {
        action();
    } catch (CException* error) {
        throw Failure(kFileFailed, Text(IDS_VQ_CANNOT_KEEP, {CellName(place.first, place.second)}) +
                                       ": " + TakeMessage(error));
    }
}

std::span<const BYTE> BytesOf(std::string_view text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

} // namespace

KeptValues::KeptValues(const std::vector<SaveRequest>& requests, Progress* progress)
    : RowSink(progress) {
    for (const SaveRequest& request : requests)
        m_values[{request.row, request.column}];
    m_current = m_values.end();
}

bool KeptValues::GoToNext() {
    m_current = m_values.find(m_place);
    ++m_place.second;
    return m_current != m_values.end();
}

void KeptValues::DoWhole(Value::Type type, std::string_view bytes) {
    if (DoBegin(type, {})) {
        DoAppend(bytes);
        DoEnd(bytes.size());
    }
}

bool KeptValues::DoBegin(Value::Type type, std::optional<ULONGLONG>) {
    if (!GoToNext())
        return false;
    m_current->second.Begin(type);
    return true;
}

void KeptValues::DoAppend(std::string_view piece) {
    WithPlace(m_current->first, [&] { m_current->second.Append(BytesOf(piece)); });
}

void KeptValues::DoEnd(ULONGLONG) {
    if (m_current == m_values.end())
        return;
    m_current->second.Complete();
    WithPlace(m_current->first, [&] { ReleaseMemory(m_current->second); });
}

/// Each value in a store keeps some of its pages in memory. Beyond kMaxPages in all, a new value
/// releases its pages once it is complete.
void KeptValues::ReleaseMemory(const Value& value) {
    CByteStream* stream = value.GetStream();
    if (!stream || !stream->GetStore())
        return;
    if (m_pages >= kMaxPages)
        stream->ReleasePages();
    m_pages += stream->GetStore()->GetResidentPageCount();
}

void KeptValues::Save(const std::vector<SaveRequest>& requests, const ExportFormat& format,
                      std::size_t rows, std::size_t columns) {
    for (auto request = requests.begin(); request != requests.end(); ++request) {
        CheckInterrupted();
        const bool isLastUse =
            std::none_of(request + 1, requests.end(), [&](const SaveRequest& later) {
                return later.row == request->row && later.column == request->column;
            });
        const bool isInResult = request->row < rows && request->column < columns;
        if (!isInResult)
            throw Failure(
                kBadUsage,
                Text(IDS_VQ_CANNOT_SAVE, {CellName(request->row, request->column), request->file}) +
                    ": " +
                    Text(IDS_VQ_SAVE_OUTSIDE, {std::to_string(rows), std::to_string(columns)}));
        SaveValue(m_values.at({request->row, request->column}), request->row, request->column,
                  request->file, format, isLastUse);
    }
}

} // namespace vnquery
