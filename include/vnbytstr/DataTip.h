// CDataTip, a small text beside the pointer.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Wnd.h"

/// The tip of one window. It goes by itself when the pointer leaves the window, on a click and on a
/// key. There is one tip on the screen at a time.
class VNBYTSTR_API CDataTip {
public:
    CDataTip() = default;
    ~CDataTip();
    CDataTip(const CDataTip&) = delete;
    CDataTip& operator=(const CDataTip&) = delete;

    /// Belongs to `owner` from now on, which must outlive it; its window may be made later.
    void Create(CWnd* owner) { m_pOwner = owner; }
    /// Shows a text at a point of the owner's client area; an empty one shows nothing.
    void Set(CPoint point, LPCTSTR text);
    void Hide();

private:
    CWnd* m_pOwner = nullptr;
    CString m_strShown;
};
