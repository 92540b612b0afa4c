// Invariants of the list:
//  1. m_head and m_tail are both null when m_count is 0, and neither is otherwise.
//  2. From m_head, m_count steps along m_next reach m_tail, whose m_next is null; each node's
//     m_previous is the node before it, null for m_head.
//  3. A POSITION is the address of a node, or null.
#include "vnbytstr/framework/StringList.h"

#include "vnbytstr/framework/Exception.h"

#include <cassert>
#include <climits>

IMPLEMENT_DYNAMIC(CStringList, CObject)

struct CStringList::Node {
    Node* m_previous;
    Node* m_next;
    CString m_text;
};

void CStringList::Check() const noexcept {
#ifndef NDEBUG
    // The ends and the count only: the whole walk would make every change linear.
    assert((m_count == 0) == (m_head == nullptr) && (m_count == 0) == (m_tail == nullptr));
    assert(m_head == nullptr || (m_head->m_previous == nullptr && m_tail->m_next == nullptr));
    assert((m_count == 1) == (m_head != nullptr && m_head == m_tail));
#endif
}

CStringList::Node* CStringList::NodeAt(POSITION position) {
    if (position == nullptr)
        AfxThrowInvalidArgException();
    return reinterpret_cast<Node*>(position);
}

POSITION CStringList::InsertBetween(Node* before, Node* after, CString text) {
    if (m_count == INT_MAX)
        AfxThrowMemoryException();
    Node* node = vnbytstr::detail::WithMemoryException([&] {
        return new Node{before, after, std::move(text)};
    });
    (before != nullptr ? before->m_next : m_head) = node;
    (after != nullptr ? after->m_previous : m_tail) = node;
    ++m_count;
    Check();
    return reinterpret_cast<POSITION>(node);
}

POSITION CStringList::AddHead(CString text) {
    return InsertBetween(nullptr, m_head, std::move(text));
}

POSITION CStringList::AddTail(CString text) {
    return InsertBetween(m_tail, nullptr, std::move(text));
}

void CStringList::AddHead(const CStringList* other) {
    if (other == nullptr)
        AfxThrowInvalidArgException();
    Node* const oldHead = m_head;
    Node* last = nullptr;
    int left = other->m_count; // counted, so that a list can be added to itself
    for (const Node* node = other->m_head; left > 0; node = node->m_next, --left)
        last = NodeAt(InsertBetween(last, oldHead, node->m_text));
}

void CStringList::AddTail(const CStringList* other) {
    if (other == nullptr)
        AfxThrowInvalidArgException();
    int left = other->m_count;
    for (const Node* node = other->m_head; left > 0; node = node->m_next, --left)
        AddTail(node->m_text);
}

CString CStringList::RemoveHead() {
    CString text = GetHead();
    RemoveAt(GetHeadPosition());
    return text;
}

CString CStringList::RemoveTail() {
    CString text = GetTail();
    RemoveAt(GetTailPosition());
    return text;
}

void CStringList::RemoveAll() noexcept {
    while (m_head != nullptr)
        delete std::exchange(m_head, m_head->m_next);
    m_tail = nullptr;
    m_count = 0;
}

POSITION CStringList::GetHeadPosition() const noexcept {
    return reinterpret_cast<POSITION>(m_head);
}

POSITION CStringList::GetTailPosition() const noexcept {
    return reinterpret_cast<POSITION>(m_tail);
}

const CString& CStringList::GetNext(POSITION& position) const {
    const Node* node = NodeAt(position);
    position = reinterpret_cast<POSITION>(node->m_next);
    return node->m_text;
}

CString& CStringList::GetNext(POSITION& position) {
    return const_cast<CString&>(std::as_const(*this).GetNext(position));
}

const CString& CStringList::GetPrev(POSITION& position) const {
    const Node* node = NodeAt(position);
    position = reinterpret_cast<POSITION>(node->m_previous);
    return node->m_text;
}

CString& CStringList::GetPrev(POSITION& position) {
    return const_cast<CString&>(std::as_const(*this).GetPrev(position));
}

const CString& CStringList::GetAt(POSITION position) const { return NodeAt(position)->m_text; }

CString& CStringList::GetAt(POSITION position) { return NodeAt(position)->m_text; }

void CStringList::SetAt(POSITION position, CString text) {
    NodeAt(position)->m_text = std::move(text);
}

void CStringList::RemoveAt(POSITION position) {
    Node* node = NodeAt(position);
    (node->m_previous != nullptr ? node->m_previous->m_next : m_head) = node->m_next;
    (node->m_next != nullptr ? node->m_next->m_previous : m_tail) = node->m_previous;
    --m_count;
    Check();
    delete node;
}

POSITION CStringList::InsertBefore(POSITION position, CString text) {
    if (position == nullptr)
        return AddHead(std::move(text));
    Node* node = NodeAt(position);
    return InsertBetween(node->m_previous, node, std::move(text));
}

POSITION CStringList::InsertAfter(POSITION position, CString text) {
    if (position == nullptr)
        return AddTail(std::move(text));
    Node* node = NodeAt(position);
    return InsertBetween(node, node->m_next, std::move(text));
}

POSITION CStringList::Find(const char* text, POSITION startAfter) const noexcept {
    const Node* node = startAfter != nullptr ? reinterpret_cast<Node*>(startAfter)->m_next : m_head;
    while (node != nullptr && node->m_text != text)
        node = node->m_next;
    return reinterpret_cast<POSITION>(const_cast<Node*>(node));
}

POSITION CStringList::FindIndex(int index) const noexcept {
    if (index < 0 || index >= m_count)
        return nullptr;
    Node* node = m_head;
    for (; index > 0; --index)
        node = node->m_next;
    return reinterpret_cast<POSITION>(node);
}
