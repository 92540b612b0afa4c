// Takes the rows of a source, each value as its type and bytes.
#pragma once

#include "examples/vnquery/result/RowSource.h"

#include "tests/vnquery/SilentProgress.h"

#include <string>
#include <vector>

namespace vnquery::test {

struct Cell {
    Value::Type type = Value::Type::Null;
    std::string bytes;

    bool operator==(const Cell&) const = default;
};

using Rows = std::vector<std::vector<Cell>>;

class CellSink : public ValueSink {
public:
    CellSink(std::vector<Cell>& cells, Progress& progress) : ValueSink(&progress), m_cells(cells) {}

protected:
    void DoNull() override { m_cells.emplace_back(); }
    void DoWhole(Value::Type type, std::string_view bytes) override {
        m_cells.push_back({type, std::string(bytes)});
    }
    bool DoBegin(Value::Type type, std::optional<ULONGLONG>) override {
        m_cells.push_back({type, {}});
        return true;
    }
    void DoAppend(std::string_view piece) override { m_cells.back().bytes += piece; }
    void DoEnd(ULONGLONG length) override { m_length = length; }

private:
    std::vector<Cell>& m_cells;
    ULONGLONG m_length = 0;
};

/// Reads on to the last row, or `most` of them.
inline Rows Collect(RowSource& source, std::size_t most = static_cast<std::size_t>(-1)) {
    SilentProgress progress;
    Rows rows;
    while (rows.size() < most && source.Next()) {
        std::vector<Cell>& row = rows.emplace_back();
        CellSink sink(row, progress);
        for (std::size_t i = 0; i < source.GetColumns().size(); ++i)
            source.Read(i, sink);
    }
    return rows;
}

} // namespace vnquery::test
