#include "vnquery/result/RowSource.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Progress.h"

#include <algorithm>

namespace vnquery {

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
        throw Failure(kQueryFailed, Text(IDS_VQ_SHORT_VALUE, {GroupDigits(*announced),
                                                              GroupDigits(m_value.GetLength())}));
    m_value.Complete();
}

} // namespace vnquery
