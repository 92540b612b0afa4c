#include "vnquery/window/QueryView.h"

#include "vnquery/window/Commands.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Language.h"

#include "vnbytstr/Messages.h"
#include "vnbytstr/window/Button.h"
#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/Gdi.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <cstdio>

namespace vnquery {

namespace {

constexpr UINT kTimer = 1;
constexpr UINT kTimerInterval = 25; ///< milliseconds

} // namespace

BEGIN_MESSAGE_MAP(QueryView, CWnd)
ON_WM_CREATE()
ON_WM_SIZE()
ON_WM_TIMER()
ON_WM_SETFOCUS()
ON_WM_CONTEXTMENU()
ON_WM_CTLCOLOR()
ON_CONTROL(LBN_SELCHANGE, kIdResult, OnSelectionChanged)
ON_MESSAGE(VNM_OPENCELL, OnOpenCell)
ON_MESSAGE(VNM_STOREVALUE, OnStoreValue)
ON_MESSAGE(VNM_EDITORCLOSED, OnEditorClosed)
ON_MESSAGE(kWmLoadDropped, OnLoadDropped)
END_MESSAGE_MAP()

QueryView::QueryView(QueryViewHost& host)
    : m_host(host), m_list(m_document, [this] { StartSort(); }) {}

// Here, while the members that handle the children's last messages still exist.
QueryView::~QueryView() { DestroyWindow(); }

BOOL QueryView::CreateView(CWnd* parent, UINT id) {
    return CreateEx(WS_EX_CONTROLPARENT | LayoutStyle(), nullptr, "", WS_CHILD | WS_VISIBLE,
                    CRect(0, 0, 0, 0), parent, id);
}

/// The buttons send commands to the frame, as its menu and keys do.
BOOL QueryView::OnCommand(WPARAM wParam, LPARAM lParam) {
    const auto sender = reinterpret_cast<HWND>(lParam);
    for (const CButton* button : {&m_open, &m_connect, &m_runButton, &m_stopButton})
        if (sender != nullptr && sender == button->GetSafeHwnd() && HIWORD(wParam) == BN_CLICKED) {
            GetTopLevelParent()->SendMessage(WM_COMMAND, LOWORD(wParam));
            return TRUE;
        }
    return CWnd::OnCommand(wParam, lParam);
}

int QueryView::OnCreate(LPCREATESTRUCT create) {
    if (CWnd::OnCreate(create) == -1)
        return -1;
    const CRect nowhere;
    const DWORD tab = WS_CHILD | WS_VISIBLE | WS_TABSTOP;
    const bool isMade =
        m_databaseLabel.Create("", WS_CHILD | WS_VISIBLE, nowhere, this, kIdDatabaseLabel) &&
        m_database.Create(tab | WS_BORDER | ES_AUTOHSCROLL | ES_READONLY, nowhere, this,
                          kIdDatabase) &&
        m_open.Create("", tab | BS_PUSHBUTTON, nowhere, this, kCmdOpen) &&
        m_connect.Create("", tab | BS_PUSHBUTTON, nowhere, this, kCmdConnect) &&
        m_sqlLabel.Create("", WS_CHILD | WS_VISIBLE, nowhere, this, kIdSqlLabel) &&
        m_sql.Create(tab | WS_BORDER | WS_VSCROLL | ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN,
                     nowhere, this, kIdSql) &&
        m_runButton.Create("", tab | BS_PUSHBUTTON, nowhere, this, kCmdRun) &&
        m_stopButton.Create("", tab | BS_PUSHBUTTON | WS_DISABLED, nowhere, this, kCmdStop) &&
        m_progress.Create(WS_CHILD | PBS_MARQUEE, nowhere, this, kIdProgress) &&
        m_list.CreateList(this, kIdResult, kIdResultHeadings);
    if (!isMade)
        return -1;
    m_sqlFont.CreatePointFont(110, "Monospace");
    m_sql.SetFont(&m_sqlFont);
    ReadMarkers();
    Relabel();
    return 0;
}

void QueryView::Relabel() {
    m_databaseLabel.SetWindowText(Text(IDS_VQ_W_DATABASE).c_str());
    m_open.SetWindowText(Text(IDS_VQ_W_OPEN).c_str());
    m_connect.SetWindowText(Text(IDS_VQ_W_CONNECT).c_str());
    m_sqlLabel.SetWindowText(Text(IDS_VQ_W_SQL).c_str());
    m_runButton.SetWindowText(Text(IDS_VQ_W_RUN).c_str());
    m_stopButton.SetWindowText(Text(IDS_VQ_W_STOP).c_str());
    m_database.SetCueBanner(Text(IDS_VQ_W_NO_DATABASE).c_str());
    m_sql.SetCueBanner(Text(IDS_VQ_W_SQL_HINT).c_str());
    const DWORD layout = LayoutStyle();
    for (CWnd* window : {static_cast<CWnd*>(this), static_cast<CWnd*>(&m_list),
                         static_cast<CWnd*>(m_list.GetHeadings())})
        window->ModifyStyleEx(WS_EX_LAYOUTRTL, layout);
    ReadMarkers();
    m_list.RefreshAll();
    Layout();
    m_host.ShowStatus(Text(m_connection.IsEmpty() ? IDS_VQ_W_READY : IDS_VQ_W_TYPE));
}

/// The markers are global variables; the placeholders are texts in the interface's language.
void QueryView::ReadMarkers() {
    CellFormat& format = m_document.GetFormat();
    const auto marker = [](CGlobalVars::GlobalVarIDs id, const char* fallback) {
        const std::string text = ToString(CGlobalVars::Get(id));
        return text.empty() ? std::string(fallback) : text;
    };
    format.nullText = marker(CGlobalVars::TLXCP_TENULL, "-");
    format.defaultText = marker(CGlobalVars::TLXCP_TEDFLT, "+");
    format.blobText = ToString(GetBlobDisplayString());
    format.clobText = ToString(GetClobDisplayString());
}

// --- layout --------------------------------------------------------------------------------------

ViewMeasures QueryView::Measure() {
    ViewMeasures measures;
    CDC* const dc = GetDC();
    CFont* const old = dc->SelectObject(m_open.GetFont());
    const auto width = [&](UINT text) {
        return static_cast<int>(dc->GetTextExtent(ToCString(WithoutMarks(Text(text)))).cx);
    };
    measures.label = std::max(width(IDS_VQ_W_DATABASE), width(IDS_VQ_W_SQL)) + 4;
    measures.button = std::max(
        {width(IDS_VQ_W_OPEN), width(IDS_VQ_W_CONNECT), width(IDS_VQ_W_RUN), width(IDS_VQ_W_STOP)});
    TEXTMETRIC metrics = {};
    if (dc->GetTextMetrics(&metrics))
        measures.line = static_cast<int>(metrics.tmHeight);
    dc->SelectObject(old);
    ReleaseDC(dc);
    measures.headings = m_list.GetHeadings()->GetDesiredHeight();
    return measures;
}

void QueryView::Place(CWnd& window, const LayoutRect& rect) {
    window.MoveWindow(rect.left, rect.top, rect.Width(), rect.Height());
}

void QueryView::Layout() {
    if (!m_list.GetSafeHwnd())
        return;
    CRect client;
    GetClientRect(client);
    const ViewLayout layout = LayOutView(client.Width(), client.Height(), Measure());
    Place(m_databaseLabel, layout.databaseLabel);
    Place(m_database, layout.database);
    Place(m_open, layout.open);
    Place(m_connect, layout.connect);
    Place(m_sqlLabel, layout.sqlLabel);
    Place(m_sql, layout.sql);
    Place(m_runButton, layout.run);
    Place(m_stopButton, layout.stop);
    Place(m_progress, layout.progress);
    Place(m_list, layout.list);
    m_list.PositionHeadings();
}

void QueryView::OnSize(UINT type, int cx, int cy) {
    CWnd::OnSize(type, cx, cy);
    Layout();
}

void QueryView::OnSetFocus(CWnd*) {
    CWnd& next = m_list.GetCount() > 0 ? static_cast<CWnd&>(m_list) : m_sql;
    next.SetFocus();
}

/// Labels have the background of the window around them.
HBRUSH QueryView::OnCtlColor(CDC* dc, CWnd* control, UINT type) {
    const bool isLabel = control == &m_databaseLabel || control == &m_sqlLabel;
    return isLabel ? GetSysColorBrush(COLOR_3DFACE) : CWnd::OnCtlColor(dc, control, type);
}

void QueryView::FocusSql() {
    m_sql.SetFocus();
    m_sql.SetSel(0, -1);
}

void QueryView::NextPane() {
    if (CWnd::GetFocus() == &m_sql)
        m_list.SetFocus();
    else
        m_sql.SetFocus();
}

BOOL QueryView::PreTranslateMessage(MSG* message) {
    if (message->message == WM_KEYDOWN && message->wParam == VK_ESCAPE && IsBusy() &&
        !m_list.GetActiveEditor()) {
        Stop();
        return TRUE;
    }
    if (CWnd::PreTranslateMessage(message))
        return TRUE;
    return IsDialogMessage(m_hWnd, message);
}

// --- running a query -----------------------------------------------------------------------------

void QueryView::SetConnection(const Connection& connection) {
    m_connection = connection;
    m_document.SetOpenDatabase(connection);
    m_list.ShowEditors();
    m_database.SetWindowText(connection.GetDisplayName().c_str());
    m_host.ShowStatus(Text(IDS_VQ_W_TYPE));
    m_host.ViewChanged();
    m_sql.SetFocus();
}

void QueryView::SetSql(const std::string& sql) { m_sql.SetWindowText(sql.c_str()); }

void QueryView::ShowBusy(bool isBusy) {
    // A disabled button would keep the focus, and with it the keys.
    if (isBusy || CWnd::GetFocus() == &m_stopButton)
        m_sql.SetFocus();
    m_runButton.EnableWindow(!isBusy);
    m_stopButton.EnableWindow(isBusy);
    m_open.EnableWindow(!isBusy);
    m_connect.EnableWindow(!isBusy);
    m_progress.ShowWindow(isBusy ? SW_SHOW : SW_HIDE);
    m_progress.SetMarquee(isBusy);
    m_host.ViewChanged();
}

void QueryView::Run() {
    if (IsBusy() || !m_list.CellEnter(TRUE))
        return;
    const std::string sql = GetText(m_sql);
    if (m_connection.IsEmpty() || sql.find_first_not_of(" \t\r\n;") == std::string::npos) {
        ShowMessage(Text(m_connection.IsEmpty() ? IDS_VQ_W_READY : IDS_VQ_W_EMPTY_SQL));
        return;
    }
    if (!LeaveChanges())
        return;
    StoreLayout();
    ReadMarkers();
    m_document.Begin({}, {}, {});
    m_list.ShowColumns();
    m_isStopping = false;
    m_areWidthsFitted = false;
    m_started = std::chrono::steady_clock::now();
    // The library reads its settings once per process: on this thread.
    static_cast<void>(CByteStream().GetLength());
    m_run = std::make_unique<QueryRun>(m_connection, sql);
    SetTimer(kTimer, kTimerInterval);
    m_host.ShowStatus(Text(IDS_VQ_W_STARTING));
    ShowBusy(true);
}

void QueryView::Stop() {
    if (!IsBusy())
        return;
    m_isStopping = true;
    if (m_document.GetSort())
        m_document.GetSort()->Cancel();
    else
        m_run->Cancel();
    m_host.ShowStatus(Text(IDS_VQ_W_STOPPING));
}

void QueryView::OnTimer(std::uintptr_t id) {
    if (id == kTimer && m_document.GetSort())
        FollowSort();
    else if (id == kTimer && m_run)
        TakeRows();
    else
        CWnd::OnTimer(id);
}

void QueryView::TakeRows() {
    const bool hasEnded = m_run->GetState() != TaskState::Running;
    if (std::optional<ResultShape> shape = m_run->TakeShape()) {
        m_document.Begin(std::move(*shape), m_run->GetSql(), m_run->GetConnection());
        m_list.ShowColumns();
    }
    const std::size_t taken = m_document.ShowNewRows();
    if (taken > 0)
        m_list.ShowNewRows();
    if (!m_areWidthsFitted && m_document.GetShownRows() > 0) {
        m_list.FitNewColumns();
        m_areWidthsFitted = true;
    }
    if (hasEnded && taken == 0) {
        FinishRun();
        return;
    }
    if (!m_isStopping)
        m_host.ShowStatus(Text(IDS_VQ_W_RUNNING, {GroupDigits(m_document.GetShownRows()),
                                                  FormatSize(m_run->GetProgress().GetBytes())}));
    m_host.ViewChanged();
}

void QueryView::FinishRun() {
    KillTimer(kTimer);
    const std::unique_ptr<QueryRun> run = std::move(m_run);
    const std::size_t rows = m_document.GetShownRows();
    char seconds[32];
    std::snprintf(
        seconds, sizeof seconds, "%.2f",
        std::chrono::duration<double>(std::chrono::steady_clock::now() - m_started).count());
    ShowBusy(false);
    m_document.LearnKinds();
    if (!m_areWidthsFitted)
        m_list.FitNewColumns();
    m_list.RestoreSort();
    if (rows > 0) {
        m_list.SetCurrentCell(0, 0);
        m_list.SetFocus();
    }
    const CString fetched = std::to_string(rows).c_str();
    GetGlobals().SetGlobalVarValue(CGlobalVars::TLXAO_NUM_FETCHED, &fetched);
    switch (run->GetState()) {
    case TaskState::Stopped:
        m_host.ShowStatus(Text(IDS_VQ_W_STOPPED, {GroupDigits(rows)}));
        break;
    case TaskState::Failed:
        m_host.ShowStatus(rows == 0 ? Text(IDS_VQ_W_FAILED)
                                    : Text(IDS_VQ_W_FAILED_AFTER, {GroupDigits(rows)}));
        ShowMessage(run->GetMessage());
        m_sql.SetFocus();
        break;
    default:
        m_host.ShowStatus(rows == 0   ? Text(IDS_VQ_W_NONE, {seconds})
                          : rows == 1 ? Text(IDS_VQ_W_DONE_ONE, {seconds})
                                      : Text(IDS_VQ_W_DONE, {GroupDigits(rows), seconds}));
    }
    m_host.ViewChanged();
}

// --- sorting -------------------------------------------------------------------------------------

void QueryView::StartSort() {
    m_isStopping = false;
    SetTimer(kTimer, kTimerInterval);
    ShowBusy(true);
    FollowSort();
}

void QueryView::FollowSort() {
    const SortRun& sort = *m_document.GetSort();
    if (sort.GetState() == TaskState::Running) {
        if (!m_isStopping)
            m_host.ShowStatus(Text(IDS_VQ_W_SORTING, {std::to_string(sort.GetProgress())}));
        return;
    }
    const TaskState state = sort.GetState();
    const std::string message = sort.GetMessage();
    m_list.SortEnded();
    if (!m_run)
        KillTimer(kTimer);
    ShowBusy(m_run != nullptr);
    m_list.SetFocus();
    m_host.ShowStatus(Text(state == TaskState::Done ? IDS_VQ_W_SORTED : IDS_VQ_W_SORT_STOPPED));
    if (state == TaskState::Failed)
        ShowMessage(message);
}

void QueryView::StoreLayout() {
    if (!HasResult() || m_document.GetSql().empty())
        return;
    m_list.StoreWidths();
    SaveLayout(m_document.GetSql(), m_document.GetLayout());
}

void QueryView::OnSelectionChanged() { m_host.ViewChanged(); }

void QueryView::OnContextMenu(CWnd*, CPoint screen) {
    if (!HasResult() || IsBusy())
        return;
    if (screen.x == -1 && screen.y == -1) { // from the keyboard
        CRect list;
        m_list.GetWindowRect(list);
        screen = list.TopLeft();
    }
    constexpr UINT kItems[][2] = {
        {kCmdEditCell, IDS_VQ_M_EDIT_CELL}, {kCmdZoom, IDS_VQ_M_ZOOM},
        {kCmdSetNull, IDS_VQ_M_SET_NULL},   {kCmdSetDefault, IDS_VQ_M_SET_DEFAULT},
        {kCmdUndoCell, IDS_VQ_M_UNDO_CELL}, {kCmdLoad, IDS_VQ_M_LOAD},
        {kCmdSave, IDS_VQ_M_SAVE},          {kCmdCopy, IDS_VQ_M_COPY}};
    CMenu menu;
    menu.CreatePopupMenu();
    for (const auto& [command, text] : kItems)
        menu.AppendMenu(MF_STRING, command, Text(text).c_str());
    menu.TrackPopupMenu(TPM_LEFTALIGN, screen.x, screen.y, GetTopLevelParent());
}

// --- columns -------------------------------------------------------------------------------------

void QueryView::FitColumns() {
    if (RequireResult())
        m_list.FitAllColumns();
}

void QueryView::MoveColumn(int by) {
    const int column = m_list.GetCurrentColumn();
    if (!HasResult() || IsBusy() || !m_list.CellEnter(TRUE))
        return;
    const int row = m_list.GetCurrentRow();
    m_list.StoreWidths();
    if (!m_document.MoveColumn(static_cast<std::size_t>(column), by))
        return;
    const auto top = m_list.SendMessage(LB_GETTOPINDEX);
    m_list.ShowColumns();
    m_list.SendMessage(LB_SETTOPINDEX, static_cast<WPARAM>(top));
    m_list.SetCurrentCell(row, column + by);
}

void QueryView::SortColumn() {
    if (RequireResult())
        m_list.Sort(m_list.GetCurrentColumn());
}

void QueryView::ResetColumns() {
    if (!RequireResult() || !m_list.CellEnter(TRUE))
        return;
    m_document.GetLayout() = DefaultLayout(m_document.GetShownColumns());
    m_list.ShowColumns();
    m_list.FitNewColumns();
    m_list.SetCurrentCell(0, 0);
}

} // namespace vnquery
