#include "vnquery/window/ResultPanel.h"

#include "vnquery/tasks/Failure.h"
#include "vnquery/window/Label.h"

#include "vnbytstr/Messages.h"
#include "vnbytstr/window/ListBox.h"

namespace vnquery {

namespace {

enum Control : unsigned { kIdResult = 200, kIdHeadings };

} // namespace

BEGIN_MESSAGE_MAP(ResultPanel, CWnd)
ON_WM_SIZE()
ON_WM_SETFOCUS()
ON_WM_CONTEXTMENU()
ON_CONTROL(LBN_SELCHANGE, kIdResult, OnSelectionChanged)
ON_MESSAGE(ResultList::kWmShowValue, OnShowValue)
ON_MESSAGE(VNM_OPENCELL, OnOpenCell)
ON_MESSAGE(VNM_STOREVALUE, OnStoreValue)
ON_MESSAGE(VNM_EDITORCLOSED, OnEditorClosed)
ON_MESSAGE(VNM_FILTERCHANGED, OnFilterChanged)
ON_MESSAGE(VNM_FINDENDED, OnFindEnded)
ON_MESSAGE(kWmLoadDropped, OnLoadDropped)
END_MESSAGE_MAP()

// Here, while the members that handle the children's last messages still exist.
ResultPanel::~ResultPanel() { DestroyWindow(); }

BOOL ResultPanel::CreateIn(QWidget* parent) {
    if (!CreateInWidget(parent, nullptr, "", WS_CHILD | WS_VISIBLE, CRect(0, 0, 0, 0), 1) ||
        !m_list.CreateList(this, kIdResult, kIdHeadings))
        return FALSE;
    GetWidget()->setFocusPolicy(Qt::NoFocus); // it is the list that gets it
    Relabel();
    return TRUE;
}

LRESULT ResultPanel::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    try {
        return CWnd::WindowProc(message, wParam, lParam);
    } catch (CException* error) {
        m_owner.Tell(Sentence(TakeMessage(error)));
    } catch (const Failure& failure) {
        m_owner.Tell(Sentence(failure.what()));
    }
    return 0;
}

void ResultPanel::Relabel() {
    const DWORD layout = AreTextsRightToLeft() ? WS_EX_LAYOUTRTL : 0;
    for (CWnd* window : {static_cast<CWnd*>(this), static_cast<CWnd*>(&m_list),
                         static_cast<CWnd*>(m_list.GetHeadings())})
        window->ModifyStyleEx(WS_EX_LAYOUTRTL, layout);
    m_list.SetAccessibleName(Text(IDS_VQ_W_RESULT).c_str());
    m_list.GetHeadings()->SetAccessibleName(Text(IDS_VQ_N_HEADINGS).c_str());
    m_list.Invalidate();
    Layout();
}

void ResultPanel::ShowFilterRow(bool show) {
    m_list.EnableFilterRow(show);
    Layout();
}

void ResultPanel::Layout() {
    if (!m_list.GetSafeHwnd())
        return;
    CRect client;
    GetClientRect(client);
    m_list.MoveWindow(client); // whose top gives way to the headings
    m_list.PositionHeadings();
}

void ResultPanel::OnSize(UINT type, int cx, int cy) {
    CWnd::OnSize(type, cx, cy);
    Layout();
}

void ResultPanel::OnSetFocus(CWnd*) { m_list.SetFocus(); }

void ResultPanel::OnSelectionChanged() { m_owner.CurrentCellChanged(); }

void ResultPanel::OnContextMenu(CWnd* window, CPoint screen) {
    const bool isByKey = screen.x == -1 && screen.y == -1;
    QWidget* const widget = window ? window->GetWidget() : GetWidget();
    const QPoint place = isByKey ? widget->mapToGlobal(QPoint(0, 0)) : QPoint(screen.x, screen.y);
    if (!window || window != m_list.GetHeadings()) {
        m_owner.ShowMenu(place);
        return;
    }
    CPoint point = screen;
    window->ScreenToClient(&point);
    const int column =
        isByKey ? m_list.GetHeadings()->GetFocusColumn() : m_list.GetHeadings()->HitTest(point);
    if (column >= 0)
        m_owner.ShowHeadingMenu(ResultList::ResultColumnOf(column), place);
}

LRESULT ResultPanel::OnShowValue(WPARAM, LPARAM) {
    m_owner.ShowCurrentValue();
    return 0;
}

/// The list is about to open a cell, after a key, a click, or the drop of a file.
LRESULT ResultPanel::OnOpenCell(WPARAM column, LPARAM) {
    const int row = m_list.GetOpenedRow();
    const int resultColumn = ResultList::ResultColumnOf(static_cast<int>(column));
    if (row < 0 || row >= m_list.GetCount() || resultColumn < 0)
        return 1;
    m_list.SetCurrentCell(row, resultColumn);
    const char* const dropped = m_list.GetFileName(row);
    if (dropped && *dropped) {
        PostMessage(kWmLoadDropped); // not during the drop
        return 1;
    }
    return m_owner.OpenCell(row, resultColumn) ? 0 : 1;
}

LRESULT ResultPanel::OnLoadDropped(WPARAM, LPARAM) {
    const int row = m_list.GetCurrentRow();
    const char* const name = m_list.GetFileName(row);
    if (!name || !*name)
        return 0;
    const std::string file = name;
    m_list.AddFileName(row, "");
    m_owner.LoadDropped(file);
    return 0;
}

LRESULT ResultPanel::OnStoreValue(WPARAM column, LPARAM value) {
    const int row = m_list.GetCurrentRow();
    const int resultColumn = ResultList::ResultColumnOf(static_cast<int>(column));
    return row >= 0 && resultColumn >= 0 &&
                   m_owner.StoreText(row, resultColumn, reinterpret_cast<const char*>(value))
               ? 0
               : 1;
}

LRESULT ResultPanel::OnEditorClosed(WPARAM, LPARAM) {
    if (m_list.GetActiveEditor() == nullptr)
        m_owner.EditorClosed();
    return 0;
}

LRESULT ResultPanel::OnFindEnded(WPARAM result, LPARAM) {
    m_owner.FindEnded(static_cast<int>(result));
    return 0;
}

LRESULT ResultPanel::OnFilterChanged(WPARAM, LPARAM) {
    m_owner.RowsFiltered();
    return 0;
}

} // namespace vnquery
