#include "vnquery/files/FileExport.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"

#include <cerrno>

namespace vnquery {

namespace {

/// As WithMessage, which would put the message together even where nothing goes wrong.
template <class Action>
auto WithName(const std::string& name, Action&& action) {
    try {
        return action();
    } catch (CException* error) {
        const auto* file = dynamic_cast<const CFileException*>(error);
        const bool isClosed = file && file->m_lOsError == EPIPE;
        const std::string message = TakeMessage(error);
        if (isClosed)
            throw OutputClosed();
        throw Failure(kFileFailed, Text(IDS_VQ_CANNOT_WRITE_EXPORT, {name}) + ": " + message);
    }
}

} // namespace

FileExport::File::File(const std::string& name) : BufferedReplacementFile(name), m_name(name) {}

void FileExport::File::Write(const void* buffer, UINT count) {
    WithName(m_name, [&] { BufferedReplacementFile::Write(buffer, count); });
}

FileExport::FileExport(const std::string& name, const ExportFormat& format,
                       const std::vector<std::string>& columns, Progress* progress)
    : m_name(name) {
    WithName(m_name, [&] {
        m_file = std::make_unique<File>(name);
        m_writer = MakeWriter(*m_file, format, columns, progress);
        m_writer->Begin();
    });
}

ExportSummary FileExport::Commit() {
    return WithName(m_name, [&] {
        m_writer->Finish();
        m_file->Commit();
        return ExportSummary{m_writer->GetRowCount(), m_file->GetWritten(), m_writer->GetLosses()};
    });
}

} // namespace vnquery
