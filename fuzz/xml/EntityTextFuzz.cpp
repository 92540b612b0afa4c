// Texts written with entity references, in any code page: a reader of its own and the XML parser
// both get them back, from an element and from an attribute.
#include "fuzz/FuzzInput.h"
#include "src/xml/XercesText.h"
#include "vnbytstr/OutputStreamWriter.h"
#include "vnbytstr/XercesWrapper.h"

#include <algorithm>
#include <string_view>
#include <utility>

using namespace vnbytstr;
using fuzz::Require;

namespace {

std::string WithReferences(const std::string& text) {
    CMemFile file;
    COutputStreamWriter writer(file, GetNativeCCSID());
    writer.SetAutoClose(FALSE);
    writer.SetSubstituteEntityReferences(TRUE);
    writer.Write(text.data(), static_cast<DWORD>(text.size()));
    std::string written(static_cast<std::size_t>(file.GetLength()), '\0');
    file.SeekToBegin();
    Require(file.Read(written.data(), static_cast<UINT>(written.size())) == written.size());
    return written;
}

std::string WithoutReferences(std::string_view text) {
    constexpr std::pair<std::string_view, char> kReferences[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}};
    std::string plain;
    while (!text.empty()) {
        Require(text.front() != '<' && text.front() != '>' && text.front() != '"');
        if (text.front() != '&') {
            // A broken character has what follows its lead byte for its trail byte.
            const std::size_t length =
                CodePage::Ansi().CharLength(text.data(), text.data() + text.size());
            plain += text.substr(0, length);
            text.remove_prefix(length);
            continue;
        }
        const auto* const found = std::ranges::find_if(
            kReferences, [&](const auto& reference) { return text.starts_with(reference.first); });
        Require(found != std::end(kReferences));
        plain += found->second;
        text.remove_prefix(found->first.size());
    }
    return plain;
}

/// Whether a document may hold the characters, and the code page has no other bytes for them.
bool IsForDocuments(const std::string& text) {
    const std::u16string wide = CodePage::Ansi().ToWide(text);
    return CodePage::Ansi().FromWide(wide) == text && std::ranges::all_of(wide, [](char16_t unit) {
               return (unit >= u' ' && unit < 0xFFFE) || unit == u'\t' || unit == u'\n';
           });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const ScopedCodePage page(fuzz::PageOf(*data));
    std::string text(data + 1, data + size);
    const std::string written = WithReferences(text);
    Require(WithoutReferences(written) == text);
    if (!IsForDocuments(text))
        return 0;
    static CXercesWrapper xml;
    const std::string document =
        detail::Unmistakable("<a b=\"" + written + "\">" + written + "</a>");
    Require(xml.LoadXML(fuzz::ToCString(document)));
    XMLElement root;
    CXMLVariant value;
    CString attribute;
    Require(xml.GetRootElement(root) && xml.GetNodeValue(XMLNode(root), value));
    Require(fuzz::ToStdString(static_cast<CString>(value)) == text);
    Require(xml.GetStringAttribute(XMLNode(root), "b", attribute));
    std::ranges::replace_if( // as parsers do
        text, [](char c) { return c == '\t' || c == '\n'; }, ' ');
    Require(fuzz::ToStdString(attribute) == text);
    return 0;
}
