// Exports rows to a file that is there as a whole or not at all.
#pragma once

#include "vnquery/files/BufferedReplacementFile.h"
#include "vnquery/files/Exporter.h"

#include <string>

namespace vnquery {

/// Rows to the file `name`. All functions, and the writer, throw Failure, with that name in it, and
/// Interrupted, and OutputClosed where the file is a pipe; without Commit an older file of that
/// name stays unchanged.
class FileExport {
public:
    FileExport(const std::string& name, const ExportFormat& format,
               const std::vector<std::string>& columns, Progress* progress = nullptr);

    /// Takes the rows. It has begun, and Commit finishes it.
    ResultWriter& GetWriter() { return *m_writer; }
    /// After the last row: gives the file its name.
    ExportSummary Commit();

private:
    /// Its errors name the export.
    class File : public BufferedReplacementFile {
    public:
        explicit File(const std::string& name);
        void Write(const void* buffer, UINT count) override;

    private:
        const std::string m_name;
    };

    std::string m_name;
    std::unique_ptr<File> m_file;
    std::unique_ptr<ResultWriter> m_writer;
};

} // namespace vnquery
