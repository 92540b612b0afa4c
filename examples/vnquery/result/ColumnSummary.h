// What a column's values amount to.
#pragma once

#include "vnquery/result/ResultSet.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vnquery {

class Progress;

/// A sum of decimal numbers of any length, without rounding.
class ExactSum {
public:
    /// False, with the sum as it was, when the text is not a number such as -12.50 or 1e-7, or when
    /// its exponent is beyond 10,000.
    bool Add(std::string_view number);
    /// Such as "-12.5": without zeros at the end of the fraction.
    std::string Get() const;

private:
    /// Parts of nine digits by their place, 0 for units: each may be negative and longer for now.
    std::map<int, long long> m_parts;
};

struct ColumnSummary {
    std::size_t rows = 0;
    std::size_t nulls = 0;
    std::size_t numbers = 0;
    /// Of the numbers, exactly; texts and bytes are left out, and so is what is no number, such as
    /// NaN. "0" without numbers.
    std::string sum;
    /// In the order in which a column is sorted (see CRowSort): numbers come before texts, texts
    /// before bytes. Nothing when all values are NULL.
    std::optional<Value> minimum;
    std::optional<Value> maximum;
};

/// Of the values in those rows; the rows of `changed` count with the values given there. Throws
/// Interrupted, and what the result throws. Takes as long as sorting the column.
ColumnSummary Summarise(const ResultSet& result, std::size_t column,
                        const std::map<std::size_t, Value>& changed, std::vector<DWORD> rows,
                        Progress& progress);

} // namespace vnquery
