#include "vnbytstr/XMLNode.h"

#include "src/xml/NodePointers.h"

using vnbytstr::detail::ElementOf;
using vnbytstr::detail::NodeOf;

XMLNode::XMLNode(const XMLElement& element) noexcept
    : CXMLData(static_cast<xercesc::DOMNode*>(ElementOf(element))) {}

XMLElement::XMLElement(const XMLNode& node) : CXMLData(vnbytstr::detail::AsElement(NodeOf(node))) {}
