// The accessible tree of a list box: a table whose children are the headings (when it has any) and
// the cells, row by row. Cells are made when a screen reader asks for them.
#include "vnbytstr/window/AccessibleTable.h"

#include "src/window/controls/ListBoxControl.h"
#include "src/window/core/AccessibleTableInternal.h"
#include "src/window/core/WindowWidget.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPointer>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <map>

namespace vnbytstr::detail {
namespace {

/// A list box that says nothing about itself: one column with the rows' texts.
class PlainListTable : public CAccessibleTable {
public:
    explicit PlainListTable(ListBoxControl& control) : m_control(control) {}

    int GetAccessibleRowCount() const override { return m_control.Rows().Count(); }
    int GetAccessibleColumnCount() const override { return 1; }
    CString GetAccessibleCellText(int row, int) const override {
        const std::string_view text = m_control.Rows().Text(row);
        return {text.data(), static_cast<int>(text.size())};
    }
    CString GetAccessibleHeading(int) const override { return {}; }
    Sort GetAccessibleSort(int) const override { return Sort::None; }
    bool IsAccessibleRowSelected(int row) const override {
        return m_control.Rows().IsSelected(row);
    }
    bool SelectAccessibleRow(int row, bool on) override {
        return m_control.SelectByAccess(row, on);
    }
    int GetAccessibleFocusRow() const override { return m_control.Caret(); }
    CRect GetAccessibleCellRect(int row, int) const override { return m_control.RowRect(row); }

private:
    ListBoxControl& m_control;
};

/// Calls `use(table, window)` with what the widget's window tells; `otherwise` when it tells
/// nothing (any longer).
template <class Result, class Use>
Result WithTable(const WindowWidget* widget, Result otherwise, Use&& use) {
    Window* window = widget != nullptr ? widget->GetWindow() : nullptr;
    if (window == nullptr)
        return otherwise;
    if (window->Accessible() != nullptr)
        return use(*window->Accessible(), *window);
    auto* control = dynamic_cast<ListBoxControl*>(window->Control());
    if (control == nullptr)
        return otherwise;
    PlainListTable plain(*control);
    return use(static_cast<CAccessibleTable&>(plain), *window);
}

bool HasHeadings(const CAccessibleTable& table) {
    for (int column = 0; column < table.GetAccessibleColumnCount(); ++column)
        if (!table.GetAccessibleHeading(column).IsEmpty())
            return true;
    return false;
}

QString ToQText(const CString& text) {
    return ToQString({text.operator const char*(), static_cast<std::size_t>(text.GetLength())});
}

class TableInterface;

/// One cell; row -1: a heading.
class CellInterface : public QAccessibleInterface,
                      public QAccessibleTableCellInterface,
                      public QAccessibleActionInterface {
public:
    CellInterface(WindowWidget* widget, int row, int column)
        : m_widget(widget), m_row(row), m_column(column) {}

    bool isValid() const override {
        return WithTable(m_widget.data(), false, [&](CAccessibleTable& table, Window&) {
            return m_row < table.GetAccessibleRowCount() &&
                   m_column < table.GetAccessibleColumnCount();
        });
    }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(m_widget);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override {
        return m_row < 0 ? QAccessible::ColumnHeader : QAccessible::Cell;
    }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text what) const override {
        if (!isValid())
            return {};
        return WithTable(m_widget.data(), QString(), [&](CAccessibleTable& table, Window&) {
            if (what == QAccessible::Name || what == QAccessible::Value)
                return ToQText(m_row < 0 ? table.GetAccessibleHeading(m_column)
                                         : table.GetAccessibleCellText(m_row, m_column));
            if (what == QAccessible::Description && m_row < 0)
                return ToQText(table.GetAccessibleSortText(table.GetAccessibleSort(m_column)));
            if (what == QAccessible::Description)
                return ToQText(table.GetAccessibleCellDescription(m_row, m_column));
            return QString();
        });
    }

    QRect rect() const override {
        return WithTable(m_widget.data(), QRect(), [&](CAccessibleTable& table, Window& window) {
            const CRect place = m_row < 0 ? table.GetAccessibleHeadingRect(m_column)
                                          : table.GetAccessibleCellRect(m_row, m_column);
            if (place.IsRectEmpty())
                return QRect();
            const QRect area = window.ToWidget(place);
            return QRect(m_widget->mapToGlobal(area.topLeft()), area.size());
        });
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        WithTable(m_widget.data(), 0, [&](CAccessibleTable& table, Window& window) {
            const QRect area =
                window.ToWidget(m_row < 0 ? table.GetAccessibleHeadingRect(m_column)
                                          : table.GetAccessibleCellRect(m_row, m_column));
            state.invisible = !m_widget->isVisible();
            state.disabled = !m_widget->isEnabled();
            if (m_row < 0)
                return 0;
            state.offscreen = !window.ClientArea().intersects(area);
            state.selectable = true;
            state.focusable = true;
            state.selected = table.IsAccessibleRowSelected(m_row);
            state.focused = table.GetAccessibleFocusRow() == m_row &&
                            std::max(table.GetAccessibleFocusColumn(), 0) == m_column &&
                            m_widget->hasFocus();
            state.editable = table.IsAccessibleCellEditable(m_row, m_column);
            state.readOnly = !state.editable;
            return 0;
        });
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TableCellInterface)
            return static_cast<QAccessibleTableCellInterface*>(this);
        if (type == QAccessible::ActionInterface)
            return static_cast<QAccessibleActionInterface*>(this);
        return nullptr;
    }

    // The cell in its table.
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QList<QAccessibleInterface*> rowHeaderCells() const override;
    QList<QAccessibleInterface*> columnHeaderCells() const override;
    int columnIndex() const override { return m_column; }
    int rowIndex() const override { return std::max(m_row, 0); }
    bool isSelected() const override { return state().selected; }
    QAccessibleInterface* table() const override { return parent(); }

    // Actions.
    QStringList actionNames() const override {
        return m_row < 0 ? QStringList() : QStringList{toggleAction()};
    }
    void doAction(const QString& name) override {
        if (name == toggleAction() && m_row >= 0 && isValid())
            WithTable(m_widget.data(), false, [&](CAccessibleTable& table, Window&) {
                return table.SelectAccessibleRow(m_row, !table.IsAccessibleRowSelected(m_row));
            });
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

    bool Is(int row, int column) const { return m_row == row && m_column == column; }
    int Row() const { return m_row; }

private:
    QPointer<WindowWidget> m_widget;
    int m_row;
    int m_column;
};

class TableInterface : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit TableInterface(WindowWidget* widget) : QAccessibleWidget(widget, QAccessible::Table) {}
    ~TableInterface() override { ForgetCells(); }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TableInterface)
            return static_cast<QAccessibleTableInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    /// A child's index is an int: of very many rows the last ones are reached as cells only.
    int childCount() const override { return IndexOf(rowCount(), 0); }
    QAccessibleInterface* child(int index) const override {
        const int columns = columnCount();
        if (index < 0 || columns == 0 || index >= childCount())
            return nullptr;
        return Cell(index / columns - HeadingRows(), index % columns);
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* cell = dynamic_cast<const CellInterface*>(child);
        return cell != nullptr ? IndexOf(cell->Row(), cell->columnIndex()) : -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        const int columns = columnCount();
        const int rows = rowCount();
        return WithTable(Own(), static_cast<QAccessibleInterface*>(nullptr),
                         [&](CAccessibleTable& table, Window& window) {
                             const CPoint at = window.GlobalToClient(QPoint(x, y));
                             int row = 0;
                             if (auto* list = dynamic_cast<ListBoxControl*>(window.Control()))
                                 row = list->FirstVisible();
                             // Rows out of view are nowhere: look at those in view only.
                             for (; row < rows; ++row) {
                                 CRect rect = table.GetAccessibleCellRect(row, 0);
                                 if (rect.IsRectEmpty() || rect.top > at.y)
                                     break;
                                 for (int column = 0; column < columns; ++column) {
                                     rect = table.GetAccessibleCellRect(row, column);
                                     if (rect.PtInRect(at))
                                         return Cell(row, column);
                                 }
                             }
                             return static_cast<QAccessibleInterface*>(nullptr);
                         });
    }
    QAccessibleInterface* focusChild() const override {
        const int row = WithTable(Own(), -1, [](CAccessibleTable& table, Window&) {
            return table.GetAccessibleFocusRow();
        });
        return Own()->hasFocus() && row >= 0 && row < rowCount() ? Cell(row, FocusColumn())
                                                                 : nullptr;
    }

    // The table.
    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QAccessibleInterface* cellAt(int row, int column) const override {
        return row >= 0 && row < rowCount() && column >= 0 && column < columnCount()
                   ? Cell(row, column)
                   : nullptr;
    }
    int columnCount() const override {
        return WithTable(Own(), 0, [](CAccessibleTable& table, Window&) {
            return table.GetAccessibleColumnCount();
        });
    }
    int rowCount() const override {
        return WithTable(Own(), 0, [](CAccessibleTable& table, Window&) {
            return table.GetAccessibleRowCount();
        });
    }
    QString columnDescription(int column) const override {
        return WithTable(Own(), QString(), [&](CAccessibleTable& table, Window&) {
            return column >= 0 && column < table.GetAccessibleColumnCount()
                       ? ToQText(table.GetAccessibleHeading(column))
                       : QString();
        });
    }
    QString rowDescription(int row) const override {
        return WithTable(Own(), QString(), [&](CAccessibleTable& table, Window&) {
            const int column = table.GetAccessibleRowHeaderColumn();
            return row >= 0 && row < table.GetAccessibleRowCount() && column >= 0
                       ? ToQText(table.GetAccessibleCellText(row, column))
                       : QString();
        });
    }
    int RowHeaderColumn() const {
        return WithTable(Own(), -1, [](CAccessibleTable& table, Window&) {
            return table.GetAccessibleRowHeaderColumn();
        });
    }
    QList<int> selectedRows() const override {
        return WithTable(Own(), QList<int>(), [](CAccessibleTable& table, Window& window) {
            QList<int> rows;
            const int count = table.GetAccessibleRowCount();
            auto* list = dynamic_cast<ListBoxControl*>(window.Control());
            const auto next = [list](int row) {
                return list != nullptr ? list->Rows().NextSelected(row) : row;
            };
            for (int row = next(0); row >= 0 && row < count; row = next(row + 1))
                if (table.IsAccessibleRowSelected(row))
                    rows << row;
            return rows;
        });
    }
    int selectedRowCount() const override { return static_cast<int>(selectedRows().size()); }
    int selectedCellCount() const override { return selectedRowCount() * columnCount(); }
    QList<QAccessibleInterface*> selectedCells() const override {
        QList<QAccessibleInterface*> cells;
        for (const int row : selectedRows())
            for (int column = 0; column < columnCount() && cells.size() < kMaxCells; ++column)
                cells << Cell(row, column);
        return cells;
    }
    int selectedColumnCount() const override { return 0; }
    QList<int> selectedColumns() const override { return {}; }
    bool isColumnSelected(int) const override { return false; }
    bool isRowSelected(int row) const override {
        return row >= 0 && row < rowCount() &&
               WithTable(Own(), false, [row](CAccessibleTable& table, Window&) {
                   return table.IsAccessibleRowSelected(row);
               });
    }
    bool selectRow(int row) override { return Select(row, true); }
    bool unselectRow(int row) override { return Select(row, false); }
    bool selectColumn(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent*) override { ForgetCells(); }

    QAccessibleInterface* Cell(int row, int column) const {
        const auto key = std::make_pair(row, column);
        if (const auto found = m_cells.find(key); found != m_cells.end())
            return QAccessible::accessibleInterface(found->second);
        if (static_cast<qsizetype>(m_cells.size()) >= kMaxCells)
            ForgetCells();
        auto* cell = new CellInterface(Own(), row, column);
        m_cells[key] = QAccessible::registerAccessibleInterface(cell);
        return cell;
    }
    int IndexOf(int row, int column) const {
        const std::int64_t index =
            (static_cast<std::int64_t>(row) + HeadingRows()) * columnCount() + column;
        return static_cast<int>(std::min<std::int64_t>(index, INT_MAX));
    }
    int HeadingRows() const {
        return WithTable(
            Own(), 0, [](CAccessibleTable& table, Window&) { return HasHeadings(table) ? 1 : 0; });
    }
    int FocusColumn() const {
        return WithTable(Own(), 0, [](CAccessibleTable& table, Window&) {
            return std::max(table.GetAccessibleFocusColumn(), 0);
        });
    }
    void ForgetCells() const {
        for (const auto& [place, id] : m_cells)
            QAccessible::deleteAccessibleInterface(id);
        m_cells.clear();
    }

private:
    static constexpr qsizetype kMaxCells = 4096;

    WindowWidget* Own() const { return static_cast<WindowWidget*>(widget()); }
    bool Select(int row, bool on) {
        return row >= 0 && row < rowCount() &&
               WithTable(Own(), false, [row, on](CAccessibleTable& table, Window&) {
                   return table.SelectAccessibleRow(row, on);
               });
    }

    mutable std::map<std::pair<int, int>, QAccessible::Id> m_cells;
};

QList<QAccessibleInterface*> CellInterface::rowHeaderCells() const {
    auto* table = dynamic_cast<TableInterface*>(parent());
    const int column = table != nullptr && m_row >= 0 ? table->RowHeaderColumn() : -1;
    if (column < 0)
        return {};
    // That cell is its own header, too: Qt asks the cell in column 0 for the header of the row.
    return {table->Cell(m_row, column)};
}

QList<QAccessibleInterface*> CellInterface::columnHeaderCells() const {
    auto* table = dynamic_cast<TableInterface*>(parent());
    if (table == nullptr || m_row < 0 || table->HeadingRows() == 0)
        return {};
    return {table->Cell(-1, m_column)};
}

/// A window with a name is a group, which screen readers tell; others are nothing of their own.
class NamedInterface : public QAccessibleWidget {
public:
    explicit NamedInterface(WindowWidget* widget) : QAccessibleWidget(widget) {}
    QAccessible::Role role() const override {
        return widget()->accessibleName().isEmpty() ? QAccessibleWidget::role()
                                                    : QAccessible::Grouping;
    }
};

QAccessibleInterface* MakeInterface(const QString&, QObject* object) {
    auto* widget = dynamic_cast<WindowWidget*>(object);
    if (widget == nullptr || widget->GetWindow() == nullptr)
        return nullptr;
    const bool isTable = widget->GetWindow()->Accessible() != nullptr ||
                         dynamic_cast<ListBoxControl*>(widget->GetWindow()->Control()) != nullptr;
    if (isTable)
        return new TableInterface(widget);
    return new NamedInterface(widget);
}

} // namespace

void InstallAccessibility() {
    static bool done = false;
    if (!done)
        QAccessible::installFactory(MakeInterface);
    done = true;
}

/// Must be in this namespace to know the interface's class.
void NotifyTable(HWND handle, AccessibleChange change, int row, int column) {
    if (!QAccessible::isActive())
        return;
    Window* window = Window::Of(handle);
    if (window == nullptr)
        return;
    QWidget* widget = window->Widget();
    auto* table = dynamic_cast<TableInterface*>(QAccessible::queryAccessibleInterface(widget));
    if (table == nullptr)
        return;
    if (change == AccessibleChange::Rows || change == AccessibleChange::Columns) {
        table->ForgetCells();
        QAccessibleTableModelChangeEvent event(widget,
                                               QAccessibleTableModelChangeEvent::ModelReset);
        QAccessible::updateAccessibility(&event);
        return;
    }
    const QAccessible::Event kind = change == AccessibleChange::Focus ? QAccessible::Focus
                                    : change == AccessibleChange::Selection
                                        ? QAccessible::SelectionWithin
                                        : QAccessible::NameChanged;
    QAccessibleEvent event(widget, kind);
    const int inColumn = column >= 0 ? column : table->FocusColumn();
    if (change == AccessibleChange::Sort && table->HeadingRows() != 0)
        event.setChild(std::max(column, 0));
    else if (change != AccessibleChange::Selection && row >= 0 && row < table->rowCount())
        event.setChild(table->IndexOf(row, inColumn));
    QAccessible::updateAccessibility(&event);
}

} // namespace vnbytstr::detail

CString CAccessibleTable::GetAccessibleSortText(Sort sort) const {
    switch (sort) {
    case Sort::Ascending:
        return "sorted ascending";
    case Sort::Descending:
        return "sorted descending";
    case Sort::None:
        break;
    }
    return {};
}

void NotifyAccessibility(HWND window, AccessibleChange change, int row, int column) {
    vnbytstr::detail::NotifyTable(window, change, row, column);
}
