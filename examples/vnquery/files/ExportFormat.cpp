#include "vnquery/files/ExportFormat.h"

#include <algorithm>

namespace vnquery {

std::optional<Format> FormatOf(std::string_view name) {
    const auto found = std::ranges::find(kFormatNames, name);
    if (found == kFormatNames.end())
        return {};
    return static_cast<Format>(found - kFormatNames.begin());
}

std::string_view TextOf(LineBreak lineBreak) {
    switch (lineBreak) {
    case LineBreak::Lf:
        return "\n";
    case LineBreak::CrLf:
        return "\r\n";
    case LineBreak::Cr:
        return "\r";
    case LineBreak::None:
        break;
    }
    return "";
}

ExportFormat Completed(ExportFormat format) {
    const Format kind = format.format;
    const auto isOneOf = [kind](std::initializer_list<Format> kinds) {
        return std::ranges::find(kinds, kind) != kinds.end();
    };
    if (!format.lineEnds)
        format.lineEnds = kind == Format::Records ? LineEnds::Records : LineEnds::Escape;
    if (!format.separator)
        format.separator = kind == Format::Csv ? "," : "\t";
    if (!format.nullText) {
        const bool isEscaped = isOneOf({Format::Text, Format::Records, Format::Tsv}) &&
                               format.lineEnds == LineEnds::Escape;
        format.nullText = isEscaped                                   ? "\\N"
                          : kind == Format::Csv                       ? ""
                          : isOneOf({Format::Markdown, Format::Html}) ? "NULL"
                                                                      : "-";
    }
    if (!format.hexBlobs)
        format.hexBlobs = isOneOf({Format::Csv, Format::Tsv, Format::Json, Format::JsonLines,
                                   Format::Insert, Format::Xml});
    if (format.table.empty())
        format.table = "result";
    if (!format.headings)
        format.headings = isOneOf({Format::Csv, Format::Tsv, Format::Markdown, Format::Html});
    return format;
}

bool IsUtf8Only(Format format) {
    return format == Format::Json || format == Format::JsonLines || format == Format::Html ||
           format == Format::Xml || format == Format::Table || format == Format::Vertical;
}

} // namespace vnquery
