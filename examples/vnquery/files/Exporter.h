// Exports a result to a file: records, line breaks, coded character set.
#pragma once

#include "vnquery/result/ResultSet.h"

#include "vnbytstr/OutputStreamWriter.h"

#include <optional>
#include <string>

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

/// Writes to an open file. Throws CFileException, CTranslationException when the coded character
/// set is unknown, Failure when `strict` is set and a character was lost, and Interrupted.
///
/// A row is one line with separated values. Characters of a text that would break this are written
/// as LineEnds says: Escape writes \n, \r, \t, \0 and \\ for them, and a backslash before a
/// separator of one character (and \N for NULL); Records ends the record at each line break (CR
/// LF, CR or LF), as if the row ended; Space writes a blank.
class Exporter {
public:
    Exporter(CFile& file, const ExportFormat& format);
    ~Exporter();

    void WriteResult(const ResultSet& result, Progress& progress);
    /// One text alone. `row` and `column` are for messages.
    void WriteText(const Value& text, std::size_t row, std::size_t column);

    /// What was replaced by substitution characters, and where the first one is: "2 characters that
    /// CCSID 37 does not hold; the first is byte 17 of row 1, column 2". "" when nothing was.
    std::string GetLosses() const;

private:
    class Writer;

    bool HasLosses() const;
    bool NoteLoss(const Value& value, std::size_t row, std::size_t column);
    void CheckStrict() const;
    void WriteValue(const Value& value);
    void WriteHex(const Value& value);
    void WriteTextPieces(const Value& text);
    void WriteLineBreakInside();
    bool IsSpecial(char ch) const;
    void WriteSpecial(char ch);

    ExportFormat m_format;
    std::unique_ptr<Writer> m_writer;
    std::string m_firstLoss;  ///< its place, for messages
    bool m_wasReturn = false; ///< the previous character was a CR that ended a line
};

struct ExportSummary {
    ULONGLONG bytes = 0;
    std::string losses; ///< see Exporter::GetLosses
};

/// Writes the result to the file `name`, as a whole or not at all. Throws Failure, with that name
/// in it, and Interrupted; an older file of that name then stays as it was.
ExportSummary ExportToFile(const ResultSet& result, const std::string& name,
                           const ExportFormat& format, Progress& progress);

/// For instance "Exported 3 rows, 120 bytes, to list.txt".
std::string DescribeExport(std::size_t rows, ULONGLONG bytes, const std::string& file);

} // namespace vnquery
