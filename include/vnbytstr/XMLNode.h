// Handles of nodes in an XML document.
#pragma once

#include "vnbytstr/framework/Export.h"

/// Holds a pointer and owns nothing; null means nothing. A copy denotes the same.
class VNBYTSTR_API CXMLData {
public:
    CXMLData() noexcept = default;
    /// From a pointer of the parser's; null means nothing.
    explicit CXMLData(void* data) noexcept : m_data(data) {}

    /// The pointer.
    void* GetData() const noexcept { return m_data; }
    void SetData(void* data) noexcept { m_data = data; }
    /// Whether it means nothing.
    bool IsEmpty() const noexcept { return m_data == nullptr; }

private:
    void* m_data = nullptr;
};

/// Whether two handles denote the same node.
inline bool operator==(const CXMLData& left, const CXMLData& right) noexcept {
    return left.GetData() == right.GetData();
}
inline bool operator!=(const CXMLData& left, const CXMLData& right) noexcept {
    return !(left == right);
}

class XMLElement;

/// Any node: an element, a text, a comment ... It must not be used after its document has been
/// freed (see XercesWrapper.h). The pointer is a xercesc::DOMNode*.
class VNBYTSTR_API XMLNode : public CXMLData {
public:
    XMLNode() noexcept = default;
    /// From a pointer of the parser's.
    explicit XMLNode(void* node) noexcept : CXMLData(node) {}
    /// The same node.
    XMLNode(const XMLElement& element) noexcept;
};

/// An element. The pointer is a xercesc::DOMElement*.
class VNBYTSTR_API XMLElement : public CXMLData {
public:
    XMLElement() noexcept = default;
    /// From a pointer of the parser's.
    explicit XMLElement(void* element) noexcept : CXMLData(element) {}
    /// The same node; null when it is not an element.
    XMLElement(const XMLNode& node);
};

/// A list of nodes, which follows the document's changes. The pointer is a xercesc::DOMNodeList*.
class VNBYTSTR_API XMLNodeList : public CXMLData {
public:
    XMLNodeList() noexcept = default;
    /// From a pointer of the parser's.
    explicit XMLNodeList(void* list) noexcept : CXMLData(list) {}
};
