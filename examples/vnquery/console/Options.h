// The command line.
#pragma once

#include "vnquery/console/TablePrinter.h"
#include "vnquery/files/Exporter.h"
#include "vnquery/files/FileCipher.h"

#include <optional>
#include <string>
#include <vector>

namespace vnquery {

struct SaveRequest {
    std::size_t row; ///< counts from 0, as `column` does
    std::size_t column;
    std::string file;
};

struct TranslateRequest {
    WORD from;
    WORD to;
    std::string input;
    std::string output;
};

struct Options {
    std::string database;   ///< SQLite file; "" when there is a connection
    std::string connection; ///< ODBC connection string
    std::string sql;
    CellFormat cells;
    WidthSource widths = WidthSource::First;
    bool quiet = false; ///< the result is not displayed
    bool statistics = false;
    std::vector<SaveRequest> saves;
    std::string exportFile;
    ExportFormat exportFormat;
    ExportFormat saveFormat;
    std::optional<TranslateRequest> translate;
    std::optional<DesRequest> des;
    bool window = false; ///< opens a window instead
    std::optional<DWORD> helpTopic;
};

/// Reads the command line. Returns nothing after printing help or the version. Throws Failure with
/// kBadUsage.
std::optional<Options> ParseOptions(int argc, char** argv);

} // namespace vnquery
