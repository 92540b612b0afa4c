#include "vnquery/files/Exporter.h"

#include "vnquery/files/BufferedReplacementFile.h"
#include "vnquery/files/Losses.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"
#include "vnquery/tasks/Progress.h"

#include <algorithm>

namespace vnquery {

namespace {

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

/// Takes text with its length, so that it may contain NUL, and gathers the text of a whole line:
/// one translation is faster than many, and needs fewer shifts in a mixed-byte set.
class Exporter::Writer : public COutputStreamWriter {
public:
    Writer(CFile& file, const ExportFormat& format)
        : COutputStreamWriter(file, TargetCcsid(format)) {
        SetAutoClose(FALSE);
        SetRecordLength(format.recordLength);
        SetLineBreak(format.lineBreak);
        SetSubstituteEntityReferences(format.entities);
    }
    /// Text of the result, with entity references if the format wants them.
    void PutText(std::string_view text) { Put(text, GetSubstituteEntityReferences() != FALSE); }
    /// Text that is written unchanged.
    void PutVerbatim(std::string_view text) { Put(text, false); }
    void EndLine() {
        WritePending();
        LineBreak();
    }
    /// Whether there is text after the last line break.
    bool IsInLine() const { return !m_pending.empty() || GetRecordIndex() != 0; }
    void WritePending() {
        for (std::string_view rest = m_pending; !rest.empty();) {
            // Write stops at a NUL.
            const std::size_t run =
                m_isSubstituted ? std::min(rest.find('\0'), rest.size()) : rest.size();
            if (run == 0 || !m_isSubstituted)
                WriteVerbatim(rest.data(), static_cast<DWORD>(std::max<std::size_t>(run, 1)));
            else
                Write(std::string(rest.substr(0, run)).c_str());
            rest.remove_prefix(std::max<std::size_t>(run, 1));
        }
        m_pending.clear();
    }

private:
    void Put(std::string_view text, bool isSubstituted) {
        if (isSubstituted != m_isSubstituted || m_pending.size() + text.size() > kPieceSize)
            WritePending();
        m_isSubstituted = isSubstituted;
        m_pending += text;
    }

    std::string m_pending;        ///< whole characters
    bool m_isSubstituted = false; ///< m_pending gets entity references
};

Exporter::Exporter(CFile& file, const ExportFormat& format)
    : m_format(format), m_writer(std::make_unique<Writer>(file, format)) {
    if (!m_format.nullText)
        m_format.nullText = m_format.lineEnds == LineEnds::Escape ? "\\N" : "-";
}

Exporter::~Exporter() = default;

void Exporter::WriteResult(const ResultSet& result, Progress& progress) {
    const std::size_t columns = result.GetColumnCount();
    if (m_format.headings) {
        for (std::size_t column = 0; column < columns; ++column) {
            if (column > 0)
                m_writer->PutVerbatim(m_format.separator);
            m_writer->PutText(MakeVisible(result.GetColumns()[column]));
        }
        m_writer->EndLine();
    }
    for (std::size_t row = 0; row < result.GetRowCount(); ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            if (column > 0)
                m_writer->PutVerbatim(m_format.separator);
            WriteValue(result.At(row, column));
            progress.AddBytes(result.At(row, column).GetLength());
        }
        m_writer->EndLine();
        progress.AddRow();
    }
    for (std::size_t row = 0; HasLosses() && m_firstLoss.empty() && row < result.GetRowCount();
         ++row)
        for (std::size_t column = 0; column < columns; ++column)
            if (NoteLoss(result.At(row, column), row, column))
                break;
    CheckStrict();
}

void Exporter::WriteText(const Value& text, std::size_t row, std::size_t column) {
    WriteTextPieces(text);
    if (m_format.lineEnds == LineEnds::Records && m_writer->IsInLine())
        m_writer->EndLine();
    m_writer->WritePending();
    if (HasLosses())
        NoteLoss(text, row, column);
    CheckStrict();
}

bool Exporter::HasLosses() const {
    const STranslationReport& report = m_writer->GetReport();
    return report.ullUntranslatable + report.ullMalformed > 0;
}

/// Looks for the first loss in a value. The writer only counts losses; their place is looked for
/// afterwards, when there are any.
bool Exporter::NoteLoss(const Value& value, std::size_t row, std::size_t column) {
    CheckInterrupted();
    if (value.GetType() != Value::Type::Text)
        return false;
    const std::optional<ULONGLONG> offset = FindFirstLoss(value, TargetCcsid(m_format));
    if (offset)
        m_firstLoss = Text(IDS_VQ_LOSS_PLACE, {GroupDigits(*offset + 1), CellName(row, column)});
    return offset.has_value();
}

std::string Exporter::GetLosses() const {
    const std::string losses = DescribeLosses(m_writer->GetReport(), TargetCcsid(m_format));
    return losses.empty() || m_firstLoss.empty() ? losses
                                                 : Text(IDS_VQ_FIRST_LOSS, {losses, m_firstLoss});
}

std::string DescribeExport(std::size_t rows, ULONGLONG bytes, const std::string& file) {
    return rows == 1 ? Text(IDS_VQ_EXPORTED_ONE, {GroupDigits(bytes), file})
                     : Text(IDS_VQ_EXPORTED, {GroupDigits(rows), GroupDigits(bytes), file});
}

void Exporter::CheckStrict() const {
    if (m_format.strict && HasLosses())
        throw Failure(kFileFailed, Text(IDS_VQ_STRICT, {GetLosses()}));
}

void Exporter::WriteValue(const Value& value) {
    switch (value.GetType()) {
    case Value::Type::Null:
        m_writer->PutVerbatim(*m_format.nullText);
        break;
    case Value::Type::Number:
    case Value::Type::Text:
        WriteTextPieces(value);
        break;
    case Value::Type::Binary:
        if (m_format.hexBlobs)
            WriteHex(value);
        else
            m_writer->PutVerbatim(FormatCell(value, {}));
        break;
    }
}

void Exporter::WriteHex(const Value& value) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string digits;
    value.ForEachPiece([&](std::span<const BYTE> piece) {
        CheckInterrupted();
        digits.clear();
        for (const BYTE byte : piece)
            digits.append({kDigits[byte >> 4], kDigits[byte & 15]});
        m_writer->PutVerbatim(digits);
    });
}

void Exporter::WriteTextPieces(const Value& text) {
    std::string piece;
    m_wasReturn = false;
    ULONGLONG left = text.GetLength();
    text.ForEachPiece([&](std::span<const BYTE> bytes) {
        CheckInterrupted();
        left -= bytes.size();
        piece.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        const std::size_t tail = left > 0 ? IncompleteTail(piece) : 0;
        std::string_view rest(piece.data(), piece.size() - tail);
        while (!rest.empty()) {
            const auto special = std::ranges::find_if(rest, [&](char ch) { return IsSpecial(ch); });
            const auto run = static_cast<std::size_t>(special - rest.begin());
            if (run > 0) {
                m_writer->PutText(rest.substr(0, run));
                m_wasReturn = false;
            }
            rest.remove_prefix(run);
            if (!rest.empty()) {
                WriteSpecial(rest[0]);
                rest.remove_prefix(1);
            }
        }
        piece.erase(0, piece.size() - tail);
    });
}

bool Exporter::IsSpecial(char ch) const {
    switch (m_format.lineEnds) {
    case LineEnds::Escape:
        return ch == '\n' || ch == '\r' || ch == '\t' || ch == '\0' || ch == '\\' ||
               (m_format.separator.size() == 1 && ch == m_format.separator[0]);
    case LineEnds::Records:
    case LineEnds::Space:
        return ch == '\n' || ch == '\r';
    case LineEnds::Keep:
        break;
    }
    return false;
}

void Exporter::WriteSpecial(char ch) {
    if (m_format.lineEnds == LineEnds::Escape) {
        const char letter = ch == '\n'   ? 'n'
                            : ch == '\r' ? 'r'
                            : ch == '\t' ? 't'
                            : ch == '\0' ? '0'
                                         : ch;
        const char escape[] = {'\\', letter, '\0'};
        m_writer->PutVerbatim(escape);
        return;
    }
    const bool isSecondOfPair = ch == '\n' && m_wasReturn;
    m_wasReturn = ch == '\r';
    if (!isSecondOfPair)
        WriteLineBreakInside();
}

void Exporter::WriteLineBreakInside() {
    if (m_format.lineEnds == LineEnds::Records)
        m_writer->EndLine();
    else
        m_writer->PutVerbatim(" ");
}

ExportSummary ExportToFile(const ResultSet& result, const std::string& name,
                           const ExportFormat& format, Progress& progress) {
    ExportSummary summary;
    WithMessage(Text(IDS_VQ_CANNOT_WRITE_EXPORT, {name}), [&] {
        BufferedReplacementFile file(name);
        Exporter exporter(file, format);
        exporter.WriteResult(result, progress);
        file.Commit();
        summary = {file.GetWritten(), exporter.GetLosses()};
    });
    return summary;
}

} // namespace vnquery
