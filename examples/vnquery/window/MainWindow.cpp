#include "vnquery/window/MainWindow.h"

#include "vnquery/window/Commands.h"
#include "vnquery/window/ConnectDialog.h"
#include "vnquery/window/GlobalsDialog.h"
#include "vnquery/window/LanguageDialog.h"
#include "vnquery/window/ValueDialog.h"

#include "vnquery/tasks/Interruption.h"

#include "vnbytstr/GlobalVars.h"

#include <algorithm>
#include <span>

namespace vnquery {

namespace {

constexpr int kWidth = 960;
constexpr int kHeight = 640;
constexpr UINT kSignalTimer = 1;
constexpr UINT kSignalInterval = 200; ///< milliseconds between two checks for a signal

enum Pane { kPaneRows, kPaneChanges, kPanes };

constexpr ACCEL kKeys[] = {
    {FVIRTKEY, VK_F5, kCmdRun},
    {FVIRTKEY | FCONTROL, VK_RETURN, kCmdRun},
    {FVIRTKEY, VK_F6, kCmdNextPane},
    {FVIRTKEY, VK_F1, kCmdContents},
    {FVIRTKEY | FCONTROL, 'O', kCmdOpen},
    {FVIRTKEY | FCONTROL | FSHIFT, 'O', kCmdConnect},
    {FVIRTKEY | FCONTROL, 'E', kCmdExport},
    {FVIRTKEY | FCONTROL, 'Q', kCmdExit},
    {FVIRTKEY | FCONTROL, 'T', kCmdFocusSql},
    {FVIRTKEY | FCONTROL, 'S', kCmdWrite},
    {FVIRTKEY | FCONTROL | FSHIFT, 'S', kCmdSave},
    {FVIRTKEY | FCONTROL, 'L', kCmdLoad},
    {FVIRTKEY | FCONTROL, 'D', kCmdSetDefault},
    {FVIRTKEY | FCONTROL, 'G', kCmdGlobals},
    {FVIRTKEY | FCONTROL | FSHIFT, 'F', kCmdSort},
};

/// An item of a menu; text 0 is a separator.
struct Item {
    UINT command;
    UINT text;
};
constexpr Item kLine = {0, 0};
constexpr Item kFile[] = {{kCmdOpen, IDS_VQ_M_OPEN},
                          {kCmdConnect, IDS_VQ_M_CONNECT},
                          kLine,
                          {kCmdExport, IDS_VQ_M_EXPORT},
                          kLine,
                          {kCmdExit, IDS_VQ_M_EXIT}};
constexpr Item kQuery[] = {{kCmdRun, IDS_VQ_M_RUN},           {kCmdStop, IDS_VQ_M_STOP},
                           {kCmdFocusSql, IDS_VQ_M_GOTO_SQL}, kLine,
                           {kCmdWrite, IDS_VQ_M_WRITE},       {kCmdDiscard, IDS_VQ_M_DISCARD}};
constexpr Item kValue[] = {{kCmdEditCell, IDS_VQ_M_EDIT_CELL},
                           {kCmdZoom, IDS_VQ_M_ZOOM},
                           {kCmdSetNull, IDS_VQ_M_SET_NULL},
                           {kCmdSetDefault, IDS_VQ_M_SET_DEFAULT},
                           {kCmdUndoCell, IDS_VQ_M_UNDO_CELL},
                           kLine,
                           {kCmdLoad, IDS_VQ_M_LOAD},
                           {kCmdSave, IDS_VQ_M_SAVE},
                           kLine,
                           {kCmdCopy, IDS_VQ_M_COPY}};
constexpr Item kView[] = {{kCmdFit, IDS_VQ_M_FIT},
                          {kCmdMoveLeft, IDS_VQ_M_LEFT},
                          {kCmdMoveRight, IDS_VQ_M_RIGHT},
                          {kCmdSort, IDS_VQ_M_SORT},
                          {kCmdResetColumns, IDS_VQ_M_RESET}};
constexpr Item kOptions[] = {{kCmdGlobals, IDS_VQ_M_GLOBALS}, {kCmdLanguage, IDS_VQ_M_LANGUAGE}};
constexpr Item kHelp[] = {{kCmdContents, IDS_VQ_M_CONTENTS}, {kCmdAbout, IDS_VQ_M_ABOUT}};

void AddMenu(CMenu& bar, UINT text, std::span<const Item> items) {
    CMenu popup;
    popup.CreatePopupMenu();
    for (const Item& item : items) {
        if (item.text == 0)
            popup.AppendMenu(MF_SEPARATOR);
        else
            popup.AppendMenu(MF_STRING, item.command, Text(item.text).c_str());
    }
    bar.AppendMenu(MF_POPUP, reinterpret_cast<std::uintptr_t>(popup.Detach()), Text(text).c_str());
}

} // namespace

BEGIN_MESSAGE_MAP(MainWindow, CFrameWnd)
ON_WM_CLOSE()
ON_WM_TIMER()
ON_WM_DROPFILES()
ON_COMMAND(kCmdOpen, OnOpen)
ON_COMMAND(kCmdConnect, OnConnect)
ON_COMMAND(kCmdExport, OnExport)
ON_COMMAND(kCmdExit, OnExit)
ON_COMMAND(kCmdRun, OnRun)
ON_COMMAND(kCmdStop, OnStop)
ON_COMMAND(kCmdFocusSql, OnFocusSql)
ON_COMMAND(kCmdNextPane, OnNextPane)
ON_COMMAND(kCmdWrite, OnWrite)
ON_COMMAND(kCmdDiscard, OnDiscard)
ON_COMMAND(kCmdEditCell, OnEditCell)
ON_COMMAND(kCmdZoom, OnZoom)
ON_COMMAND(kCmdSetNull, OnSetNull)
ON_COMMAND(kCmdSetDefault, OnSetDefault)
ON_COMMAND(kCmdUndoCell, OnUndoCell)
ON_COMMAND(kCmdLoad, OnLoad)
ON_COMMAND(kCmdSave, OnSave)
ON_COMMAND(kCmdCopy, OnCopy)
ON_COMMAND(kCmdFit, OnFit)
ON_COMMAND(kCmdMoveLeft, OnMoveLeft)
ON_COMMAND(kCmdMoveRight, OnMoveRight)
ON_COMMAND(kCmdSort, OnSort)
ON_COMMAND(kCmdResetColumns, OnResetColumns)
ON_COMMAND(kCmdGlobals, OnGlobals)
ON_COMMAND(kCmdLanguage, OnLanguage)
ON_COMMAND(kCmdContents, OnContents)
ON_COMMAND(kCmdAbout, OnAbout)
ON_UPDATE_COMMAND_UI(kCmdOpen, OnUpdateIdle)
ON_UPDATE_COMMAND_UI(kCmdConnect, OnUpdateIdle)
ON_UPDATE_COMMAND_UI(kCmdRun, OnUpdateIdle)
ON_UPDATE_COMMAND_UI(kCmdLanguage, OnUpdateIdle)
ON_UPDATE_COMMAND_UI(kCmdStop, OnUpdateStop)
ON_UPDATE_COMMAND_UI(kCmdExport, OnUpdateResult)
ON_UPDATE_COMMAND_UI(kCmdFit, OnUpdateResult)
ON_UPDATE_COMMAND_UI(kCmdMoveLeft, OnUpdateResult)
ON_UPDATE_COMMAND_UI(kCmdMoveRight, OnUpdateResult)
ON_UPDATE_COMMAND_UI(kCmdSort, OnUpdateResult)
ON_UPDATE_COMMAND_UI(kCmdResetColumns, OnUpdateResult)
ON_UPDATE_COMMAND_UI(kCmdZoom, OnUpdateCell)
ON_UPDATE_COMMAND_UI(kCmdSave, OnUpdateCell)
ON_UPDATE_COMMAND_UI(kCmdCopy, OnUpdateCell)
ON_UPDATE_COMMAND_UI(kCmdEditCell, OnUpdateEditable)
ON_UPDATE_COMMAND_UI(kCmdSetNull, OnUpdateEditable)
ON_UPDATE_COMMAND_UI(kCmdSetDefault, OnUpdateEditable)
ON_UPDATE_COMMAND_UI(kCmdUndoCell, OnUpdateEditable)
ON_UPDATE_COMMAND_UI(kCmdLoad, OnUpdateEditable)
ON_UPDATE_COMMAND_UI(kCmdWrite, OnUpdateChanges)
ON_UPDATE_COMMAND_UI(kCmdDiscard, OnUpdateChanges)
END_MESSAGE_MAP()

MainWindow::MainWindow() : m_view(*this), m_keys(kKeys) {}

MainWindow::~MainWindow() = default;

BOOL MainWindow::Open() {
    const CRect rect(0, 0, kWidth, kHeight);
    if (!Create(Text(IDS_VQ_APP).c_str(), WS_OVERLAPPEDWINDOW, rect, nullptr, LayoutStyle()) ||
        !CreateStatusLine(kPanes) || !m_view.CreateView(this, AFX_IDW_PANE_FIRST))
        return FALSE;
    MakeMenu();
    SetAccelerators(&m_keys);
    DragAcceptFiles();
    RecalcLayout();
    CenterWindow();
    ShowWindow(SW_SHOW);
    ShowStatus(Text(IDS_VQ_W_READY));
    ViewChanged();
    m_view.SetFocus();
    SetTimer(kSignalTimer, kSignalInterval);
    return TRUE;
}

void MainWindow::MakeMenu() {
    CMenu bar;
    bar.CreateMenu();
    AddMenu(bar, IDS_VQ_M_FILE, kFile);
    AddMenu(bar, IDS_VQ_M_QUERY, kQuery);
    AddMenu(bar, IDS_VQ_M_VALUE, kValue);
    AddMenu(bar, IDS_VQ_M_VIEW, kView);
    AddMenu(bar, IDS_VQ_M_OPTIONS, kOptions);
    AddMenu(bar, IDS_VQ_M_HELP, kHelp);
    SetMenu(&bar);
    bar.Detach(); // the window owns it now
}

BOOL MainWindow::PreTranslateMessage(MSG* message) {
    // While a cell is edited, its editor gets the keys.
    if (m_view.GetList().GetActiveEditor() && message->message == WM_KEYDOWN &&
        (message->wParam == 'D' || message->wParam == 'L'))
        return FALSE;
    return CFrameWnd::PreTranslateMessage(message);
}

// --- what the view reports -----------------------------------------------------------------------

void MainWindow::ShowStatus(const std::string& text) { SetMessageText(text.c_str()); }

void MainWindow::ViewChanged() {
    const std::string name = m_view.GetConnection().GetDisplayName();
    const std::string title = name.empty() ? Text(IDS_VQ_APP) : Text(IDS_VQ_W_TITLE, {name});
    if (GetText(*this) != title)
        SetWindowText(title.c_str());
    const ResultDocument& document = m_view.GetDocument();
    const int row = m_view.GetList().GetSafeHwnd() ? m_view.GetList().GetCurrentRow() : -1;
    const std::string rows = GroupDigits(document.GetShownRows());
    SetPaneText(
        kPaneRows,
        (row < 0 ? Text(IDS_VQ_W_ROWS, {rows})
                 : Text(IDS_VQ_W_ROW_OF, {GroupDigits(static_cast<std::uint64_t>(row) + 1), rows}))
            .c_str());
    const std::size_t changes = document.GetEdits().GetCount();
    SetPaneText(kPaneChanges, (changes == 0   ? Text(IDS_VQ_W_NO_CHANGES)
                               : changes == 1 ? Text(IDS_VQ_W_CHANGE)
                                              : Text(IDS_VQ_W_CHANGES, {GroupDigits(changes)}))
                                  .c_str());
}

// --- databases -----------------------------------------------------------------------------------

bool MainWindow::RequireIdle() {
    if (m_view.IsBusy())
        ShowMessage(Text(IDS_VQ_W_BUSY));
    return !m_view.IsBusy();
}

void MainWindow::Connect(const Connection& connection) {
    if (!RequireIdle() || !m_view.LeaveChanges())
        return;
    m_view.SetConnection(connection);
    const CString name = connection.GetDisplayName().c_str();
    GetGlobals().SetGlobalVarValue(CGlobalVars::TLXAO_CONNECT_ID, &name);
}

void MainWindow::OnOpen() {
    if (!RequireIdle())
        return;
    const std::string filter = Text(IDS_VQ_DATABASE_FILES) + "|*.sqlite;*.sqlite3;*.db;*.db3|" +
                               Text(IDS_VQ_ALL_FILES) + "|*.*||";
    CFileDialog dialog(TRUE, nullptr, nullptr, OFN_HIDEREADONLY | OFN_FILEMUSTEXIST, filter.c_str(),
                       this);
    if (dialog.DoModal() == IDOK)
        Connect({ToString(dialog.GetPathName()), ""});
}

void MainWindow::OnConnect() {
    if (!RequireIdle())
        return;
    ConnectDialog dialog(m_dataSource, this);
    if (dialog.DoModal() != IDOK)
        return;
    m_dataSource = dialog.GetConnection();
    Connect({"", m_dataSource});
}

void MainWindow::OnDropFiles(HDROP drop) {
    const UINT length = DragQueryFile(drop, 0, nullptr, 0);
    std::string name(length + std::size_t{1}, '\0');
    DragQueryFile(drop, 0, name.data(), length + 1);
    name.resize(length);
    DragFinish(drop);
    if (!name.empty())
        Connect({name, ""});
}

void MainWindow::OnClose() {
    if (m_view.IsBusy())
        m_view.Stop();
    if (!m_view.LeaveChanges())
        return;
    m_view.StoreLayout();
    DestroyWindow();
}

void MainWindow::OnTimer(std::uintptr_t id) {
    if (id == kSignalTimer)
        LookForSignals();
    else
        CFrameWnd::OnTimer(id);
}

/// A signal to end closes the window as the user would. Dialogs close first, one at each call,
/// since each has to return to its caller; text typed into the value window becomes a change. The
/// user is asked about unwritten changes and may cancel. An open message box has to be answered.
void MainWindow::LookForSignals() {
    if (m_isAsking || InterruptingSignal() == 0)
        return;
    CWnd* const active = CWnd::GetActiveWindow();
    if (auto* const dialog = dynamic_cast<CDialog*>(active)) {
        const bool isZoom = dynamic_cast<ValueDialog*>(active) != nullptr;
        dialog->PostMessage(WM_COMMAND, isZoom ? IDOK : IDCANCEL);
        return;
    }
    m_isAsking = true;
    m_endingSignal = TakeInterruptingSignal();
    SendMessage(WM_CLOSE);
    m_isAsking = false;
    if (GetSafeHwnd() != nullptr) {
        m_endingSignal = 0;
        AwaitSignals();
    }
}

void MainWindow::OnExit() { PostMessage(WM_CLOSE); }

// --- options and help ----------------------------------------------------------------------------

void MainWindow::OnGlobals() {
    GlobalsDialog dialog(this);
    if (dialog.DoModal() == IDOK && !m_view.IsBusy())
        m_view.Relabel(); // the markers may have changed
}

void MainWindow::OnLanguage() {
    if (!RequireIdle())
        return;
    LanguageDialog dialog(this);
    if (dialog.DoModal() != IDOK)
        return;
    ModifyStyleEx(WS_EX_LAYOUTRTL, LayoutStyle());
    MakeMenu();
    m_view.Relabel();
    RecalcLayout();
    ViewChanged();
}

void MainWindow::OnContents() { OpenHelp(kHelpContents); }

void MainWindow::OnAbout() {
    ShowMessage(Text(IDS_VQ_ABOUT, {VNQUERY_VERSION}), MB_OK | MB_ICONINFORMATION);
}

// --- which commands are enabled ------------------------------------------------------------------

void MainWindow::OnUpdateIdle(CCmdUI* ui) { ui->Enable(!m_view.IsBusy()); }
void MainWindow::OnUpdateStop(CCmdUI* ui) { ui->Enable(m_view.IsBusy()); }
void MainWindow::OnUpdateResult(CCmdUI* ui) { ui->Enable(m_view.HasResult() && !m_view.IsBusy()); }

void MainWindow::OnUpdateCell(CCmdUI* ui) {
    CellPlace place;
    ui->Enable(!m_view.IsBusy() && m_view.GetCurrentPlace(place));
}

void MainWindow::OnUpdateEditable(CCmdUI* ui) {
    ui->Enable(!m_view.IsBusy() && m_view.IsCurrentEditable());
}

void MainWindow::OnUpdateChanges(CCmdUI* ui) {
    ui->Enable(!m_view.IsBusy() && !m_view.GetDocument().GetEdits().IsEmpty());
}

} // namespace vnquery
