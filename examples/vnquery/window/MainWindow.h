// The program's window.
#pragma once

#include "vnquery/window/QueryView.h"

namespace vnquery {

/// Menu bar, keys, status line, and the view with the rest.
class MainWindow : public CFrameWnd, private QueryViewHost {
public:
    MainWindow();
    ~MainWindow() override;

    /// Makes and shows the window.
    BOOL Open();
    QueryView& GetView() { return m_view; }
    /// The signal that closed the window; 0 when the user closed it.
    int GetEndingSignal() const { return m_endingSignal; }
    /// Opens another database, after asking about unwritten changes.
    void Connect(const Connection& connection);

    BOOL PreTranslateMessage(MSG* message) override;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        return TellFailures([&] { return CFrameWnd::WindowProc(message, wParam, lParam); });
    }
    void OnClose();
    void OnTimer(std::uintptr_t id);
    void OnDropFiles(HDROP drop);
    void OnOpen();
    void OnConnect();
    void OnExit();
    void OnGlobals();
    void OnLanguage();
    void OnContents();
    void OnAbout();
    void OnRun() { m_view.Run(); }
    void OnStop() { m_view.Stop(); }
    void OnExport() { m_view.Export(); }
    void OnFocusSql() { m_view.FocusSql(); }
    void OnNextPane() { m_view.NextPane(); }
    void OnWrite() { m_view.WriteChanges(); }
    void OnDiscard() { m_view.DiscardChanges(); }
    void OnEditCell() { m_view.EditCell(); }
    void OnZoom() { m_view.Zoom(); }
    void OnSetNull() { m_view.SetNull(); }
    void OnSetDefault() { m_view.SetDefault(); }
    void OnUndoCell() { m_view.UndoCell(); }
    void OnLoad() { m_view.LoadCell(); }
    void OnSave() { m_view.SaveCell(); }
    void OnCopy() { m_view.CopyRows(); }
    void OnFit() { m_view.FitColumns(); }
    void OnMoveLeft() { m_view.MoveColumn(-1); }
    void OnMoveRight() { m_view.MoveColumn(1); }
    void OnSort() { m_view.SortColumn(); }
    void OnResetColumns() { m_view.ResetColumns(); }
    void OnUpdateIdle(CCmdUI* ui);
    void OnUpdateStop(CCmdUI* ui);
    void OnUpdateResult(CCmdUI* ui);
    void OnUpdateCell(CCmdUI* ui);
    void OnUpdateEditable(CCmdUI* ui);
    void OnUpdateChanges(CCmdUI* ui);
    DECLARE_MESSAGE_MAP()

private:
    void ShowStatus(const std::string& text) override;
    void ViewChanged() override;
    void MakeMenu();
    void LookForSignals();
    bool RequireIdle();

    QueryView m_view;
    CAcceleratorTable m_keys;
    std::string m_dataSource; ///< the last one used
    int m_endingSignal = 0;
    bool m_isAsking = false; ///< about unwritten changes, after a signal
};

} // namespace vnquery
