// Any bytes as a document: loading never throws, hangs or reads outside; what was loaded can be
// walked and written, and what was written is read as the same document again. (Parse errors go to
// standard error: run it with -close_fd_mask=2.)
#include "fuzz/FuzzInput.h"

#include "vnbytstr/XercesWrapper.h"

#include <cstddef>
#include <string>

using namespace vnbytstr;
using fuzz::Require;

namespace {

void Walk(CXercesWrapper& xml, const XMLElement& element) {
    XMLNodeList children;
    LONG count = 0;
    Require(xml.GetChilds(element, children) && xml.GetListCount(element, children, count));
    for (LONG i = 0; i < count; ++i) {
        XMLNode child;
        CXMLVariant value;
        CString name;
        Require(xml.GetListItem(element, children, i, child) && xml.GetNodeName(child, name) &&
                xml.GetNodeValue(child, value));
        XMLElement below;
        if (xml.GetElementNode(child, below))
            Walk(xml, below);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const ScopedCodePage page(fuzz::PageOf(*data));
    static CXercesWrapper xml;
    const CString text(reinterpret_cast<const char*>(data + 1), static_cast<int>(size - 1));
    const bool isLoaded = xml.LoadXML(text);
    if (*data >= 0x80) { // what was loaded before leaves no trace
        CXercesWrapper fresh;
        CString one, two;
        Require(fresh.LoadXML(text) == isLoaded && fresh.GetXML(one) == xml.GetXML(two));
        Require(one == two);
    }
    if (!isLoaded) {
        XMLElement none;
        Require(!xml.GetRootElement(none));
        Require(xml.GetLastParseError().m_severity != SXMLParseError::kNone);
        return 0;
    }
    XMLElement root;
    Require(xml.GetRootElement(root));
    Walk(xml, root);
    const ScopedCodePage utf8(65001); // where nothing is lost
    CString written, again;
    if (xml.GetXML(written)) {
        Require(xml.LoadXML(written) && xml.GetXML(again));
        // A carriage return in a text is written as it is, and read as a line feed.
        Require(again == written || written.Find('\r') >= 0);
    }
    return 0;
}
