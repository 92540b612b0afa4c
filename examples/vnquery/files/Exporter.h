// Writes a result to a file: records, line breaks, coded character set.
#pragma once

#include "vnquery/result/RowSink.h"

#include "vnbytstr/OutputStreamWriter.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace vnquery {

/// How a line break within a text is written. (With `Keep`, as any other character.)
enum class LineEnds { Escape, Records, Space, Keep };

struct ExportFormat {
    WORD ccsid = 0;       ///< coded character set of the file; 0: UTF-8, unchanged
    int recordLength = 0; ///< lines are filled with blanks to a multiple of it; 0: not filled
    COutputStreamWriter::ELineBreak lineBreak = COutputStreamWriter::eCRLF;
    bool entities = false; ///< write <, >, & and " as entity references
    LineEnds lineEnds = LineEnds::Escape;
    std::string separator = "\t";        ///< between columns
    std::optional<std::string> nullText; ///< for NULL; by default \N with LineEnds::Escape, else -
    bool hexBlobs = false;               ///< bytes as hexadecimal digits, else as a placeholder
    bool headings = false;               ///< the columns' names as first row
    bool strict = false;                 ///< a character that the set lacks is an error
};

/// Writes the rows it takes to an open file. Throws CFileException, CTranslationException when the
/// coded character set is unknown, Failure when `strict` is set and a character was lost, and
/// Interrupted.
///
/// A row is one line with separated values. Characters of a text that would break this are written
/// as LineEnds says: Escape writes \n, \r, \t, \0 and \\ for them, and a backslash before a
/// separator of one character (and \N for NULL); Records ends the record at each line break (CR
/// LF, CR or LF), as if the row ended; Space writes a blank.
class Exporter : public RowSink {
public:
    Exporter(CFile& file, const ExportFormat& format, Progress* progress = nullptr);
    ~Exporter() override;

    /// Before the first row: the columns' names, if the format wants them.
    void WriteHeadings(const std::vector<std::string>& columns);
    /// After the last row.
    void Finish();
    /// One text alone, and nothing after it. `row` and `column` are for messages.
    void WriteText(const Value& text, std::size_t row, std::size_t column);

    /// What was replaced by substitution characters, and where the first one is: "2 characters that
    /// CCSID 37 does not hold; the first is byte 17 of row 1, column 2". "" when nothing was.
    std::string GetLosses() const;

protected:
    void DoNull() override;
    void DoWhole(Value::Type type, std::string_view bytes) override;
    bool DoBegin(Value::Type type, std::optional<ULONGLONG> announced) override;
    void DoAppend(std::string_view piece) override;
    void DoEnd(ULONGLONG length) override;
    void DoEndRow() override;

private:
    class Writer;

    bool HasLosses() const;
    void CheckStrict() const;
    void BeginCell(Value::Type type);
    void EndLine();
    void WriteHex(std::string_view bytes);
    /// Whole characters of the present text.
    void WriteCharacters(std::string_view text);
    void WriteLineBreakInside();
    void WriteSpecial(char ch);

    ExportFormat m_format;
    std::array<bool, 256> m_isSpecial{}; ///< characters that are not written as they are
    std::unique_ptr<Writer> m_writer;
    std::size_t m_row = 0;
    std::size_t m_column = 0;
    Value::Type m_type = Value::Type::Null; ///< of the value whose pieces arrive
    std::string m_tail;                     ///< of the last piece, the beginning of a character
    std::string m_digits;                   ///< WriteHex's
    bool m_wasReturn = false;               ///< the previous character was a CR that ended a line
};

struct ExportSummary {
    std::size_t rows = 0;
    ULONGLONG bytes = 0;
    std::string losses; ///< see Exporter::GetLosses
};

/// For instance "Exported 3 rows, 120 bytes, to list.txt".
std::string DescribeExport(const ExportSummary& summary, const std::string& file);

} // namespace vnquery
