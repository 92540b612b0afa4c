#include "vnbytstr/window/Dialog.h"

#include "src/window/controls/DialogKeys.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/Application.h"

#include "vnbytstr/framework/MessageBoxTypes.h"
#include "vnbytstr/window/Button.h"

#include <QApplication>
#include <QEventLoop>
#include <QScreen>

#include <algorithm>

using vnbytstr::detail::Window;

IMPLEMENT_DYNAMIC(CDialog, CWnd)

BEGIN_MESSAGE_MAP(CDialog, CWnd)
ON_WM_CLOSE()
ON_COMMAND(IDOK, OnOK)
ON_COMMAND(IDCANCEL, OnCancel)
END_MESSAGE_MAP()

CDialog::CDialog(const CDialogTemplate& description, CWnd* parent) {
    InitModalIndirect(description, parent);
}

CDialog::~CDialog() {
    if (m_loop != nullptr)
        m_loop->quit();
    // In this destructor WM_DESTROY still reaches this class's message map.
    DestroyWindow();
}

BOOL CDialog::InitModalIndirect(const CDialogTemplate& description, CWnd* parent) {
    if (m_hWnd != nullptr)
        return FALSE;
    m_template = description;
    m_parent = parent;
    m_hasTemplate = TRUE;
    return TRUE;
}

BOOL CDialog::CreateIndirect(const CDialogTemplate& description, CWnd* parent) {
    if (!InitModalIndirect(description, parent))
        return FALSE;
    m_modal = FALSE;
    if (!Build(parent))
        return FALSE;
    if ((m_template.style & WS_VISIBLE) != 0)
        ShowWindow(SW_SHOW);
    return m_hWnd != nullptr;
}

// --- making -------------------------------------------------------------------------------------

void CDialog::Measure() {
    static constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr int kCount = sizeof kLetters - 1;
    CClientDC dc(nullptr);
    if (m_font.GetSafeHandle() != nullptr)
        dc.SelectObject(&m_font);
    TEXTMETRIC metrics{};
    dc.GetTextMetrics(&metrics);
    const CSize size = dc.GetTextExtent(kLetters, kCount);
    m_units = {std::max((size.cx / (kCount / 2) + 1) / 2, 1), std::max(metrics.tmHeight, 1)};
}

void CDialog::MapDialogRect(LPRECT rect) const {
    const auto scale = [](LONG value, LONG unit, int parts) {
        return static_cast<LONG>(MulDiv(value, unit, parts));
    };
    rect->left = scale(rect->left, m_units.cx, 4);
    rect->right = scale(rect->right, m_units.cx, 4);
    rect->top = scale(rect->top, m_units.cy, 8);
    rect->bottom = scale(rect->bottom, m_units.cy, 8);
}

BOOL CDialog::Build(CWnd* parent) {
    if (m_template.face != nullptr)
        m_font.CreatePointFont(m_template.points * 10, m_template.face);
    Measure();
    m_defaultId = 0;
    m_ended = FALSE;
    m_result = -1;
    CRect rect(0, 0, m_template.cx, m_template.cy);
    MapDialogRect(rect);
    const DWORD style = m_template.style & ~WS_VISIBLE;
    if (!CreateEx(m_template.exStyle | WS_EX_CONTROLPARENT, nullptr, m_template.title, style, rect,
                  parent, 0))
        return FALSE;
    if (!MakeItems()) {
        DestroyWindow();
        return FALSE;
    }
    if ((style & DS_CENTER) != 0 && (style & WS_CHILD) == 0)
        CenterWindow();
    const HWND window = m_hWnd;
    if (SendMessage(WM_INITDIALOG) != 0 && Window::Of(window) != nullptr && !m_ended)
        FocusFirst();
    return Window::Of(window) != nullptr;
}

BOOL CDialog::MakeItems() {
    for (const CDialogTemplate::Item& item : m_template.items) {
        RECT place{item.x, item.y, item.x + item.cx, item.y + item.cy};
        MapDialogRect(&place);
        CREATESTRUCT create{};
        create.lpszClass = item.className;
        create.lpszName = item.text;
        create.style = item.style | WS_CHILD | WS_VISIBLE;
        create.dwExStyle = item.exStyle;
        create.x = place.left;
        create.y = place.top;
        create.cx = place.right - place.left;
        create.cy = place.bottom - place.top;
        create.hwndParent = m_hWnd;
        create.hMenu = reinterpret_cast<HMENU>(static_cast<std::uintptr_t>(item.id));
        Window* const control = Window::Create(create, nullptr, nullptr);
        if (control == nullptr || m_hWnd == nullptr)
            return FALSE;
        if (m_font.GetSafeHandle() != nullptr)
            control->Send(WM_SETFONT, reinterpret_cast<WPARAM>(m_font.GetSafeHandle()), FALSE);
        const LRESULT code = control->Send(WM_GETDLGCODE);
        if ((code & DLGC_DEFPUSHBUTTON) != 0 && m_defaultId == 0)
            m_defaultId = item.id;
    }
    return TRUE;
}

void CDialog::FocusFirst() { NextFrom(nullptr, false); }

void CDialog::NextFrom(CWnd* control, bool back) const {
    const Window* const dialog = Window::Of(this);
    if (dialog == nullptr)
        return;
    // The focus may be in an inner widget of the control.
    const Window* from = Window::Of(control);
    while (from != nullptr && from->Parent() != dialog)
        from = from->Parent();
    if (Window* const next = vnbytstr::detail::NextTabStop(*dialog, from, back))
        vnbytstr::detail::FocusControl(*next);
}

// --- running ------------------------------------------------------------------------------------

int CDialog::DoModal() {
    if (!m_hasTemplate || m_hWnd != nullptr)
        return -1;
    AfxInitWindows();
    CWnd* parent = m_parent != nullptr ? m_parent->GetTopLevelParent() : GetActiveWindow();
    if (parent == nullptr)
        parent = AfxGetMainWnd();
    vnbytstr::detail::CancelCapture();
    m_modal = TRUE;
    const HWND owner = parent != nullptr ? parent->m_hWnd : nullptr;
    if (!Build(parent))
        return m_ended ? m_result : -1;
    if (!m_ended)
        RunLoop();
    if (m_hWnd != nullptr)
        DestroyWindow();
    m_modal = FALSE;
    if (Window* const back = Window::Of(owner))
        back->Widget()->activateWindow();
    return m_ended ? m_result : static_cast<int>(IDABORT);
}

void CDialog::RunLoop() {
    GetWidget()->setWindowModality(Qt::ApplicationModal);
    QEventLoop loop;
    m_loop = &loop;
    ShowWindow(SW_SHOW);
    if (!m_ended && m_hWnd != nullptr)
        loop.exec(QEventLoop::DialogExec);
    m_loop = nullptr;
}

void CDialog::EndDialog(int result) {
    if (!m_modal) {
        ShowWindow(SW_HIDE);
        return;
    }
    m_result = result;
    m_ended = TRUE;
    if (m_hWnd != nullptr)
        ShowWindow(SW_HIDE);
    if (m_loop != nullptr)
        m_loop->quit();
}

void CDialog::PostNcDestroy() {
    if (m_loop != nullptr)
        m_loop->quit();
    CWnd::PostNcDestroy();
}

BOOL CDialog::OnInitDialog() { return TRUE; }
void CDialog::OnOK() { EndDialog(IDOK); }
void CDialog::OnCancel() { EndDialog(IDCANCEL); }
void CDialog::OnClose() { SendMessage(WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED)); }

BOOL CDialog::PreTranslateMessage(MSG* message) {
    return CWnd::PreTranslateMessage(message) || IsDialogMessage(m_hWnd, message) ? TRUE : FALSE;
}

LRESULT CDialog::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        return OnInitDialog();
    case DM_GETDEFID:
        return m_defaultId != 0 ? MAKELONG(static_cast<WORD>(m_defaultId), DC_HASDEFID) : 0;
    case DM_SETDEFID:
        SendDlgItemMessage(static_cast<int>(m_defaultId), BM_SETSTYLE, BS_PUSHBUTTON, TRUE);
        m_defaultId = static_cast<UINT>(wParam);
        SendDlgItemMessage(static_cast<int>(m_defaultId), BM_SETSTYLE, BS_DEFPUSHBUTTON, TRUE);
        return TRUE;
    case WM_GETFONT:
        return reinterpret_cast<LRESULT>(m_font.GetSafeHandle());
    default:
        return CWnd::DefWindowProc(message, wParam, lParam);
    }
}

// --- controls -----------------------------------------------------------------------------------

void CDialog::GotoDlgCtrl(CWnd* control) const {
    if (Window* const window = Window::Of(control))
        vnbytstr::detail::FocusControl(*window);
}

DWORD CDialog::GetDefID() const { return static_cast<DWORD>(SendMessage(DM_GETDEFID)); }
void CDialog::SetDefID(UINT id) { SendMessage(DM_SETDEFID, id); }

UINT CDialog::IsDlgButtonChecked(int id) const {
    return static_cast<UINT>(SendDlgItemMessage(id, BM_GETCHECK));
}

void CDialog::CheckRadioButton(int first, int last, int check) {
    for (int id = first; id <= last; ++id)
        SendDlgItemMessage(id, BM_SETCHECK, id == check ? BST_CHECKED : BST_UNCHECKED);
}

int CDialog::GetCheckedRadioButton(int first, int last) const {
    for (int id = first; id <= last; ++id)
        if (IsDlgButtonChecked(id) == BST_CHECKED)
            return id;
    return 0;
}
