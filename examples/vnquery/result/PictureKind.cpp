#include "vnquery/result/PictureKind.h"

#include "vnquery/result/Value.h"

#include <algorithm>

namespace vnquery {

namespace {

constexpr DWORD kBeginning = 512; ///< bytes that are examined

unsigned ByteAt(std::string_view bytes, std::size_t i) {
    return static_cast<unsigned char>(bytes[i]);
}

/// "BM", two reserved words that are 0, and the length of a known information header.
bool IsBitmap(std::string_view bytes) {
    constexpr unsigned kHeaderLengths[] = {12, 40, 52, 56, 64, 108, 124};
    if (bytes.size() < 18 || !bytes.starts_with("BM") ||
        bytes.substr(6, 4) != std::string_view("\0\0\0\0", 4))
        return false;
    const unsigned length = ByteAt(bytes, 14) | ByteAt(bytes, 15) << 8 | ByteAt(bytes, 16) << 16;
    return ByteAt(bytes, 17) == 0 &&
           std::ranges::find(kHeaderLengths, length) != std::end(kHeaderLengths);
}

bool IsSvg(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    const std::size_t svg = text.find("<svg");
    return (text.starts_with("<?xml") || text.starts_with("<!") || svg == 0) &&
           svg != std::string_view::npos && text.substr(svg + 4).find_first_of(" \t\r\n>:") == 0;
}

} // namespace

PictureKind RecognisePicture(std::string_view beginning) {
    if (beginning.starts_with("\x89PNG\r\n\x1A\n"))
        return PictureKind::Png;
    if (beginning.size() >= 4 && beginning.starts_with("\xFF\xD8\xFF") &&
        ByteAt(beginning, 3) >= 0xC0 && ByteAt(beginning, 3) != 0xFF)
        return PictureKind::Jpeg;
    if (beginning.starts_with("GIF87a") || beginning.starts_with("GIF89a"))
        return PictureKind::Gif;
    if (beginning.starts_with("RIFF") && beginning.substr(4).substr(0, 8).ends_with("WEBP"))
        return PictureKind::Webp;
    if (beginning.starts_with(std::string_view("II*\0", 4)) ||
        beginning.starts_with(std::string_view("MM\0*", 4)))
        return PictureKind::Tiff;
    if (IsSvg(beginning))
        return PictureKind::Svg;
    return IsBitmap(beginning) ? PictureKind::Bmp : PictureKind::None;
}

PictureKind RecognisePicture(const Value& value) {
    const PictureKind kind = RecognisePicture(value.Read(0, kBeginning));
    const bool isBytes = value.GetType() == Value::Type::Binary;
    return isBytes || kind == PictureKind::Svg ? kind : PictureKind::None;
}

const char* PictureName(PictureKind kind) {
    constexpr const char* kNames[] = {"", "PNG", "JPEG", "GIF", "BMP", "WebP", "TIFF", "SVG"};
    return kNames[static_cast<std::size_t>(kind)];
}

const char* PictureExtension(PictureKind kind) {
    constexpr const char* kExtensions[] = {".bin", ".png",  ".jpg",  ".gif",
                                           ".bmp", ".webp", ".tiff", ".svg"};
    return kExtensions[static_cast<std::size_t>(kind)];
}

} // namespace vnquery
