#include "vnquery/window/ResultView.h"

#include "vnquery/result/CellEdit.h"
#include "vnquery/window/Guard.h"
#include "vnquery/window/Icons.h"
#include "vnquery/window/Label.h"
#include "vnquery/window/RunTask.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Messages.h"

#include <QAction>
#include <QEvent>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QTextDocument>
#include <QToolBar>
#include <QToolTip>
#include <QVBoxLayout>

namespace vnquery {

namespace {

constexpr int kSortInterval = 25;     ///< milliseconds between two looks at a sort
constexpr DWORD kPreviewLength = 200; ///< characters of a long text

} // namespace

ResultView::ResultView(QWidget* parent)
    : QWidget(parent), m_panel(m_document, *this, [this] { m_sortTimer.start(kSortInterval); }) {
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_panel.CreateIn(this);
    layout->addWidget(m_panel.GetWidget(), 1);

    m_findBar = new QWidget(this);
    m_findText = new QLineEdit(m_findBar);
    m_replaceText = new QLineEdit(m_findBar);
    m_findTools = new QToolBar(m_findBar);
    m_replace =
        m_findTools->addAction(QString(), this, [this] { Guard(this, [this] { Replace(); }); });
    auto* const findLayout = new QHBoxLayout(m_findBar);
    findLayout->setContentsMargins(2, 2, 2, 2);
    findLayout->addWidget(m_findText);
    findLayout->addWidget(m_replaceText);
    findLayout->addWidget(m_findTools);
    m_findTools->addAction(QString(), this, [this] { Guard(this, [this] { ReplaceAll(); }); });
    m_findTools->addAction(Icon("go-up"), {}, this, [this] { FindNext(false); });
    m_findTools->addAction(Icon("go-down"), {}, this, [this] { FindNext(true); });
    m_findTools->addAction(Icon("window-close"), {}, this, [this] {
        GetList().ClearFind();
        m_found.clear();
        m_findBar->hide();
        GetList().SetFocus();
    });
    m_findText->installEventFilter(this);
    m_replaceText->installEventFilter(this);
    connect(m_replaceText, &QLineEdit::returnPressed, m_replace, &QAction::trigger);
    QWidget* const list = GetList().GetWidget();
    list->installEventFilter(this);
    for (QWidget* inner : list->findChildren<QWidget*>())
        inner->installEventFilter(this);
    connect(m_findText, &QLineEdit::returnPressed, this, [this] { FindNext(true); });
    m_findBar->hide();
    layout->addWidget(m_findBar);

    connect(&m_sortTimer, &QTimer::timeout, this,
            [this] { Guard(this, [this] { FollowSort(); }); });
    setFocusProxy(m_panel.GetWidget());
    Relabel();
}

ResultView::~ResultView() = default;

void ResultView::Relabel() {
    ReadMarkers();
    m_panel.Relabel();
    m_findText->setPlaceholderText(Label(IDS_VQ_N_FIND_HINT));
    m_findText->setAccessibleName(Label(IDS_VQ_N_FIND_HINT));
    m_replaceText->setPlaceholderText(Label(IDS_VQ_N_REPLACE_HINT));
    m_replaceText->setAccessibleName(Label(IDS_VQ_N_REPLACE_HINT));
    const UINT texts[] = {IDS_VQ_N_REPLACE, IDS_VQ_N_REPLACE_ALL, IDS_VQ_N_M_FIND_PREVIOUS,
                          IDS_VQ_N_M_FIND_NEXT, IDS_VQ_N_CLOSE};
    const QList<QAction*> tools = m_findTools->actions();
    for (int i = 0; i < 5; ++i)
        tools[i]->setText(Label(texts[i]));
}

void ResultView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        Relabel();
    QWidget::changeEvent(event);
}

/// Shows the text of a cell that is cut off.
void ResultView::ShowCellTip(const QPoint& place) {
    ResultList& list = GetList();
    CPoint point(place.x(), place.y());
    list.ScreenToClient(&point);
    int row = -1;
    int column = -1;
    list.HitTest(point, row, column);
    CString text;
    if (row < 0 || column < 0 || !list.GetStringItem(row, column, text))
        return;
    const QString shown = QString::fromUtf8(static_cast<const char*>(text));
    const bool isCut = fontMetrics().horizontalAdvance(shown) > list.GetColumnWidth(column) - 6;
    QToolTip::showText(place, isCut ? Qt::convertFromPlainText(shown) : QString(),
                       list.GetWidget());
}

/// Esc in a field leaves the bar; tips of cells.
bool ResultView::eventFilter(QObject* watched, QEvent* event) {
    const bool isField = watched == m_findText || watched == m_replaceText;
    if (!isField && event->type() == QEvent::ToolTip) {
        Guard(this, [&] { ShowCellTip(static_cast<QHelpEvent*>(event)->globalPos()); });
        return true;
    }
    if (!isField || event->type() != QEvent::KeyPress ||
        static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape)
        return QWidget::eventFilter(watched, event);
    m_findTools->actions().last()->trigger();
    return true;
}

/// The markers are global variables.
void ResultView::ReadMarkers() {
    CellFormat& format = m_document.GetFormat();
    const auto marker = [](CGlobalVars::GlobalVarIDs id, const char* fallback) {
        const CString text = CGlobalVars::Get(id);
        return text.IsEmpty() ? std::string(fallback) : std::string(text);
    };
    format.nullText = marker(CGlobalVars::TLXCP_TENULL, "-");
    format.defaultText = marker(CGlobalVars::TLXCP_TEDFLT, "+");
    format.hasPreviews = true;
    format.textLimit = kPreviewLength;
}

void ResultView::Tell(const QString& text) { QMessageBox::warning(this, Label(IDS_VQ_APP), text); }

bool ResultView::AskYesNo(const QString& question) {
    return QMessageBox::question(this, Label(IDS_VQ_APP), question) == QMessageBox::Yes;
}

// --- rows ----------------------------------------------------------------------------------------

void ResultView::Begin(ResultShape&& shape, const std::string& sql, const ResultOrigin& origin) {
    StoreLayout();
    ReadMarkers();
    m_sortTimer.stop();
    m_origin = origin;
    m_document.Begin(std::move(shape), sql, origin.connection);
    m_areWidthsFitted = false;
    GetList().ShowColumns();
    Q_EMIT CurrentChanged();
    Q_EMIT Changed();
}

bool ResultView::ShowNewRows() {
    const std::size_t taken = m_document.ShowNewRows();
    if (taken > 0)
        GetList().RowsChanged();
    if (!m_areWidthsFitted && m_document.GetShownRows() > 0) {
        GetList().FitNewColumns();
        m_areWidthsFitted = true;
        GetList().SetCurrentCell(0, 0);
    }
    return taken > 0;
}

void ResultView::EndRows() {
    m_document.LearnKinds();
    if (!m_areWidthsFitted)
        GetList().FitNewColumns();
    m_areWidthsFitted = true;
    GetList().ShowKinds();
    GetList().RestoreSort();
    Q_EMIT Changed();
}

void ResultView::StopSort() {
    if (IsSorting())
        m_document.GetSort()->Cancel();
}

void ResultView::FollowSort() {
    const SortRun* const sort = m_document.GetSort();
    if (!sort) {
        m_sortTimer.stop();
        Q_EMIT Changed(); // the current row is another one
        return;
    }
    const TaskState state = sort->GetState();
    if (state == TaskState::Running) {
        Q_EMIT StatusChanged(Label(IDS_VQ_W_SORTING, {std::to_string(sort->GetProgress())}));
        Q_EMIT Changed();
        return;
    }
    const QString message = Sentence(sort->GetMessage());
    m_sortTimer.stop();
    GetList().SortEnded();
    Q_EMIT StatusChanged(Label(state == TaskState::Done ? IDS_VQ_W_SORTED : IDS_VQ_W_SORT_STOPPED));
    Q_EMIT Changed();
    Q_EMIT CurrentChanged();
    if (state == TaskState::Failed)
        Tell(message);
}

void ResultView::StoreLayout() {
    if (!HasResult() || m_document.GetSql().empty())
        return;
    GetList().StoreLayout();
    SaveLayout(m_document.GetSql(), m_document.GetLayout());
}

// --- the list's messages -------------------------------------------------------------------------

void ResultView::CurrentCellChanged() {
    Q_EMIT CurrentChanged();
    Q_EMIT Changed();
}

void ResultView::ShowCurrentValue() { Q_EMIT ValueWanted(); }

void ResultView::EditorClosed() { CellsChanged(); }

void ResultView::RowsFiltered() { Q_EMIT Changed(); }

void ResultView::ShowMenu(QPoint place) {
    if (!HasResult())
        return;
    QMenu menu(this);
    for (QAction* action : actions()) // the window has put them here
        menu.addAction(action);
    menu.exec(place);
}

void ResultView::ShowHeadingMenu(int column, QPoint place) {
    if (!HasResult() || IsBusy())
        return;
    ResultList& list = GetList();
    QMenu menu(this);
    const int listColumn = ResultList::ListColumnOf(column);
    if (column >= 0) {
        menu.addAction(Label(IDS_VQ_N_H_ASCENDING), this,
                       [=, &list] { list.SortBy(column, false); });
        menu.addAction(Label(IDS_VQ_N_H_DESCENDING), this,
                       [=, &list] { list.SortBy(column, true); });
        menu.addSeparator();
        menu.addAction(Label(IDS_VQ_N_H_FIT), this, [=, &list] { list.AutoFitCol(listColumn); });
        menu.addAction(Label(IDS_VQ_N_H_HIDE), this, [=, &list] { list.HideColumn(listColumn); });
    }
    menu.addAction(Label(IDS_VQ_N_H_SHOW_ALL), this, [&list] {
        for (int i = 0; i < list.GetNumColumns(); ++i)
            list.HideColumn(i, FALSE);
    });
    if (column >= 0)
        menu.addAction(Label(IDS_VQ_N_H_FREEZE), this, [=, &list] { list.FreezeUpTo(listColumn); });
    if (list.GetFrozenColumns() > 1)
        menu.addAction(Label(IDS_VQ_N_H_UNFREEZE), this, [&list] { list.SetFrozenColumns(1); });
    if (column >= 0) {
        menu.addSeparator();
        menu.addAction(Label(IDS_VQ_N_H_SUMMARY), this, [this, column] { Summarize(column); });
    }
    menu.exec(place);
}

void ResultView::Summarize(int column) {
    ColumnSummary summary;
    const auto summarize =
        m_document.PrepareSummary(GetShown(false).rows, static_cast<std::size_t>(column));
    if (!RunTask(this, IDS_VQ_N_H_SUMMARY,
                 [&](Progress& progress) { summary = summarize(progress); }))
        return;
    const auto show = [&](const std::optional<Value>& value) {
        return value ? FormatCell(*value, m_document.GetFormat()) : std::string("-");
    };
    Q_EMIT StatusChanged(
        Label(IDS_VQ_N_SUMMARY, {m_document.GetHeading(static_cast<std::size_t>(column)),
                                 GroupDigits(summary.rows - summary.nulls), summary.sum,
                                 show(summary.minimum), show(summary.maximum)}));
}

// --- columns -------------------------------------------------------------------------------------

void ResultView::ShowFilterRow(bool show) {
    m_panel.ShowFilterRow(show);
    Q_EMIT Changed();
}

void ResultView::FitColumns() {
    if (RequireResult())
        GetList().FitAllColumns();
}

void ResultView::MoveColumn(int by) {
    if (RequireResult())
        GetList().MoveColumn(by);
}

void ResultView::SortColumn() {
    if (RequireResult())
        GetList().Sort(ResultList::ListColumnOf(GetList().GetCurrentColumn()));
}

void ResultView::ResetColumns() {
    if (RequireResult() && GetList().CellEnter(TRUE))
        GetList().ResetColumns();
}

// --- finding -------------------------------------------------------------------------------------

void ResultView::Find() {
    m_findBar->show();
    m_findText->setFocus();
    m_findText->selectAll();
}

void ResultView::FindNext(bool forward) {
    const QByteArray text = m_findText->text().toUtf8();
    if (text.isEmpty() || !HasResult()) {
        Find();
        return;
    }
    ResultList& list = GetList();
    if (text != m_found) {
        m_found = text;
        FindEnded(list.FindText(text, kFindSkipFirst));
    } else {
        FindEnded(forward ? list.FindNext() : list.FindPrevious());
    }
}

/// Why the cell does not take its text with the found text replaced; nothing where that is not in
/// it.
std::optional<EditFault> ResultView::ReplaceIn(CellPlace place, const Replacement& texts,
                                               NewValue& changed) const {
    constexpr DWORD kLongest = 1 << 20;
    const Value value = m_document.GetValue(place);
    QString text;
    if (value.GetType() != Value::Type::Binary && value.GetLength() <= kLongest)
        text = QString::fromStdString(value.GetBytes());
    if (!text.contains(texts.wanted, Qt::CaseInsensitive))
        return {};
    text.replace(texts.wanted, texts.with, Qt::CaseInsensitive);
    return ParseText(text.toStdString(), m_document.GetKind(place.second), changed);
}

void ResultView::Replace() {
    CellPlace place;
    if (m_findText->text().isEmpty() || !RequireEditable(place))
        return;
    NewValue changed;
    const std::optional<EditFault> fault =
        ReplaceIn(place, {m_findText->text(), m_replaceText->text()}, changed);
    if (fault == EditFault::None)
        SetCell(place, std::move(changed));
    else if (fault)
        return Tell(Label(IDS_VQ_P_NOT_A_NUMBER, {m_document.GetHeading(place.second), "42"}));
    FindNext(true);
}

void ResultView::ReplaceAll() {
    // Copies: the fields belong to this thread.
    const Replacement texts = {m_findText->text(), m_replaceText->text()};
    if (texts.wanted.isEmpty() || !RequireResult() || !GetList().CellEnter(TRUE))
        return;
    std::vector<std::pair<CellPlace, NewValue>> changes;
    const Shown shown = GetShown(false);
    if (!RunTask(this, IDS_VQ_N_REPLACE_ALL, [&](Progress& progress) {
            for (const std::size_t row : shown.rows) {
                for (const std::size_t column : shown.columns) {
                    const CellPlace place = m_document.PlaceOf(row, column);
                    NewValue changed;
                    if (m_document.GetReadOnlyReason(place) == ReadOnlyReason::None &&
                        ReplaceIn(place, texts, changed) == EditFault::None)
                        changes.emplace_back(place, std::move(changed));
                }
                progress.AddRow();
            }
        }))
        return;
    if (changes.empty())
        return void(Q_EMIT StatusChanged(Label(IDS_VQ_N_NOT_FOUND, {texts.wanted.toStdString()})));
    if (!AskYesNo(Label(IDS_VQ_N_Q_REPLACE, {texts.wanted.toStdString(), texts.with.toStdString(),
                                             GroupDigits(changes.size())})))
        return;
    {
        const EditStep step(m_document.GetEdits());
        for (auto& [place, changed] : changes)
            m_document.GetEdits().Set(place, std::move(changed), m_document.GetResult());
    }
    RowsChanged({});
}

void ResultView::FindEnded(int result) {
    if (result == kFindHit || result == kFindWrapped)
        GetList().TakeFoundColumn();
    Q_EMIT StatusChanged(result == kFindNone ? Label(IDS_VQ_N_NOT_FOUND, {m_found.toStdString()})
                                             : QString());
}

} // namespace vnquery
