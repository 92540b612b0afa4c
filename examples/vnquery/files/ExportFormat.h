// How a result is written: the format and its details.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace vnquery {

enum class Format {
    Table,    ///< columns for people, with placeholders for long values
    Vertical, ///< a line for each value
    Text,     ///< a line for each row, with escapes
    Records,  ///< the same, but line breaks within texts end the line
    Csv,      ///< RFC 4180
    Tsv,      ///< as Text, with tabs and headings
    Json,     ///< RFC 8259, one array of objects
    JsonLines,
    Markdown, ///< a table
    Insert,   ///< SQL, a statement for each row
    Html,     ///< a page
    Xml
};
/// The names that users give them, in the order of Format.
constexpr std::array<const char*, 12> kFormatNames = {"table",    "vertical", "text", "records",
                                                      "csv",      "tsv",      "json", "jsonl",
                                                      "markdown", "insert",   "html", "xml"};
constexpr const char* NameOf(Format format) {
    return kFormatNames.at(static_cast<std::size_t>(format));
}
std::optional<Format> FormatOf(std::string_view name);

enum class LineBreak { Lf, CrLf, Cr, None };
std::string_view TextOf(LineBreak lineBreak);

/// How a line break within a text is written in Text and Records. (With `Keep`, as any other
/// character.)
enum class LineEnds { Escape, Records, Space, Keep };

/// Which rows the widths of a table's columns come from.
enum class WidthSource {
    First, ///< those whose cells fit in 1 MiB, or that arrive within a second of the first one
    All    ///< all; nothing is written before the last one
};

/// What is not set is as usual for the format.
struct ExportFormat {
    Format format = Format::Text;
    WORD ccsid = 0;       ///< coded character set of the file; 0: UTF-8, unchanged
    int recordLength = 0; ///< lines are filled with blanks to a multiple of it; 0: not filled
    LineBreak lineBreak = LineBreak::Lf;
    bool entities = false; ///< in Text and Records, <, >, & and " as entity references
    std::optional<LineEnds> lineEnds;
    std::optional<std::string> separator; ///< between columns of Text, Records and Csv
    std::optional<std::string> nullText;  ///< for NULL
    std::optional<bool> hexBlobs;         ///< bytes as hexadecimal digits, else as a placeholder
    std::optional<bool> headings;         ///< the columns' names as first row
    bool strict = false;                  ///< a character that cannot be written is an error
    std::string table;                    ///< that Insert names; by default "result"
    DWORD textLimit = 128;                ///< characters up to which Table shows a text in full
    WidthSource widths = WidthSource::First;
};

/// The same with all that was not set.
ExportFormat Completed(ExportFormat format);
/// Whether the format takes that detail, by the name of its option, such as "--ccsid".
bool HasOption(Format format, std::string_view option);
/// Whether the format can have that text between its columns: Csv takes no quotes and line breaks.
bool IsSeparator(Format format, std::string_view text);
/// Whether the format can only be UTF-8.
bool IsUtf8Only(Format format);

} // namespace vnquery
