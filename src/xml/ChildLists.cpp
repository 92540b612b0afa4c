// Invariants of ChildLists:
//   1. All nodes and lists in m_origins and m_found belong to m_document.
//   2. When m_changes is the document's count of changes, the nodes of each Found are the first
//      matching children of its parent, in order, and `last` is no earlier child than any of them.
#include "src/xml/ChildLists.h"

#include <xercesc/dom/impl/DOMDocumentImpl.hpp>

#include <cstdint>
#include <limits>

namespace vnbytstr::detail {

using xercesc::DOMElement;
using xercesc::DOMNode;
using xercesc::DOMNodeList;

namespace {

int ChangesOf(const xercesc::DOMDocument* document) {
    return static_cast<const xercesc::DOMDocumentImpl*>(document)->changes();
}

bool IsWithin(const DOMNode* node, const DOMNode* root) {
    while (node != nullptr && node != root)
        node = node->getParentNode();
    return node != nullptr;
}

/// `tag` null: every node.
bool Matches(const DOMNode* node, const std::u16string* tag) {
    return tag == nullptr || (node->getNodeType() == DOMNode::ELEMENT_NODE &&
                              (*tag == u"*" || *tag == node->getNodeName()));
}

} // namespace

std::size_t ChildLists::QuestionHash::operator()(const Question& question) const noexcept {
    const auto parent = reinterpret_cast<std::uintptr_t>(question.parent);
    const auto list = reinterpret_cast<std::uintptr_t>(question.list);
    return static_cast<std::size_t>((parent * 0x9E3779B97F4A7C15u) ^ (list >> 4));
}

void ChildLists::Reset(const xercesc::DOMDocument* document) {
    m_origins.clear();
    m_found.clear();
    m_document = document;
    m_sawOthersChange = false;
    m_changes = document != nullptr ? ChangesOf(document) : 0;
}

void ChildLists::Remember(const DOMNodeList* list, const DOMElement* root, const char16_t* tag) {
    if (m_document != nullptr && root->getOwnerDocument() == m_document)
        m_origins.try_emplace(list, Origin{root, tag});
}

std::size_t ChildLists::Count(const DOMElement* parent, const DOMNodeList* list) {
    const std::u16string* tag = nullptr;
    if (IsKnown(parent, list, tag))
        return Find(parent, list, tag, std::numeric_limits<std::size_t>::max()).nodes.size();
    std::size_t count = 0;
    for (XMLSize_t i = 0; const DOMNode* node = list->item(i); ++i)
        count += node->getParentNode() == parent;
    return count;
}

DOMNode* ChildLists::Item(const DOMElement* parent, const DOMNodeList* list, std::size_t index) {
    const std::u16string* tag = nullptr;
    if (IsKnown(parent, list, tag)) {
        const Found& found = Find(parent, list, tag, index + 1);
        return index < found.nodes.size() ? found.nodes[index] : nullptr;
    }
    for (XMLSize_t i = 0; DOMNode* node = list->item(i); ++i) {
        if (node->getParentNode() == parent && index-- == 0)
            return node;
    }
    return nullptr;
}

void ChildLists::EndChange() {
    if (m_document != nullptr)
        m_changes = ChangesOf(m_document);
}

void ChildLists::Synchronize() {
    if (m_document != nullptr && m_changes != ChangesOf(m_document)) {
        m_found.clear();
        m_changes = ChangesOf(m_document);
        m_sawOthersChange = true;
    }
}

/// Whether the matching children can be found without the list: it is one by a tag whose root
/// contains the parent, or the parent's own children (`tag` is null then).
bool ChildLists::IsKnown(const DOMElement* parent, const DOMNodeList* list,
                         const std::u16string*& tag) const {
    if (m_document == nullptr || parent->getOwnerDocument() != m_document)
        return false;
    const auto origin = m_origins.find(list);
    if (origin == m_origins.end())
        return list == parent->getChildNodes();
    tag = &origin->second.tag;
    return IsWithin(parent, origin->second.root);
}

ChildLists::Found& ChildLists::Find(const DOMElement* parent, const DOMNodeList* list,
                                    const std::u16string* tag, std::size_t wanted) {
    Synchronize();
    if (m_found.size() >= kMaxFound && !m_found.contains({parent, list}))
        m_found.clear();
    Found& found = m_found[{parent, list}];
    while (found.nodes.size() < wanted) {
        DOMNode* const next =
            found.last != nullptr ? found.last->getNextSibling() : parent->getFirstChild();
        if (next == nullptr)
            break;
        if (Matches(next, tag))
            found.nodes.push_back(next);
        found.last = next;
    }
    return found;
}

} // namespace vnbytstr::detail
