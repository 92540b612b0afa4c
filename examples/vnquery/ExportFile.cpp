#include "ExportFile.h"

#include "Failure.h"
#include "Messages.h"
#include "OutputFile.h"

namespace vnquery {

ExportSummary ExportToFile(const ResultSet& result, const std::string& name,
                           const ExportFormat& format, Progress& progress) {
    ExportSummary summary;
    WithMessage(Text(IDS_VQ_CANNOT_WRITE_EXPORT, {name}), [&] {
        OutputFile file(name);
        Exporter exporter(file, format);
        exporter.WriteResult(result, progress);
        file.Commit();
        summary = {file.GetWritten(), exporter.GetLosses()};
    });
    return summary;
}

} // namespace vnquery
