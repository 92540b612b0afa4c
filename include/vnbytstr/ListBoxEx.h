// CListBoxEx: a list box of several columns with a header control, cells edited in place, sorting,
// search by typing, and files dropped onto cells. docs/list-box.md is the guide.
#pragma once

#include "vnbytstr/ListBoxExHeadings.h"
#include "vnbytstr/ListColumn.h"
#include "vnbytstr/ListDropTarget.h"
#include "vnbytstr/ListFind.h"
#include "vnbytstr/ListMessages.h"
#include "vnbytstr/ListParts.h"
#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/AccessibleTable.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

#include <chrono>
#include <cstdarg>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

class CListFilterRow;
class CListRowSource;
class CRowFilter;

namespace vnbytstr::detail {
struct CellAddress;
}

/// The window is a system list box ("LISTBOX") with an owner-draw style and LBS_HASSTRINGS, made by
/// Create or subclassed in a dialog. Each row is one string of the list box: its values joined by
/// the separator, initially a tab. Rows and columns count from 0, pixels are device-independent.
///
/// Set-up: make the window; SetNumColumns; LoadColumnInfo, or names and widths one by one; then
/// as needed CreateHeadingsControl, EnableEditing, editors, EnableSort.
///
/// Setters ignore rows and columns out of range; getters return the default for them. A row with
/// too few values has empty ones; values beyond the columns are kept but not shown. A value that
/// contains the separator becomes two: choose a separator that no value contains (SetSeparator),
/// or pass values through CleanValue.
///
/// What belongs to a row (drop flag, subtype, data type, file name) moves with it when rows are
/// sorted, inserted and deleted, and is discarded by ResetContent.
///
/// While the parent handles a message of the list it may do anything, including destroying the
/// list and deleting this object. Main thread only.
class VNBYTSTR_CONTROLS_API CListBoxEx : public CWnd,
                                         public vnbytstr::detail::HeadingsOwner,
                                         public vnbytstr::detail::CellEditorOwner,
                                         public vnbytstr::detail::DropOwner {
    DECLARE_DYNAMIC(CListBoxEx)
public:
    CListBoxEx();
    ~CListBoxEx() override;

    // --- set-up ----------------------------------------------------------------------------------
    /// Uses a header control made elsewhere, or none if null. Ownership is not transferred; one
    /// that is deleted before the list is forgotten by it.
    virtual void SetHeadingsControl(CListBoxExHeadings* headings);
    /// Creates the list's embedded header control, with that control id, above the list, and lets
    /// files be dropped on cells. Called again, it makes the control anew. FALSE when the header
    /// control cannot be created.
    virtual BOOL CreateHeadingsControl(UINT id);
    /// Puts the header control directly above the list, at its desired height and the list's
    /// width. If there is too little room above, the list's top moves down and its bottom stays.
    virtual void PositionHeadings();
    /// Discards all columns and starts with `count` new ones (0 or less: plain rows of one text).
    virtual void SetNumColumns(int count);
    /// Reads names and widths of all columns from a string resource: for each the name, a line
    /// feed, the width in pixels (1 or more) and a line feed (optional at the end). FALSE when
    /// there is no such string or it has another form; names and widths read before that stay set.
    virtual BOOL LoadColumnInfo(UINT id, HINSTANCE instance);
    /// In pixels. 0: SetWidths chooses the width, if it has not run yet. Afterwards the last column
    /// of a list with a header control keeps ending at the control's right edge.
    virtual void SetColumnWidth(int column, int width);
    /// For a column without width: a percentage of the list's width inside its border; 0: none.
    virtual void SetFractionalColumnWidth(int column, int percent);
    /// Pixels kept free at the column's right edge; column -1: every column.
    virtual void SetColumnSpacing(int column, int spacing);
    virtual void SetColumnName(int column, UINT id, HINSTANCE instance); ///< a string resource
    virtual void SetColumnName(int column, LPCTSTR name);
    /// How the column sorts: 0 as text, any other value as an integer.
    virtual void SetColumnType(int column, int type);
    virtual void EnableEditing(BOOL on = TRUE);
    /// Whether values can be changed: EnableEditing is on, SetReadOnly is not.
    BOOL IsEditingEnabled() const { return m_bEditing && !m_bReadOnly; }
    /// An EListEditor; unknown values mean kEditorNone, a column that is not edited.
    virtual void SetEditorType(int column, int type);
    virtual int GetEditorType(int column);
    /// In bytes; 0: only the edit control's own limit.
    virtual void SetEditorMaxLength(int column, int length);
    /// Inclusive, for kEditorNumber. The spinner keeps to it; typed values are not range-checked,
    /// the parent decides about them.
    virtual void SetEditorRange(int column, LONG minimum, LONG maximum);
    virtual void SetEditorStrings(int column, const CStringArray& strings);
    virtual void ResetEditorStrings(int column); ///< the choices of a combo editor
    /// Pixels kept free before the text of every column; initially 2.
    virtual void SetOffset(int offset);
    virtual void EnableSort(BOOL on = TRUE); ///< lets clicks on column headers sort
    /// Sorts by a column: ascending, or descending when the last sort was ascending by the same
    /// column. An open editor is stored first. Returns an array with an SSortItem for each row in
    /// the new order, to be freed with delete[]; null when nothing was sorted (LBS_SORT style, no
    /// such column, rows of a source, or the editor's value was refused). Texts are ordered by the
    /// rules of the user's language, ignoring case, kana type and width; equal ones keep their
    /// order, reversed in a descending sort.
    ///
    /// Sort calls it, too. An override gets all values then, unless its class has said with
    /// SetSortValues that it does not need them, which saves a copy of each.
    virtual SSortItem* SortInternal(int column);
    /// The same without the array; returns whether the rows were sorted.
    BOOL Sort(int column) override;
    /// Chooses the widths of columns that have none. Takes effect once: when the list is first
    /// painted, sized or hit-tested and has columns and a width.
    void SetWidths() override;
    /// The height of every row: the text height without internal leading plus 4, but at least the
    /// text height; measured once, with the font of that time. Not for LBS_OWNERDRAWFIXED.
    virtual void MeasureItem(LPMEASUREITEMSTRUCT item);
    virtual void DrawItem(LPDRAWITEMSTRUCT item);
    /// Draws a row's values into `rect`.
    virtual void DrawColumns(CDC* dc, CRect rect, LPCTSTR text);
    /// Enables or disables the list and its header control. 1 when both are now as asked, else 0
    /// (there is no window). A list that is disabled while it is edited stores the value, or gives
    /// it up if it is refused.
    BOOL EnableWindow(BOOL on = TRUE) override;
    BOOL PreTranslateMessage(MSG* message) override;
    /// Called on Shift+F2: shows a value and lets the user change it, here with the plain-text
    /// CZoomDialog. Override it to show hexadecimal or a picture, say. Returns IDOK with the new
    /// `value`, or IDCANCEL. Unless IsEditingEnabled the value is only shown, and IDOK ignored.
    virtual int ShowZoom(int row, int column, CString& value);

    void SetRightAligned(BOOL on);
    /// Search by typing. The row found is selected, of which the parent is told (LBN_SELCHANGE); in
    /// a list with several selections it only gets the focus.
    void SetPrintInput(BOOL on) { m_bPrintInput = on; }
    /// Shows grey text and prevents editing; a change enables or disables the window.
    void SetReadOnly(BOOL on);
    BOOL IsReadOnly() const { return m_bReadOnly; }
    /// The text that joins values in rows added from now on; existing rows are not changed. Null
    /// and empty are ignored. "\x1F", the unit separator, occurs in hardly any value.
    void SetSeparator(LPCTSTR separator);
    const CString& GetSeparator() const { return m_strSeparator; }
    /// `value` with each separator in it replaced, so that it remains one value.
    CString CleanValue(LPCTSTR value, LPCTSTR replacement = " ") const;

    int GetNumColumns() const { return m_nColumns; }
    int GetColumnWidth(int column) const;
    CString GetColumnName(int column) const;
    BOOL IsSortEnabled() const override { return m_bSortEnabled; }
    int GetSortColumn() const override { return m_nSortColumn; }    ///< of the last sort; -1: none
    int GetSortState() const override { return m_nSortState; }      ///< an EListSortState
    CListBoxExHeadings* GetHeadings() const { return m_pHeadings; } ///< null: none
    CWnd* GetActiveEditor() const { return m_pActiveEditor; } ///< the open cell editor, or null

    // --- rows and cells --------------------------------------------------------------------------
    /// Adds a row: one `const char*` per column (null means empty), or the first one alone when
    /// there are no columns. Returns its index, or LB_ERR, LB_ERRSPACE. The list box gets
    /// LB_ADDSTRING; in an unsorted list that message does not pass through WindowProc.
    int AddStringItems(LPCTSTR first, ...);
    /// The same at a row (-1: at the end).
    int InsertStringItems(int row, LPCTSTR first, ...);
    /// FALSE when there is no such row or column, and when a source refuses the text.
    BOOL UpdateStringItem(int row, int column, LPCTSTR text);
    /// FALSE, and an empty text, when there is no such row or column.
    BOOL GetStringItem(int row, int column, CString& text) const;
    /// One `CString*` per column; null skips a column. FALSE when there is no such row.
    BOOL GetStringItems(int row, CString* first, ...) const;
    int GetCount() const;
    /// Removes all rows and what belongs to them, and forgets the sort; an open editor closes
    /// without storing. With a source: selection and sort are forgotten, and its rows are shown
    /// from the top.
    void ResetContent();
    BOOL HasSel() const { return GetFirstSel() >= 0; }
    int GetFirstSel() const;  ///< the first selected row, or -1
    void SetOnlySel(int row); ///< selects that row only
    /// The column that was last edited or had a file dragged over it; initially -1.
    int GetSelColumn() const { return m_nCurColumn; }
    /// The row and the column at a point of the client area, -1 for none.
    void HitTest(CPoint point, int& row, int& column);

    void AddFileName(int row, LPCTSTR name);
    /// Null when the row has no file name. Of a source's row: valid until the next call.
    LPCTSTR GetFileName(int row) const;
    BOOL GetDragDrop(int row) const; ///< whether files may be dropped on the row
    void SetDragDrop(int row, BOOL on);
    /// Refines kEditorText: kEditorFile is a file, kEditorFolder a folder, any other value plain
    /// text (initially 1). One byte is stored.
    short GetEditSubType(int row) const;
    void SetEditSubType(int row, short type);
    /// The SQL data type of the row's value, initially 0. EListDataType names the large objects.
    short GetEditDataType(int row) const;
    void SetEditDataType(int row, short type);
    /// Replaces a large object's value by the text shown for it. Null, default and empty values,
    /// and values of other types, are not changed.
    void GetDisplayString(CString& value, int row) const;

    // --- rows of a source ------------------------------------------------------------------------
    /// From now on the rows are those of `source`, which the list does not own; null: texts of the
    /// list again, none at first. Selection, sort and what belonged to rows are forgotten, an open
    /// editor closes without storing. FALSE, and no source, without a window and for a list that
    /// is not drawn by its owner or has LBS_SORT. CListRowSource says what such a list is.
    BOOL SetRowSource(CListRowSource* source);
    CListRowSource* GetRowSource() const; ///< null without one
    /// The source has more or fewer rows than before. Selection, caret and the rows in view stay as
    /// they are as long as their rows are there; takes no longer for many rows than for few.
    /// ResetContent instead when all rows are others.
    void RowsChanged();
    /// Draws a row again whose texts the source has changed; `row` is the source's number.
    void RowChanged(int row);
    /// The source has sorted its rows by a column, as an EListSortState says (kNotSorted: they are
    /// in no column's order): the headings show it, and the selection follows the rows as far as
    /// the source knows where they are (CListRowSource::GetSortedRow).
    void SourceSorted(int column, int state);

    // --- columns as the user wants them ----------------------------------------------------------
    /// An EListAlignment; column -1: every column. Names in the header control and texts in edit
    /// controls stand where the cells do; combo boxes follow SetRightAligned alone.
    void SetColumnAlignment(int column, int alignment);
    int GetColumnAlignment(int column) const;
    /// The columns from left to right, hidden ones included. FALSE when `order` does not name each
    /// column once. Column numbers everywhere else stay what they are.
    BOOL SetColumnOrder(std::span<const int> order);
    std::vector<int> GetColumnOrder() const;
    /// Hides or shows a column; its width and place are kept. FALSE when there is no such column,
    /// and for the last one that is shown. The cells of hidden columns are filtered and copied.
    BOOL HideColumn(int column, BOOL hide = TRUE);
    BOOL IsColumnHidden(int column) const;
    /// So many shown columns stay in view when EnableSideScroll scrolls; initially 0.
    void SetFrozenColumns(int count);
    int GetFrozenColumns() const { return m_nFrozen; }
    /// What CListBoxExHeadings::EnableTips shows instead of name and type.
    void SetColumnTip(int column, LPCTSTR text);
    CString GetColumnTip(int column) const;
    /// The type of the column's values as the user is told it ("DECIMAL(10,2)").
    void SetColumnTypeText(int column, LPCTSTR text);
    void EnableZebra(BOOL on = TRUE); ///< every other row has a slightly different background

    // --- filter ----------------------------------------------------------------------------------
    /// Shows only the rows that meet a condition on a column, and those set for other columns;
    /// null or empty: the column has none. FALSE when there is no such column, or an open editor's
    /// value was refused. CRowFilter says what a condition may be, ListFilterRow.h what a filtered
    /// list is. Columns with a SetColumnType other than 0 hold numbers.
    BOOL SetColumnFilter(int column, LPCTSTR condition);
    CString GetColumnFilter(int column) const;  ///< empty for none
    BOOL IsColumnFilterValid(int column) const; ///< CRowFilter::IsValid
    BOOL ClearFilter();                         ///< FALSE when an open editor's value was refused
    BOOL IsFiltered() const;                    ///< some condition restricts the rows
    BOOL IsFilterDone() const; ///< FALSE while rows of a source are still being looked at
    /// Applies the filter to all rows again, after texts have changed.
    void RefreshFilter();
    int GetUnfilteredCount() const; ///< of all rows
    /// A row's number without the filter; -1 when there is no such row.
    int GetUnfilteredRow(int row) const;
    /// Where the row with that number without the filter is shown; -1 when it is not.
    int GetFilteredRow(int unfiltered) const;
    /// Shows fields between header control and list in which the user types conditions. The list's
    /// top moves down by their height. Off: the fields go, and with them the filter.
    BOOL EnableFilterRow(BOOL on = TRUE);
    CListFilterRow* GetFilterRow() const { return m_pFilterRow.get(); } ///< null when off
    int GetHeadersHeight() const; ///< pixels for header control and filter row, above the list

    // --- find, see ListFind.h --------------------------------------------------------------------
    /// Looks for a text, with EListFind flags, from the current cell on; null or empty: for none.
    EFindResult FindText(LPCTSTR text, unsigned flags = 0);
    EFindResult FindNext();     ///< the next hit after the current cell
    EFindResult FindPrevious(); ///< the one before it
    void ClearFind();           ///< takes the marks away; the selection stays
    int GetFoundColumn() const; ///< of the last hit, while its row is the current one; else -1
    int GetFindCount() const;   ///< cells with the text; -1: not counted, or not yet (kFindCount)

    // --- editing ---------------------------------------------------------------------------------
    /// Closes an open editor without storing, selects the row and opens an editor in the cell; the
    /// parent may be asked first (VNM_OPENCELL).
    void EditColumn(int row, int column);
    /// The same, but does nothing while the parent is being asked about a value.
    void StartEditing(int row, int column);
    /// Closes the editor without storing. VNM_EDITORCLOSED is posted even if none was open.
    void StopEditing();
    /// Stores the editor's value in the row being edited and closes the editor; with `notify` the
    /// parent is asked first. 0 when the value was refused (the editor stays open) or the parent is
    /// being asked right now. A value that was changed is stored without line breaks and, in a list
    /// with texts of its own, without separators (a blank for each); an editor that only lets
    /// choose keeps the old value until something is chosen.
    BOOL CellEnter(BOOL notify);
    void CellCancel(); ///< closes the editor, if one is open, without storing
    /// Makes a column as wide as its header and its widest value need. Up to 1000 rows are all
    /// measured; of more rows, the visible ones and the 1000 with the longest texts. Of a source's
    /// rows, the visible ones and up to 1000 spread over the others, for about 20 milliseconds.
    void AutoFitCol(int column) override;

    // --- extensions, off by default --------------------------------------------------------------
    /// AutoFitCol for every column; of a source's rows, the cells in view and others, for about 40
    /// milliseconds in all.
    void FitAllColumns();
    /// Ctrl+0 in an editor replaces its text by the null marker.
    void EnableSetNull(BOOL on = TRUE) { m_bSetNull = on; }
    /// Ctrl+C without an open editor copies the selected rows, with column names, to the
    /// clipboard.
    void EnableCopy(BOOL on = TRUE) { m_bCopy = on; }
    /// If the columns do not fit, the list scrolls horizontally together with its header control;
    /// the last column keeps its width and only grows to fill the header control. For a list made
    /// with WS_HSCROLL. (By default columns past the right edge are not visible.)
    void EnableSideScroll(BOOL on = TRUE);
    /// How far the list is scrolled horizontally: pixels hidden at the left, or at the right in a
    /// mirrored list.
    int GetSideShift() const override;
    /// Scrolls horizontally until the column is in view; of a column that is too wide, its start.
    void ShowColumn(int column);
    /// A column's width in pixels, without what was added to the last one to fill the header
    /// control.
    int GetOwnColumnWidth(int column) const;
    /// The selected rows as kCopyTabs. Empty when it would be longer than a CString can be, 2 GB.
    CString GetSelectionText(BOOL withHeadings) const;
    /// The selected rows in another form; empty when it would be longer than a CString can be.
    CString GetSelectionAs(EListCopyFormat format, BOOL withHeadings) const;
    /// Puts that on the clipboard. FALSE when nothing is selected.
    BOOL CopySelection(EListCopyFormat format, BOOL withHeadings);
    /// One value: as it is for kCopyTabs, else as it would be in a row, without a line end.
    CString GetCellAs(int row, int column, EListCopyFormat format) const;
    BOOL CopyCell(int row, int column, EListCopyFormat format); ///< FALSE: there is no such cell
    /// Null is drawn in grey, in rows that are not selected.
    void EnableGreyNulls(BOOL on = TRUE);

protected:
    void Init(); ///< the state of a new list
    int OnCreate(LPCREATESTRUCT create);
    void OnDestroy();
    void OnEnable(BOOL on);
    void OnPaint();
    void OnSize(UINT type, int cx, int cy);
    void OnWindowPosChanging(WINDOWPOS* place);
    void OnVScroll(UINT code, UINT position, CWnd* bar);
    void OnHScroll(UINT code, UINT position, CWnd* bar);
    void OnChar(UINT ch, UINT repeat, UINT flags);
    UINT OnGetDlgCode();
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonDblClk(UINT flags, CPoint point);
    void OnRButtonDown(UINT flags, CPoint point);
    BOOL OnMouseWheel(UINT flags, short delta, CPoint screen);
    void OnKillFocusOfEdit();               ///< stores the value if the focus stays in this program
    void OnBrowserButtonClicked();          ///< of the open cell's file or folder
    BOOL ProcessInputMessage(MSG* message); ///< handles a key; TRUE if it was used
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void PreSubclassWindow() override;
    DECLARE_MESSAGE_MAP()

    CString m_strSeparator;                     ///< between the values in a row's text
    CWnd* m_pActiveEditor = nullptr;            ///< the open editor
    BOOL m_bRightAligned = FALSE;               ///< see SetRightAligned
    int m_nColumns = 0;                         ///< columns, their number
    std::unique_ptr<SListColumn[]> m_pColumns;  ///< the columns
    std::unique_ptr<int[]> m_pFractionalWidths; ///< percent per column; may be null
    BOOL m_bWidthsComputed = FALSE;             ///< the columns have their widths
    int m_nOffset = 2;                          ///< pixels before a cell's text
    CListBoxExHeadings m_Headings;              ///< the list's own header control
    CListBoxExHeadings* m_pHeadings = nullptr;  ///< the one in use
    BOOL m_bSortEnabled = FALSE;                ///< see EnableSort
    int m_nSortColumn = -1;                     ///< sorted by it; -1: not sorted
    int m_nSortState = kNotSorted;              ///< and how
    BOOL m_bEditing = FALSE;                    ///< see EnableEditing
    int m_nCurRow = -1;                         ///< its cell
    int m_nCurColumn = -1;                      ///< its cell
    BOOL m_bCommitting = FALSE;   ///< the parent (or the source) is being asked about a value
    BOOL m_bPrintInput = FALSE;   ///< typing searches
    CString m_strTyped;           ///< what has been typed
    DWORD m_dwTypedTime = 0;      ///< and when
    CByteArray m_DragDrop;        ///< per row
    CByteArray m_EditSubTypes;    ///< per row
    CWordArray m_EditDataTypes;   ///< per row
    CStringArray m_FileNames;     ///< per row
    CString m_strNull;            ///< stands for a null value
    CString m_strDefault;         ///< stands for a default value
    BOOL m_bReadOnly = FALSE;     ///< see SetReadOnly
    CListDropTarget m_DropTarget; ///< takes files

    /// FALSE: this class's SortInternal does not need the items' values during Sort. Without an
    /// override that is so anyway for CListBoxEx and CVNListBox.
    void SetSortValues(BOOL on) { m_bSortValuesWanted = on; }
    /// SortInternal when only the order of its items is needed.
    SSortItem* SortForOrder(int column);

private:
    class Lifeline;
    class Accessible;
    class Rows;
    class TextRows;
    class SourceRows;
    class Finder;
    struct CellPlace;
    struct DrawnRow;

    std::span<const SListColumn> GetColumns() const override {
        return {m_pColumns.get(), static_cast<std::size_t>(m_nColumns)};
    }
    vnbytstr::detail::ColumnView GetColumnView() const override;
    void DropColumn(int column, int position) override;
    void ChooseColumns(int column, CPoint screen) override;
    UINT HeadingTextFlags(int column) const override;
    void ResizeColumn(int column, int width) override;
    int GetRowsLeft() const override;
    BOOL HasOpenEditor() const override { return m_pActiveEditor != nullptr; }
    void HeadingsServe(CListBoxExHeadings* headings, bool on) override;
    void HeadingsEnd(const CListBoxExHeadings* headings) override;
    void FillLastColumn(int width) override;
    void ColumnsMoved(int left, BOOL erase) override;
    void EditorDestroyed(const CWnd* editor) override;
    DROPEFFECT DragOver(CPoint point) override;
    void DropFile(const CString& name) override;

    void UseHeadings(CListBoxExHeadings* headings);
    void KeepLastColumnAtEdge();
    void SelectFound(int row);
    void NotifySelChange();
    void Prepare();
    void CheckInvariants() const;
    void RedrawAll();
    void PlaceHeaders(const CRect& rect);
    BOOL IsColumn(int column) const { return column >= 0 && column < m_nColumns; }
    int LastColumn() const;
    void ColumnsRearranged(int lastBefore);
    void ColumnsChangedByUser();
    bool IsRightAligned(int column) const;
    bool IsNumberColumn(int column) const;
    BOOL IsRow(int row) const { return row >= 0 && row < GetCount(); }
    BOOL IsCell(int row, int column) const;
    BOOL HasManySelected() const;
    void UseRowsOf(CListRowSource* source);
    void InvalidateRow(int row);
    void ReadSourceAgain();
    int SendJoined(UINT message, int row, LPCTSTR first, std::va_list rest);
    int MeasureColumn(int column, std::chrono::steady_clock::time_point until);
    int EffectiveEditorType(int row, int column) const;
    BOOL IsFileCell(int row, int column) const;
    BOOL ParentTakesCell(int column);
    BOOL PlaceCell(int row, int column, CellPlace& place);
    CWnd* MakeEdit(int column, int type, LPCTSTR value, const CRect& rect);
    CWnd* MakeCombo(int column, int type, LPCTSTR value, const CRect& rect);
    CString EditorValue() const;
    CString StorableValue(CString value, bool oneLine) const;
    BOOL Refuse(const CString& value);
    BOOL LeaveCell();
    void CloseEditor();
    void CloseEditorForGood();
    bool CloseEditorOfGoingRow(UINT message, WPARAM wParam);
    void EditUnder(int row, int column);
    void EditNextCell(const vnbytstr::detail::CellAddress& from, bool forward);
    void MoveToNextCell(BOOL forward);
    int ColumnToZoom(int row) const;
    BOOL ZoomCell();
    void OpenFile(const CString& name);
    void RowsInserted(int row);
    void RowDeleted(int row);
    void FollowEditedRow();
    void UpdateExtent();
    void SideShiftChanged();
    void RefocusEditor();
    LRESULT OnOwnMessage(UINT message);
    void ForgetRows();
    void ApplyOrder(const std::vector<DWORD>& order, const SSortItem* items);
    void ReorderRowData(const DWORD* order, int count);
    std::vector<bool> SelectedRows() const;

    bool CanFind(const Lifeline& life);
    CRowFilter& Filter();
    BOOL UseFilter(const CRowFilter& filter);
    void ApplyFilter();
    void RowsAddedToFilter();
    void FilterChanged();
    void PlaceFilterFields();
    bool IsFiltering() const;

    BOOL m_bFilterStale = FALSE; ///< kApplyFilter is posted
    std::unique_ptr<CRowFilter> m_pFilter;
    std::unique_ptr<CListFilterRow> m_pFilterRow;
    BOOL m_bSortValues = TRUE;
    BOOL m_bSortValuesWanted = TRUE;
    BOOL m_bSetNull = FALSE;
    BOOL m_bCopy = FALSE;
    BOOL m_bSideScroll = FALSE;
    BOOL m_bZebra = FALSE;
    std::vector<int> m_order; ///< all columns from left to right; empty: by their numbers
    std::vector<int> m_shown; ///< those shown; empty: all, by their numbers
    int m_nFrozen = 0;
    int m_nLastOwnWidth = 0;   ///< of the last shown column, before it grew to fill the headers
    int m_nItemHeight = 0;     ///< the result of MeasureItem; 0: not measured yet
    CString m_strRefused;      ///< the value refused last
    unsigned m_nRefusedIn = 0; ///< in which action of the hand
    BOOL m_bRefused = FALSE;   ///< those two are set
    int m_nClickedColumn = -1; ///< of a list that is not edited: the column Shift+F2 shows
    std::vector<CListBoxExHeadings*> m_Serving; ///< header controls that refer to this list
    Lifeline* m_pLifeline = nullptr;
    std::unique_ptr<Accessible> m_pAccessible;
    std::unique_ptr<Rows> m_pRows; ///< never null
    std::unique_ptr<Finder> m_pFinder;
    const DrawnRow* m_pDrawn = nullptr;
    BOOL m_bGreyNulls = FALSE;
};
