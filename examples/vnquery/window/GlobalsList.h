// The list of the global variables: name, value, meaning.
#pragma once

#include "vnquery/window/VariableKind.h"

#include "vnbytstr/ListBoxEx.h"

#include <string>
#include <vector>

namespace vnquery {

struct GlobalsRow {
    std::string name;
    std::string value;
    std::string meaning;
    VariableKind kind;
    bool isOwn = false;     ///< added by the user
    bool isChanged = false; ///< or new
};

/// The value column can be edited: switches with a drop-down list, numbers with a spin button,
/// others as text. Variables that only the program sets are grey.
class GlobalsList : public CListBoxEx {
public:
    static constexpr int kValueColumn = 1;

    explicit GlobalsList(std::vector<GlobalsRow>& rows) : m_rows(rows) {}

    BOOL CreateList(CWnd* parent, const RECT& rect, UINT id, UINT headingsId);
    /// Shows all rows again and selects one.
    void ShowRows(int selected);
    /// A value as it is shown: switches with a word after the digit.
    static std::string DisplayValue(const GlobalsRow& row);
    static std::string ValueOfDisplay(const GlobalsRow& row, const std::string& text);
    BOOL Sort(int) override { return FALSE; }
    void DrawItem(LPDRAWITEMSTRUCT item) override;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void PrepareEditor(int row);

    std::vector<GlobalsRow>& m_rows;
};

} // namespace vnquery
