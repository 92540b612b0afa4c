// What the parts of a CListBoxEx ask of their list: its header control, its cell editors and its
// drop target. Apart from this they use the list as a window only.
#pragma once

#include "vnbytstr/ListColumn.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"
#include "vnbytstr/window/DropTarget.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/WindowTypes.h"

#include <span>

class CListBoxExHeadings;
class CWnd;

namespace vnbytstr::detail {

class ColumnView;

/// What CListBoxExHeadings asks. Columns count from 0, widths and positions are in pixels.
class VNBYTSTR_CONTROLS_API HeadingsOwner {
public:
    /// The columns by their numbers; valid until the number of columns changes.
    virtual std::span<const SListColumn> GetColumns() const = 0;
    /// Which of them are shown, and where; valid until any of that changes.
    virtual ColumnView GetColumnView() const = 0;
    /// The user has dragged a header to a position from the left, among the shown columns.
    virtual void DropColumn(int column, int position) = 0;
    /// The user wants to choose which columns are shown, with a menu at a point of the screen that
    /// lies on the header of `column` (-1: none).
    virtual void ChooseColumns(int column, CPoint screen) = 0;
    /// DT_ flag: where a column's name stands in its header.
    virtual UINT HeadingTextFlags(int column) const = 0;
    /// Pixels of the columns that are scrolled out at the left.
    virtual int GetSideShift() const = 0;
    /// Pixels of a scroll bar that stands left of the rows.
    virtual int GetRowsLeft() const = 0;
    /// Chooses the widths of columns that have none; only the first call that can has an effect.
    virtual void SetWidths() = 0;

    /// Changes a width while its divider is dragged; redraws nothing. Out of range: ignored.
    virtual void ResizeColumn(int column, int width) = 0;
    /// Makes the last shown column end at the header control's right edge, for which it must be
    /// `width` wide; negative: it begins right of that edge.
    virtual void FillLastColumn(int width) = 0;
    /// Columns were resized, so that everything right of `left`, in the list's client area, moved:
    /// redraws that part and moves the open editor.
    virtual void ColumnsMoved(int left, BOOL erase) = 0;
    /// Makes a column as wide as its header and values need.
    virtual void AutoFitCol(int column) = 0;

    /// Whether a click on a header sorts.
    virtual BOOL IsSortEnabled() const = 0;
    /// The column of the last sort; -1: not sorted.
    virtual int GetSortColumn() const = 0;
    /// An EListSortState.
    virtual int GetSortState() const = 0;
    /// Sorts by a column. The list or the header control may be destroyed meanwhile.
    virtual BOOL Sort(int column) = 0;
    /// Whether a value is being edited.
    virtual BOOL HasOpenEditor() const = 0;

    /// A header control begins (ends) to refer to this list, which tells it when the list ends.
    virtual void HeadingsServe(CListBoxExHeadings* headings, bool on) = 0;
    /// A header control that this list uses is being deleted.
    virtual void HeadingsEnd(const CListBoxExHeadings* headings) = 0;

protected:
    ~HeadingsOwner() = default;
};

/// What CListBoxCellEdit and CListBoxCellComboBox ask. The owner outlives its editors, since their
/// windows are its window's children.
class VNBYTSTR_CONTROLS_API CellEditorOwner {
public:
    /// The editor's window has been destroyed; its object is deleted after this call.
    virtual void EditorDestroyed(const CWnd* editor) = 0;

protected:
    ~CellEditorOwner() = default;
};

/// What CListDropTarget asks.
class VNBYTSTR_CONTROLS_API DropOwner {
public:
    /// Files are dragged over a point of the client area: makes the cell there the current one.
    /// DROPEFFECT_MOVE when files may be dropped on its row, else DROPEFFECT_NONE.
    virtual DROPEFFECT DragOver(CPoint point) = 0;
    /// Stores a file's name with the current row and opens the current cell.
    virtual void DropFile(const CString& name) = 0;

protected:
    ~DropOwner() = default;
};

} // namespace vnbytstr::detail
