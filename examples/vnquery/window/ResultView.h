// A result in the window: its list, the bar to find texts, and the commands on its cells and rows.
#pragma once

#include "vnquery/document/ResultDocument.h"
#include "vnquery/result/CellEdit.h"
#include "vnquery/sources/Session.h"
#include "vnquery/window/ResultPanel.h"

#include <QTimer>
#include <QWidget>

#include <memory>

class QLineEdit;
class QToolBar;

namespace vnquery {

enum class CopyForm { Cell, Rows, RowsWithHeadings, Csv, Insert, Json, Markdown };

/// Where a result comes from, to read it again and to write to it.
struct ResultOrigin {
    Connection connection;
    std::shared_ptr<Session> session; ///< null unless changes are allowed
    Parameters parameters;
};

/// Commands that do not apply are ignored; those that are refused say why.
class ResultView : public QWidget, private ResultPanelOwner {
    Q_OBJECT
public:
    explicit ResultView(QWidget* parent = nullptr);
    ~ResultView() override;

    ResultDocument& GetDocument() { return m_document; }
    const ResultDocument& GetDocument() const { return m_document; }
    ResultList& GetList() { return m_panel.GetList(); }
    bool HasResult() const { return m_document.HasResult(); }
    bool IsSorting() const { return m_document.GetSort() != nullptr; }
    /// While a query brings rows: cells are not changed.
    void SetFilling(bool isFilling) {
        m_isFilling = isFilling;
        Q_EMIT CurrentChanged();
    }
    bool IsBusy() const { return m_isFilling || IsSorting(); }

    /// Shows another result, at first without rows.
    void Begin(ResultShape&& shape, const std::string& sql, const ResultOrigin& origin);
    /// The session in whose transaction changes are written; null: each time in one of their own.
    void SetSession(const std::shared_ptr<Session>& session) { m_origin.session = session; }
    const Parameters& GetParameters() const { return m_origin.parameters; }
    /// Shows rows that have come since; false when there were none.
    bool ShowNewRows();
    /// To be called after the last row.
    void EndRows();
    void StopSort();
    /// Takes the markers for NULL and the default from the global variables.
    void ReadMarkers();

    bool GetCurrentPlace(CellPlace& place) const;
    bool IsCurrentEditable() const;
    bool CanChangeRows() const;

    // --- commands --------------------------------------------------------------------------------
    void EditCell();
    void SetNull();
    void SetDefault();
    void Undo();
    void InsertRow();
    void DuplicateRow();
    void DeleteRows();
    void LoadCell();
    void SaveCell();
    /// A cell's new value, from the value pane.
    void SetValue(CellPlace place, NewValue value);
    void Copy(CopyForm form);
    void Find();
    void FindNext(bool forward);
    /// Replaces the text in the current cell, where it is there, and goes to the next one.
    void Replace();
    /// The same in all cells shown, after a question that says how many have the text.
    void ReplaceAll();
    void ShowFilterRow(bool show);
    bool HasFilterRow() { return GetList().GetFilterRow() != nullptr; }
    void FitColumns();
    void MoveColumn(int by);
    void SortColumn();
    void ResetColumns();
    void Export();
    /// Asks, then writes the changes to the database in a transaction. False when a change is not
    /// written.
    bool WriteChanges();
    void DiscardChanges();
    /// Asks whether to write or discard unwritten changes. False if the user cancels.
    bool LeaveChanges();
    /// Keeps how the result is shown, for the next time its query runs.
    void StoreLayout();

Q_SIGNALS:
    void StatusChanged(const QString& text);
    /// The rows, the current cell or the changes are different now.
    void Changed();
    /// The value of the current cell is another one, or there is none any more.
    void CurrentChanged();
    void ValueWanted();

protected:
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void CurrentCellChanged() override;
    void ShowCurrentValue() override;
    bool OpenCell(int row, int column) override;
    bool StoreText(int row, int column, const std::string& text) override;
    void EditorClosed() override;
    void LoadDropped(const std::string& file) override;
    void RowsFiltered() override;
    void FindEnded(int result) override;
    void ShowMenu(QPoint place) override;
    void ShowHeadingMenu(int column, QPoint place) override;
    void Tell(const QString& text) override;

    /// Rows and columns as the list shows them.
    struct Shown {
        std::vector<std::size_t> rows;    ///< shown rows of the document
        std::vector<std::size_t> columns; ///< of the result
        std::vector<std::string> headings;
    };

    void Relabel();
    struct Replacement {
        QString wanted;
        QString with;
    };
    std::optional<EditFault> ReplaceIn(CellPlace place, const Replacement& texts,
                                       NewValue& changed) const;
    void ShowCellTip(const QPoint& place);
    Shown GetShown(bool selectedOnly);
    bool RequireResult();
    bool RequireCurrent(CellPlace& place);
    bool RequireEditable(CellPlace& place);
    bool RequireTable();
    bool RefuseEdit(ReadOnlyReason reason);
    void SetCell(CellPlace place, NewValue&& value);
    void LoadFile(CellPlace place, const std::string& name);
    void RowsChanged(std::optional<std::size_t> shownRow);
    void CellsChanged();
    void FollowSort();
    void Summarize(int column);
    bool AskYesNo(const QString& question);
    std::string DescribeConflicts(const WriteReport& report) const;
    bool AskToWrite(const WriteReport& report);
    std::unique_ptr<RowSource> OpenSource() const;
    std::unique_ptr<TableWriter> OpenWriter() const;
    bool CompareChanges(WriteReport& report);
    bool CommitChanges();
    bool TellUndone();
    void AcceptChanges(WriteReport&& report);

    ResultDocument m_document;
    ResultOrigin m_origin;
    ResultPanel m_panel;
    QWidget* m_findBar;
    QLineEdit* m_findText;
    QLineEdit* m_replaceText;
    QAction* m_replace;
    QToolBar* m_findTools;
    QByteArray m_found; ///< the text found last
    QTimer m_sortTimer;
    bool m_isFilling = false;
    bool m_areWidthsFitted = false;
};

} // namespace vnquery
