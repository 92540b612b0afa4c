// The behaviour of the class "LISTBOX".
#pragma once

#include "src/window/controls/ListBoxRows.h"
#include "src/window/core/WindowInternal.h"
#include "vnbytstr/window/ListBox.h"

namespace vnbytstr::detail {

class ListBoxControl : public SystemControl {
public:
    explicit ListBoxControl(Window& window) : SystemControl(window) {}

    LRESULT Proc(UINT message, WPARAM wParam, LPARAM lParam) override;
    /// The control of a window of this class; null for others.
    static ListBoxControl* Of(HWND window);

    ListBoxRows& Rows() { return m_rows; }
    /// Pixels that are hidden at the left.
    int Shift() const { return m_shift; }
    void ShiftTo(int pixels);
    int AddMany(std::string_view texts, int count);
    bool Reorder(std::span<const DWORD> order);
    bool ShowOnly(std::span<const DWORD> rows);
    bool SetRowText(int row, std::string_view text);
    bool SetNoData(bool on);
    int Caret() const { return m_caret; }
    int FirstVisible() const { return m_top; }
    CRect RowRect(int row) const; ///< in client coordinates; may lie outside the client area
    bool SelectByAccess(int row, bool on);

private:
    bool Has(DWORD style) const { return (m_window.Style() & style) != 0; }
    bool IsSingle() const { return !Has(LBS_MULTIPLESEL | LBS_EXTENDEDSEL); }
    bool IsExtended() const { return Has(LBS_EXTENDEDSEL); }
    bool IsOwnerDrawn() const { return Has(LBS_OWNERDRAWFIXED | LBS_OWNERDRAWVARIABLE); }
    bool HasStrings() const { return !IsOwnerDrawn() || Has(LBS_HASSTRINGS); }
    bool HasOwnHeights() const { return Has(LBS_OWNERDRAWVARIABLE) && !m_rows.IsNoData(); }

    // Messages (ListBoxControl.cpp)
    LRESULT RowsProc(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT SelectionProc(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT PlaceProc(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT InputProc(UINT message, WPARAM wParam, LPARAM lParam);
    void OnCreate();
    int Add(LPARAM text);
    int Insert(int row, LPARAM text);
    int SortedPlace(std::string_view text, std::uintptr_t data);
    int CompareRow(int row, std::string_view text, std::uintptr_t data);
    LRESULT Delete(int row);
    LRESULT SetCount(WPARAM count);
    void Reset();
    void ShowAll();
    void SendDeleteItem(int row);
    void RowInserted(int row);
    void MeasureRow(int row);
    void MeasureAll();
    void MeasureCommon();
    LRESULT CopyText(int row, LPARAM buffer) const;
    int Find(int after, LPARAM text, bool exact) const;
    LRESULT SelectedItems(int size, int* rows) const;

    // Selection
    bool SetCurrent(int row);
    void SetSelected(int row, bool on);
    void SelectOnly(int first, int last);
    void SetCaret(int row, bool scroll);

    // View (ListBoxView.cpp)
    void Paint();
    void DrawRow(HDC dc, int row, const CRect& rect);
    void DrawPlainRow(HDC dc, int row, const CRect& rect, bool selected, bool focused);
    void InvalidateRow(int row);
    void InvalidateFrom(int row);
    int LastTop() const;      ///< the top row when the last one stands at the bottom
    int FullyVisible() const; ///< rows that fit whole, at least 1
    void ScrollTo(int top);
    void ScrollIntoView(int row);
    void RowsChanged(); ///< the scroll bars will be updated soon
    struct Bars {
        bool vertical = false;
        bool horizontal = false;
    };
    Bars NeededBars() const;
    void UpdateScrollBars();
    void OnScroll(int bar, UINT code);
    int RowFromPoint(CPoint point, bool& outside) const;

    // Mouse and keyboard (ListBoxInput.cpp)
    void OnButtonDown(CPoint point, UINT flags);
    void OnTrack(CPoint point);
    void EndTracking(bool notify);
    void OnAutoScroll();
    bool OnKey(int key);
    bool OnCharacter(char ch);
    void MoveCaret(int row);
    void SelectTo(int row);
    void Notify(int code);

    ListBoxRows m_rows;
    int m_top = 0;
    int m_caret = -1;
    int m_anchor = -1;
    int m_current = -1; ///< the selected row of a single selection list
    int m_extent = 0;   ///< LB_SETHORIZONTALEXTENT
    int m_shift = 0;    ///< pixels scrolled to the right
    CSize m_client;
    bool m_heightSet = false;
    bool m_redraw = true;
    bool m_barsStale = false;
    bool m_hasFocus = false;
    bool m_tracking = false;
    bool m_trackSelects = true;
    bool m_adding = false;  ///< Ctrl: what was selected before the drag stays
    bool m_changed = false; ///< the selection changed since the button went down
    int m_trackTo = -1;
    CPoint m_trackPoint;
    std::string m_typed; ///< the bytes so far of a character being typed
};

} // namespace vnbytstr::detail
