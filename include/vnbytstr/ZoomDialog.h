// CZoomDialog: a dialog to view and change one value.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Dialog.h"
#include "vnbytstr/window/Export.h"

/// A modal dialog with the value in a multi-line edit control, OK and Cancel; Ctrl+Enter is OK. It
/// can be resized. Its captions come from the resource library, or are English.
///
/// A value of more than kMaxBytes, or with a line of more than kMaxLine bytes, is shown only up to
/// there and cannot be changed: DoModal then returns IDCANCEL.
class VNBYTSTR_CONTROLS_API CZoomDialog : public CDialog {
    DECLARE_DYNAMIC(CZoomDialog)
public:
    /// The longest value that is shown in full, in bytes.
    static constexpr int kMaxBytes = 1 << 20;
    /// The time to lay out a line grows with the square of its length.
    static constexpr int kMaxLine = 1 << 15;

    /// `name`, such as a column's name, is shown in the title; it may be null. A null `parent`
    /// means the active window.
    CZoomDialog(const CString& value, LPCTSTR name, CWnd* parent);

    /// IDOK, or IDCANCEL when the value stays as it is.
    int DoModal() override;
    /// The value: the changed one after OK.
    const CString& GetValue() const { return m_strValue; }
    /// Only shows the value: DoModal returns IDCANCEL.
    void SetReadOnly(BOOL on) { m_bReadOnly = on; }
    /// Whether the value is shown in full and SetReadOnly is off.
    BOOL CanChange() const { return !m_bReadOnly && !IsCut(); }

    BOOL PreTranslateMessage(MSG* message) override;

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnSize(UINT type, int cx, int cy);
    void OnGetMinMaxInfo(MINMAXINFO* info);
    DECLARE_MESSAGE_MAP()

private:
    BOOL IsCut() const { return m_nShown != m_strValue.GetLength(); }
    void Layout();

    CString m_strValue;
    CString m_strName;
    CWnd* m_pParent;
    BOOL m_bReadOnly = FALSE;
    int m_nShown; ///< bytes of the value that are shown
};
