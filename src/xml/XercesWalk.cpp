// From node to node.
#include "vnbytstr/XercesWrapper.h"

#include "src/xml/NodePointers.h"
#include "src/xml/XercesState.h"

#include <climits>

using namespace vnbytstr::detail;
using xercesc::DOMElement;
using xercesc::DOMNode;
using xercesc::DOMNodeList;

bool CXercesWrapper::GetRootElement(XMLElement& root) {
    return Attempt([&] {
        if (!CheckInstance())
            return false;
        DOMElement* const element = DocumentOf(m_document)->getDocumentElement();
        if (element == nullptr)
            return false;
        SetElement(root, element);
        return true;
    });
}

bool CXercesWrapper::GetElementNode(const XMLNode& node, XMLElement& element) {
    return Attempt([&] {
        DOMElement* const same = AsElement(node);
        if (same == nullptr)
            return false;
        SetElement(element, same);
        return true;
    });
}

bool CXercesWrapper::GetNodeElement(const XMLElement& element, XMLNode& node) {
    if (element.IsEmpty())
        return false;
    SetNode(node, ElementOf(element));
    return true;
}

bool CXercesWrapper::GetNode(const XMLElement& parent, const char* tag, XMLNode& node) {
    return Attempt([&] {
        XMLNodeList list;
        return GetList(parent, tag, list) && GetListItem(parent, list, 0, node);
    });
}

bool CXercesWrapper::GetList(const XMLElement& parent, const char* tag, XMLNodeList& list) {
    return Attempt([&] {
        const DOMElement* const element = ElementOf(parent);
        if (!m_initialized || element == nullptr || tag == nullptr)
            return false;
        const char16_t* const name = m_state->names.Wide(tag);
        DOMNodeList* const found = element->getElementsByTagName(name);
        if (found == nullptr)
            return false;
        m_state->lists.Remember(found, element, name);
        list.SetData(found);
        return true;
    });
}

bool CXercesWrapper::GetListCount(const XMLElement& parent, const XMLNodeList& list, LONG& count) {
    return Attempt([&] {
        if (!m_initialized || parent.IsEmpty() || list.IsEmpty())
            return false;
        count = static_cast<LONG>(m_state->lists.Count(ElementOf(parent), ListOf(list)));
        return true;
    });
}

bool CXercesWrapper::GetListItem(const XMLElement& parent, const XMLNodeList& list, LONG index,
                                 XMLNode& node) {
    return Attempt([&] {
        if (!m_initialized || parent.IsEmpty() || list.IsEmpty() || index < 0)
            return false;
        DOMNode* const item =
            m_state->lists.Item(ElementOf(parent), ListOf(list), static_cast<std::size_t>(index));
        if (item == nullptr)
            return false;
        SetNode(node, item);
        return true;
    });
}

bool CXercesWrapper::GetChilds(const XMLElement& parent, XMLNodeList& list) {
    return Attempt([&] {
        const DOMElement* const element = ElementOf(parent);
        if (element == nullptr)
            return false;
        DOMNodeList* const children = element->getChildNodes();
        if (children == nullptr)
            return false;
        list.SetData(children);
        return true;
    });
}

bool CXercesWrapper::GetNodeName(const XMLNode& node, CString& name) {
    return Attempt([&] {
        if (node.IsEmpty())
            return false;
        name = NarrowText(NodeOf(node)->getNodeName()).String();
        return true;
    });
}
