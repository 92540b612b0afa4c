// CListRowSource: the rows of a CListBoxEx that has no texts of its own. docs/list-box.md has an
// example.
#pragma once

#include "vnbytstr/window/Export.h"

#include <string>
#include <string_view>
#include <vector>

class CListBoxEx;
class CRowFilter;

/// What a source answers when it is to sort its rows.
enum class ESortAnswer {
    NotSorted, ///< they stay as they are
    Sorted,    ///< they are in the new order now
    Later,     ///< they will be; the program calls CListBoxEx::SourceSorted then
};

/// What a source answers when it is asked whether a cell is null.
enum class ENullAnswer {
    ByMarker, ///< it is, if its text is the null marker
    No,       ///< it is not, whatever its text
    Yes,
};

/// How far a source has searched.
struct SRowSearch {
    int m_nFound = -1; ///< a row that matches; -1: none so far
    int m_nNext = -1;  ///< without one, the row to go on with; -1: all rows were looked at
};

/// Supplies a list with its rows: CListBoxEx::SetRowSource. The list asks for what it draws,
/// measures, finds, copies, edits and tells screen readers, and keeps nothing of it, so that a list
/// of ten million rows costs the memory of its source only.
///
/// Rows and columns count from 0; columns are those of the list (column 0 in a list without any).
/// Texts are in the ANSI code page and of any length; one that holds a separator of the list, or a
/// NUL, is drawn with blanks in their place.
///
/// The list box is one without data then (LBS_NODATA): all rows are equally high, there may be
/// 2^31 - 1 of them, and messages and functions that add, insert, delete or find rows answer
/// LB_ERR. All getters, drawing, editing, copying, FindText, the search by typing and screen
/// readers ask the source; what a setter stores with a row (SetDragDrop, SetEditSubType,
/// SetEditDataType) is ignored. DrawItem and DrawColumns are called as for other rows: the text is
/// made of the cells of the columns in view, those of other columns are empty. The search by typing
/// looks through column 0 and needs SetPrintInput. SortInternal returns null; Sort asks the source.
///
/// Only the main thread asks. A source may get more rows at any time, also by another thread, as
/// long as it guards its own data; the list shows them after CListBoxEx::RowsChanged, which the
/// main thread calls. Rows go, change places and change their texts on the main thread only, again
/// followed by the call that tells the list. The list asks for rows below GetRowCount() only, at
/// the time of asking.
///
/// While SetCell and SortRows run, the program may do anything, including destroying the list; the
/// other functions only answer. None may throw. A source that is destroyed is taken
/// from its lists, which are empty then; one source may serve several lists.
class VNBYTSTR_CONTROLS_API CListRowSource {
public:
    CListRowSource() = default;
    virtual ~CListRowSource();
    CListRowSource(const CListRowSource&) = delete;
    CListRowSource& operator=(const CListRowSource&) = delete;

    /// Is asked often: keep the number at hand.
    virtual int GetRowCount() = 0;
    /// Puts a cell's text into `text`, which is empty and keeps its memory from call to call.
    virtual void GetCell(int row, int column, std::string& text) = 0;
    /// Whether a cell is null, for the filter, for copying as SQL and for EnableGreyNulls. GetCell
    /// is asked for its text nevertheless. The default leaves it to the marker.
    virtual ENullAnswer IsNull(int row, int column);
    /// Stores a new text. False: it is refused, and a cell editor stays open with it; the source
    /// (or the list's parent, which was asked before) tells the user why. The default refuses.
    virtual bool SetCell(int row, int column, std::string_view text);

    /// Sorts the rows by a column, or begins to. Until they are sorted the rows keep their places.
    /// The default does not sort.
    virtual ESortAnswer SortRows(int column, bool ascending);
    /// Where the row stands now that was row `before` when the list was last in order; -1 when that
    /// is not known. Asked after a sort, for the selected rows (up to 1000 of them) and the row
    /// with the focus; of rows unknown the selection is lost. The default knows none.
    virtual int GetSortedRow(int before);
    /// Looks for a row from `first` up to `end` (not included), from above, whose text in the
    /// column begins with `text`, in either case. It must not take long: a source returns after
    /// about 20 milliseconds at the latest, with the row to go on with, and the list asks again
    /// when it has handled its messages. The default asks GetCell row by row, in such pieces. A
    /// source with an index may answer at once.
    virtual SRowSearch FindRow(int column, std::string_view text, int first, int end);

    /// The list is to show only the rows that match a filter (an empty one: all rows). True: the
    /// source sees to it; its rows are those that match from now on, or as they are found, and the
    /// program tells the list of later changes (RowsChanged, or ResetContent when all are others).
    /// The default answers false: the list then looks for them itself, by GetCell of each row, and
    /// the source's rows stay what they are.
    virtual bool FilterRows(const CRowFilter& filter);

    /// Whether files may be dropped on the row. The default: no.
    virtual bool TakesFiles(int row);
    /// Refines kEditorText, see CListBoxEx::GetEditSubType. The default: 1, plain text.
    virtual short GetEditSubType(int row);
    /// See CListBoxEx::GetEditDataType. The default: 0.
    virtual short GetEditDataType(int row);
    /// Puts the name of a file cell's file into `name`, which is empty; false when the row has
    /// none. The default: none.
    virtual bool GetFileName(int row, std::string& name);
    /// Takes the name of a file that was chosen or dropped. The default ignores it.
    virtual void SetFileName(int row, std::string_view name);

private:
    friend class CListBoxEx;
    std::vector<CListBoxEx*> m_lists; ///< that show this source
};
