// Typed values of XML attributes: read from any text, and back from what was written.
#include "fuzz/FuzzInput.h"
#include "vnbytstr/XercesWrapper.h"

#include <cstring>

using namespace vnbytstr;
using fuzz::Require;

namespace {

void ReadAs(const CXMLVariant& value) {
    static_cast<void>(static_cast<int>(value));
    static_cast<void>(static_cast<DWORD>(value));
    static_cast<void>(static_cast<long long>(value));
    static_cast<void>(static_cast<unsigned long long>(value));
    static_cast<void>(static_cast<double>(value));
    static_cast<void>(static_cast<bool>(value));
    static_cast<void>(static_cast<void*>(value));
    Require(value == value);
}

/// Whether a parser and the encoding of control characters keep the text as it is.
bool IsKept(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char ch) {
                           return (ch >= ' ' && ch <= '~' && ch != '&') ||
                                  std::strchr("\t\n\r", ch) != nullptr;
                       }) &&
           text.find('\0') == std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    const CString string = fuzz::ToCString(text);
    CXMLVariant value(string);
    ReadAs(value);
    Require(static_cast<CString>(value) == string);
    value.SetRawData(text.data(), static_cast<LONG>(size));
    Require(value.GetLength() == static_cast<LONG>(size));
    Require(size == 0 || std::memcmp(value.GetRawData(), text.data(), size) == 0);

    fuzz::Input input(data, size);
    const int number = static_cast<int>(input.Number() << 16 | input.Number());
    Require(static_cast<int>(CXMLVariant(number)) == number && CXMLVariant(number) == number);

    static CXercesWrapper document;
    XMLElement root;
    if (!document.Create("values") || !document.GetRootElement(root))
        return 0;
    const XMLNode node(root);
    int integer = 0;
    DWORD color = 0;
    double real = 0;
    CString back;
    if (document.SetAttribute(node, "text", string, true) && IsKept(text)) {
        Require(document.GetStringAttribute(node, "text", back, true));
        Require(back == string);
    }
    document.GetIntAttribute(node, "text", integer);
    document.GetDoubleAttribute(node, "text", real);
    document.GetColorAttribute(node, "text", color);
    const DWORD rgb = static_cast<DWORD>(number) & 0xFFFFFF;
    Require(document.SetColorAttribute(node, "colour", rgb));
    Require(document.GetColorAttribute(node, "colour", color));
    Require(color == rgb);
    return 0;
}
