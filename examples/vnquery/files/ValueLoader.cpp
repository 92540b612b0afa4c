#include "vnquery/files/ValueLoader.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/tasks/Failure.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>

namespace vnquery {

namespace {

/// Checks text that comes in pieces.
class Utf8Check {
public:
    /// Whether the pieces so far can be the beginning of UTF-8 text.
    bool Take(std::span<const BYTE> piece) {
        m_left.append(reinterpret_cast<const char*>(piece.data()), piece.size());
        std::string_view rest = m_left;
        while (!rest.empty()) {
            char32_t character = 0;
            const std::size_t length = DecodeUtf8(rest, character);
            if (length == 0)
                break;
            rest.remove_prefix(length);
        }
        m_left.erase(0, m_left.size() - rest.size());
        constexpr std::size_t kMaxCharacter = 4;
        return m_left.size() < kMaxCharacter;
    }
    bool IsAtEnd() const { return m_left.empty(); }

private:
    std::string m_left;
};

} // namespace

Value LoadValue(const std::string& file, ColumnKind kind, const std::string& column,
                Progress& progress) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error))
        throw Failure(kFileFailed, Text(IDS_VQ_E_FOLDER, {file}));
    const bool isText = kind != ColumnKind::Binary && kind != ColumnKind::Unknown;
    Value value;
    WithMessage(Text(IDS_VQ_CANNOT_READ_FILE, {file}), [&] {
        CFile source(file.c_str(), CFile::modeRead);
        Utf8Check check;
        value.Begin(isText ? Value::Type::Text : Value::Type::Binary);
        std::vector<BYTE> buffer(kPieceSize);
        bool isFirst = true;
        while (const UINT count = source.Read(buffer.data(), kPieceSize)) {
            std::span<const BYTE> piece(buffer.data(), count);
            constexpr BYTE kMark[] = {0xEF, 0xBB, 0xBF};
            if (isText && isFirst && piece.size() >= 3 && std::ranges::equal(piece.first(3), kMark))
                piece = piece.subspan(std::size(kMark));
            isFirst = false;
            if (isText && !check.Take(piece))
                throw Failure(kFileFailed, Text(IDS_VQ_E_NOT_TEXT, {file, column}));
            value.Append(piece);
            progress.AddBytes(count);
        }
        if (!check.IsAtEnd())
            throw Failure(kFileFailed, Text(IDS_VQ_E_NOT_TEXT, {file, column}));
        value.Complete();
    });
    return value;
}

} // namespace vnquery
