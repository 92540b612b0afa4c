// The list of the result's rows.
#pragma once

#include "vnquery/window/ResultDocument.h"

#include "vnbytstr/ListBoxEx.h"

namespace vnquery {

/// Shows a document. Besides a current row it has a current cell: the left and right keys move
/// through the columns of the row. Changed cells have a mark at their left edge.
class ResultList : public CListBoxEx {
public:
    explicit ResultList(ResultDocument& document) : m_document(document) {}

    BOOL CreateList(CWnd* parent, UINT id, UINT headingsId);

    /// Shows the document's columns and no rows.
    void ShowColumns();
    /// Gives editors to the columns that the document allows to be edited.
    void ShowEditors();
    /// Adds the document's last `count` shown rows.
    void AppendRows(std::size_t count);
    /// Fits columns without a width to their contents, within limits.
    void FitNewColumns();
    /// Shows a row, or all rows, again.
    void RefreshRow(std::size_t row);
    void RefreshAll();
    /// Stores the columns' widths in the document.
    void StoreWidths();

    /// -1 without a current row.
    int GetCurrentRow() const;
    int GetCurrentColumn() const { return m_column; }
    void SetCurrentCell(int row, int column);
    /// The row that a file was dropped on, or whose cell is being opened.
    int GetOpenedRow() const { return m_nCurRow; }

    BOOL Sort(int column) override;
    /// Sorts as the document's layout says.
    void RestoreSort();
    void DrawItem(LPDRAWITEMSTRUCT item) override;
    BOOL PreTranslateMessage(MSG* message) override;
    int ShowZoom(int row, int column, CString& value) override;

protected:
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonDblClk(UINT flags, CPoint point);
    void OnRButtonDown(UINT flags, CPoint point);
    DECLARE_MESSAGE_MAP()

private:
    CRect CellRect(int column, const RECT& row) const;
    void MoveColumn(int by);
    void NotifyParent() const;
    void TakeColumn(CPoint point);
    bool SortByNumbers(int column);
    bool SortByTexts(int column);
    BOOL RunCommand(unsigned command);

    ResultDocument& m_document;
    int m_column = 0;
};

} // namespace vnquery
