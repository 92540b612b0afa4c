#include "vnquery/console/Statistics.h"

#include "vnquery/console/Process.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace vnquery {

namespace {

struct SwapFile {
    std::string cell;
    std::string name;
    DWORD length; ///< of the value
};

struct Totals {
    std::size_t shortValues = 0; ///< in the result's own cells, NULL included
    std::size_t inMemory = 0;    ///< in a block of memory each
    std::size_t inStores = 0;
    ULONGLONG bytes = 0;
    ULONGLONG residentPages = 0;
    ULONGLONG swappedPages = 0;
    std::vector<SwapFile> files;
};

Totals AddUp(const ResultSet& result) {
    Totals totals;
    for (std::size_t row = 0; row < result.GetRowCount(); ++row) {
        for (std::size_t column = 0; column < result.GetColumnCount(); ++column) {
            const Value& value = result.At(row, column);
            totals.bytes += value.GetLength();
            const CByteStream* stream = value.GetStream();
            const CByteStore* store = stream ? stream->GetStore() : nullptr;
            ++(store ? totals.inStores : stream ? totals.inMemory : totals.shortValues);
            if (!store)
                continue;
            totals.residentPages += store->GetResidentPageCount();
            totals.swappedPages += store->GetSwappedPageCount();
            if (store->GetSwappedPageCount() > 0)
                totals.files.push_back(
                    {CellName(row, column), stream->GetFileName(), store->GetLength()});
        }
    }
    return totals;
}

void PrintLine(UINT label, const std::string& figure) {
    constexpr std::size_t kLabelWidth = 18;
    std::string text = Text(label);
    text.append(kLabelWidth - std::min(kLabelWidth, DisplayWidth(text)), ' ');
    std::fprintf(stderr, "%s %s\n", text.c_str(), figure.c_str());
}

std::string DescribePages(ULONGLONG pages) {
    return GroupDigits(pages) + " (" + FormatSize(pages * CBytePage::m_dwPageSize) + ")";
}

} // namespace

void PrintStatistics(const ResultSet& result) {
    const Totals totals = AddUp(result);
    PrintLine(IDS_VQ_STAT_ROWS, GroupDigits(result.GetRowCount()));
    PrintLine(IDS_VQ_STAT_VALUES,
              Text(IDS_VQ_STAT_VALUES_FIGURES,
                   {GroupDigits(totals.shortValues + totals.inMemory + totals.inStores),
                    GroupDigits(totals.shortValues), GroupDigits(totals.inMemory),
                    GroupDigits(totals.inStores)}));
    PrintLine(IDS_VQ_STAT_BYTES, GroupDigits(totals.bytes) + " (" + FormatSize(totals.bytes) + ")");
    PrintLine(IDS_VQ_STAT_RESIDENT, DescribePages(totals.residentPages));
    PrintLine(IDS_VQ_STAT_SWAPPED, DescribePages(totals.swappedPages));
    for (const SwapFile& file : totals.files) {
        std::error_code error;
        const auto size = std::filesystem::file_size(file.name, error);
        PrintLine(IDS_VQ_STAT_SWAP_FILE, file.name + ", " + (error ? "?" : FormatSize(size)) +
                                             ": " + file.cell + ", " + FormatSize(file.length));
    }
    if (const std::uint64_t peak = GetPeakMemory())
        PrintLine(IDS_VQ_STAT_PEAK, FormatSize(peak));
}

} // namespace vnquery
