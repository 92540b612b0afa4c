// Recognises pictures by their first bytes.
#pragma once

#include <string_view>

namespace vnquery {

class Value;

enum class PictureKind { None, Png, Jpeg, Gif, Bmp, Webp, Tiff, Svg };

/// By the signatures of PNG (RFC 2083, 3.1), JPEG (ITU T.81, B.1.1: SOI and the next marker), GIF
/// (GIF89a, section 17), WebP (RFC 9649, 2.4) and TIFF (6.0, section 2), Windows bitmaps with a
/// plausible header, and SVG: XML whose element svg begins within the first 512 bytes.
PictureKind RecognisePicture(std::string_view beginning);
/// By the value's bytes; None for anything but bytes, and for texts other than SVG.
PictureKind RecognisePicture(const Value& value);

/// "PNG", and the usual ending of file names, ".png"; "" and ".bin" for None.
const char* PictureName(PictureKind kind);
const char* PictureExtension(PictureKind kind);

} // namespace vnquery
