// The pointers that the handles hold.
#pragma once

#include "vnbytstr/XMLNode.h"

#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMNode.hpp>
#include <xercesc/dom/DOMNodeList.hpp>

namespace vnbytstr::detail {

inline xercesc::DOMNode* NodeOf(const XMLNode& node) noexcept {
    return static_cast<xercesc::DOMNode*>(node.GetData());
}
inline xercesc::DOMElement* ElementOf(const XMLElement& element) noexcept {
    return static_cast<xercesc::DOMElement*>(element.GetData());
}
inline xercesc::DOMNodeList* ListOf(const XMLNodeList& list) noexcept {
    return static_cast<xercesc::DOMNodeList*>(list.GetData());
}
/// The node when it is an element, else null.
inline xercesc::DOMElement* AsElement(xercesc::DOMNode* node) {
    return node != nullptr && node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE
               ? static_cast<xercesc::DOMElement*>(node)
               : nullptr;
}
inline xercesc::DOMElement* AsElement(const XMLNode& node) { return AsElement(NodeOf(node)); }

inline void SetNode(XMLNode& handle, xercesc::DOMNode* node) noexcept { handle.SetData(node); }
inline void SetElement(XMLElement& handle, xercesc::DOMElement* element) noexcept {
    handle.SetData(element);
}

} // namespace vnbytstr::detail
