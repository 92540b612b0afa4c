// QueryView: cells, changes, files.
#include "vnbytstr/window/ListBox.h"
#include "vnquery/files/FileExport.h"
#include "vnquery/files/ValueLoader.h"
#include "vnquery/result/CellEdit.h"
#include "vnquery/window/Commands.h"
#include "vnquery/window/ExportDialog.h"
#include "vnquery/window/QueryView.h"
#include "vnquery/window/SaveValueAs.h"
#include "vnquery/window/TaskDialog.h"
#include "vnquery/window/ValueDialog.h"

#include <algorithm>

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
    default:
        return IDS_VQ_E_NOT_A_TABLE;
    }
}

} // namespace

// --- what a command needs ------------------------------------------------------------------------

bool QueryView::GetCurrentPlace(CellPlace& place) const {
    const int row = m_list.GetCurrentRow();
    const int column = m_list.GetCurrentColumn();
    if (row < 0 || row >= static_cast<int>(m_document.GetShownRows()) || column < 0 ||
        column >= static_cast<int>(m_document.GetShownColumns()))
        return false;
    place = m_document.PlaceOf(static_cast<std::size_t>(row), static_cast<std::size_t>(column));
    return true;
}

bool QueryView::IsCurrentEditable() const {
    CellPlace place;
    return GetCurrentPlace(place) && m_document.GetReadOnlyReason(place) == ReadOnlyReason::None;
}

bool QueryView::RequireResult() {
    if (IsBusy()) {
        ShowMessage(Text(IDS_VQ_W_BUSY));
        return false;
    }
    if (!HasResult())
        ShowMessage(Text(IDS_VQ_W_NO_RESULT));
    return HasResult();
}

bool QueryView::RequireCurrent(CellPlace& place) {
    if (!RequireResult())
        return false;
    if (GetCurrentPlace(place))
        return true;
    ShowMessage(Text(IDS_VQ_W_NOTHING_SELECTED));
    return false;
}

bool QueryView::RefuseEdit(ReadOnlyReason reason) {
    if (reason == ReadOnlyReason::None)
        return false;
    ShowMessage(reason == ReadOnlyReason::OtherDatabase
                    ? Text(IDS_VQ_E_OTHER_DATABASE, {m_document.GetConnection().GetDisplayName()})
                    : Text(TextOfReason(reason)));
    return true;
}

bool QueryView::RequireEditable(CellPlace& place) {
    return RequireCurrent(place) && !RefuseEdit(m_document.GetReadOnlyReason(place));
}

std::string QueryView::CellNameOf(CellPlace place) const {
    return CellName(place.first, place.second);
}

// --- cells ---------------------------------------------------------------------------------------

void QueryView::SetCell(CellPlace place, NewValue&& value) {
    m_document.GetEdits().Set(place, std::move(value), m_document.GetResult());
    RefreshChanged();
}

/// Shows the current row again, after a change of its cells.
void QueryView::RefreshChanged() {
    const int row = m_list.GetCurrentRow();
    if (row >= 0)
        m_list.RefreshRow(static_cast<std::size_t>(row));
    m_host.ViewChanged();
}

void QueryView::EditCell() {
    CellPlace place;
    if (!RequireEditable(place))
        return;
    m_list.EditColumn(m_list.GetCurrentRow(), m_list.GetCurrentColumn());
}

/// The list is about to open a cell, after a key, a click, or the drop of a file.
LRESULT QueryView::OnOpenCell(WPARAM column, LPARAM) {
    const int row = m_list.GetOpenedRow();
    if (IsBusy() || row < 0 || row >= static_cast<int>(m_document.GetShownRows()) ||
        column >= m_document.GetShownColumns())
        return 1;
    m_list.SetCurrentCell(row, static_cast<int>(column));
    const char* const dropped = m_list.GetFileName(row);
    if (dropped && *dropped) {
        PostMessage(kWmLoadDropped); // not during the drop
        return 1;
    }
    const CellPlace place = m_document.PlaceOf(static_cast<std::size_t>(row), column);
    if (RefuseEdit(m_document.GetReadOnlyReason(place)))
        return 1;
    const NewValue* const edit = m_document.GetEdits().Find(place);
    if ((edit && edit->isDefault) ||
        IsEditableInCell(m_document.GetValue(place), m_document.GetFormat()))
        return 0;
    GetTopLevelParent()->PostMessage(WM_COMMAND, kCmdZoom); // not during the click
    return 1;
}

LRESULT QueryView::OnLoadDropped(WPARAM, LPARAM) {
    CellPlace place;
    const int row = m_list.GetCurrentRow();
    const char* const name = m_list.GetFileName(row);
    if (!name || !*name || !GetCurrentPlace(place))
        return 0;
    const std::string file = name;
    m_list.AddFileName(row, "");
    if (!RefuseEdit(m_document.GetReadOnlyReason(place)))
        LoadFile(place, file);
    return 0;
}

LRESULT QueryView::OnStoreValue(WPARAM column, LPARAM value) {
    CellPlace place;
    if (!GetCurrentPlace(place) || column >= m_document.GetShownColumns())
        return 1;
    place.second = m_document.GetLayout().order[column];
    const std::string typed = reinterpret_cast<const char*>(value);
    const auto shownRow = static_cast<std::size_t>(m_list.GetCurrentRow());
    if (typed == m_document.GetCellText(shownRow, column))
        return 0;
    const CellFormat& format = m_document.GetFormat();
    const std::string& name = m_document.GetHeading(place.second);
    NewValue parsed;
    switch (ParseCell(typed, m_document.GetKind(place.second),
                      m_document.GetPlan().columns[place.second], format, parsed)) {
    case EditFault::None:
        m_document.GetEdits().Set(place, std::move(parsed), m_document.GetResult());
        return 0;
    case EditFault::NotANumber:
        ShowMessage(
            Text(IDS_VQ_E_NOT_A_NUMBER,
                 {name, m_document.GetKind(place.second) == ColumnKind::Integer ? "42" : "4.2",
                  format.nullText, format.defaultText}));
        return 1;
    case EditFault::NotNullable:
        ShowMessage(Text(IDS_VQ_E_NOT_NULLABLE, {name, format.nullText}));
        return 1;
    case EditFault::Bytes:
        ShowMessage(Text(IDS_VQ_E_BYTES, {name}));
        return 1;
    }
    return 1;
}

LRESULT QueryView::OnEditorClosed(WPARAM, LPARAM) {
    if (m_list.GetActiveEditor() == nullptr && !IsBusy())
        RefreshChanged();
    return 0;
}

void QueryView::Zoom() {
    CellPlace place;
    if (!RequireCurrent(place) || !m_list.CellEnter(TRUE))
        return;
    const NewValue* const edit = m_document.GetEdits().Find(place);
    ValueSubject subject{};
    subject.column = m_document.GetHeading(place.second);
    subject.cell = CellNameOf(place);
    subject.row = static_cast<std::size_t>(m_list.GetCurrentRow());
    const Value value = m_document.GetValue(place);
    subject.value = &value;
    subject.isDefault = edit && edit->isDefault;
    subject.kind = m_document.GetKind(place.second);
    subject.isEditable = m_document.GetReadOnlyReason(place) == ReadOnlyReason::None;
    ValueDialog dialog(subject, this);
    const auto result = dialog.DoModal();
    if (result == IDOK && dialog.GetNewValue())
        SetCell(place, std::move(*dialog.GetNewValue()));
    m_list.SetFocus();
}

void QueryView::SetNull() {
    CellPlace place;
    if (!RequireEditable(place))
        return;
    if (!m_document.GetPlan().columns[place.second].isNullable) {
        ShowMessage(Text(IDS_VQ_E_NOT_NULLABLE,
                         {m_document.GetHeading(place.second), m_document.GetFormat().nullText}));
        return;
    }
    m_list.CellCancel();
    SetCell(place, NewValue());
}

void QueryView::SetDefault() {
    CellPlace place;
    if (!RequireEditable(place))
        return;
    m_list.CellCancel();
    SetCell(place, {true, Value()});
}

void QueryView::UndoCell() {
    CellPlace place;
    if (!RequireCurrent(place))
        return;
    m_list.CellCancel();
    m_document.GetEdits().Remove(place);
    RefreshChanged();
}

void QueryView::LoadFile(CellPlace place, const std::string& file) {
    NewValue value;
    const std::string& column = m_document.GetHeading(place.second);
    ColumnKind kind = m_document.GetKind(place.second);
    if (!RunTask(this, IDS_VQ_T_LOADING, [&](Progress& progress) {
            value.value = LoadValue(file, kind, column, progress);
        }))
        return;
    SetCell(place, std::move(value));
    m_host.ShowStatus(Text(IDS_VQ_W_LOADED, {file}));
}

void QueryView::LoadCell() {
    CellPlace place;
    if (!RequireEditable(place))
        return;
    const std::string filter = Text(IDS_VQ_ALL_FILES) + "|*.*||";
    CFileDialog dialog(TRUE, nullptr, nullptr, OFN_HIDEREADONLY | OFN_FILEMUSTEXIST, filter.c_str(),
                       this);
    if (dialog.DoModal() == IDOK)
        LoadFile(place, ToString(dialog.GetPathName()));
}

void QueryView::SaveCell() {
    CellPlace place;
    if (!RequireCurrent(place))
        return;
    const Value value = m_document.GetValue(place);
    if (value.IsNull()) {
        ShowMessage(Text(IDS_VQ_E_NULL_VALUE));
        return;
    }
    const std::string file = SaveValueAs(this, value, CellNameOf(place));
    if (!file.empty())
        m_host.ShowStatus(Text(IDS_VQ_W_SAVED, {CellNameOf(place), file}));
}

void QueryView::CopyRows() {
    if (!RequireResult())
        return;
    SetClipboardText(m_list.GetSelectionText(TRUE));
    const auto count =
        static_cast<std::size_t>(std::max<LRESULT>(m_list.SendMessage(LB_GETSELCOUNT), 0));
    m_host.ShowStatus(count == 1 ? Text(IDS_VQ_W_COPIED_ONE)
                                 : Text(IDS_VQ_W_COPIED, {GroupDigits(count)}));
}

// --- writing the changes -------------------------------------------------------------------------

std::string QueryView::DescribeConflicts(const WriteReport& report) const {
    std::string text;
    if (!report.conflicts.empty()) {
        const WriteReport::Cell& first = report.conflicts.front();
        text += "\n\n" + Text(IDS_VQ_Q_CONFLICTS,
                              {GroupDigits(report.conflicts.size()), CellNameOf(first.place),
                               FormatCell(first.now, m_document.GetFormat())});
    }
    if (!report.lostRows.empty())
        text += "\n\n" + Text(IDS_VQ_Q_LOST, {GroupDigits(report.lostRows.size())});
    return text;
}

bool QueryView::AskToWrite(const WriteReport& report) {
    const std::string others = DescribeConflicts(report);
    if (report.written.empty()) {
        ShowMessage(Text(IDS_VQ_Q_NOTHING_LEFT) + others);
        return false;
    }
    std::vector<std::size_t> rows;
    for (const WriteReport::Cell& cell : report.written)
        if (rows.empty() || rows.back() != cell.place.first)
            rows.push_back(cell.place.first);
    const std::string& table = m_document.GetPlan().table;
    const std::string question = report.written.size() == 1
                                     ? Text(IDS_VQ_Q_WRITE_ONE, {table})
                                     : Text(IDS_VQ_Q_WRITE, {GroupDigits(report.written.size()),
                                                             GroupDigits(rows.size()), table});
    return ShowMessage(question + others, MB_YESNO | MB_ICONQUESTION) == IDYES;
}

/// Compares in a separate transaction, which ends before the user is asked.
bool QueryView::CompareChanges(WriteReport& report) {
    return RunTask(this, IDS_VQ_T_WRITING, [&](Progress& progress) {
        const auto writer = OpenWriter(m_document.GetConnection(), m_document.GetPlan());
        report = CompareEdits(*writer, m_document.GetPlan(), m_document.GetResult(),
                              m_document.GetEdits(), progress);
    });
}

bool QueryView::WriteChanges() {
    if (!RequireResult() || !m_list.CellEnter(TRUE))
        return false;
    if (m_document.GetEdits().IsEmpty()) {
        m_host.ShowStatus(Text(IDS_VQ_W_NO_CHANGES));
        return true;
    }
    WriteReport report;
    if (RefuseEdit(m_document.IsDetached() ? ReadOnlyReason::OtherDatabase
                                           : ReadOnlyReason::None) ||
        !CompareChanges(report)) {
        m_host.ShowStatus(Text(IDS_VQ_W_UNDONE));
        return false;
    }
    if (report.written.empty()) {
        AskToWrite(report);
        AcceptChanges(std::move(report)); // nothing is written, but conflicts are kept
        return m_document.GetEdits().IsEmpty();
    }
    if (!AskToWrite(report)) {
        m_host.ShowStatus(Text(IDS_VQ_W_UNDONE));
        return false;
    }
    return CommitChanges();
}

/// Where changed cells are written back: OpenWriter, WriteEdits (result/PendingEdits.h), Commit.
/// Does not ask. Values that another user has changed are left out and reported afterwards.
bool QueryView::CommitChanges() {
    WriteReport report;
    if (!RunTask(this, IDS_VQ_T_WRITING, [&](Progress& progress) {
            const auto writer = OpenWriter(m_document.GetConnection(), m_document.GetPlan());
            report = WriteEdits(*writer, m_document.GetPlan(), m_document.GetResult(),
                                m_document.GetEdits(), progress);
            writer->Commit();
        })) {
        m_host.ShowStatus(Text(IDS_VQ_W_UNDONE));
        return false;
    }
    const std::string others = DescribeConflicts(report);
    AcceptChanges(std::move(report));
    if (!others.empty())
        ShowMessage(others.substr(others.find_first_not_of('\n')));
    return m_document.GetEdits().IsEmpty();
}

void QueryView::AcceptChanges(WriteReport&& report) {
    const std::size_t written = report.written.size();
    AcceptReport(std::move(report), m_document.GetResult(), m_document.GetEdits());
    m_list.RefreshAll();
    m_host.ShowStatus(written == 1 ? Text(IDS_VQ_W_WRITTEN_ONE)
                                   : Text(IDS_VQ_W_WRITTEN, {GroupDigits(written)}));
    m_host.ViewChanged();
}

void QueryView::DiscardChanges() {
    const std::size_t count = m_document.GetEdits().GetCount();
    if (count == 0 || !RequireResult())
        return;
    const std::string question =
        count == 1 ? Text(IDS_VQ_Q_DISCARD_ONE) : Text(IDS_VQ_Q_DISCARD, {GroupDigits(count)});
    if (ShowMessage(question, MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
        return;
    m_list.CellCancel();
    m_document.GetEdits().Clear();
    m_list.RefreshAll();
    m_host.ViewChanged();
}

bool QueryView::LeaveChanges() {
    if (!m_list.CellEnter(TRUE))
        return false;
    const std::size_t count = m_document.GetEdits().GetCount();
    if (count == 0)
        return true;
    const std::string question =
        count == 1 ? Text(IDS_VQ_Q_UNWRITTEN_ONE) : Text(IDS_VQ_Q_UNWRITTEN, {GroupDigits(count)});
    switch (ShowMessage(question, MB_YESNOCANCEL | MB_ICONQUESTION)) {
    case IDYES:
        return CommitChanges();
    case IDNO:
        m_document.GetEdits().Clear();
        m_list.RefreshAll();
        m_host.ViewChanged();
        return true;
    default:
        return false;
    }
}

// --- export --------------------------------------------------------------------------------------

void QueryView::Export() {
    if (!RequireResult() || !m_list.CellEnter(TRUE))
        return;
    if (!m_document.GetEdits().IsEmpty())
        ShowMessage(Text(IDS_VQ_E_DISPLAY_EXPORT), MB_OK | MB_ICONINFORMATION);
    ExportDialog dialog(this);
    if (dialog.DoModal() != IDOK)
        return;
    const std::string file = dialog.GetFile();
    ExportSummary summary;
    if (!RunTask(this, IDS_VQ_T_EXPORTING, [&](Progress& progress) {
            summary = ExportToFile(m_document.GetResult(), file, dialog.GetFormat(), progress);
        }))
        return;
    m_host.ShowStatus(DescribeExport(summary, file));
    if (!summary.losses.empty())
        ShowMessage(Text(IDS_VQ_X_LOSSES, {file, summary.losses}));
}

} // namespace vnquery
