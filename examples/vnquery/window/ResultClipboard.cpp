// How the result view copies and exports what it shows.
#include "vnquery/window/ResultView.h"

#include "vnquery/files/FileExport.h"
#include "vnquery/window/ExportForm.h"
#include "vnquery/window/Label.h"
#include "vnquery/window/RunTask.h"

#include "vnbytstr/framework/MemFile.h"

#include <QClipboard>
#include <QGuiApplication>

namespace vnquery {

namespace {

/// As for a file, but for spreadsheets tabs stand between the values.
ExportFormat FormatOfCopy(CopyForm form, const std::string& table) {
    ExportFormat format;
    format.table = table;
    switch (form) {
    case CopyForm::Insert:
        format.format = Format::Insert;
        break;
    case CopyForm::Json:
        format.format = Format::Json;
        break;
    case CopyForm::Markdown:
        format.format = Format::Markdown;
        break;
    case CopyForm::Csv:
        format.format = Format::Csv;
        break;
    default:
        format.format = Format::Csv;
        format.separator = std::string(1, '\t');
        format.headings = form == CopyForm::RowsWithHeadings;
    }
    return format;
}

} // namespace

ResultView::Shown ResultView::GetShown(bool selectedOnly) {
    Shown shown;
    shown.columns = GetList().GetShownColumns();
    for (const std::size_t column : shown.columns)
        shown.headings.push_back(m_document.GetHeading(column));
    if (selectedOnly) {
        for (const int row : GetList().GetSelectedRows())
            shown.rows.push_back(GetList().ShownRowOf(row));
    } else {
        for (int row = 0; row < GetList().GetCount(); ++row)
            shown.rows.push_back(GetList().ShownRowOf(row));
    }
    return shown;
}

void ResultView::Copy(CopyForm form) {
    CellPlace place;
    if (!RequireCurrent(place))
        return;
    if (form == CopyForm::Cell) {
        QGuiApplication::clipboard()->setText(
            QString::fromStdString(m_document.GetValue(place).GetBytes()));
        return;
    }
    const Shown shown = GetShown(true);
    CMemFile file;
    if (!RunTask(this, IDS_VQ_T_EXPORTING, [&](Progress& progress) {
            const auto writer = MakeWriter(file, FormatOfCopy(form, m_document.GetPlan().table),
                                           shown.headings, &progress);
            writer->Begin();
            m_document.PassShownTo(*writer, shown.rows, shown.columns, progress);
            writer->Finish();
        }))
        return;
    std::string text(static_cast<std::size_t>(file.GetLength()), '\0');
    file.SeekToBegin();
    file.Read(text.data(), static_cast<UINT>(text.size()));
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
    Q_EMIT StatusChanged(shown.rows.size() == 1
                             ? Label(IDS_VQ_W_COPIED_ONE)
                             : Label(IDS_VQ_W_COPIED, {GroupDigits(shown.rows.size())}));
}

void ResultView::Export() {
    if (!RequireResult() || !GetList().CellEnter(TRUE))
        return;
    ExportForm form(m_document.GetPlan().table, this);
    if (form.exec() != QDialog::Accepted)
        return;
    const ExportRequest& request = form.GetRequest();
    Shown shown;
    if (request.rows == ExportRows::AsShown)
        shown = GetShown(false);
    else
        shown.headings = m_document.GetResult().GetColumns();
    ExportSummary summary;
    if (!RunTask(this, IDS_VQ_T_EXPORTING, [&](Progress& progress) {
            FileExport target(request.file, request.format, shown.headings, &progress);
            if (request.rows == ExportRows::AsShown)
                m_document.PassShownTo(target.GetWriter(), shown.rows, shown.columns, progress);
            else
                ReadRows(*OpenSource(), target.GetWriter(), progress);
            summary = target.Commit();
        }))
        return;
    Q_EMIT StatusChanged(QString::fromStdString(DescribeExport(summary, request.file)));
    if (!summary.losses.empty())
        Tell(Label(IDS_VQ_X_LOSSES, {request.file, summary.losses}));
}

/// The result once more, from the database.
std::unique_ptr<RowSource> ResultView::OpenSource() const {
    const std::string& sql = m_document.GetSql();
    return m_origin.session ? m_origin.session->Run(sql, SourceUse::ReadOnly, m_origin.parameters)
                            : vnquery::OpenSource(m_origin.connection, sql, SourceUse::ReadOnly,
                                                  m_origin.parameters);
}

} // namespace vnquery
