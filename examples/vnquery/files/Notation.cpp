#include "vnquery/files/Notation.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/sources/OneTableQuery.h"

#include <algorithm>
#include <set>

namespace vnquery {

namespace {

constexpr auto kNull = static_cast<std::size_t>(Value::Type::Null);
constexpr auto kNumber = static_cast<std::size_t>(Value::Type::Number);
constexpr auto kText = static_cast<std::size_t>(Value::Type::Text);
constexpr auto kBinary = static_cast<std::size_t>(Value::Type::Binary);

std::string& EscapeOf(Notation& notation, char ch) {
    return notation.escapes[static_cast<unsigned char>(ch)];
}

void EscapeMarkup(Notation& notation) {
    notation.filter = Notation::Filter::Markup;
    for (char ch = 0; ch < ' '; ++ch)
        EscapeOf(notation, ch) = kReplacement;
    EscapeOf(notation, '\t').clear();
    EscapeOf(notation, '\n').clear();
    EscapeOf(notation, '\r') = "&#13;"; // a reader would take it for a line feed
    EscapeOf(notation, '<') = "&lt;";
    EscapeOf(notation, '>') = "&gt;";
    EscapeOf(notation, '&') = "&amp;";
    EscapeOf(notation, '"') = "&quot;";
}

/// A column's name, written as a text is.
std::string NameIn(const Notation& notation, const std::string& name) {
    std::string scratch;
    ULONGLONG replaced = 0;
    std::string out;
    for (const char ch : Filtered(notation.filter, name, scratch, replaced)) {
        const std::string& escape = notation.escapes[static_cast<unsigned char>(ch)];
        if (notation.innerBreak && (ch == '\n' || ch == '\r'))
            out += *notation.innerBreak;
        else if (escape.empty())
            out += ch;
        else
            out += escape;
    }
    return out;
}

/// The names with _2, _3 and so on after those that were there before, so that no value hides
/// another one.
std::vector<std::string> Distinct(const std::vector<std::string>& columns) {
    std::set<std::string> taken(columns.begin(), columns.end());
    std::set<std::string> used;
    std::vector<std::string> names;
    for (const std::string& column : columns) {
        std::string name = column;
        for (int i = 2; (i > 2 && taken.contains(name)) || !used.insert(name).second; ++i)
            name = column + "_" + std::to_string(i);
        names.push_back(name);
    }
    return names;
}

std::string Joined(const std::vector<std::string>& texts, std::string_view separator) {
    std::string out;
    for (const std::string& text : texts)
        out.append(out.empty() ? "" : separator).append(text);
    return out;
}

void SeparateCells(Notation& notation, std::size_t columns, const std::string& separator) {
    notation.beginCell.assign(columns, separator);
    if (columns > 0)
        notation.beginCell.front().clear();
}

// --- the formats ---------------------------------------------------------------------------------

void MakeText(Notation& notation, const ExportFormat& format) {
    switch (*format.lineEnds) {
    case LineEnds::Escape:
        if (format.separator->size() == 1)
            EscapeOf(notation, format.separator->front()) = "\\" + *format.separator;
        EscapeOf(notation, '\n') = "\\n";
        EscapeOf(notation, '\r') = "\\r";
        EscapeOf(notation, '\t') = "\\t";
        EscapeOf(notation, '\\') = "\\\\";
        EscapeOf(notation, '\0') = "\\0";
        break;
    case LineEnds::Space:
        notation.innerBreak = " ";
        break;
    case LineEnds::Records: // the writer ends the line
    case LineEnds::Keep:
        break;
    }
}

void MakeVertical(Notation& notation, const std::vector<std::string>& columns,
                  std::string_view lineBreak) {
    notation.filter = Notation::Filter::Visible;
    notation.quotes = Notation::Quotes::Marker;
    notation.betweenRows = lineBreak;
    notation.endCell = lineBreak;
    notation.endRow.clear();
    std::size_t width = 0;
    for (const std::string& column : columns)
        width = std::max(width, DisplayWidth(MakeVisible(column)));
    for (const std::string& column : columns) {
        const std::string name = MakeVisible(column);
        notation.beginCell.push_back(std::string(width - DisplayWidth(name), ' ') + name + " = ");
    }
}

void MakeJson(Notation& notation, const std::vector<std::string>& columns, bool isArray,
              const std::string& lineBreak) {
    notation.filter = Notation::Filter::Utf8;
    notation.onlyNumbers = true;
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (char ch = 0; ch < ' '; ++ch)
        EscapeOf(notation, ch) = std::string("\\u00") + kDigits[ch >> 4] + kDigits[ch & 15];
    EscapeOf(notation, '\n') = "\\n";
    EscapeOf(notation, '\r') = "\\r";
    EscapeOf(notation, '\t') = "\\t";
    EscapeOf(notation, '"') = "\\\"";
    EscapeOf(notation, '\\') = "\\\\";
    std::string separator;
    for (const std::string& column : Distinct(columns)) {
        notation.beginCell.push_back(separator + "\"" + NameIn(notation, column) + "\":");
        separator = ",";
    }
    notation.beginRow = (isArray ? lineBreak : std::string()) + "{";
    notation.endRow = "}" + (isArray ? std::string() : lineBreak);
    notation.around[kNull].before = "null";
    notation.around[kText] = notation.around[kBinary] = {"\"", "\""};
    if (isArray) {
        notation.begin = "[";
        notation.betweenRows = ",";
        notation.end = lineBreak + "]" + lineBreak;
    }
}

void MakeMarkdown(Notation& notation, const ExportFormat& format,
                  const std::vector<std::string>& columns, const std::string& lineBreak) {
    notation.innerBreak = "<br>";
    for (const char ch : {'\\', '`', '*', '_', '~', '[', ']', '|'})
        EscapeOf(notation, ch) = std::string("\\") + ch;
    EscapeOf(notation, '\0') = kReplacement; // Markdown says so, too
    EscapeOf(notation, '<') = "&lt;";
    EscapeOf(notation, '&') = "&amp;";
    std::string names = "|";
    std::string line = "|";
    for (const std::string& column : columns) {
        names += " " + (*format.headings ? NameIn(notation, column) : "") + " |";
        line += " --- |";
    }
    notation.begin = names + lineBreak + line + lineBreak;
    notation.beginRow = "| ";
    SeparateCells(notation, columns.size(), " | ");
    notation.endRow = " |" + lineBreak;
}

void MakeInsert(Notation& notation, const ExportFormat& format,
                const std::vector<std::string>& columns, const std::string& lineBreak) {
    notation.isSql = true;
    notation.onlyNumbers = true;
    EscapeOf(notation, '\'') = "''";
    std::vector<std::string> names;
    for (const std::string& column : Distinct(columns))
        names.push_back(QuoteName(column));
    notation.beginRow =
        "INSERT INTO " + QuoteName(format.table) + "(" + Joined(names, ",") + ") VALUES(";
    notation.endRow = ");" + lineBreak;
    SeparateCells(notation, columns.size(), ",");
    notation.around[kNull].before = "NULL";
    notation.around[kText] = {"'", "'"};
    notation.around[kBinary] = {"x'", "'"};
}

void MakeHtml(Notation& notation, const ExportFormat& format,
              const std::vector<std::string>& columns, const std::string& lineBreak) {
    EscapeMarkup(notation);
    const std::string title = NameIn(notation, Text(IDS_VQ_W_RESULT));
    notation.begin =
        "<!DOCTYPE html>" + lineBreak + "<html><head><meta charset=\"utf-8\"/><title>" + title +
        "</title><style>table{border-collapse:collapse}td,th{border:1px solid #ccc;"
        "padding:.2em .6em;text-align:start;vertical-align:top;white-space:pre-wrap}"
        ".n{text-align:end}.null{color:#777;font-style:italic}</style></head><body><table>" +
        lineBreak;
    if (*format.headings) {
        notation.begin += "<tr>";
        for (const std::string& column : columns)
            notation.begin += "<th>" + NameIn(notation, column) + "</th>";
        notation.begin += "</tr>" + lineBreak;
    }
    notation.beginRow = "<tr>";
    notation.endRow = "</tr>" + lineBreak;
    notation.beginCell.assign(columns.size(), "<td");
    notation.endCell = "</td>";
    notation.around[kNull].before = " class=\"null\">" + NameIn(notation, *format.nullText);
    notation.around[kNumber].before = " class=\"n\">";
    notation.around[kText].before = notation.around[kBinary].before = ">";
    notation.end = "</table></body></html>" + lineBreak;
}

void MakeXml(Notation& notation, const std::vector<std::string>& columns,
             const std::string& lineBreak) {
    EscapeMarkup(notation);
    notation.begin =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + lineBreak + "<result>" + lineBreak;
    Notation attribute = notation;
    EscapeOf(attribute, '\t') = "&#9;";
    EscapeOf(attribute, '\n') = "&#10;";
    notation.beginRow = "<row>";
    notation.endRow = "</row>" + lineBreak;
    for (const std::string& column : columns)
        notation.beginCell.push_back("<value column=\"" + NameIn(attribute, column) + "\"");
    notation.around[kNull].before = " null=\"true\"/>";
    notation.around[kNumber] = notation.around[kText] = {">", "</value>"};
    notation.around[kBinary] = {" encoding=\"hex\">", "</value>"};
    notation.end = "</result>" + lineBreak;
}

} // namespace

Notation NotationOf(const ExportFormat& format, const std::vector<std::string>& columns) {
    const std::string lineBreak(TextOf(format.lineBreak));
    Notation notation;
    notation.around[kNull].before = *format.nullText;
    switch (format.format) {
    case Format::Text:
    case Format::Records:
    case Format::Tsv:
        MakeText(notation, format);
        break;
    case Format::Csv:
        notation.quotes = Notation::Quotes::Csv;
        EscapeOf(notation, '"') = "\"\"";
        break;
    case Format::Table: // not by a notation
    case Format::Vertical:
        MakeVertical(notation, columns, lineBreak);
        break;
    case Format::Json:
    case Format::JsonLines:
        MakeJson(notation, columns, format.format == Format::Json, lineBreak);
        break;
    case Format::Markdown:
        MakeMarkdown(notation, format, columns, lineBreak);
        break;
    case Format::Insert:
        MakeInsert(notation, format, columns, lineBreak);
        break;
    case Format::Html:
        MakeHtml(notation, format, columns, lineBreak);
        break;
    case Format::Xml:
        MakeXml(notation, columns, lineBreak);
        break;
    }
    if (notation.beginCell.empty())
        SeparateCells(notation, columns.size(), *format.separator);
    return notation;
}

std::string_view Filtered(Notation::Filter filter, std::string_view text, std::string& scratch,
                          ULONGLONG& replaced) {
    if (filter == Notation::Filter::None)
        return text;
    scratch.clear();
    if (filter == Notation::Filter::Visible) {
        AppendVisible(scratch, text);
        return scratch;
    }
    std::size_t kept = 0; // of the text, in scratch
    for (std::size_t at = 0; at < text.size();) {
        if (static_cast<unsigned char>(text[at]) < 0x80) {
            ++at;
            continue;
        }
        char32_t character = 0;
        const std::size_t length = DecodeUtf8(text.substr(at), character);
        const bool isExcluded =
            filter == Notation::Filter::Markup && (character == 0xFFFE || character == 0xFFFF);
        if (length > 0 && !isExcluded) {
            at += length;
            continue;
        }
        scratch.append(text.substr(kept, at - kept)).append(kReplacement);
        ++replaced;
        kept = at += std::max<std::size_t>(length, 1);
    }
    if (kept == 0)
        return text;
    return scratch.append(text.substr(kept));
}

bool IsJsonNumber(std::string_view text) {
    const auto skipDigits = [&text] {
        const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
        text.remove_prefix(count);
        return count > 0;
    };
    const auto skip = [&text](std::string_view characters) {
        const bool isThere = !text.empty() && characters.find(text.front()) != characters.npos;
        text.remove_prefix(isThere ? 1 : 0);
        return isThere;
    };
    skip("-");
    if (!skip("0") && !skipDigits())
        return false;
    if (skip(".") && !skipDigits())
        return false;
    if (skip("eE")) {
        skip("+-");
        if (!skipDigits())
            return false;
    }
    return text.empty();
}

} // namespace vnquery
