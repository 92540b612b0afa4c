// Exports rows to a file that is there as a whole or not at all.
#pragma once

#include "vnquery/files/BufferedReplacementFile.h"
#include "vnquery/files/Exporter.h"

#include <string>

namespace vnquery {

class ResultSet;

namespace detail {
struct ExportTarget {
    BufferedReplacementFile file;
};
} // namespace detail

/// An Exporter to the file `name`. All functions throw Failure, with that name in it, and
/// Interrupted; without Commit an older file of that name stays unchanged.
class FileExport : private detail::ExportTarget, public Exporter {
public:
    /// Writes the headings too.
    static std::unique_ptr<FileExport> Begin(const std::string& name, const ExportFormat& format,
                                             const std::vector<std::string>& columns,
                                             Progress* progress = nullptr);
    /// After the last row: gives the file its name.
    ExportSummary Commit();

protected:
    void DoNull() override;
    void DoWhole(Value::Type type, std::string_view bytes) override;
    bool DoBegin(Value::Type type, std::optional<ULONGLONG> announced) override;
    void DoAppend(std::string_view piece) override;
    void DoEnd(ULONGLONG length) override;
    void DoEndRow() override;

private:
    FileExport(const std::string& name, const ExportFormat& format, Progress* progress);

    std::string m_name;
    std::size_t m_rows = 0;
};

/// Writes a result to the file `name`, as a whole or not at all.
ExportSummary ExportToFile(const ResultSet& result, const std::string& name,
                           const ExportFormat& format, Progress& progress);

} // namespace vnquery
