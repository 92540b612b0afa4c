#include "vnquery/files/Losses.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"

#include <algorithm>

namespace vnquery {

std::optional<ULONGLONG> FindFirstLoss(std::string_view text, WORD ccsid) {
    STranslationReport report;
    DWORD room = 0; // the report is all that is wanted
    TranslateCCSID(GetNativeCCSID(), ccsid, reinterpret_cast<const BYTE*>(text.data()),
                   static_cast<DWORD>(text.size()), nullptr, &room, nullptr, translateSubstitute,
                   &report);
    const ULONGLONG first = std::min(report.ullFirstUntranslatable, report.ullFirstMalformed);
    return first == STranslationReport::nowhere ? std::optional<ULONGLONG>() : first;
}

std::string DescribeLosses(const STranslationReport& report, WORD ccsid) {
    std::string lost;
    if (report.ullUntranslatable > 0)
        lost = Text(report.ullUntranslatable == 1 ? IDS_VQ_LOST_CHARACTER : IDS_VQ_LOST_CHARACTERS,
                    {std::to_string(ccsid), GroupDigits(report.ullUntranslatable)});
    std::string malformed;
    if (report.ullMalformed > 0)
        malformed =
            Text(report.ullMalformed == 1 ? IDS_VQ_MALFORMED_SEQUENCE : IDS_VQ_MALFORMED_SEQUENCES,
                 {GroupDigits(report.ullMalformed)});
    return lost.empty() || malformed.empty() ? lost + malformed
                                             : Text(IDS_VQ_LOSSES_AND, {lost, malformed});
}

} // namespace vnquery
