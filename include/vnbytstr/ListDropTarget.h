// Lets a file dragged from a file manager be dropped on a cell of a CListBoxEx.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/DropTarget.h"
#include "vnbytstr/window/Export.h"

class CListBoxEx;

class VNBYTSTR_CONTROLS_API CListDropTarget : public COleDropTarget {
    DECLARE_DYNAMIC(CListDropTarget)
public:
    CListDropTarget() = default;

    /// The list whose cells files are dropped on, or null.
    void SetListBox(CListBoxEx* list) { m_pList = list; }

    /// Remembers whether files are offered (CF_HDROP) and returns what OnDragOver returns.
    DROPEFFECT OnDragEnter(CWnd* window, COleDataObject* data, DWORD keys, CPoint point) override;
    /// Over a cell, makes its row the only selection and its column the current one. Returns
    /// DROPEFFECT_MOVE when files may be dropped on that row, else DROPEFFECT_NONE. An open editor
    /// is stored first; if its value is refused nothing else happens.
    DROPEFFECT OnDragOver(CWnd* window, COleDataObject* data, DWORD keys, CPoint point) override;
    /// Stores the name of the first file with the current row and opens the cell. FALSE when no
    /// name could be read. Names of folders are stored as well: the parent decides about them when
    /// the cell's value is stored.
    BOOL OnDrop(CWnd* window, COleDataObject* data, DROPEFFECT effect, CPoint point) override;

protected:
    /// The list, whether files are offered, and the name of the first file.
    CListBoxEx* m_pList = nullptr;
    BOOL m_bFilesOnOffer = FALSE;
    CString m_strFile;
};
