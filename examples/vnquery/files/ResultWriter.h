// Writes a result in a format, to any output.
#pragma once

#include "vnquery/files/ExportFormat.h"
#include "vnquery/result/RowSink.h"

#include "vnbytstr/framework/File.h"

#include <memory>
#include <string>
#include <vector>

namespace vnquery {

/// Takes the rows of a result, after Begin and before Finish or Abandon. What it writes is given
/// to the file in pieces that end with a row where rows are short. The functions throw what the
/// file throws, and Interrupted.
class ResultWriter : public RowSink {
public:
    using RowSink::RowSink;

    /// Before the first row.
    virtual void Begin() = 0;
    /// After the last row. Throws Failure when `strict` is set and a character was lost.
    virtual void Finish() = 0;
    /// Instead of that, when the next row cannot be read: writes the rows before it.
    virtual void Abandon() = 0;
    /// What was replaced since the coded character set or the format cannot hold it, and where the
    /// first one is: "2 characters that CCSID 37 does not hold; the first is byte 17 of row 1,
    /// column 2". "" when nothing was.
    virtual std::string GetLosses() const { return {}; }

    std::size_t GetRowCount() const { return m_rows; }

protected:
    std::size_t m_rows = 0; ///< whole ones; derived classes count
};

/// For a result with those columns. The file must outlive the writer. Throws
/// CTranslationException when the coded character set is unknown.
std::unique_ptr<ResultWriter> MakeWriter(CFile& file, const ExportFormat& format,
                                         const std::vector<std::string>& columns,
                                         Progress* progress = nullptr);

} // namespace vnquery
