// The command line.
#pragma once

#include "vnquery/files/ExportFormat.h"
#include "vnquery/files/FileCipher.h"
#include "vnquery/sources/Connection.h"

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
    Connection connection;
    std::string sql;            ///< one statement or several
    bool isInteractive = false; ///< statements are typed instead
    bool quiet = false;         ///< the result is not displayed
    ExportFormat display;       ///< on standard output
    bool statistics = false;
    std::vector<SaveRequest> saves;
    std::string exportFile; ///< "" for none; standard output counts as display
    ExportFormat exportFormat;
    ExportFormat saveFormat;
    std::optional<TranslateRequest> translate;
    std::optional<DesRequest> des;
    bool window = false; ///< opens a window instead
    std::optional<DWORD> helpTopic;
};

/// Reads the command line, and the SQL where it comes from a file or standard input. Returns
/// nothing after printing help or the version. Throws Failure and Interrupted.
std::optional<Options> ParseOptions(int argc, char** argv);

} // namespace vnquery
