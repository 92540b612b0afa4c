// The library's window that the result's list stands in, within a Qt widget.
#pragma once

#include "vnquery/window/ResultList.h"

#include <QPoint>
#include <QWidget>

namespace vnquery {

/// What the list asks of its owner, and tells it. The functions may throw what the library throws.
class ResultPanelOwner {
public:
    virtual ~ResultPanelOwner() = default;
    virtual void CurrentCellChanged() = 0;
    virtual void ShowCurrentValue() = 0;
    /// False: no editor opens in the list.
    virtual bool OpenCell(int row, int column) = 0;
    /// False: the text is refused, and the editor stays open.
    virtual bool StoreText(int row, int column, const std::string& text) = 0;
    virtual void EditorClosed() = 0;
    /// The file that was dropped on the current cell.
    virtual void LoadDropped(const std::string& file) = 0;
    virtual void RowsFiltered() = 0;
    /// A search that took long: an EFindResult.
    virtual void FindEnded(int result) = 0;
    virtual void ShowMenu(QPoint place) = 0;
    virtual void ShowHeadingMenu(int column, QPoint place) = 0;
    virtual void Tell(const QString& failure) = 0;
};

/// List and headings fill it. What the library throws while it handles a message is told to the
/// owner; it must not pass through Qt's event loop.
class ResultPanel : public CWnd {
public:
    ResultPanel(ResultDocument& document, ResultPanelOwner& owner, std::function<void()> sorts)
        : m_owner(owner), m_list(document, std::move(sorts)) {}
    ~ResultPanel() override;

    BOOL CreateIn(QWidget* parent);
    ResultList& GetList() { return m_list; }
    void ShowFilterRow(bool show);
    /// Turns with the direction of the texts.
    void Relabel();

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnSize(UINT type, int cx, int cy);
    void OnSetFocus(CWnd* old);
    void OnSelectionChanged();
    void OnContextMenu(CWnd* window, CPoint screen);
    LRESULT OnShowValue(WPARAM, LPARAM);
    LRESULT OnOpenCell(WPARAM column, LPARAM);
    LRESULT OnStoreValue(WPARAM column, LPARAM value);
    LRESULT OnEditorClosed(WPARAM, LPARAM);
    LRESULT OnFilterChanged(WPARAM, LPARAM);
    LRESULT OnFindEnded(WPARAM result, LPARAM);
    LRESULT OnLoadDropped(WPARAM, LPARAM);
    DECLARE_MESSAGE_MAP()

private:
    /// Loads the file that was dropped on the current cell; posted by the drop to be handled after
    /// it.
    static constexpr UINT kWmLoadDropped = WM_APP + 1;

    void Layout();

    ResultPanelOwner& m_owner;
    ResultList m_list;
};

} // namespace vnquery
