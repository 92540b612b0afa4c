#include "vnquery/files/Exporter.h"

#include "vnquery/files/Losses.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/result/ResultSet.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>

namespace vnquery {

namespace {

constexpr std::size_t kNowhere = ~std::size_t{0};

WORD TargetCcsid(const ExportFormat& format) {
    return format.ccsid ? format.ccsid : GetNativeCCSID();
}

/// How many bytes at the end of the piece are the beginning of an incomplete character.
std::size_t IncompleteTail(std::string_view piece) {
    for (std::size_t back = 1; back <= std::min<std::size_t>(3, piece.size()); ++back) {
        const auto byte = static_cast<unsigned char>(piece[piece.size() - back]);
        if ((byte & 0xC0) == 0x80)
            continue;
        const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return length > back ? back : 0;
    }
    return 0;
}

} // namespace

// --- the writer of a line ------------------------------------------------------------------------

/// Gathers the text of a line: one translation is faster than many, and needs fewer shifts in a
/// mixed-byte set. It remembers which part came from where until the first loss has been found.
class Exporter::Writer : public COutputStreamWriter {
public:
    Writer(CFile& file, const ExportFormat& format)
        : COutputStreamWriter(file, TargetCcsid(format)), m_lineBreak(TextOf(format.lineBreak)),
          m_isTracing(GetCCSID() != GetNativeCCSID()) {
        SetAutoClose(FALSE);
        SetRecordLength(format.recordLength);
        SetLineBreak(eNone);
        SetSubstituteEntityReferences(format.entities);
    }

    /// What follows comes from the beginning of this cell.
    void SetPlace(std::size_t row, std::size_t column) {
        m_row = row;
        m_column = column;
        m_offset = 0;
    }
    /// Text of the cell, with entity references if the format wants them.
    void PutText(std::string_view text) {
        Put(text, GetSubstituteEntityReferences() != FALSE, m_offset);
        m_offset += text.size();
    }
    /// Text that is written unchanged, for so many bytes of the cell.
    void PutVerbatim(std::string_view text, std::size_t bytes) {
        Put(text, false, m_offset);
        m_offset += bytes;
    }
    /// Text that is not the cell's.
    void PutOther(std::string_view text) { Put(text, false, kNowhere); }
    /// The record is filled by the line's own length, the line break follows that.
    void EndLine() {
        if (GetRecordLength() > 0) {
            WritePending();
            LineBreak();
        }
        PutOther(m_lineBreak);
        WritePending();
        SetRecordIndex(0);
    }
    /// What has come since the last row ended, if none of it has been written.
    void DropPending() { m_pending.clear(); }
    /// Whether there is text after the last line break.
    bool IsInLine() const { return !m_pending.empty() || GetRecordIndex() != 0; }
    void WritePending() {
        if (m_pending.empty())
            return;
        const auto length = static_cast<DWORD>(m_pending.size());
        if (m_isSubstituted)
            Write(m_pending.data(), length);
        else
            WriteVerbatim(m_pending.data(), length);
        if (m_isTracing && HasLosses())
            FindLoss();
        m_pending.clear();
        m_runs.clear();
    }
    bool HasLosses() const { return GetReport().ullUntranslatable + GetReport().ullMalformed > 0; }
    /// Where the first loss is, for messages; "" when that is not known.
    const std::string& GetFirstLoss() const { return m_firstLoss; }

private:
    /// Consecutive bytes of a cell in m_pending.
    struct Run {
        std::size_t begin; ///< in m_pending
        std::size_t row;
        std::size_t column;
        std::size_t offset; ///< in the cell, or kNowhere
    };

    void Put(std::string_view text, bool isSubstituted, std::size_t offset) {
        if (text.empty())
            return;
        if (isSubstituted != m_isSubstituted || m_pending.size() + text.size() > kPieceSize)
            WritePending();
        m_isSubstituted = isSubstituted;
        if (m_isTracing)
            m_runs.push_back({m_pending.size(), m_row, m_column, offset});
        m_pending += text;
    }

    void FindLoss() {
        m_isTracing = false;
        const std::optional<ULONGLONG> place = FindFirstLoss(m_pending, GetCCSID());
        if (!place)
            return;
        const auto after = std::ranges::upper_bound(m_runs, *place, {}, &Run::begin);
        const Run& run = *std::prev(after); // the first one begins at 0
        if (run.offset != kNowhere)
            m_firstLoss =
                Text(IDS_VQ_LOSS_PLACE, {GroupDigits(run.offset + (*place - run.begin) + 1),
                                         CellName(run.row, run.column)});
    }

    std::string_view m_lineBreak;
    std::string m_pending;        ///< whole characters
    bool m_isSubstituted = false; ///< m_pending gets entity references
    bool m_isTracing;             ///< m_runs says where m_pending is from
    std::vector<Run> m_runs;
    std::string m_firstLoss;
    std::size_t m_row = 0;
    std::size_t m_column = 0;
    std::size_t m_offset = 0; ///< in the cell, of what comes next
};

Exporter::Exporter(CFile& file, const ExportFormat& format, const std::vector<std::string>& columns,
                   Progress* progress)
    : ResultWriter(progress), m_format(Completed(format)), m_columns(columns),
      m_notation(NotationOf(m_format, columns)),
      m_writer(std::make_unique<Writer>(file, m_format)) {
    for (std::size_t ch = 0; ch < m_isSpecial.size(); ++ch)
        m_isSpecial[ch] = !m_notation.escapes[ch].empty();
    if (m_notation.innerBreak || m_format.lineEnds == LineEnds::Records)
        m_isSpecial['\n'] = m_isSpecial['\r'] = true;
    for (const char ch : "\"\n\r" + *m_format.separator)
        m_isQuoted[static_cast<unsigned char>(ch)] = true;
}

Exporter::~Exporter() = default;

// --- lines and losses ----------------------------------------------------------------------------

void Exporter::Begin() {
    m_writer->PutOther(m_notation.begin);
    if (*m_format.headings && !m_columns.empty() && m_notation.begin.empty()) {
        for (std::size_t column = 0; column < m_columns.size(); ++column) {
            m_writer->PutOther(m_notation.beginCell[column]);
            if (m_format.format == Format::Csv || m_format.format == Format::Tsv)
                WriteShort(Value::Type::Text, m_columns[column]);
            else
                m_writer->PutText(MakeVisible(m_columns[column]));
        }
        EndLine();
    }
    m_writer->WritePending();
}

void Exporter::DoEndRow() {
    CheckInterrupted();
    if (m_notation.endRow.empty() && m_notation.betweenRows.empty())
        EndLine();
    m_writer->PutOther(m_notation.endRow);
    m_writer->WritePending();
    ++m_rows;
    m_column = 0;
}

void Exporter::Finish() {
    m_writer->PutOther(m_notation.end);
    m_writer->WritePending();
    CheckStrict();
}

void Exporter::Abandon() { m_writer->DropPending(); }

void Exporter::WriteText(const Value& text, std::size_t row, std::size_t column) {
    m_writer->SetPlace(row, column);
    m_form = Form::Characters;
    text.ForEachPiece([this](std::span<const BYTE> piece) {
        CheckInterrupted();
        DoAppend({reinterpret_cast<const char*>(piece.data()), piece.size()});
    });
    WriteCharacters(m_tail);
    m_tail.clear();
    if (m_format.lineEnds == LineEnds::Records && m_writer->IsInLine())
        EndLine();
    m_writer->WritePending();
    CheckStrict();
}

void Exporter::EndLine() { m_writer->EndLine(); }

bool Exporter::HasLosses() const { return m_replaced > 0 || m_writer->HasLosses(); }

std::string Exporter::GetLosses() const {
    if (m_replaced > 0)
        return Text(IDS_VQ_REPLACED, {NameOf(m_format.format), GroupDigits(m_replaced)});
    const std::string losses = DescribeLosses(m_writer->GetReport(), TargetCcsid(m_format));
    const std::string& first = m_writer->GetFirstLoss();
    return losses.empty() || first.empty() ? losses : Text(IDS_VQ_FIRST_LOSS, {losses, first});
}

std::string DescribeExport(const ExportSummary& summary, const std::string& file) {
    const std::string bytes = GroupDigits(summary.bytes);
    return summary.rows == 1 ? Text(IDS_VQ_EXPORTED_ONE, {bytes, file})
                             : Text(IDS_VQ_EXPORTED, {GroupDigits(summary.rows), bytes, file});
}

void Exporter::CheckStrict() const {
    if (m_format.strict && HasLosses())
        throw Failure(kFileFailed, Text(IDS_VQ_STRICT, {GetLosses()}));
}

// --- values --------------------------------------------------------------------------------------

void Exporter::BeginCell() {
    if (m_column == 0) {
        m_writer->PutOther(m_rows > 0 ? m_notation.betweenRows : std::string());
        m_writer->PutOther(m_notation.beginRow);
    }
    m_writer->PutOther(m_notation.beginCell[m_column]);
    m_writer->SetPlace(m_rows, m_column++);
    m_wasReturn = false;
}

void Exporter::EndCell() { m_writer->PutOther(m_notation.endCell); }

void Exporter::DoNull() {
    BeginCell();
    m_writer->PutOther(m_notation.around.front().before);
    EndCell();
}

void Exporter::DoWhole(Value::Type type, std::string_view bytes) {
    BeginCell();
    WriteShort(type, bytes);
    EndCell();
}

void Exporter::WriteShort(Value::Type type, std::string_view bytes) {
    if (type == Value::Type::Number && m_notation.onlyNumbers && !IsJsonNumber(bytes)) {
        if (m_notation.isSql && (bytes == "inf" || bytes == "-inf")) {
            m_writer->PutOther(bytes == "inf" ? "9e999" : "-9e999"); // as SQLite reads infinity
            return;
        }
        type = Value::Type::Text;
    }
    const bool isEmpty = bytes.empty() && *m_format.hexBlobs; // else it would read as NULL
    if ((type == Value::Type::Text || isEmpty) && NeedsQuotes(bytes)) {
        m_writer->PutOther("\"");
        WriteCharacters(bytes);
        m_writer->PutOther("\"");
        return;
    }
    const bool isCast = IsCast(type, bytes);
    const Notation::Around& around = m_notation.around[static_cast<std::size_t>(type)];
    m_writer->PutOther(isCast ? "CAST(x'" : around.before);
    if (isCast || (type == Value::Type::Binary && *m_format.hexBlobs)) {
        WriteHex(bytes);
    } else if (type == Value::Type::Binary) {
        WritePlaceholder(bytes.size());
    } else {
        WriteCharacters(bytes);
    }
    m_writer->PutOther(isCast ? "' AS TEXT)" : around.after);
}

void Exporter::WritePlaceholder(ULONGLONG length) {
    std::string placeholder;
    AppendCell(placeholder, Value::Type::Binary, {}, length, {});
    if (m_notation.quotes == Notation::Quotes::Csv)
        WriteShort(Value::Type::Text, placeholder);
    else if (m_format.format != Format::Markdown && m_notation.filter == Notation::Filter::None)
        m_writer->PutOther(placeholder);
    else
        WriteCharacters(placeholder);
}

bool Exporter::NeedsQuotes(std::string_view text) const {
    if (m_notation.quotes == Notation::Quotes::None)
        return false;
    if (text == *m_format.nullText)
        return true;
    if (m_notation.quotes == Notation::Quotes::Marker)
        return text.starts_with('"') && IsQuotedMarker(text, {.nullText = *m_format.nullText});
    return (text.empty() || std::ranges::any_of(text, [this](char ch) {
                return m_isQuoted[static_cast<unsigned char>(ch)];
            }));
}

bool Exporter::IsCast(Value::Type type, std::string_view text) const {
    return m_notation.isSql && type == Value::Type::Text &&
           text.find_first_of(std::string_view("\0\r", 2)) != std::string_view::npos;
}

bool Exporter::DoBegin(Value::Type type, std::optional<ULONGLONG>) {
    BeginCell();
    if (type == Value::Type::Number && m_notation.onlyNumbers)
        type = Value::Type::Text;
    const bool isText = type != Value::Type::Binary;
    const Notation::Around& around = m_notation.around[static_cast<std::size_t>(type)];
    m_form = isText && !m_notation.isSql                   ? Form::Characters
             : isText || m_format.hexBlobs.value_or(false) ? Form::Hex
                                                           : Form::Placeholder;
    if (isText && m_notation.isSql) {
        m_writer->PutOther("CAST(x'");
        m_after = "' AS TEXT)";
    } else if (isText && m_notation.quotes == Notation::Quotes::Csv) {
        m_writer->PutOther("\"");
        m_after = "\"";
    } else {
        m_writer->PutOther(around.before);
        m_after = around.after;
    }
    return m_form != Form::Placeholder;
}

void Exporter::DoAppend(std::string_view piece) {
    if (m_form == Form::Hex) {
        WriteHex(piece);
        return;
    }
    if (!m_tail.empty())
        piece = m_tail += piece;
    const std::size_t tail = IncompleteTail(piece);
    WriteCharacters(piece.substr(0, piece.size() - tail));
    m_tail.assign(std::string(piece.substr(piece.size() - tail)));
}

void Exporter::DoEnd(ULONGLONG length) {
    if (m_form == Form::Placeholder)
        WritePlaceholder(length);
    WriteCharacters(m_tail);
    m_tail.clear();
    m_writer->PutOther(m_after);
    EndCell();
}

void Exporter::WriteHex(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    m_scratch.clear();
    for (const char ch : bytes) {
        m_scratch += kDigits[static_cast<unsigned char>(ch) >> 4];
        m_scratch += kDigits[ch & 15];
    }
    m_writer->PutOther(m_scratch);
}

void Exporter::WriteCharacters(std::string_view text) {
    text = Filtered(m_notation.filter, text, m_scratch, m_replaced);
    while (!text.empty()) {
        const auto special = std::ranges::find_if(
            text, [this](char ch) { return m_isSpecial[static_cast<unsigned char>(ch)]; });
        const auto run = static_cast<std::size_t>(special - text.begin());
        if (run > 0) {
            m_writer->PutText(text.substr(0, run));
            m_wasReturn = false;
        }
        text.remove_prefix(run);
        if (!text.empty()) {
            WriteSpecial(text[0]);
            text.remove_prefix(1);
        }
    }
}

void Exporter::WriteSpecial(char ch) {
    const std::string& escape = m_notation.escapes[static_cast<unsigned char>(ch)];
    if (!escape.empty()) {
        m_replaced += escape == kReplacement ? 1 : 0;
        m_writer->PutVerbatim(escape, 1);
        return;
    }
    const bool isSecondOfPair = ch == '\n' && m_wasReturn;
    m_wasReturn = ch == '\r';
    if (isSecondOfPair)
        m_writer->PutVerbatim({}, 1);
    else
        WriteLineBreakInside();
}

void Exporter::WriteLineBreakInside() {
    if (m_notation.innerBreak) {
        m_writer->PutVerbatim(*m_notation.innerBreak, 1);
    } else {
        EndLine();
        m_writer->PutVerbatim({}, 1);
    }
}

} // namespace vnquery
