// CRowFilter: which rows of a list are shown, by one condition per column as a user types it. It
// knows nothing of windows; CListBoxEx::SetColumnFilter uses it, and a CListRowSource may.
#pragma once

#include "vnbytstr/window/Export.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {
class CellCondition;
}

/// Conditions on the texts of a row's cells; a row matches when all of them hold.
///
/// | typed                         | the cell                                                    |
/// |-------------------------------|-------------------------------------------------------------|
/// | graz                          | contains the text, in either case                           |
/// | "graz"                        | the same; for texts that would mean something else          |
/// | =graz                         | is equal                                                    |
/// | <>graz, !=graz                | is not equal                                                |
/// | <graz, <=graz, >graz, >=graz  | is less, greater                                            |
/// | a..b, a.., ..b                | is not less than a and not greater than b                   |
/// | null, not null                | is (is not) null                                            |
///
/// A comparison with a column of numbers is one of numbers, exact however many digits they have
/// (blanks around, a sign, digits with a point, an exponent); cells that are not numbers do not
/// match. Otherwise texts are compared by the rules of the user's language, as a list sorts them:
/// without regard to case, kana type and width. Null matches no comparison, "<>" included; a cell
/// is null if its text stands for null (SetNullText), unless it is said otherwise. The second of
/// several operands may be in double quotes as well, so ="" finds empty cells.
///
/// Letters of both cases are alike as the ANSI code page pairs them. A condition that is not
/// complete (">" alone), or compares a number with something else, restricts nothing.
class VNBYTSTR_CONTROLS_API CRowFilter {
public:
    CRowFilter();
    ~CRowFilter();
    CRowFilter(const CRowFilter& other);
    CRowFilter& operator=(const CRowFilter& other);

    /// Sets or (with an empty text) removes the condition of a column, from 0. `isNumber`: the
    /// column holds numbers. Columns below 0 are ignored.
    void SetCondition(int column, std::string_view typed, bool isNumber = false);
    /// As it was typed; empty without one.
    std::string GetCondition(int column) const;
    /// False when the column has a condition that restricts nothing: it is not complete, or
    /// compares a number with something else.
    bool IsValid(int column) const;
    /// No condition restricts the rows.
    bool IsEmpty() const { return m_active.empty(); }
    void Clear();
    /// The text that stands for null; initially "-". Empty: no text does.
    void SetNullText(std::string_view text);

    /// The columns with a condition that restricts, in ascending order.
    std::span<const int> GetColumns() const { return m_active; }
    /// Whether a text meets the condition of the column `GetColumns()[index]`.
    bool MatchesCell(std::size_t index, std::string_view text) const;
    /// The same for a cell that is known to be null, or not to be.
    bool MatchesCell(std::size_t index, std::string_view text, bool isNull) const;
    /// Whether it matters for the condition of the column `GetColumns()[index]` if a cell is null.
    bool AsksForNull(std::size_t index) const;
    /// Whether a row matches. `cell(column)` is the text of one of its cells, as something that
    /// converts to std::string_view; it is asked for the columns of GetColumns, in their order,
    /// until one does not match.
    template <class CellOf>
    bool Matches(const CellOf& cell) const {
        for (std::size_t i = 0; i < m_active.size(); ++i)
            if (!MatchesCell(i, cell(m_active[i])))
                return false;
        return true;
    }

    /// Whether each row that matches this filter is known to match `other` as well, so that only
    /// those need to be looked at: a typed text has become longer, a condition has been added.
    bool Narrows(const CRowFilter& other) const;
    /// The same rows match, as far as that is known.
    bool operator==(const CRowFilter& other) const;

private:
    struct Entry;
    const Entry* Find(int column) const;
    void Refresh();

    std::vector<Entry> m_entries; ///< in ascending order of their columns
    std::vector<int> m_active;
    std::vector<std::shared_ptr<const vnbytstr::detail::CellCondition>> m_conditions;
    std::string m_null = "-";
};
