// How the result view changes cells and rows, and writes them to the database.
#include "vnquery/window/ResultView.h"

#include "vnquery/result/CellEdit.h"
#include "vnquery/window/Label.h"
#include "vnquery/window/RunTask.h"
#include "vnquery/window/ValueFiles.h"

#include <QMessageBox>

#include <set>

namespace vnquery {

namespace {

UINT TextOfReason(ReadOnlyReason reason) {
    switch (reason) {
    case ReadOnlyReason::NoKey:
        return IDS_VQ_E_NO_KEY;
    case ReadOnlyReason::Key:
        return IDS_VQ_E_KEY;
    case ReadOnlyReason::Computed:
        return IDS_VQ_E_COMPUTED;
    case ReadOnlyReason::Deleted:
        return IDS_VQ_S_ROW_DELETED;
    default:
        return IDS_VQ_E_NOT_A_TABLE;
    }
}

/// Whether a change would be written, or was.
bool HasWritten(const WriteReport& report) {
    return !report.written.empty() || !report.inserted.empty() || !report.deleted.empty();
}

} // namespace

// --- what a command needs ------------------------------------------------------------------------

bool ResultView::GetCurrentPlace(CellPlace& place) const {
    ResultList& list = const_cast<ResultView*>(this)->GetList();
    const int row = list.GetCurrentRow();
    const int column = list.GetCurrentColumn();
    if (row < 0 || row >= list.GetCount() || column < 0 ||
        column >= static_cast<int>(m_document.GetResult().GetColumnCount()))
        return false;
    place = m_document.PlaceOf(list.ShownRowOf(row), static_cast<std::size_t>(column));
    return true;
}

bool ResultView::IsCurrentEditable() const {
    CellPlace place;
    return !m_isFilling && GetCurrentPlace(place) &&
           m_document.GetReadOnlyReason(place) == ReadOnlyReason::None;
}

bool ResultView::CanChangeRows() const {
    return HasResult() && m_document.GetInsertReason() == ReadOnlyReason::None;
}

bool ResultView::RequireResult() {
    if (IsBusy())
        Tell(Label(IDS_VQ_W_BUSY));
    else if (!HasResult())
        Tell(Label(IDS_VQ_W_NO_RESULT));
    return !IsBusy() && HasResult();
}

bool ResultView::RequireCurrent(CellPlace& place) {
    if (!RequireResult())
        return false;
    if (!GetCurrentPlace(place))
        Tell(Label(IDS_VQ_W_NOTHING_SELECTED));
    return GetCurrentPlace(place);
}

bool ResultView::RefuseEdit(ReadOnlyReason reason) {
    if (reason != ReadOnlyReason::None)
        Tell(Label(TextOfReason(reason)));
    return reason != ReadOnlyReason::None;
}

bool ResultView::RequireEditable(CellPlace& place) {
    return RequireCurrent(place) && !RefuseEdit(m_document.GetReadOnlyReason(place));
}

bool ResultView::RequireTable() {
    return RequireResult() && GetList().CellEnter(TRUE) &&
           !RefuseEdit(m_document.GetInsertReason());
}

// --- cells ---------------------------------------------------------------------------------------

void ResultView::SetCell(CellPlace place, NewValue&& value) {
    GetList().CellCancel();
    m_document.GetEdits().Set(place, std::move(value), m_document.GetResult());
    CellsChanged();
}

/// Shows the current row again, after a change of its cells.
void ResultView::CellsChanged() {
    const int row = GetList().GetCurrentRow();
    if (row >= 0)
        GetList().RowChanged(static_cast<int>(GetList().ShownRowOf(row)));
    Q_EMIT CurrentChanged();
    Q_EMIT Changed();
}

void ResultView::SetValue(CellPlace place, NewValue value) {
    if (!HasResult() || RefuseEdit(m_document.GetReadOnlyReason(place)))
        return;
    SetCell(place, std::move(value));
    GetList().Invalidate();
}

void ResultView::EditCell() {
    CellPlace place;
    if (RequireEditable(place))
        GetList().EditColumn(GetList().GetCurrentRow(),
                             ResultList::ListColumnOf(GetList().GetCurrentColumn()));
}

bool ResultView::OpenCell(int, int) {
    CellPlace place;
    if (IsBusy() || !GetCurrentPlace(place) || RefuseEdit(m_document.GetReadOnlyReason(place)))
        return false;
    const NewValue* const edit = m_document.GetEdits().Find(place);
    if ((edit && edit->isDefault) ||
        IsEditableInCell(m_document.GetValue(place), m_document.GetFormat()))
        return true;
    Q_EMIT ValueWanted();
    return false;
}

bool ResultView::StoreText(int row, int column, const std::string& text) {
    const std::size_t shownRow = GetList().ShownRowOf(row);
    const auto resultColumn = static_cast<std::size_t>(column);
    const CellPlace place = m_document.PlaceOf(shownRow, resultColumn);
    if (text == m_document.GetCellText(shownRow, resultColumn))
        return true;
    const CellFormat& format = m_document.GetFormat();
    const std::string& name = m_document.GetHeading(resultColumn);
    const ColumnKind kind = m_document.GetKind(resultColumn);
    NewValue parsed;
    switch (ParseCell(text, kind, m_document.GetPlan().columns[resultColumn], format, parsed)) {
    case EditFault::None:
        m_document.GetEdits().Set(place, std::move(parsed), m_document.GetResult());
        return true;
    case EditFault::NotANumber:
        Tell(Label(IDS_VQ_E_NOT_A_NUMBER, {name, kind == ColumnKind::Integer ? "42" : "4.2",
                                           format.nullText, format.defaultText}));
        return false;
    case EditFault::NotNullable:
        Tell(Label(IDS_VQ_E_NOT_NULLABLE, {name, format.nullText}));
        return false;
    case EditFault::Bytes:
        Tell(Label(IDS_VQ_E_BYTES, {name}));
        return false;
    }
    return false;
}

void ResultView::SetNull() {
    CellPlace place;
    if (!RequireEditable(place))
        return;
    if (m_document.GetPlan().columns[place.second].isNullable)
        SetCell(place, NewValue());
    else
        Tell(Label(IDS_VQ_E_NOT_NULLABLE,
                   {m_document.GetHeading(place.second), m_document.GetFormat().nullText}));
}

void ResultView::SetDefault() {
    CellPlace place;
    if (RequireEditable(place))
        SetCell(place, {true, Value()});
}

/// Of that name; "": one that the user chooses.
void ResultView::LoadFile(CellPlace place, const std::string& name) {
    NewValue value;
    const std::string file = LoadValueFrom(this, m_document.GetKind(place.second),
                                           m_document.GetHeading(place.second), value.value, name);
    if (file.empty())
        return;
    SetCell(place, std::move(value));
    Q_EMIT StatusChanged(Label(IDS_VQ_W_LOADED, {file}));
}

void ResultView::LoadDropped(const std::string& file) {
    CellPlace place;
    if (RequireEditable(place))
        LoadFile(place, file);
}

void ResultView::LoadCell() {
    CellPlace place;
    if (RequireEditable(place))
        LoadFile(place, {});
}

void ResultView::SaveCell() {
    CellPlace place;
    if (!RequireCurrent(place))
        return;
    const Value value = m_document.GetValue(place);
    if (value.IsNull()) {
        Tell(Label(IDS_VQ_E_NULL_VALUE));
        return;
    }
    const std::string cell = CellName(place.first, place.second);
    const std::string file = SaveValueTo(this, value, m_document.GetHeading(place.second), cell);
    if (!file.empty())
        Q_EMIT StatusChanged(Label(IDS_VQ_W_SAVED, {cell, file}));
}

// --- rows ----------------------------------------------------------------------------------------

/// Shows the rows anew after some have come or gone, with that shown row as the current one.
void ResultView::RowsChanged(std::optional<std::size_t> shownRow) {
    ResultList& list = GetList();
    list.RowsChanged();
    list.RefreshFilter();
    list.Invalidate();
    if (const int row = shownRow ? list.GetFilteredRow(static_cast<int>(*shownRow)) : -1; row >= 0)
        list.SetCurrentCell(row, list.GetCurrentColumn());
    CellsChanged();
}

void ResultView::Undo() {
    if (!RequireResult())
        return;
    GetList().CellCancel();
    RowsChanged(m_document.Undo());
}

void ResultView::InsertRow() {
    CellPlace place;
    if (RequireTable())
        RowsChanged(m_document.InsertRow(
            GetCurrentPlace(place) ? GetList().ShownRowOf(GetList().GetCurrentRow()) + 1 : 0));
}

void ResultView::DuplicateRow() {
    CellPlace place;
    if (RequireTable() && RequireCurrent(place))
        RowsChanged(m_document.DuplicateRow(GetList().ShownRowOf(GetList().GetCurrentRow())));
}

void ResultView::DeleteRows() {
    if (!RequireTable())
        return;
    std::vector<std::size_t> rows;
    for (const int row : GetList().GetSelectedRows())
        rows.push_back(GetList().ShownRowOf(row));
    m_document.DeleteRows(rows);
    RowsChanged({});
}

// --- writing the changes -------------------------------------------------------------------------

std::string ResultView::DescribeConflicts(const WriteReport& report) const {
    std::string text;
    if (!report.conflicts.empty()) {
        const WriteReport::Cell& first = report.conflicts.front();
        text +=
            "\n\n" + Text(IDS_VQ_Q_CONFLICTS,
                          {GroupDigits(report.conflicts.size()),
                           CellName(m_document.GetShownRow(first.place.first), first.place.second),
                           FormatCell(first.now, m_document.GetFormat())});
    }
    if (!report.lostRows.empty())
        text += "\n\n" + Text(IDS_VQ_Q_LOST, {GroupDigits(report.lostRows.size())});
    return text;
}

bool ResultView::AskToWrite(const WriteReport& report) {
    const std::string others = DescribeConflicts(report);
    if (!HasWritten(report)) {
        Tell(QString::fromStdString(Text(IDS_VQ_Q_NOTHING_LEFT) + others));
        return false;
    }
    std::set<std::size_t> rows;
    for (const WriteReport::Cell& cell : report.written)
        rows.insert(cell.place.first);
    const std::string& table = m_document.GetPlan().table;
    const std::string values = GroupDigits(report.written.size());
    std::string question = Text(IDS_VQ_Q_WRITE, {values, GroupDigits(rows.size()), table});
    if (!report.inserted.empty() || !report.deleted.empty())
        question = Text(IDS_VQ_N_Q_WRITE_ROWS, {values, GroupDigits(report.inserted.size()),
                                                GroupDigits(report.deleted.size()), table});
    else if (report.written.size() == 1)
        question = Text(IDS_VQ_Q_WRITE_ONE, {table});
    return AskYesNo(QString::fromStdString(question + others));
}

std::unique_ptr<TableWriter> ResultView::OpenWriter() const {
    return m_origin.session ? m_origin.session->OpenWriter(m_document.GetPlan())
                            : vnquery::OpenWriter(m_origin.connection, m_document.GetPlan());
}

/// Compares in a separate transaction, which ends before the user is asked.
bool ResultView::CompareChanges(WriteReport& report) {
    return RunTask(this, IDS_VQ_T_WRITING, [&](Progress& progress) {
        const auto writer = OpenWriter();
        report = CompareEdits(*writer, m_document.GetPlan(), m_document.GetResult(),
                              m_document.GetEdits(), progress);
    });
}

bool ResultView::WriteChanges() {
    if (!RequireResult() || !GetList().CellEnter(TRUE))
        return false;
    if (m_document.GetEdits().IsEmpty()) {
        Q_EMIT StatusChanged(Label(IDS_VQ_W_NO_CHANGES));
        return true;
    }
    WriteReport report;
    if (!CompareChanges(report))
        return TellUndone();
    if (!HasWritten(report)) {
        AskToWrite(report);
        AcceptChanges(std::move(report)); // nothing is written, but conflicts are kept
        return m_document.GetEdits().IsEmpty();
    }
    return AskToWrite(report) ? CommitChanges() : TellUndone();
}

/// The database may have undone more than what was to be written. Returns false.
bool ResultView::TellUndone() {
    Q_EMIT StatusChanged(Label(IDS_VQ_W_UNDONE));
    Q_EMIT Changed();
    return false;
}

/// Where changed cells are written back: OpenWriter, WriteEdits (result/PendingEdits.h), Commit.
/// Does not ask. Values that another user has changed are left out and reported afterwards.
bool ResultView::CommitChanges() {
    WriteReport report;
    if (!RunTask(this, IDS_VQ_T_WRITING, [&](Progress& progress) {
            const auto writer = OpenWriter();
            try {
                report = WriteEdits(*writer, m_document.GetPlan(), m_document.GetResult(),
                                    m_document.GetEdits(), progress);
            } catch (const RowFailure& failure) {
                const std::size_t row = m_document.GetShownRow(failure.GetRow());
                throw Failure(failure.Code(),
                              Text(IDS_VQ_N_AT_ROW, {GroupDigits(row + 1), failure.what()}));
            }
            writer->Commit();
        }))
        return TellUndone();
    const std::string others = DescribeConflicts(report);
    AcceptChanges(std::move(report));
    if (!others.empty())
        Tell(QString::fromStdString(others.substr(others.find_first_not_of('\n'))));
    return m_document.GetEdits().IsEmpty();
}

void ResultView::AcceptChanges(WriteReport&& report) {
    const std::size_t written =
        report.written.size() + report.inserted.size() + report.deleted.size();
    m_document.Accept(std::move(report));
    Q_EMIT StatusChanged(written == 1 ? Label(IDS_VQ_W_WRITTEN_ONE)
                                      : Label(IDS_VQ_W_WRITTEN, {GroupDigits(written)}));
    RowsChanged({});
}

void ResultView::DiscardChanges() {
    const std::size_t count = m_document.GetEdits().GetCount();
    if (count == 0 || !RequireResult())
        return;
    if (!AskYesNo(count == 1 ? Label(IDS_VQ_Q_DISCARD_ONE)
                             : Label(IDS_VQ_Q_DISCARD, {GroupDigits(count)})))
        return;
    GetList().CellCancel();
    m_document.Discard();
    RowsChanged({});
}

bool ResultView::LeaveChanges() {
    if (!GetList().CellEnter(TRUE))
        return false;
    const std::size_t count = m_document.GetEdits().GetCount();
    if (count == 0)
        return true;
    const QString question = count == 1 ? Label(IDS_VQ_Q_UNWRITTEN_ONE)
                                        : Label(IDS_VQ_Q_UNWRITTEN, {GroupDigits(count)});
    const auto answer =
        QMessageBox::question(this, Label(IDS_VQ_APP), question,
                              QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    if (answer == QMessageBox::Yes)
        return CommitChanges();
    if (answer != QMessageBox::No)
        return false;
    m_document.Discard();
    RowsChanged({});
    return true;
}

} // namespace vnquery
