// What a CListBoxEx sends to its parent, and the result of its sort.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

/// Posted to the list's parent when the cells that FindText with kFindCount has found are counted:
/// wParam how many.
inline constexpr UINT VNM_FINDCOUNTED = 0x7FF8;
/// Posted to the list's parent when a search that answered kFindSearching has ended: wParam an
/// EFindResult, kFindNone, kFindHit, kFindWrapped or kFindStopped.
inline constexpr UINT VNM_FINDENDED = 0x7FF9;
/// Posted to the list's parent when the user has moved, hidden or shown a column.
inline constexpr UINT VNM_COLUMNSCHANGED = 0x7FFA;
/// Posted to the list's parent when the rows that a filter shows have changed.
inline constexpr UINT VNM_FILTERCHANGED = 0x7FFB;
/// Posted to the list's parent when an editor closes, whether its value was stored or not.
inline constexpr UINT VNM_EDITORCLOSED = 0x7FFC;
/// Sent to the parent before a value is stored: wParam the column, lParam the new value (a
/// `const char*`). 0 stores it; anything else refuses it, 2 also ends the zoom dialog.
inline constexpr UINT VNM_STOREVALUE = 0x7FFD;
/// Sent to the parent before a plain-edit or file cell is opened: wParam the column. Nonzero: the
/// parent handles the cell itself and no editor opens.
inline constexpr UINT VNM_OPENCELL = 0x7FFE;

/// The forms in which rows are copied.
enum EListCopyFormat : int {
    /// Values separated by tabs, lines ended by CR LF. A value that contains a tab, CR, LF or
    /// double quote is enclosed in double quotes, its own quotes doubled.
    kCopyTabs = 0,
    /// The same with commas (RFC 4180).
    kCopyCsv = 1,
    /// Each row as (1, 'text', NULL), separated by commas: texts in single quotes, their own
    /// doubled; numbers of number columns without quotes; NULL for null (CListRowSource::IsNull,
    /// else the null marker). Names come first, in double quotes: ("Name", "City") VALUES.
    kCopySql = 2,
};

/// One row in the result of a sort.
struct SSortItem {
    CString m_strValue;  ///< the value of the column sorted by
    int m_nSelected = 0; ///< the row's selected state
    int m_nIndex = 0;    ///< the row before the sort
};
