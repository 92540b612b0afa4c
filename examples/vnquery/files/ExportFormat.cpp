#include "vnquery/files/ExportFormat.h"

#include <algorithm>
#include <map>
#include <vector>

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

bool HasOption(Format format, std::string_view option) {
    using enum Format;
    static const std::map<std::string_view, std::vector<Format>> without = {
        {"--ccsid", {Table, Vertical, Json, JsonLines, Html, Xml}},
        {"--line-break", {Table, Vertical}},
        {"--strict", {Table, Vertical}},
        {"--blobs", {Table, Vertical, Insert}},
        {"--headings", {Table, Vertical, Json, JsonLines, Insert, Xml}},
        {"--null", {Json, JsonLines, Insert, Xml}}};
    static const std::map<std::string_view, std::vector<Format>> only = {
        {"--record-length", {Text, Records}},
        {"--line-ends", {Text, Records}},
        {"--entities", {Text, Records}},
        {"--separator", {Text, Records, Csv}},
        {"--table", {Insert}},
        {"--text-limit", {Table}},
        {"--widths", {Table}}};
    const auto some = only.find(option);
    const auto& formats = some != only.end() ? some->second : without.at(option);
    return (std::ranges::find(formats, format) != formats.end()) == (some != only.end());
}

bool IsSeparator(Format format, std::string_view text) {
    return format != Format::Csv ||
           (!text.empty() && text.find_first_of("\"\r\n") == std::string_view::npos);
}

bool IsUtf8Only(Format format) {
    return format == Format::Json || format == Format::JsonLines || format == Format::Html ||
           format == Format::Xml || format == Format::Table || format == Format::Vertical;
}

} // namespace vnquery
