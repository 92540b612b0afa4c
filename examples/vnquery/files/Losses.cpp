#include "vnquery/files/Losses.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"

#include <algorithm>

namespace vnquery {

std::optional<ULONGLONG> FindFirstLoss(const Value& text, WORD ccsid) {
    const std::unique_ptr<CCCSIDTranslation, decltype([](CCCSIDTranslation* translation) {
                              TranslateEndEx(translation);
                          })>
        translation(TranslateBeginEx(GetNativeCCSID(), ccsid));
    const auto output = std::make_unique<BYTE[]>(kPieceSize); // not used
    const auto translate = [&](std::span<const BYTE> piece, BOOL isLast) {
        ETranslation result = translationMore;
        while (result == translationMore) {
            auto taken = static_cast<DWORD>(piece.size());
            DWORD room = kPieceSize;
            result = TranslateCCSIDEx(translation.get(), piece.data(), &taken, output.get(), &room,
                                      isLast);
            piece = piece.subspan(taken);
        }
    };
    text.ForEachPiece([&](std::span<const BYTE> piece) { translate(piece, FALSE); });
    const BYTE nothing = 0;
    translate({&nothing, 0}, TRUE);
    STranslationReport report;
    TranslateReportEx(translation.get(), &report);
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
