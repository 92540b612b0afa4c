#include "vnquery/console/ResultPrinter.h"

#include "vnquery/console/Process.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>

namespace vnquery {

namespace {

constexpr std::size_t kOutputBlock = 65536;

struct ColumnLayout {
    std::size_t width = 0;
    bool isNumeric = false; ///< nothing but numbers and NULL, and at least one number
};

std::vector<ColumnLayout> MeasureColumns(const ResultSet& result, const CellFormat& format) {
    std::vector<ColumnLayout> layout(result.GetColumnCount());
    for (std::size_t column = 0; column < layout.size(); ++column) {
        bool hasNumbers = false;
        bool hasOthers = false;
        std::size_t width = DisplayWidth(MakeVisible(result.GetColumns()[column]));
        for (std::size_t row = 0; row < result.GetRowCount(); ++row) {
            const Value& value = result.At(row, column);
            width = std::max(width, DisplayWidth(FormatCell(value, format)));
            hasNumbers |= value.GetType() == Value::Type::Number;
            hasOthers |=
                value.GetType() == Value::Type::Text || value.GetType() == Value::Type::Binary;
            CheckInterrupted();
        }
        layout[column] = {width, hasNumbers && !hasOthers};
    }
    return layout;
}

class Table {
public:
    explicit Table(std::vector<ColumnLayout> layout) : m_layout(std::move(layout)) {}

    void AddCell(std::size_t column, const std::string& text) {
        const ColumnLayout& layout = m_layout[column];
        if (column > 0)
            m_blanks += 2;
        const std::size_t room = layout.width - DisplayWidth(text);
        if (layout.isNumeric)
            m_blanks += room;
        if (!text.empty()) {
            m_text.append(m_blanks, ' ').append(text);
            m_blanks = 0;
        }
        if (!layout.isNumeric)
            m_blanks += room;
    }
    void EndLine() {
        m_blanks = 0; // none at the end of a line
        m_text += '\n';
        if (m_text.size() >= kOutputBlock)
            Write();
    }
    void AddLine(const std::string& line) {
        m_text += line;
        EndLine();
    }
    void Write() {
        WriteOutput(m_text);
        m_text.clear();
    }

private:
    std::vector<ColumnLayout> m_layout;
    std::string m_text;
    std::size_t m_blanks = 0; ///< before the next cell
};

} // namespace

void PrintResult(const ResultSet& result, const CellFormat& format) {
    const std::vector<ColumnLayout> layout = MeasureColumns(result, format);
    Table table(layout);
    for (std::size_t column = 0; column < layout.size(); ++column)
        table.AddCell(column, MakeVisible(result.GetColumns()[column]));
    table.EndLine();
    for (std::size_t column = 0; column < layout.size(); ++column)
        table.AddCell(column, std::string(layout[column].width, '-'));
    table.EndLine();
    for (std::size_t row = 0; row < result.GetRowCount(); ++row) {
        for (std::size_t column = 0; column < layout.size(); ++column)
            table.AddCell(column, FormatCell(result.At(row, column), format));
        table.EndLine();
    }
    table.AddLine(result.GetRowCount() == 1
                      ? Text(IDS_VQ_ONE_ROW)
                      : Text(IDS_VQ_ROWS, {GroupDigits(result.GetRowCount())}));
    table.Write();
}

} // namespace vnquery
