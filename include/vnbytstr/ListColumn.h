// What CListBoxEx stores for each of its columns, and the numbers that stand for kinds of editor,
// data types and sort states.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <memory>

/// The kinds of cell editor, as SetEditorType takes them.
enum EListEditor : int {
    kEditorNone = 0,        ///< the column's cells are not edited
    kEditorText = 1,        ///< plain edit; the row's edit subtype may turn it into 2 or 3
    kEditorFile = 2,        ///< edit with a button that browses for a file
    kEditorFolder = 3,      ///< edit with a button that browses for a folder
    kEditorNumber = 4,      ///< edit with a spinner and a range
    kEditorCombo = 5,       ///< combo box: choose from a list or type text
    kEditorPick = 6,        ///< drop-down list: choose only
    kEditorSortedCombo = 7, ///< as 5, the list sorted
    kEditorSortedPick = 8,  ///< as 6, the list sorted
};

/// SQL data types of large objects, as SetEditDataType takes them.
enum EListDataType : short {
    kDataBlob = 404,
    kDataClob = 408,
    kDataDBClob = 412,
    kDataBlobLocator = 960,
    kDataClobLocator = 964,
    kDataDBClobLocator = 968,
    kDataXml = 988, ///< shown as a BLOB is
};

/// Where the texts of a column stand, as SetColumnAlignment takes it.
enum EListAlignment : int {
    kAlignDefault = 0, ///< cells at the left, or as SetRightAligned says; the name in the middle
    kAlignLeft = 1,
    kAlignRight = 2,
    kAlignByType = 3, ///< at the right in a column of numbers (SetColumnType), else at the left
};

/// What GetSortState of a list answers.
enum EListSortState : int { kNotSorted = 0, kSortedAscending = 1, kSortedDescending = 2 };

/// One column of a CListBoxEx. Widths and spacings are in pixels.
struct SListColumn {
    int m_nWidth = 0;                ///< 0: not chosen yet
    int m_nSpacing = 0;              ///< kept free at the column's right edge
    CString m_strHeading;            ///< text of the header
    int m_nSortType = 0;             ///< 0: text; anything else: integer
    int m_nEditorType = kEditorNone; ///< an EListEditor
    int m_nEditorMaxLength = 0;      ///< in bytes; 0: only the edit control's own limit
    LONG m_lEditorMin = 0;           ///< range of kEditorNumber, inclusive
    /// The range of kEditorNumber, inclusive.
    LONG m_lEditorMax = 0;
    std::unique_ptr<CString[]> m_pEditorStrings; ///< the choices of a combo editor
    int m_nEditorStrings = 0;                    ///< how many
    int m_nAlignment = kAlignDefault;            ///< an EListAlignment
    bool m_bHidden = false;                      ///< not shown
    CString m_strTip;                            ///< of the heading; empty: name and type
    CString m_strType;                           ///< of the column's values, for the tip
};
