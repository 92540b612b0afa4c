// The filter row of a CListBoxEx: a field under each column's header, in which the user types a
// condition (CListBoxEx::EnableFilterRow).
//
// A filtered list: its rows are the shown ones. Row numbers, GetCount, selection, copying, LB_
// messages and screen readers know no others. Rows that stay keep their selection and all that
// belongs to them; the selection of those that vanish is lost. The row source is asked by its own
// numbers, and RowChanged takes them; GetUnfilteredRow and GetFilteredRow translate. The null
// marker stands for null.
//
// Texts of the list are filtered at once. Rows added later are shown until the program has handled
// its messages, and then filtered as well (RefreshFilter, after ListBoxAddRows); an edited row
// stays until the filter changes. SortInternal sorts all rows and returns an item for each, by
// their numbers without the filter.
//
// Rows of a source are looked at in parts of about 20 milliseconds between which the window handles
// its messages, and shown as they are found, unless the source filters by itself
// (CListRowSource::FilterRows). Each shown one costs 4 bytes. Up to 1000 selected rows stay
// selected.
#pragma once

#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

#include <memory>
#include <vector>

class CListBoxEx;

/// The list creates, moves, shows, enables and deletes it. Fields are edit controls and made when
/// their columns come into view. Each change of a field sets the list's condition for its column,
/// as soon as the program handles its messages.
///
/// Keys in a field: Tab and Shift+Tab go to the next and the previous column, Enter and Down to the
/// list, Escape empties the field, or goes to the list when it is empty. A condition that restricts
/// nothing, because it is not complete or compares a number with something else, is grey.
class VNBYTSTR_CONTROLS_API CListFilterRow : public CWnd {
    DECLARE_DYNAMIC(CListFilterRow)
public:
    CListFilterRow();
    ~CListFilterRow() override;

    using CWnd::Create;
    /// Creates the window as a child of `parent`, the list's parent. FALSE on failure.
    BOOL Create(CListBoxEx* list, CWnd* parent);
    /// In pixels.
    int GetDesiredHeight();
    /// A column's field; null while the column has not been in view.
    CEdit* GetField(int column) const;
    /// Brings the column into view and gives its field the focus.
    void FocusField(int column);

    /// Puts the fields under their columns.
    void PlaceFields();
    /// Shows the list's conditions in the fields.
    void UpdateFields();
    /// The list has other columns.
    void ColumnsReplaced();

    BOOL PreTranslateMessage(MSG* message) override;

protected:
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnSize(UINT type, int cx, int cy);
    HBRUSH OnCtlColor(CDC* dc, CWnd* control, UINT type);
    void OnPaint();
    DECLARE_MESSAGE_MAP()

private:
    class Field;

    CFont* ListFont() const;
    Field* MakeField(int column);
    void ApplyChanges();
    bool FieldKey(int column, UINT key);

    CListBoxEx* m_pList = nullptr;
    std::vector<std::unique_ptr<Field>> m_fields; ///< by column; null until needed
    bool m_bUpdating = false;                     ///< the fields' changes are not the user's
    bool m_bPosted = false;
};
