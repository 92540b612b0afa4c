// Finding a text in the cells of a CListBoxEx: FindText, FindNext, FindPrevious, ClearFind.
//
// A hit is a shown cell that contains the text, in either case; the cells of hidden columns and the
// rows that a filter leaves out are not looked at. Hits come row by row, in a row from left to
// right as the columns are shown; after the last one comes the first. A hit becomes the selected
// row, as by a click (with LBS_MULTIPLESEL it only gets the focus), of which the parent is told if
// that changes the selection (LBN_SELCHANGE), and is scrolled into view. An open editor is stored
// first. Until ClearFind, the text is marked in every cell in view; where an ellipsis stands for a
// part of a cell, the ellipsis is marked for it.
//
// Rows are looked at in parts of about 20 milliseconds (the first one 40) between which the window
// handles its messages. A search that is not done within the first part answers kFindSearching and
// ends with VNM_FINDENDED. It is given up when the focus goes to another row meanwhile, and by the
// next call.
#pragma once

/// What CListBoxEx::FindText is to find, combined with |.
enum EListFind : unsigned {
    kFindMatchCase = 1, ///< upper and lower case are different
    kFindWholeCell = 2, ///< the cell's text as a whole
    kFindCount = 4,     ///< cells with the text are counted: VNM_FINDCOUNTED
    kFindSkipFirst = 8, ///< not in column 0, such as one with the numbers of the rows
};

/// How a search has ended.
enum EFindResult : int {
    kFindNone = 0,      ///< no cell has the text, or there is none to look for
    kFindHit = 1,       ///< there is one
    kFindWrapped = 2,   ///< there is one, beyond the last (first) row and the first (last) again
    kFindSearching = 3, ///< it goes on: VNM_FINDENDED
    kFindStopped = 4,   ///< it was given up; an open editor's value was refused
};
