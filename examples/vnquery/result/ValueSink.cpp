#include "vnquery/result/ValueSink.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Progress.h"

#include <algorithm>
#include <charconv>

namespace vnquery {

namespace {

std::span<const BYTE> BytesOf(std::string_view text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

} // namespace

void Value::PassTo(ValueSink& sink) const {
    if (IsNull()) {
        sink.Null();
    } else if (!m_stream && !m_range) {
        sink.Whole(m_type, m_short);
    } else {
        if (sink.Begin(m_type, GetLength()))
            ForEachPiece(
                [&](std::span<const BYTE> piece) { sink.Append(piece.data(), piece.size()); });
        sink.End();
    }
}

bool ValueSink::Begin(Value::Type type, std::optional<ULONGLONG> announced) {
    m_arrived = 0;
    m_announced = announced;
    m_isAsked = DoBegin(type, announced);
    return m_isAsked;
}

void ValueSink::Append(const void* bytes, std::size_t count) {
    std::string_view rest(static_cast<const char*>(bytes), count);
    m_arrived += count;
    while (!rest.empty()) {
        const std::string_view piece = rest.substr(0, kPieceSize);
        if (m_isAsked)
            DoAppend(piece);
        if (m_progress)
            m_progress->AddBytes(piece.size());
        rest.remove_prefix(piece.size());
    }
}

void ValueSink::End() {
    if (!m_isAsked && m_arrived == 0 && m_announced)
        m_arrived = *m_announced;
    if (m_announced && *m_announced != m_arrived)
        throw Failure(kQueryFailed, Text(IDS_VQ_SHORT_VALUE,
                                         {GroupDigits(*m_announced), GroupDigits(m_arrived)}));
    DoEnd(m_arrived);
}

void ValueSink::ReportBytes() {
    if (m_progress && m_bytes > 0)
        m_progress->AddBytes(m_bytes);
    m_bytes = 0;
}

void ValueSink::DoInteger(long long number) {
    char digits[24];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
    Whole(Value::Type::Number, {digits, end});
}

void ValueKeeper::DoWhole(Value::Type type, std::string_view bytes) {
    m_value.Begin(type);
    m_value.Append(BytesOf(bytes));
    m_value.Complete();
}

bool ValueKeeper::DoBegin(Value::Type type, std::optional<ULONGLONG>) {
    m_value.Begin(type);
    return true;
}

void ValueKeeper::DoAppend(std::string_view piece) { m_value.Append(BytesOf(piece)); }
void ValueKeeper::DoEnd(ULONGLONG) { m_value.Complete(); }

} // namespace vnquery
