// Rows as columns for people.
#pragma once

#include "vnquery/files/ResultWriter.h"
#include "vnquery/result/CellText.h"

#include "vnbytstr/RowStore.h"

#include <chrono>
#include <string>
#include <vector>

namespace vnquery {

/// Writes headings, the rows it takes and the number of rows, in UTF-8. A column is as wide as its
/// widest cell among the rows that its width comes from; if these hold nothing but numbers there,
/// it is right-aligned. A later cell that is wider is written in full and pushes the rest of its
/// row to the right; the cells after it go back to their places as soon as there is room. Throws
/// what the file and CRowStore throw: rows that wait for the last one move to a temporary file.
class TablePrinter : public ResultWriter {
public:
    /// `format` is completed.
    TablePrinter(CFile& file, const std::vector<std::string>& columns, const ExportFormat& format,
                 Progress* progress);

    void Begin() override {}
    void Finish() override;
    void Abandon() override;

protected:
    void DoNull() override;
    void DoInteger(long long number) override;
    void DoWhole(Value::Type type, std::string_view bytes) override;
    bool DoBegin(Value::Type type, std::optional<ULONGLONG> announced) override;
    void DoAppend(std::string_view piece) override;
    void DoEnd(ULONGLONG length) override;
    void DoEndRow() override;

private:
    using Clock = std::chrono::steady_clock;

    struct Column {
        std::string heading;
        std::size_t width = 0;
        bool hasNumbers = false;
        bool hasOthers = false;
        bool isNumeric = false; ///< right-aligned
    };

    void AddCell(Value::Type type, std::string_view text);
    void StartTable();
    void PutCell(std::size_t column, std::string_view text, std::size_t width);
    void EndLine();

    CFile& m_file;
    const CellFormat m_format;
    const WidthSource m_widthSource;
    std::vector<Column> m_columns;
    std::size_t m_column = 0; ///< of the next cell

    bool m_isStarted = false; ///< widths are known, headings written
    CRowStore m_gathered;     ///< until then the cells' texts
    std::size_t m_gatheredBytes = 0;
    Clock::time_point m_first; ///< when the first row arrived

    std::string m_line;       ///< not yet whole
    std::size_t m_blanks = 0; ///< before the next cell of the line
    std::size_t m_excess = 0; ///< by how much the line is too far to the right

    std::string m_piece; ///< of a value in pieces, as far as it could be shown
    std::string m_text;  ///< of a cell
    Value::Type m_type = Value::Type::Null;
};

} // namespace vnquery
