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
        : COutputStreamWriter(file, TargetCcsid(format)),
          m_isTracing(GetCCSID() != GetNativeCCSID()) {
        SetAutoClose(FALSE);
        SetRecordLength(format.recordLength);
        SetLineBreak(format.lineBreak);
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
    void EndLine() {
        WritePending();
        LineBreak();
    }
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

    std::string m_pending;        ///< whole characters
    bool m_isSubstituted = false; ///< m_pending gets entity references
    bool m_isTracing;             ///< m_runs says where m_pending is from
    std::vector<Run> m_runs;
    std::string m_firstLoss;
    std::size_t m_row = 0;
    std::size_t m_column = 0;
    std::size_t m_offset = 0; ///< in the cell, of what comes next
};

Exporter::Exporter(CFile& file, const ExportFormat& format, Progress* progress)
    : RowSink(progress), m_format(format), m_writer(std::make_unique<Writer>(file, format)) {
    if (!m_format.nullText)
        m_format.nullText = m_format.lineEnds == LineEnds::Escape ? "\\N" : "-";
    const auto mark = [this](std::string_view characters) {
        for (const char ch : characters)
            m_isSpecial[static_cast<unsigned char>(ch)] = true;
    };
    if (m_format.lineEnds != LineEnds::Keep)
        mark("\n\r");
    if (m_format.lineEnds == LineEnds::Escape) {
        mark(std::string_view("\t\\\0", 3));
        if (m_format.separator.size() == 1)
            mark(m_format.separator);
    }
}

Exporter::~Exporter() = default;

// --- lines and losses ----------------------------------------------------------------------------

void Exporter::WriteHeadings(const std::vector<std::string>& columns) {
    if (!m_format.headings)
        return;
    for (std::size_t column = 0; column < columns.size(); ++column) {
        if (column > 0)
            m_writer->PutOther(m_format.separator);
        m_writer->PutText(MakeVisible(columns[column]));
    }
    EndLine();
}

void Exporter::DoEndRow() {
    CheckInterrupted();
    EndLine();
    ++m_row;
    m_column = 0;
}

void Exporter::Finish() {
    m_writer->WritePending();
    CheckStrict();
}

void Exporter::WriteText(const Value& text, std::size_t row, std::size_t column) {
    m_writer->SetPlace(row, column);
    m_type = Value::Type::Text;
    text.ForEachPiece([this](std::span<const BYTE> piece) {
        CheckInterrupted();
        DoAppend({reinterpret_cast<const char*>(piece.data()), piece.size()});
    });
    DoEnd(text.GetLength());
    if (m_format.lineEnds == LineEnds::Records && m_writer->IsInLine())
        EndLine();
    Finish();
}

void Exporter::EndLine() { m_writer->EndLine(); }

bool Exporter::HasLosses() const { return m_writer->HasLosses(); }

std::string Exporter::GetLosses() const {
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

void Exporter::BeginCell(Value::Type type) {
    if (m_column > 0)
        m_writer->PutOther(m_format.separator);
    m_writer->SetPlace(m_row, m_column++);
    m_type = type;
    m_wasReturn = false;
}

void Exporter::DoNull() {
    BeginCell(Value::Type::Null);
    m_writer->PutOther(*m_format.nullText);
}

void Exporter::DoWhole(Value::Type type, std::string_view bytes) {
    BeginCell(type);
    if (type != Value::Type::Binary)
        WriteCharacters(bytes);
    else if (m_format.hexBlobs)
        WriteHex(bytes);
    else
        DoEnd(bytes.size());
}

bool Exporter::DoBegin(Value::Type type, std::optional<ULONGLONG>) {
    BeginCell(type);
    return type != Value::Type::Binary || m_format.hexBlobs;
}

void Exporter::DoAppend(std::string_view piece) {
    if (m_type == Value::Type::Binary) {
        if (m_format.hexBlobs)
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
    if (m_type != Value::Type::Binary) {
        WriteCharacters(m_tail);
        m_tail.clear();
    } else if (!m_format.hexBlobs) {
        m_digits.clear();
        AppendCell(m_digits, m_type, {}, length, {});
        m_writer->PutOther(m_digits);
    }
}

void Exporter::WriteHex(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    m_digits.clear();
    for (const char ch : bytes) {
        m_digits += kDigits[static_cast<unsigned char>(ch) >> 4];
        m_digits += kDigits[ch & 15];
    }
    m_writer->PutOther(m_digits);
}

void Exporter::WriteCharacters(std::string_view text) {
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
    if (m_format.lineEnds == LineEnds::Escape) {
        const char letter = ch == '\n'   ? 'n'
                            : ch == '\r' ? 'r'
                            : ch == '\t' ? 't'
                            : ch == '\0' ? '0'
                                         : ch;
        const char escape[] = {'\\', letter};
        m_writer->PutVerbatim({escape, sizeof escape}, 1);
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
    if (m_format.lineEnds == LineEnds::Records) {
        EndLine();
        m_writer->PutVerbatim({}, 1);
    } else {
        m_writer->PutVerbatim(" ", 1);
    }
}

} // namespace vnquery
