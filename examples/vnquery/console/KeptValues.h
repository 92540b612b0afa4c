// The values that --save names.
#pragma once

#include "vnquery/console/Options.h"
#include "vnquery/result/RowSink.h"

#include <map>
#include <utility>
#include <vector>

namespace vnquery {

/// Keeps those values of the rows it takes. Only some pages of long ones stay in memory.
class KeptValues : public RowSink {
public:
    KeptValues(const std::vector<SaveRequest>& requests, Progress* progress);

    using Place = std::pair<std::size_t, std::size_t>; ///< row and column
    /// The values by their places; those that the result does not have are still NULL.
    const std::map<Place, Value>& Get() const { return m_values; }
    /// Saves them to the files of the requests. Throws Failure.
    void Save(const std::vector<SaveRequest>& requests, const ExportFormat& format,
              std::size_t rows, std::size_t columns);

protected:
    void DoNull() override { ++m_place.second; }
    void DoWhole(Value::Type type, std::string_view bytes) override;
    bool DoBegin(Value::Type type, std::optional<ULONGLONG> announced) override;
    void DoAppend(std::string_view piece) override;
    void DoEnd(ULONGLONG length) override;
    void DoEndRow() override { m_place = {m_place.first + 1, 0}; }

private:
    bool GoToNext();
    void ReleaseMemory(const Value& value);

    std::map<Place, Value> m_values;
    Place m_place;                              ///< of the next value
    std::map<Place, Value>::iterator m_current; ///< the value that arrives, or the end
    ULONGLONG m_pages = 0;                      ///< in memory, of values in stores
};

} // namespace vnquery
