#include "vnquery/files/ResultWriter.h"

#include "vnquery/files/Exporter.h"
#include "vnquery/files/TablePrinter.h"

namespace vnquery {

std::unique_ptr<ResultWriter> MakeWriter(CFile& file, const ExportFormat& format,
                                         const std::vector<std::string>& columns,
                                         Progress* progress) {
    if (format.format == Format::Table)
        return std::make_unique<TablePrinter>(file, columns, Completed(format), progress);
    return std::make_unique<Exporter>(file, format, columns, progress);
}

} // namespace vnquery
