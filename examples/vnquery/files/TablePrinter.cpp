#include "vnquery/files/TablePrinter.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>
#include <charconv>

namespace vnquery {

namespace {

constexpr std::size_t kGap = 2;                    ///< between two columns
constexpr std::size_t kMaxGathered = 1 << 20;      ///< bytes of rows that set the widths
constexpr auto kMaxWait = std::chrono::seconds(1); ///< for them

} // namespace

TablePrinter::TablePrinter(CFile& file, const std::vector<std::string>& columns,
                           const ExportFormat& format, Progress* progress)
    : ResultWriter(progress),
      m_file(file), m_format{.nullText = *format.nullText, .textLimit = format.textLimit},
      m_widthSource(format.widths), m_gathered(static_cast<int>(columns.size())) {
    for (const std::string& name : columns) {
        Column& column = m_columns.emplace_back();
        column.heading = MakeVisible(name);
        column.width = DisplayWidth(column.heading);
    }
}

// --- values --------------------------------------------------------------------------------------

void TablePrinter::DoNull() { AddCell(Value::Type::Null, m_format.nullText); }

void TablePrinter::DoInteger(long long number) {
    char digits[24];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
    AddCell(Value::Type::Number, {digits, end});
}

void TablePrinter::DoWhole(Value::Type type, std::string_view bytes) {
    m_text.clear();
    AppendCell(m_text, type, bytes, bytes.size(), m_format);
    AddCell(type, m_text);
}

bool TablePrinter::DoBegin(Value::Type type, std::optional<ULONGLONG> announced) {
    m_type = type;
    m_piece.clear();
    return type != Value::Type::Binary && (!announced || *announced <= BytesToShow(m_format));
}

void TablePrinter::DoAppend(std::string_view piece) {
    if (m_piece.size() + piece.size() <= BytesToShow(m_format))
        m_piece += piece;
}

void TablePrinter::DoEnd(ULONGLONG length) {
    m_text.clear();
    AppendCell(m_text, m_type, m_piece, length, m_format);
    AddCell(m_type, m_text);
}

void TablePrinter::AddCell(Value::Type type, std::string_view text) {
    const std::size_t width = DisplayWidth(text);
    if (m_isStarted) {
        PutCell(m_column++, text, width);
        return;
    }
    Column& column = m_columns[m_column++];
    column.width = std::max(column.width, width);
    column.hasNumbers |= type == Value::Type::Number;
    column.hasOthers |= type == Value::Type::Text || type == Value::Type::Binary;
    if (m_column == 1)
        m_gathered.BeginRow();
    m_gathered.AppendText(text);
    m_gatheredBytes += text.size();
}

void TablePrinter::DoEndRow() {
    CheckInterrupted();
    ++m_rows;
    m_column = 0;
    if (m_isStarted) {
        EndLine();
        return;
    }
    m_gathered.EndRow();
    if (m_rows == 1)
        m_first = Clock::now();
    if (m_widthSource == WidthSource::First &&
        (m_gatheredBytes >= kMaxGathered || Clock::now() - m_first >= kMaxWait))
        StartTable();
}

void TablePrinter::Finish() {
    if (!m_isStarted)
        StartTable();
    m_line = m_rows == 1 ? Text(IDS_VQ_ONE_ROW) : Text(IDS_VQ_ROWS, {GroupDigits(m_rows)});
    EndLine();
}

void TablePrinter::Abandon() {
    if (!m_isStarted && m_rows > 0)
        StartTable();
}

// --- lines ---------------------------------------------------------------------------------------

/// Writes what has been gathered.
void TablePrinter::StartTable() {
    m_isStarted = true;
    for (Column& column : m_columns)
        column.isNumeric = column.hasNumbers && !column.hasOthers;
    for (std::size_t column = 0; column < m_columns.size(); ++column)
        PutCell(column, m_columns[column].heading, DisplayWidth(m_columns[column].heading));
    EndLine();
    for (std::size_t column = 0; column < m_columns.size(); ++column)
        PutCell(column, std::string(m_columns[column].width, '-'), m_columns[column].width);
    EndLine();
    for (DWORD row = 0; row < m_gathered.GetRowCount(); ++row) {
        for (std::size_t column = 0; column < m_columns.size(); ++column) {
            const CRowValue text = m_gathered.GetValue(row, static_cast<int>(column));
            m_text = text.GetText();
            if (text.IsLong()) {
                m_text.resize(text.GetLength());
                m_gathered.CopyTo(text, 0, reinterpret_cast<BYTE*>(m_text.data()),
                                  text.GetLength());
            }
            PutCell(column, m_text, DisplayWidth(m_text));
        }
        EndLine();
        CheckInterrupted();
    }
    m_gathered.Empty();
}

void TablePrinter::PutCell(std::size_t column, std::string_view text, std::size_t width) {
    const Column& layout = m_columns[column];
    if (column > 0)
        m_blanks += kGap;
    std::size_t room = layout.width > width ? layout.width - width : 0;
    const std::size_t caughtUp = std::min(room, m_excess);
    room -= caughtUp;
    m_excess += (width > layout.width ? width - layout.width : 0) - caughtUp;
    if (layout.isNumeric)
        m_blanks += room;
    if (!text.empty()) {
        m_line.append(m_blanks, ' ').append(text);
        m_blanks = 0;
    }
    if (!layout.isNumeric)
        m_blanks += room;
}

void TablePrinter::EndLine() {
    m_blanks = m_excess = 0; // no blanks at the end of a line
    m_line += '\n';
    m_file.Write(m_line.data(), static_cast<UINT>(m_line.size()));
    m_line.clear();
}

} // namespace vnquery
