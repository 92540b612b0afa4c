// Recognises pictures by their first bytes.
#pragma once

#include <string_view>

namespace vnquery {

class Value;

enum class PictureKind { None, Png, Jpeg, Gif, Bmp };

/// By the signatures of PNG (RFC 2083, 3.1), JPEG (ITU T.81, B.1.1: SOI and the next marker), GIF
/// (GIF89a, section 17) and Windows bitmaps with a plausible header.
PictureKind RecognisePicture(std::string_view beginning);
/// By the value's bytes; None for anything but bytes.
PictureKind RecognisePicture(const Value& value);

/// "PNG", and the usual ending of file names, ".png"; "" and ".bin" for None.
const char* PictureName(PictureKind kind);
const char* PictureExtension(PictureKind kind);

} // namespace vnquery
