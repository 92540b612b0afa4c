// Messages: any text comes out of a resource library as it went in, and its insertion points are
// filled as in UTF-16, whatever the code page has for the characters around them.
#include "fuzz/FuzzInput.h"
#include "src/resources/PeResources.h"
#include "tests/support/PeFile.h"
#include "vnbytstr/Messages.h"

using namespace vnbytstr;
using fuzz::Require;

namespace {

std::u16string Filled(const std::u16string& format, const std::u16string& first) {
    std::u16string text;
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char16_t digit = i + 1 < format.size() ? format[i + 1] : u'\0';
        if (format[i] != u'%' || digit < u'1' || digit > u'9') {
            text += format[i];
            continue;
        }
        ++i;
        if (digit != u'2') // that one is null
            text += digit == u'1' ? first : u"?";
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const ScopedCodePage page(fuzz::PageOf(input.Byte()));
    const UINT id = 1 + static_cast<UINT>(input.Number() % 0xFFFF);
    const CodePage& ansi = CodePage::Ansi();
    const std::string first = ansi.FromWide(ansi.ToWide(input.Text()));
    std::u16string text;
    while (input.Left() > 0)
        text += static_cast<char16_t>(input.Number());

    test::PeContent content;
    content.strings[id] = text;
    content.strings[id % 0xFFFF + 1] = u"the next one";
    detail::PeResources resources;
    std::u16string loaded;
    Require(resources.Parse(test::MakePeFile(content).bytes));
    Require(resources.FindString(id, loaded) == !text.empty() && loaded == text);

    text.resize(std::min(text.size(), text.find(u'\0')));
    const std::string format = ansi.FromWide(text);
    CString filled;
    Require(FormatStringEx(filled, format.c_str(), first.c_str(), nullptr) == filled.GetLength());
    const std::u16string argument = ansi.ToWide(first.c_str());
    Require(fuzz::ToStdString(filled) == ansi.FromWide(Filled(text, argument)));
    return 0;
}
