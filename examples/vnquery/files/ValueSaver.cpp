#include "vnquery/files/ValueSaver.h"

#include "vnquery/files/BufferedReplacementFile.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/result/ResultSet.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Progress.h"

#include <cstdio>

namespace vnquery {

namespace {

void SaveBytes(Value& value, const std::string& file, bool isLastUse) {
    CByteStream* stream = value.GetStream();
    if (!stream) {
        const std::string bytes = value.GetBytes();
        CByteStream(reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()))
            .CopyToFile(file.c_str());
    } else if (isLastUse) {
        stream->SaveToFile(file.c_str());
    } else {
        stream->CopyToFile(file.c_str());
    }
}

} // namespace

void SaveValue(Value& value, std::size_t row, std::size_t column, const std::string& file,
               const ExportFormat& format, bool isLastUse) {
    const std::string what = Text(IDS_VQ_CANNOT_SAVE, {CellName(row, column), file});
    if (value.IsNull())
        throw Failure(kBadUsage, what + ": " + Text(IDS_VQ_SAVE_NULL));
    WithMessage(what, [&] {
        if (format.ccsid == 0 || value.GetType() == Value::Type::Binary) {
            SaveBytes(value, file, isLastUse);
            return;
        }
        BufferedReplacementFile target(file);
        Exporter exporter(target, format);
        exporter.WriteText(value, row, column);
        target.Commit();
        ReportLosses(file, exporter.GetLosses());
    });
}

void SaveValueBytes(const Value& value, const std::string& cell, const std::string& file,
                    Progress& progress) {
    WithMessage(Text(IDS_VQ_CANNOT_SAVE, {cell, file}), [&] {
        BufferedReplacementFile target(file);
        value.ForEachPiece([&](std::span<const BYTE> piece) {
            target.Write(piece.data(), static_cast<UINT>(piece.size()));
            progress.AddBytes(piece.size());
        });
        target.Commit();
    });
}

void ReportLosses(const std::string& file, const std::string& losses) {
    if (!losses.empty())
        std::fprintf(stderr, "vnquery: %s\n", Text(IDS_VQ_LOSSES_WARNING, {file, losses}).c_str());
}

} // namespace vnquery
