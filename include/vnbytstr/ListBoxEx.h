// CListBoxEx: a list of many columns with headings, cells that are edited in place, sorting,
// search by typing, and files dropped onto cells. docs/list-box.md is the guide.
#pragma once

#include "vnbytstr/ListBoxExHeadings.h"
#include "vnbytstr/ListColumn.h"
#include "vnbytstr/ListDropTarget.h"
#include "vnbytstr/ListParts.h"
#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/AccessibleTable.h"
#include "vnbytstr/window/Wnd.h"

#include <cstdarg>
#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {
struct CellAddress;
}

/// Posted to the list's parent when an editor closes, be its value stored or not.
inline constexpr UINT VNM_EDITORCLOSED = 0x7FFC;
/// Sent to the parent before a value is stored: wParam the column, lParam the new value (a
/// `const char*`). 0 stores it; anything else refuses it, 2 also ends the zoom dialog.
inline constexpr UINT VNM_STOREVALUE = 0x7FFD;
/// Sent to the parent before a plain-edit or file cell is opened: wParam the column. Nonzero: the
/// parent deals with the cell itself, no editor opens.
inline constexpr UINT VNM_OPENCELL = 0x7FFE;

/// One row in the result of a sort.
struct SSortItem {
    CString m_strValue;  ///< the value of the column sorted by
    int m_nSelected = 0; ///< the row's selected state
    int m_nIndex = 0;    ///< the row before the sort
};

/// The window is a system list box ("LISTBOX") with an owner-draw style and LBS_HASSTRINGS: made by
/// Create or subclassed in a dialog. Each row is one string of the list box, its values joined by
/// the separator, a tab at first. Rows and columns count from 0, pixels are device-independent.
///
/// Set-up: make the window; SetNumColumns; LoadColumnInfo, or names and widths one by one; then
/// what is wanted of CreateHeadingsControl, EnableEditing, editors, EnableSort.
///
/// Rows and columns out of range are ignored by setters; getters answer them with the default. A
/// row with too few values has empty ones; values beyond the columns are kept, not shown. A value
/// that holds the separator becomes two: choose a separator that no value holds (SetSeparator), or
/// pass values through CleanValue.
///
/// What belongs to a row (drop flag, subtype, data type, file name) goes along when rows are
/// sorted, inserted and deleted, and ends with ResetContent.
///
/// The parent may do anything while it is asked, also destroy the list and delete this object.
/// Main thread only.
class VNBYTSTR_API CListBoxEx : public CWnd,
                                public vnbytstr::detail::HeadingsOwner,
                                public vnbytstr::detail::CellEditorOwner,
                                public vnbytstr::detail::DropOwner {
    DECLARE_DYNAMIC(CListBoxEx)
public:
    CListBoxEx();
    ~CListBoxEx() override;

    // --- set-up ----------------------------------------------------------------------------------
    /// Uses a strip made elsewhere; null: none. It stays its owner's.
    virtual void SetHeadingsControl(CListBoxExHeadings* headings);
    /// Makes the list's own strip, with that control id, above the list, and lets files be dropped
    /// on cells. FALSE when the strip cannot be made.
    virtual BOOL CreateHeadingsControl(UINT id);
    /// Puts the strip directly above the list, at its desired height and the list's width. Where
    /// there is not that much room above, the list's top gives way, its bottom stays.
    virtual void PositionHeadings();
    /// Forgets all columns and begins with `count` new ones (0, or less: plain rows of one text).
    virtual void SetNumColumns(int count);
    /// Reads names and widths of all columns from a string resource: for each the name, a line
    /// feed, the width in pixels (1 or more), a line feed (may be missing at the end). FALSE when
    /// there is no such string or it is not like that; columns read before stay set.
    virtual BOOL LoadColumnInfo(UINT id, HINSTANCE instance);
    /// In pixels; 0: to be sized.
    virtual void SetColumnWidth(int column, int width);
    /// In percent of the list's client width, for a column without width; 0: none.
    virtual void SetFractionalColumnWidth(int column, int percent);
    /// Pixels kept free at the column's right edge; column -1: every column.
    virtual void SetColumnSpacing(int column, int spacing);
    /// From a string resource.
    virtual void SetColumnName(int column, UINT id, HINSTANCE instance);
    virtual void SetColumnName(int column, LPCTSTR name);
    /// How the column sorts: 0 as text, else as integer.
    virtual void SetColumnType(int column, int type);
    virtual void EnableEditing(BOOL on = TRUE);
    /// An EListEditor; 0: the column is not edited.
    virtual void SetEditorType(int column, int type);
    virtual int GetEditorType(int column);
    /// In bytes; 0: no limit but the editor's own.
    virtual void SetEditorMaxLength(int column, int length);
    /// Inclusive, for editor type 4. The spinner keeps to it; a number typed is the parent's to
    /// refuse.
    virtual void SetEditorRange(int column, LONG minimum, LONG maximum);
    /// What combo editors offer.
    virtual void SetEditorStrings(int column, const CStringArray& strings);
    virtual void ResetEditorStrings(int column);
    /// Pixels kept free before the text of every column; 2 at first.
    virtual void SetOffset(int offset);
    /// Lets clicks on headings sort.
    virtual void EnableSort(BOOL on = TRUE);
    /// Sorts by a column: upwards, or downwards when the last sort was upwards by the same column.
    /// Returns an array of an SSortItem for each row in its new order (to be freed with delete[]);
    /// null when there was no sort (LBS_SORT style, no such column). Texts are ordered as the
    /// language does, ignoring case, kana type and width; equal ones keep their order (downwards:
    /// the reverse).
    virtual SSortItem* SortInternal(int column);
    /// The same without the array. Whether there was a sort. SortInternal leaves the items' values
    /// empty when it is called from here, unless SetSortValues asked for them.
    BOOL Sort(int column) override;
    /// Gives columns without width theirs. Runs once, when the list is first painted, sized or
    /// asked; not before there are columns and the list has a width.
    void SetWidths() override;
    /// Answers the height of every row: text height without internal leading, plus 4, measured once
    /// with the list's font of that time.
    virtual void MeasureItem(LPMEASUREITEMSTRUCT item);
    virtual void DrawItem(LPDRAWITEMSTRUCT item);
    /// Draws a row's values into `rect`.
    virtual void DrawColumns(CDC* dc, CRect rect, LPCTSTR text);
    /// Also the headings strip's. 1 when both now are as asked, else 0 (there is no window).
    BOOL EnableWindow(BOOL on = TRUE) override;
    BOOL PreTranslateMessage(MSG* message) override;
    /// Shift+F2 shows a value and lets it be changed: the plain-text CZoomDialog here. A program
    /// overrides it to show hex, or a picture. Returns IDOK with `value` changed, or IDCANCEL.
    virtual int ShowZoom(int row, int column, CString& value);

    void SetRightAligned(BOOL on);
    /// Search by typing.
    void SetPrintInput(BOOL on) { m_bPrintInput = on; }
    /// Shows grey text and lets nothing be edited; a change enables or disables the window.
    void SetReadOnly(BOOL on);
    BOOL IsReadOnly() const { return m_bReadOnly; }
    /// Joins the values of rows added from now on; rows that are there stay as they are. Null or
    /// empty is ignored. "\x1F", the unit separator, is in hardly any value.
    void SetSeparator(LPCTSTR separator);
    const CString& GetSeparator() const { return m_strSeparator; }
    /// `value` with each separator in it replaced, so that it stays one value.
    CString CleanValue(LPCTSTR value, LPCTSTR replacement = " ") const;

    int GetNumColumns() const { return m_nColumns; }
    int GetColumnWidth(int column) const;
    CString GetColumnName(int column) const;
    BOOL IsSortEnabled() const override { return m_bSortEnabled; }
    /// -1: not sorted.
    int GetSortColumn() const override { return m_nSortColumn; }
    /// 0 not sorted, 1 upwards, 2 downwards.
    int GetSortState() const override { return m_nSortState; }
    /// Null when there is none.
    CListBoxExHeadings* GetHeadings() const { return m_pHeadings; }
    /// The open editor; null when none is.
    CWnd* GetActiveEditor() const { return m_pActiveEditor; }

    // --- rows and cells --------------------------------------------------------------------------
    /// Adds a row; one `const char*` per column (null is empty), without columns the first only.
    /// Returns its index, or LB_ERR, LB_ERRSPACE. It goes to the list box as LB_ADDSTRING; of an
    /// unsorted list the message does not come through WindowProc.
    int AddStringItems(LPCTSTR first, ...);
    /// The same at a row (-1: at the end).
    int InsertStringItems(int row, LPCTSTR first, ...);
    BOOL UpdateStringItem(int row, int column, LPCTSTR text);
    /// FALSE, and an empty text, when there is no such row or column.
    BOOL GetStringItem(int row, int column, CString& text) const;
    /// One `CString*` per column (null: not wanted).
    BOOL GetStringItems(int row, CString* first, ...) const;
    int GetCount() const;
    /// Removes all rows and what belongs to them; an open editor closes without storing.
    void ResetContent();
    BOOL HasSel() const { return GetFirstSel() >= 0; }
    /// The first selected row, or -1.
    int GetFirstSel() const;
    /// Selects that row only.
    void SetOnlySel(int row);
    /// The column edited or dropped on last; -1 before.
    int GetSelColumn() const { return m_nCurColumn; }
    /// What lies at a point of the client area; -1 each for nothing.
    void HitTest(CPoint point, int& row, int& column);

    void AddFileName(int row, LPCTSTR name);
    /// Null when there is none.
    LPCTSTR GetFileName(int row) const;
    /// Whether files may be dropped on the row.
    BOOL GetDragDrop(int row) const;
    void SetDragDrop(int row, BOOL on);
    /// Refines editor type 1: 2 is a file, 3 a folder, others (1 at first) plain text.
    short GetEditSubType(int row) const;
    void SetEditSubType(int row, short type);
    /// The SQL data type of the row's value; 0 at first. 404, 408, 412, 960, 964, 968 and 988 are
    /// large objects.
    short GetEditDataType(int row) const;
    void SetEditDataType(int row, short type);
    /// Replaces a large object's value by the text shown for it; null, default and empty values and
    /// other types stay.
    void GetDisplayString(CString& value, int row) const;

    // --- editing ---------------------------------------------------------------------------------
    /// Ends other editing, selects the row and opens the cell.
    void EditColumn(int row, int column);
    /// Selects the row and opens the cell's editor. The parent may be asked first.
    void StartEditing(int row, int column);
    /// Closes the editor; nothing is stored.
    void StopEditing();
    /// Stores the editor's value and closes it; with `notify` the parent is asked first. 0 when the
    /// value was refused (the editor stays) or the parent is being asked right now.
    BOOL CellEnter(BOOL notify);
    /// Closes the editor, if one is open, without storing.
    void CellCancel();
    /// Makes a column as wide as its heading and its widest value, with the gaps of both. The list
    /// is measured in full up to 1000 rows; of more rows the visible ones and those with the
    /// longest texts.
    void AutoFitCol(int column) override;

    // --- beyond the usual, off unless asked for --------------------------------------------------
    /// AutoFitCol for every column.
    void FitAllColumns();
    /// Ctrl+0 in an editor puts the null marker in place of its text.
    void EnableSetNull(BOOL on = TRUE) { m_bSetNull = on; }
    /// Ctrl+C without an editor copies the selected rows, with headings, to the clipboard.
    void EnableCopy(BOOL on = TRUE) { m_bCopy = on; }
    /// Where the columns do not fit, the list scrolls sideways, its headings with it; the last
    /// column keeps its width and only grows to fill the strip. For a list made with WS_HSCROLL.
    /// (Usually columns past the right edge cannot be seen.)
    void EnableSideScroll(BOOL on = TRUE);
    /// Pixels hidden at the left (in a mirrored list: right) of the list.
    int GetSideShift() const override;
    /// Scrolls sideways until the column is in view; of one that is too wide the beginning is.
    void ShowColumn(int column);
    /// A column's width without what the last one has grown by; in pixels.
    int GetOwnColumnWidth(int column) const;
    /// The selected rows as displayed: values apart by tabs, lines ended by CR LF; a value that
    /// holds one of these or a quote stands in double quotes, its quotes doubled.
    CString GetSelectionText(BOOL withHeadings) const;

protected:
    void Init();
    int OnCreate(LPCREATESTRUCT create);
    void OnDestroy();
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
    /// Commits when the focus leaves the editor for good.
    void OnKillFocusOfEdit();
    /// Lets the person choose the file or folder of the open cell.
    void OnBrowserButtonClicked();
    /// TRUE: the key was used.
    BOOL ProcessInputMessage(MSG* message);
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void PreSubclassWindow() override;
    DECLARE_MESSAGE_MAP()

    CString m_strSeparator;
    CWnd* m_pActiveEditor = nullptr;
    BOOL m_bRightAligned = FALSE;
    int m_nColumns = 0;
    std::unique_ptr<SListColumn[]> m_pColumns;
    std::unique_ptr<int[]> m_pFractionalWidths; ///< percent per column; may be null
    BOOL m_bWidthsComputed = FALSE;
    int m_nOffset = 2;
    CListBoxExHeadings m_Headings;
    CListBoxExHeadings* m_pHeadings = nullptr;
    BOOL m_bSortEnabled = FALSE;
    int m_nSortColumn = -1;
    int m_nSortState = kNotSorted;
    BOOL m_bEditing = FALSE;
    int m_nCurRow = -1;
    int m_nCurColumn = -1;
    BOOL m_bCommitting = FALSE; ///< the parent is being asked
    BOOL m_bPrintInput = FALSE;
    CString m_strTyped;
    DWORD m_dwTypedTime = 0;
    CByteArray m_DragDrop;      ///< per row
    CByteArray m_EditSubTypes;  ///< per row
    CWordArray m_EditDataTypes; ///< per row
    CStringArray m_FileNames;   ///< per row
    CString m_strNull;          ///< stands for a null value
    CString m_strDefault;       ///< stands for a default value
    BOOL m_bReadOnly = FALSE;
    CListDropTarget m_DropTarget;

    /// For an override of SortInternal that looks at the items' values also during Sort.
    void SetSortValues(BOOL on) { m_bSortValuesAlways = on; }
    /// SortInternal for the order of its items alone.
    SSortItem* SortForOrder(int column);

private:
    class Lifeline;
    class Accessible;
    struct CellPlace;

    std::span<const SListColumn> GetColumns() const override {
        return {m_pColumns.get(), static_cast<std::size_t>(m_nColumns)};
    }
    void ResizeColumn(int column, int width) override;
    void FillLastColumn(int width) override;
    void ColumnsMoved(int left, BOOL erase) override;
    void EditorDestroyed(const CWnd* editor) override;
    DROPEFFECT DragOver(CPoint point) override;
    void DropFile(const CString& name) override;

    void Prepare();
    void CheckInvariants() const;
    void RedrawAll();
    BOOL IsColumn(int column) const { return column >= 0 && column < m_nColumns; }
    BOOL IsRow(int row) const { return row >= 0 && row < GetCount(); }
    BOOL HasManySelected() const;
    std::string_view RowText(int row) const;
    std::string_view CellOf(int row, int column) const;
    int SendJoined(UINT message, int row, LPCTSTR first, std::va_list rest);
    CString TextToDraw(int row) const;
    std::vector<int> LongestValues(int column, int most) const;
    int MeasureColumn(int column);
    int EffectiveEditorType(int row, int column) const;
    BOOL IsFileCell(int row, int column) const;
    BOOL ParentTakesCell(int column);
    BOOL PlaceCell(int row, int column, CellPlace& place);
    CWnd* MakeEdit(int column, int type, LPCTSTR value, const CRect& rect);
    CWnd* MakeCombo(int column, int type, LPCTSTR value, const CRect& rect);
    void CloseEditor();
    void EditUnder(int row, int column);
    void EditNextCell(const vnbytstr::detail::CellAddress& from, bool forward);
    void MoveToNextCell(BOOL forward);
    BOOL ZoomCell();
    void OpenFile(const CString& name);
    void RowsInserted(int row);
    void RowDeleted(int row);
    void FollowEditedRow();
    void UpdateExtent();
    void SideShiftChanged();
    void RefocusEditor();
    void ForgetRows();
    void ApplyOrder(const std::vector<DWORD>& order, const SSortItem* items);
    void ReorderRowData(const DWORD* order, int count);

    std::vector<bool> SelectedRows() const;

    BOOL m_bSortValues = TRUE;
    BOOL m_bSortValuesAlways = FALSE;
    BOOL m_bSetNull = FALSE;
    BOOL m_bCopy = FALSE;
    BOOL m_bSideScroll = FALSE;
    int m_nLastOwnWidth = 0; ///< of the last column, before it was made to fill the strip
    int m_nItemHeight = 0;   ///< the answer of MeasureItem; 0: not measured yet
    Lifeline* m_pLifeline = nullptr;
    std::unique_ptr<Accessible> m_pAccessible;
};
