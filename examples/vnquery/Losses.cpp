#include "Losses.h"

#include "CellText.h"

#include <algorithm>

namespace vnquery {

std::optional<ULONGLONG> FindFirstLoss(const Value& text, WORD ccsid) {
    const std::unique_ptr<CCCSIDTranslation, decltype([](CCCSIDTranslation* translation) {
                              TranslateEndEx(translation);
                          })>
        translation(TranslateBeginEx(GetNativeCCSID(), ccsid));
    const auto output = std::make_unique<BYTE[]>(kPieceSize); // of no interest
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
    std::string text;
    if (report.ullUntranslatable > 0)
        text =
            GroupDigits(report.ullUntranslatable) +
            (report.ullUntranslatable == 1 ? " character that CCSID " : " characters that CCSID ") +
            std::to_string(ccsid) + " does not hold";
    if (report.ullMalformed > 0)
        text += (text.empty() ? "" : " and ") + GroupDigits(report.ullMalformed) +
                (report.ullMalformed == 1 ? " sequence of bytes that is"
                                          : " sequences of bytes that are") +
                " no UTF-8";
    return text;
}

} // namespace vnquery
