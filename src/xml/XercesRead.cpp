// Attributes and texts read from a document.
#include "vnbytstr/XercesWrapper.h"

#include "src/xml/ColorNames.h"
#include "src/xml/NodePointers.h"
#include "src/xml/XercesState.h"
#include "vnbytstr/MultibyteText.h"

#include <xercesc/dom/DOMAttr.hpp>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string_view>

using namespace vnbytstr::detail;
using xercesc::DOMNode;

namespace {

CString Decoded(CString text) {
    Exchange(text, "&r;", "\r");
    Exchange(text, "&n;", "\n");
    Exchange(text, "&t;", "\t");
    return text;
}

/// The same as getAttribute. The usual attribute, one text, is read without that function's dynamic
/// casts, which take more time than all the rest.
const char16_t* AttributeValue(const xercesc::DOMElement& element, const char16_t* name) {
    const xercesc::DOMAttr* const attribute = element.getAttributeNode(name);
    const DOMNode* const child = attribute != nullptr ? attribute->getFirstChild() : nullptr;
    if (child == nullptr)
        return u"";
    const bool isText =
        child->getNodeType() == DOMNode::TEXT_NODE && child->getNextSibling() == nullptr;
    return isText ? child->getNodeValue() : attribute->getValue();
}

/// The parser's text as a string variant.
void SetVariant(CXMLVariant& value, const char16_t* wide, bool decode) {
    const NarrowText text(wide);
    if (decode && text.View().find('&') != std::string_view::npos)
        value = Decoded(text.String());
    else
        value.SetText(text.View().data(), static_cast<LONG>(text.View().size()));
}

/// Reads through `read` and converts; false for an empty value.
template <class Value, class Read>
bool Convert(Value& value, Read read) {
    return Attempt([&] {
        CXMLVariant text;
        if (!read(text) || text.IsEmpty())
            return false;
        value = static_cast<Value>(text);
        return true;
    });
}

/// The number that a text begins with, in 32 bits.
DWORD NumberOf(const CString& text) { return static_cast<DWORD>(std::strtoll(text, nullptr, 10)); }

} // namespace

bool CXercesWrapper::GetAttribute(const XMLNode& node, const char* name, CXMLVariant& value,
                                  bool decode) {
    return Attempt([&] {
        const xercesc::DOMElement* const element = AsElement(node);
        if (!m_initialized || element == nullptr || name == nullptr)
            return false;
        SetVariant(value, AttributeValue(*element, m_state->names.Wide(name)), decode);
        return true;
    });
}

bool CXercesWrapper::GetStringAttribute(const XMLNode& node, const char* name, CString& value,
                                        bool decode) {
    return Attempt([&] {
        CXMLVariant text;
        if (!GetAttribute(node, name, text, decode))
            return false;
        value = static_cast<CString>(text);
        return true;
    });
}

bool CXercesWrapper::GetIntAttribute(const XMLNode& node, const char* name, int& value) {
    return Convert(value, [&](CXMLVariant& text) { return GetAttribute(node, name, text, false); });
}

bool CXercesWrapper::GetDWORDAttribute(const XMLNode& node, const char* name, DWORD& value) {
    return Convert(value, [&](CXMLVariant& text) { return GetAttribute(node, name, text, false); });
}

bool CXercesWrapper::GetDoubleAttribute(const XMLNode& node, const char* name, double& value) {
    return Convert(value, [&](CXMLVariant& text) { return GetAttribute(node, name, text, false); });
}

bool CXercesWrapper::GetBoolAttribute(const XMLNode& node, const char* name, bool& value) {
    return Convert(value, [&](CXMLVariant& text) { return GetAttribute(node, name, text, false); });
}

bool CXercesWrapper::GetColorAttribute(const XMLNode& node, const char* name, DWORD& value) {
    return Attempt([&] {
        CString text;
        if (!GetStringAttribute(node, name, text, false))
            return false;
        for (const ColorName& color : kColorNames) {
            if (text.CompareNoCase(color.name) == 0) {
                value = color.color;
                return true;
            }
        }
        value = NumberOf(text);
        return !text.IsEmpty() &&
               ViewOf(text).find_first_not_of("0123456789") == std::string_view::npos;
    });
}

bool CXercesWrapper::GetEnumAttribute(const XMLNode& node, const char* name,
                                      const SEnumString* table, int count, int& value) {
    return Attempt([&] {
        CString text;
        if (!GetStringAttribute(node, name, text, false))
            return false;
        for (int i = 0; table != nullptr && i < count; ++i) {
            if (table[i].m_pszName != nullptr && text == table[i].m_pszName) {
                value = table[i].m_iValue;
                return true;
            }
        }
        return false;
    });
}

bool CXercesWrapper::GetNodeValue(const XMLNode& node, CXMLVariant& value, bool decode) {
    return Attempt([&] {
        const DOMNode* const parent = NodeOf(node);
        if (parent == nullptr)
            return false;
        if (const DOMNode* child = parent->getFirstChild())
            SetVariant(value, child->getNodeValue(), decode);
        return true;
    });
}

bool CXercesWrapper::GetNodeType(const XMLNode& node, short& type) {
    return Attempt([&] {
        if (node.IsEmpty())
            return false;
        type = static_cast<short>(NodeOf(node)->getNodeType());
        return true;
    });
}

bool CXercesWrapper::GetStringNodeValue(const XMLNode& node, CString& value, bool decode) {
    return Attempt([&] {
        CXMLVariant text;
        if (!GetNodeValue(node, text, decode))
            return false;
        value = static_cast<CString>(text);
        return true;
    });
}

bool CXercesWrapper::GetIntNodeValue(const XMLNode& node, int& value) {
    return Convert(value, [&](CXMLVariant& text) { return GetNodeValue(node, text, false); });
}

bool CXercesWrapper::GetDWORDNodeValue(const XMLNode& node, DWORD& value) {
    return Convert(value, [&](CXMLVariant& text) { return GetNodeValue(node, text, false); });
}

bool CXercesWrapper::GetDoubleNodeValue(const XMLNode& node, double& value) {
    return Convert(value, [&](CXMLVariant& text) { return GetNodeValue(node, text, false); });
}

bool CXercesWrapper::GetBoolNodeValue(const XMLNode& node, bool& value) {
    return Convert(value, [&](CXMLVariant& text) { return GetNodeValue(node, text, false); });
}
