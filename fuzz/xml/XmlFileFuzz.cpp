// Documents as files: the same characters give the same tree in every encoding, and any bytes that
// load are saved and loaded again without a change. (Parse errors go to standard error: run it with
// -close_fd_mask=2.) The first byte chooses the encoding, 0 the bytes as they are.
#include "fuzz/FuzzInput.h"
#include "vnbytstr/XercesWrapper.h"

#include <sys/mman.h>
#include <unistd.h>

#include <optional>

using namespace vnbytstr;
using fuzz::Require;

namespace {

/// A file in memory that has a name.
class NamedFile {
public:
    NamedFile() : m_file(memfd_create("document", 0)) {}
    void Write(const std::string& bytes) const {
        Require(ftruncate(m_file, 0) == 0 && pwrite(m_file, bytes.data(), bytes.size(), 0) ==
                                                 static_cast<ssize_t>(bytes.size()));
    }
    std::string Name() const { return "/proc/self/fd/" + std::to_string(m_file); }

private:
    int m_file;
};

/// The tree as text; nothing when the document does not load.
std::optional<CString> Load(const std::string& bytes) {
    static const NamedFile file;
    static const std::string name = file.Name();
    static CXercesWrapper xml;
    file.Write(bytes);
    XMLElement root;
    CString text;
    if (!xml.LoadFile(name.c_str())) {
        Require(!xml.GetRootElement(root) && !xml.GetXML(text));
        Require(xml.GetLastParseError().m_severity != SXMLParseError::kNone);
        return std::nullopt;
    }
    Require(xml.GetRootElement(root) && xml.GetXML(text));
    return text;
}

std::string Utf16(const std::u16string& wide, bool isBigEndian) {
    std::string bytes;
    for (const char16_t unit : u'\xFEFF' + wide) {
        const auto low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    }
    return bytes;
}

/// `text`, which has no declaration, as it reads in another encoding; nothing when that lacks a
/// character of it.
std::optional<std::string> Encoded(const std::string& text, int choice) {
    const CodePage& utf8 = *CodePage::Find(65001);
    const std::u16string wide = utf8.ToWide(text);
    switch (choice) {
    case 1:
        return "\xEF\xBB\xBF" + text;
    case 2:
        return Utf16(wide, false);
    case 3:
        return Utf16(wide, true);
    case 4:
        return "<?xml version='1.0' encoding='UTF-8'?>" + text;
    default: {
        constexpr std::array<std::pair<const char*, UINT>, 3> kDeclared = {
            {{"ISO-8859-1", 28591}, {"windows-1251", 1251}, {"Shift_JIS", 932}}};
        const auto& [name, number] = kDeclared[static_cast<std::size_t>(choice) % kDeclared.size()];
        const CodePage& page = *CodePage::Find(number);
        const std::string bytes = page.FromWide(wide);
        // Three control characters change places in the parser's Shift_JIS.
        const bool hasTurned =
            number == 932 && wide.find_first_of(u"\x1A\x1C\x7F") != std::u16string::npos;
        if (page.ToWide(bytes) != wide || hasTurned)
            return std::nullopt;
        return std::string("<?xml version='1.0' encoding='") + name + "'?>" + bytes;
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const int choice = input.Byte() % 8;
    const ScopedCodePage page(65001);
    const std::string text = input.Rest();
    const std::optional<CString> tree = Load(text);
    if (choice == 0) {
        if (tree) {
            const std::optional<CString> again = Load(fuzz::ToStdString(*tree));
            Require(again && (*again == *tree || tree->Find('\r') >= 0));
        }
        return 0;
    }
    const CodePage& utf8 = *CodePage::Find(65001);
    const bool isPlain = utf8.FromWide(utf8.ToWide(text)) == text && !text.starts_with("<?xml") &&
                         !text.starts_with("\xEF\xBB\xBF");
    if (const auto encoded = isPlain ? Encoded(text, choice) : std::nullopt)
        Require(Load(*encoded) == tree);
    return 0;
}
