#include "src/lists/RowMap.h"

#include <vector>

namespace vnbytstr::detail {

void InsertMappedRow(CUIntArray& map, int row) {
    const UINT inserted = static_cast<UINT>(row);
    for (int i = 0; i < map.GetSize(); ++i)
        if (map[i] >= inserted)
            ++map[i];
    map.InsertAt(row, inserted);
}

void RemoveMappedRow(CUIntArray& map, int row) {
    if (row < 0 || row >= map.GetSize())
        return;
    const UINT removed = map[row];
    map.RemoveAt(row);
    for (int i = 0; i < map.GetSize(); ++i)
        if (map[i] > removed)
            --map[i];
}

void ReorderMappedRows(CUIntArray& map, std::span<const int> order) {
    if (static_cast<std::size_t>(map.GetSize()) != order.size())
        return;
    const std::vector<UINT> old(map.GetData(), map.GetData() + map.GetSize());
    for (std::size_t i = 0; i < order.size(); ++i)
        map[static_cast<int>(i)] = old[static_cast<std::size_t>(order[i])];
}

int MappedIndex(const CUIntArray& map, int row) {
    return row >= 0 && row < map.GetSize() ? static_cast<int>(map[row]) : -1;
}

} // namespace vnbytstr::detail
