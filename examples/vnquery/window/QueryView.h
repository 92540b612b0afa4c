// The main window's contents: connection, query text, progress, result.
#pragma once

#include "vnquery/document/ResultDocument.h"
#include "vnquery/sources/QueryRun.h"
#include "vnquery/window/ResultList.h"
#include "vnquery/window/ViewLayout.h"
#include "vnquery/window/WindowText.h"

#include <chrono>
#include <memory>

namespace vnquery {

/// The frame around the view, which shows a title and a status line.
class QueryViewHost {
public:
    virtual ~QueryViewHost() = default;
    virtual void ShowStatus(const std::string& text) = 0;
    /// The connection, the rows or the changes are different now.
    virtual void ViewChanged() = 0;
};

class QueryView : public CWnd {
public:
    explicit QueryView(QueryViewHost& host);
    ~QueryView() override;

    BOOL CreateView(CWnd* parent, UINT id);

    // --- state -----------------------------------------------------------------------------------
    /// While a query runs, or a sort.
    bool IsBusy() const { return m_run || m_document.GetSort(); }
    bool HasResult() const { return m_document.HasResult(); }
    const Connection& GetConnection() const { return m_connection; }
    ResultDocument& GetDocument() { return m_document; }
    ResultList& GetList() { return m_list; }
    /// The current cell of the list, if there is one.
    bool GetCurrentPlace(CellPlace& place) const;
    bool IsCurrentEditable() const;

    // --- commands --------------------------------------------------------------------------------
    void SetConnection(const Connection& connection);
    void SetSql(const std::string& sql);
    void Run();
    void Stop();
    void Export();
    /// Asks, then writes the changed cells to the database in a transaction. False when a change
    /// is not written.
    bool WriteChanges();
    void DiscardChanges();
    /// Asks whether to write or discard unwritten changes. False if the user cancels.
    bool LeaveChanges();
    void EditCell();
    void Zoom();
    void SetNull();
    void SetDefault();
    void UndoCell();
    void LoadCell();
    void SaveCell();
    void CopyRows();
    void FitColumns();
    void MoveColumn(int by);
    void SortColumn();
    void ResetColumns();
    void FocusSql();
    void NextPane();
    /// Saves the layout of the result.
    void StoreLayout();
    /// Shows all texts again, after a change of the language.
    void Relabel();

    BOOL PreTranslateMessage(MSG* message) override;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        return TellFailures([&] { return CWnd::WindowProc(message, wParam, lParam); });
    }
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;
    int OnCreate(LPCREATESTRUCT create);
    void OnSize(UINT type, int cx, int cy);
    void OnTimer(std::uintptr_t id);
    void OnSetFocus(CWnd* old);
    HBRUSH OnCtlColor(CDC* dc, CWnd* control, UINT type);
    void OnSelectionChanged();
    void OnContextMenu(CWnd* window, CPoint screen);
    LRESULT OnOpenCell(WPARAM column, LPARAM);
    LRESULT OnStoreValue(WPARAM column, LPARAM value);
    LRESULT OnEditorClosed(WPARAM, LPARAM);
    LRESULT OnLoadDropped(WPARAM, LPARAM);
    DECLARE_MESSAGE_MAP()

private:
    /// Loads the file that was dropped on the current cell; posted by the drop to be handled after
    /// it.
    static constexpr UINT kWmLoadDropped = WM_APP + 1;

    bool RefuseEdit(ReadOnlyReason reason);
    bool RequireResult();
    bool RequireCurrent(CellPlace& place);
    bool RequireEditable(CellPlace& place);
    void SetCell(CellPlace place, NewValue&& value);
    void LoadFile(CellPlace place, const std::string& file);
    bool CompareChanges(WriteReport& report);
    bool AskToWrite(const WriteReport& report);
    bool CommitChanges();
    void AcceptChanges(WriteReport&& report);
    std::string DescribeConflicts(const WriteReport& report) const;
    void TakeRows();
    void FinishRun();
    void StartSort();
    void FollowSort();
    void ReadMarkers();
    void ShowBusy(bool isBusy);
    void Layout();
    ViewMeasures Measure();
    void Place(CWnd& window, const LayoutRect& rect);
    void RefreshChanged();
    std::string CellNameOf(CellPlace place) const;

    QueryViewHost& m_host;
    Connection m_connection;
    ResultDocument m_document;
    std::unique_ptr<QueryRun> m_run;
    std::chrono::steady_clock::time_point m_started;
    bool m_isStopping = false;
    bool m_areWidthsFitted = false;

    CStatic m_databaseLabel;
    CEdit m_database;
    CButton m_open;
    CButton m_connect;
    CStatic m_sqlLabel;
    CEdit m_sql;
    CButton m_runButton;
    CButton m_stopButton;
    CProgressCtrl m_progress;
    ResultList m_list;
    CFont m_sqlFont;
};

} // namespace vnquery
