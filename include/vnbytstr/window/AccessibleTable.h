// The interface through which an owner-drawn list describes itself to screen readers. The list
// supplies it (CWnd::SetAccessibleTable); the window layer builds the platform's accessible tree.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/WindowTypes.h"

/// A table of cells with a heading per column. Rows and columns count from 0. The window layer asks
/// only for what a screen reader asks for.
class VNBYTSTR_CONTROLS_API CAccessibleTable {
public:
    virtual ~CAccessibleTable() = default;

    /// How a column is sorted.
    enum class Sort { None, Ascending, Descending };

    /// The size of the table.
    virtual int GetAccessibleRowCount() const = 0;
    virtual int GetAccessibleColumnCount() const = 0;
    /// A cell's text as it is displayed.
    virtual CString GetAccessibleCellText(int row, int column) const = 0;
    virtual CString GetAccessibleHeading(int column) const = 0;
    /// What there is to say of a cell besides its text ("found").
    virtual CString GetAccessibleCellDescription(int row, int column) const {
        static_cast<void>(row);
        static_cast<void>(column);
        return {};
    }
    /// The column whose cells name the rows; -1: none does.
    virtual int GetAccessibleRowHeaderColumn() const { return -1; }
    virtual Sort GetAccessibleSort(int column) const = 0;
    /// What to say of a column sorted like that, in the user's language; English unless overridden.
    virtual CString GetAccessibleSortText(Sort sort) const;
    virtual bool IsAccessibleRowSelected(int row) const = 0;
    /// Selects (or deselects) a row as the user would. Returns whether that was possible.
    virtual bool SelectAccessibleRow(int row, bool on) = 0;
    /// The row and column that have the keyboard focus; -1 when none has.
    virtual int GetAccessibleFocusRow() const = 0;
    virtual int GetAccessibleFocusColumn() const { return -1; }
    /// A cell's rectangle in the list's client coordinates; empty when it is not in view.
    virtual CRect GetAccessibleCellRect(int row, int column) const = 0;
    /// A heading's rectangle in the list's client coordinates (above the client area: negative);
    /// empty when the column has no heading.
    virtual CRect GetAccessibleHeadingRect(int column) const {
        static_cast<void>(column);
        return {};
    }
    virtual bool IsAccessibleCellEditable(int row, int column) const {
        static_cast<void>(row);
        static_cast<void>(column);
        return false;
    }
};

/// What changed in a table.
enum class AccessibleChange { Rows, Columns, Sort, Selection, Focus, CellText };
/// Tells screen readers that something changed in the table of `window`. Cheap when no screen
/// reader runs.
VNBYTSTR_CONTROLS_API void NotifyAccessibility(HWND window, AccessibleChange change, int row = -1,
                                               int column = -1);
