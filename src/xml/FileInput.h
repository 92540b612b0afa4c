// A file as the parser's input, read through the system's seam.
#pragma once

#include "src/xml/ParserMemory.h"

#include <xercesc/sax/InputSource.hpp>

#include <string>

namespace vnbytstr::detail {

/// The name of a file from a name that may be a "file:" URI: then without scheme and host, and with
/// its percent escapes resolved. Every other text is a file name as it stands.
std::string FileNameOf(const char* nameOrUri);

class FileInput final : public xercesc::InputSource {
public:
    /// Every byte read adds to the budget of the parse.
    FileInput(std::string name, ParseBudget& budget);

    /// Null when the file cannot be opened or is a folder.
    xercesc::BinInputStream* makeStream() const override;
    /// Whether reading failed after the file was open: the parser saw its end too early.
    bool HasFailed() const { return m_hasFailed; }

private:
    std::string m_name;
    ParseBudget& m_budget;
    mutable bool m_hasFailed = false;
};

} // namespace vnbytstr::detail
