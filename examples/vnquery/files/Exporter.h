// Writes a result in every format but Table: values as texts, in a coded character set.
#pragma once

#include "vnquery/files/Notation.h"
#include "vnquery/files/ResultWriter.h"

#include <array>

namespace vnquery {

/// Writes rows as the notation of the format says.
///
/// Text and Records: a row is one line with separated values. Characters of a text that would
/// break this are written as LineEnds says: Escape writes \n, \r, \t, \0 and \\ for them, and a
/// backslash before a separator of one character (and \N for NULL); Records ends the record at each
/// line break (CR LF, CR or LF), as if the row ended; Space writes a blank.
/// Csv: a text is in double quotes if it has a separator, quote or line break, is empty or like
/// the text for NULL, or is longer than 64 KB.
/// Insert: a text of more than 64 KB, or with NUL or CR (which the sqlite3 shell would drop from a
/// literal), is cast from its bytes: UTF-8, as most SQLite databases are.
class Exporter : public ResultWriter {
public:
    Exporter(CFile& file, const ExportFormat& format, const std::vector<std::string>& columns = {},
             Progress* progress = nullptr);
    ~Exporter() override;

    void Begin() override;
    void Finish() override;
    void Abandon() override;
    /// One text alone, and nothing after it. `row` and `column` are for messages.
    void WriteText(const Value& text, std::size_t row, std::size_t column);

    std::string GetLosses() const override;

protected:
    void DoNull() override;
    void DoWhole(Value::Type type, std::string_view bytes) override;
    bool DoBegin(Value::Type type, std::optional<ULONGLONG> announced) override;
    void DoAppend(std::string_view piece) override;
    void DoEnd(ULONGLONG length) override;
    void DoEndRow() override;

private:
    class Writer;
    /// How the bytes of the present value are written.
    enum class Form { Characters, Hex, Placeholder };

    bool HasLosses() const;
    void CheckStrict() const;
    void BeginCell();
    void EndCell();
    void EndLine();
    /// Without what stands around it.
    void WriteShort(Value::Type type, std::string_view bytes);
    bool NeedsQuotes(std::string_view text) const;
    bool IsCast(Value::Type type, std::string_view text) const;
    void WritePlaceholder(ULONGLONG length);
    void WriteHex(std::string_view bytes);
    /// Whole characters of the present text.
    void WriteCharacters(std::string_view text);
    void WriteLineBreakInside();
    void WriteSpecial(char ch);

    ExportFormat m_format;
    std::vector<std::string> m_columns;
    Notation m_notation;
    std::array<bool, 256> m_isSpecial{}; ///< characters that are not written as they are
    std::array<bool, 256> m_isQuoted{};  ///< characters of a text that is put in quotes
    std::unique_ptr<Writer> m_writer;
    std::size_t m_column = 0;
    Form m_form = Form::Characters;
    std::string m_after;      ///< what comes after the value
    std::string m_tail;       ///< of the last piece, the beginning of a character
    std::string m_scratch;    ///< WriteHex's and WriteCharacters'
    bool m_wasReturn = false; ///< the previous character was a CR that ended a line
    ULONGLONG m_replaced = 0; ///< characters that the format does not hold
};

struct ExportSummary {
    std::size_t rows = 0;
    ULONGLONG bytes = 0;
    std::string losses; ///< see ResultWriter::GetLosses
};

/// For instance "Exported 3 rows, 120 bytes, to list.txt".
std::string DescribeExport(const ExportSummary& summary, const std::string& file);

} // namespace vnquery
