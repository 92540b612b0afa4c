#include "vnquery/files/FileExport.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/ResultSet.h"
#include "vnquery/tasks/Failure.h"

namespace vnquery {

namespace {

/// As WithMessage, which would put the message together even where nothing goes wrong.
template <class Action>
auto WithName(const std::string& name, Action&& action) {
    try {
        return action();
    } catch (CException* error) {
        throw Failure(kFileFailed,
                      Text(IDS_VQ_CANNOT_WRITE_EXPORT, {name}) + ": " + TakeMessage(error));
    }
}

} // namespace

FileExport::FileExport(const std::string& name, const ExportFormat& format, Progress* progress)
    : detail::ExportTarget{BufferedReplacementFile(name)}, Exporter(file, format, progress),
      m_name(name) {}

std::unique_ptr<FileExport> FileExport::Begin(const std::string& name, const ExportFormat& format,
                                              const std::vector<std::string>& columns,
                                              Progress* progress) {
    return WithName(name, [&] {
        std::unique_ptr<FileExport> target(new FileExport(name, format, progress));
        target->WriteHeadings(columns);
        return target;
    });
}

ExportSummary FileExport::Commit() {
    return WithName(m_name, [&] {
        Finish();
        file.Commit();
        return ExportSummary{m_rows, file.GetWritten(), GetLosses()};
    });
}

void FileExport::DoNull() {
    WithName(m_name, [&] { Exporter::DoNull(); });
}

void FileExport::DoWhole(Value::Type type, std::string_view bytes) {
    WithName(m_name, [&] { Exporter::DoWhole(type, bytes); });
}

bool FileExport::DoBegin(Value::Type type, std::optional<ULONGLONG> announced) {
    return WithName(m_name, [&] { return Exporter::DoBegin(type, announced); });
}

void FileExport::DoAppend(std::string_view piece) {
    WithName(m_name, [&] { Exporter::DoAppend(piece); });
}

void FileExport::DoEnd(ULONGLONG length) {
    WithName(m_name, [&] { Exporter::DoEnd(length); });
}

void FileExport::DoEndRow() {
    WithName(m_name, [&] { Exporter::DoEndRow(); });
    ++m_rows;
}

ExportSummary ExportToFile(const ResultSet& result, const std::string& name,
                           const ExportFormat& format, Progress& progress) {
    const auto target = FileExport::Begin(name, format, result.GetColumns(), &progress);
    result.PassTo(*target, progress);
    return target->Commit();
}

} // namespace vnquery
