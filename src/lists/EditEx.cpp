#include "vnbytstr/EditEx.h"

#include "vnbytstr/window/FileDialog.h"

#include <algorithm>

IMPLEMENT_DYNAMIC(CEditEx, CEdit)

BEGIN_MESSAGE_MAP(CEditEx, CEdit)
ON_WM_CHAR()
ON_WM_DESTROY()
END_MESSAGE_MAP()

BOOL CBrowser::Browse(CWnd* parent, CString& name) {
    if (m_nType == kFolder) {
        CFolderDialog dialog(name, nullptr, parent);
        if (dialog.DoModal() != IDOK)
            return FALSE;
        name = dialog.GetFolderPath();
        return TRUE;
    }
    CFileDialog dialog(TRUE, nullptr, name, OFN_HIDEREADONLY | OFN_FILEMUSTEXIST, nullptr, parent);
    if (dialog.DoModal() != IDOK)
        return FALSE;
    name = dialog.GetPathName();
    return TRUE;
}

CEditEx::~CEditEx() {
    if (GetSafeHwnd() != nullptr)
        DestroyWindow();
}

void CEditEx::SetRange(LONG minimum, LONG maximum) {
    m_lMinimum = minimum;
    m_lMaximum = maximum;
    if (m_spinner.GetSafeHwnd() != nullptr)
        m_spinner.SetRange32(minimum, maximum);
}

BOOL CEditEx::CreateSpinner(UINT id) {
    CWnd* parent = GetSafeHwnd() != nullptr ? GetParent() : nullptr;
    if (parent == nullptr || m_spinner.GetSafeHwnd() != nullptr)
        return FALSE;
    if (!m_spinner.Create(WS_CHILD | UDS_SETBUDDYINT | UDS_ALIGNRIGHT | UDS_ARROWKEYS |
                              UDS_NOTHOUSANDS,
                          CRect(), parent, id))
        return FALSE;
    m_spinner.SetBuddy(this);
    m_spinner.SetRange32(m_lMinimum, m_lMaximum);
    return TRUE;
}

BOOL CEditEx::CreateBrowseButton(CBrowser* browser, UINT id) {
    CWnd* parent = GetSafeHwnd() != nullptr ? GetParent() : nullptr;
    if (parent == nullptr || browser == nullptr || m_button.GetSafeHwnd() != nullptr)
        return FALSE;
    CRect rect;
    GetWindowRect(rect);
    parent->ScreenToClient(rect);
    if (!m_button.Create("...", WS_CHILD | BS_PUSHBUTTON, CRect(), parent, id))
        return FALSE;
    m_pBrowser = browser;
    PlaceAll(rect);
    return TRUE;
}

BOOL CEditEx::Browse() {
    if (m_pBrowser == nullptr || GetSafeHwnd() == nullptr)
        return FALSE;
    CString name;
    GetWindowText(name);
    const HWND window = m_hWnd;
    if (!m_pBrowser->Browse(this, name) || !IsWindow(window))
        return FALSE;
    SetWindowText(name);
    SetModify();
    return TRUE;
}

BOOL CEditEx::IsPart(const CWnd* window) const {
    if (window == nullptr || GetSafeHwnd() == nullptr)
        return FALSE;
    const auto is = [window](const CWnd& part) {
        return part.GetSafeHwnd() != nullptr &&
               (window->GetSafeHwnd() == part.GetSafeHwnd() || part.IsChild(window));
    };
    return is(*this) || is(m_spinner) || is(m_button);
}

void CEditEx::ShowAll(BOOL on) {
    const int command = on ? SW_SHOWNA : SW_HIDE;
    if (GetSafeHwnd() != nullptr)
        ShowWindow(command);
    if (m_spinner.GetSafeHwnd() != nullptr)
        m_spinner.ShowWindow(command);
    if (m_button.GetSafeHwnd() != nullptr)
        m_button.ShowWindow(command);
}

void CEditEx::PlaceAll(const CRect& rect) {
    if (GetSafeHwnd() == nullptr)
        return;
    CRect edit(rect);
    if (m_button.GetSafeHwnd() != nullptr) {
        const int width = std::min(rect.Height(), rect.Width() / 2);
        edit.right -= width;
        m_button.MoveWindow(edit.right, rect.top, width, rect.Height());
    }
    MoveWindow(edit);
    if (m_spinner.GetSafeHwnd() != nullptr)
        m_spinner.SetBuddy(this); // moves it to the new right edge
}

void CEditEx::OnChar(UINT ch, UINT repeat, UINT flags) {
    static_cast<void>(repeat);
    static_cast<void>(flags);
    const char typed = static_cast<char>(ch);
    const bool isControl = ch < ' ' || ch == 0x7F;
    const bool isNumber = (typed >= '0' && typed <= '9') || typed == '-' || typed == '+';
    if (m_nType == kInteger && !isControl && !isNumber && m_strOther.Find(typed) < 0) {
        MessageBeep(0);
        return;
    }
    Default();
}

void CEditEx::OnDestroy() {
    if (m_spinner.GetSafeHwnd() != nullptr)
        m_spinner.DestroyWindow();
    if (m_button.GetSafeHwnd() != nullptr)
        m_button.DestroyWindow();
    CEdit::OnDestroy();
}
