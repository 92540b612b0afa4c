// CZoomDialog: shows one value in a window of its own and lets it be changed.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Dialog.h"

/// A modal dialog with the value in an edit control of many lines, OK and Cancel; Ctrl+Enter is OK.
/// It can be resized. Its captions come from the resource library, or are English.
///
/// A value of more than kMostBytes, or with a line of more than kLongestLine, is shown up to there
/// and cannot be changed: DoModal then returns IDCANCEL.
class VNBYTSTR_API CZoomDialog : public CDialog {
    DECLARE_DYNAMIC(CZoomDialog)
public:
    static constexpr int kMostBytes = 1 << 20;
    static constexpr int kLongestLine = 1
                                        << 15; ///< to lay out a line takes the square of its length

    /// `name` (a column's heading) stands in the title; null: none. `parent` null: the active
    /// window.
    CZoomDialog(const CString& value, LPCTSTR name, CWnd* parent);

    int DoModal() override;
    /// The value as it is after OK.
    const CString& GetValue() const { return m_strValue; }
    BOOL CanChange() const { return m_nShown == m_strValue.GetLength(); }

    BOOL PreTranslateMessage(MSG* message) override;

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnSize(UINT type, int cx, int cy);
    void OnGetMinMaxInfo(MINMAXINFO* info);
    DECLARE_MESSAGE_MAP()

private:
    void Layout();

    CString m_strValue;
    CString m_strName;
    CWnd* m_pParent;
    int m_nShown; ///< bytes of the value that are shown
};
