// Elements, comments, attributes and texts put into a document.
#include "vnbytstr/XercesWrapper.h"

#include "src/xml/ColorNames.h"
#include "src/xml/DocumentParser.h"
#include "src/xml/NodePointers.h"
#include "src/xml/XercesState.h"
#include "vnbytstr/MultibyteText.h"

#include <xercesc/dom/DOMComment.hpp>
#include <xercesc/dom/DOMText.hpp>

#include <algorithm>
#include <string_view>

using namespace vnbytstr::detail;
using xercesc::DOMNode;

namespace {

CString Encoded(CString text) {
    Exchange(text, "\r", "&r;");
    Exchange(text, "\n", "&n;");
    Exchange(text, "\t", "&t;");
    return text;
}

/// Whether a document is too deep with that element.
bool IsTooDeep(const DOMNode* element) {
    int depth = 0;
    for (; element != nullptr && depth <= kMaxDepth + 1; element = element->getParentNode())
        ++depth; // the document counts one, too
    return depth > kMaxDepth + 1;
}

/// Calls `use` with the value's text, encoded when that is wanted.
template <class Use>
auto WithText(const CXMLVariant& value, bool encode, Use use) {
    std::string_view text;
    if (!value.IsEmpty())
        text = {value.GetRawData(), static_cast<std::size_t>(value.GetLength())};
    if (!encode || text.find_first_of("\r\n\t") == std::string_view::npos)
        return use(WideText(text));
    const CString encoded = Encoded(value);
    return use(WideText(ViewOf(encoded)));
}

} // namespace

bool CXercesWrapper::AppendChildElement(const XMLNode& parent, const char* name, XMLNode& child) {
    return Attempt([&] {
        DOMNode* const node = NodeOf(parent);
        if (!CheckInstance() || node == nullptr || name == nullptr)
            return false;
        const Mutation mutation(*this);
        DOMNode* const added =
            node->appendChild(DocumentOf(m_document)->createElement(m_state->names.Wide(name)));
        if (added == nullptr)
            return false;
        if (!m_state->isDoubtful && IsTooDeep(added))
            m_state->isDoubtful = true;
        SetNode(child, added);
        return true;
    });
}

bool CXercesWrapper::AddCommentNode(const XMLNode& parent, const char* text) {
    return Attempt([&] {
        DOMNode* const node = NodeOf(parent);
        if (!CheckInstance() || node == nullptr || text == nullptr)
            return false;
        const Mutation mutation(*this);
        const WideText wide(text);
        if (!IsCommentText(wide.c_str()))
            m_state->isDoubtful = true; // it is taken, but cannot be saved
        DOMNode* const comment = DocumentOf(m_document)->createComment(wide.c_str());
        return comment != nullptr && node->appendChild(comment) != nullptr;
    });
}

bool CXercesWrapper::SetAttribute(const XMLNode& node, const char* name, const CXMLVariant& value,
                                  bool encode) {
    return Attempt([&] {
        xercesc::DOMElement* const element = AsElement(node);
        if (!m_initialized || element == nullptr || name == nullptr)
            return false;
        const Mutation mutation(*this);
        WithText(value, encode, [&](const WideText& text) {
            element->setAttribute(m_state->names.Wide(name), text.c_str());
        });
        return true;
    });
}

bool CXercesWrapper::SetColorAttribute(const XMLNode& node, const char* name, DWORD color) {
    return Attempt([&] {
        const auto* const found =
            std::find_if(kColorNames.begin(), kColorNames.end(),
                         [&](const ColorName& each) { return each.color == color; });
        if (found != kColorNames.end())
            return SetAttribute(node, name, CString(found->name), false);
        return SetAttribute(node, name, static_cast<int>(color), false);
    });
}

bool CXercesWrapper::SetEnumAttribute(const XMLNode& node, const char* name,
                                      const SEnumString* table, int count, int value) {
    return Attempt([&] {
        for (int i = 0; table != nullptr && i < count; ++i) {
            if (table[i].m_iValue == value)
                return table[i].m_pszName != nullptr &&
                       SetAttribute(node, name, CString(table[i].m_pszName), false);
        }
        return false;
    });
}

bool CXercesWrapper::SetNodeValue(const XMLNode& node, const CXMLVariant& value, bool encode) {
    return Attempt([&] {
        DOMNode* const parent = NodeOf(node);
        if (!CheckInstance() || parent == nullptr)
            return false;
        const Mutation mutation(*this);
        return WithText(value, encode, [&](const WideText& text) {
            return parent->appendChild(DocumentOf(m_document)->createTextNode(text.c_str())) !=
                   nullptr;
        });
    });
}
