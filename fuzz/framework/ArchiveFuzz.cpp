// An archive of any bytes, read as strings or as lines through a buffer of any size, against
// readers of the whole text; and strings and numbers that are written and read back. The first byte
// chooses what is done, the second the buffer.
#include "fuzz/FuzzInput.h"
#include "vnbytstr/framework/Archive.h"
#include "vnbytstr/framework/Exception.h"

#include <climits>
#include <optional>
#include <vector>

using namespace vnbytstr;
using fuzz::Require;

namespace {

/// The cause that reading a string at `at` ends with, or 0 with the string, and `at` after it.
int StringAt(const std::string& bytes, std::size_t& at, std::string& text) {
    const auto number = [&](std::size_t count) -> std::optional<std::size_t> {
        if (bytes.size() - at < count)
            return std::nullopt;
        std::size_t value = 0;
        for (std::size_t i = count; i-- > 0;)
            value = value << 8 | static_cast<BYTE>(bytes[at + i]);
        at += count;
        return value;
    };
    auto length = number(1);
    if (length == 0xFF) {
        length = number(2);
        if (length == 0xFFFE)
            return CArchiveException::badSchema;
        if (length == 0xFFFF)
            length = number(4);
        if (length && *length > INT_MAX)
            return CArchiveException::badIndex;
    }
    if (!length || bytes.size() - at < *length)
        return CArchiveException::endOfFile;
    text = bytes.substr(at, *length);
    at += *length;
    return 0;
}

void ReadStrings(CArchive& archive, const std::string& bytes) {
    for (std::size_t at = 0;;) {
        std::string expected;
        const int cause = StringAt(bytes, at, expected);
        CString text("before");
        try {
            archive >> text;
            Require(cause == 0 && fuzz::ToStdString(text) == expected);
        } catch (CArchiveException* error) {
            Require(error->m_cause == cause && text == "before");
            error->Delete();
            return;
        }
    }
}

void ReadLines(CArchive& archive, const std::string& bytes) {
    CString line;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t stop = std::min(bytes.find_first_of("\r\n", at), bytes.size());
        Require(archive.ReadString(line) != FALSE);
        Require(fuzz::ToStdString(line) == bytes.substr(at, stop - at));
        at = stop + (bytes.compare(stop, 2, "\r\n") == 0 ? 2 : 1);
    }
    Require(archive.ReadString(line) == FALSE && line.IsEmpty());
}

/// Writes strings with numbers between them, and reads them back through another buffer.
void RoundTrip(const std::string& bytes, int bufferSize) {
    std::vector<CString> texts;
    fuzz::Input input(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    while (input.Left() > 0) {
        const std::size_t times = input.Byte() % 4 == 3 ? 300 : 1; // some are long
        const std::string unit = input.Text();
        std::string text;
        for (std::size_t i = 0; i < times; ++i)
            text += unit;
        texts.push_back(fuzz::ToCString(text));
    }
    CMemFile file;
    CArchive out(&file, CArchive::store, bufferSize);
    for (const CString& text : texts)
        out << text << static_cast<WORD>(text.GetLength()) << -1.5 * text.GetLength();
    out.Close();
    file.SeekToBegin();
    CArchive in(&file, CArchive::load, 400 - bufferSize);
    for (const CString& text : texts) {
        CString again;
        WORD length = 0;
        double number = 0;
        in >> again >> length >> number;
        Require(again == text && length == static_cast<WORD>(text.GetLength()) &&
                number == -1.5 * text.GetLength());
    }
    BYTE more = 0;
    Require(in.Read(&more, 1) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const int choice = input.Byte() % 3;
    const int bufferSize = 128 + input.Byte() % 144;
    const std::string bytes = input.Rest();
    if (choice == 2) {
        RoundTrip(bytes, bufferSize);
        return 0;
    }
    CMemFile file;
    fuzz::Fill(file, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    CArchive archive(&file, CArchive::load, bufferSize);
    (choice == 0 ? ReadStrings : ReadLines)(archive, bytes);
    archive.Abort();
    return 0;
}
