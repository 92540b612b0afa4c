#include "vnquery/console/Statistics.h"

#include "vnquery/console/Process.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/result/ResultSet.h"

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

/// What values take.
struct Totals {
    std::size_t values = 0;
    std::size_t inStores = 0;
    ULONGLONG residentPages = 0;
    ULONGLONG swappedPages = 0;
    std::vector<SwapFile> files;
};

Totals AddUp(const KeptValues& kept) {
    Totals totals;
    for (const auto& [place, value] : kept.Get()) {
        ++totals.values;
        const CByteStream* stream = value.GetStream();
        const CByteStore* store = stream ? stream->GetStore() : nullptr;
        if (!store)
            continue;
        ++totals.inStores;
        totals.residentPages += store->GetResidentPageCount();
        totals.swappedPages += store->GetSwappedPageCount();
        if (store->GetSwappedPageCount() > 0)
            totals.files.push_back(
                {CellName(place.first, place.second), stream->GetFileName(), store->GetLength()});
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

void Statistics::DoWhole(Value::Type, std::string_view bytes) {
    ++m_values;
    m_bytes += bytes.size();
}

bool Statistics::DoBegin(Value::Type, std::optional<ULONGLONG>) {
    ++m_values;
    return false;
}

void Statistics::Print(const KeptValues& kept) const {
    const Totals totals = AddUp(kept);
    PrintLine(IDS_VQ_STAT_ROWS, GroupDigits(m_rows));
    PrintLine(IDS_VQ_STAT_VALUES,
              Text(IDS_VQ_STAT_VALUES_FIGURES,
                   {GroupDigits(m_values), GroupDigits(totals.values),
                    GroupDigits(totals.values - totals.inStores), GroupDigits(totals.inStores)}));
    PrintLine(IDS_VQ_STAT_BYTES, GroupDigits(m_bytes) + " (" + FormatSize(m_bytes) + ")");
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
