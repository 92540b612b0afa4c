// CDataTip, a tooltip with a text at a given point.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

/// The tooltip of one window. It is hidden when the pointer leaves the window, on a click and on a
/// key press. Only one tooltip is on the screen at a time.
class VNBYTSTR_CONTROLS_API CDataTip {
public:
    CDataTip() = default;
    ~CDataTip();
    CDataTip(const CDataTip&) = delete;
    CDataTip& operator=(const CDataTip&) = delete;

    /// Sets the window, which must outlive this object; it may be created later.
    void Create(CWnd* owner) { m_pOwner = owner; }
    /// Shows a text at a point of the owner's client area; an empty text hides the tooltip.
    void Set(CPoint point, LPCTSTR text);
    /// Hides this tooltip, and no other.
    void Hide();

private:
    CWnd* m_pOwner = nullptr;
    CString m_strShown;
};
