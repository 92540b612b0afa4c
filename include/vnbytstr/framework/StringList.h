// CStringList, the framework's list of strings.
#pragma once

#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"

/// A place in a list; null means no place.
struct CollectionPosition;
using POSITION = CollectionPosition*;

/// A list that can be walked both ways. A position stays valid until its own element is removed.
/// A null position, and the head or tail of an empty list, throws CInvalidArgException. One list,
/// one thread at a time.
class VNBYTSTR_API CStringList : public CObject {
    DECLARE_DYNAMIC(CStringList)
public:
    CStringList() = default;
    ~CStringList() override { RemoveAll(); }

    /// How many strings there are.
    int GetCount() const noexcept { return m_count; }
    bool IsEmpty() const noexcept { return m_count == 0; }

    /// The string at one end. CInvalidArgException when the list is empty.
    const CString& GetHead() const { return GetAt(GetHeadPosition()); }
    CString& GetHead() { return GetAt(GetHeadPosition()); }
    const CString& GetTail() const { return GetAt(GetTailPosition()); }
    CString& GetTail() { return GetAt(GetTailPosition()); }

    /// Puts a string at one end. Returns its position.
    POSITION AddHead(CString text);
    POSITION AddTail(CString text);
    /// Puts copies of all strings of `other` (this list too) at one end, in their order.
    void AddHead(const CStringList* other);
    void AddTail(const CStringList* other);
    /// Removes the string at one end and returns it.
    CString RemoveHead();
    CString RemoveTail();
    void RemoveAll() noexcept;

    /// Null when the list is empty.
    POSITION GetHeadPosition() const noexcept;
    POSITION GetTailPosition() const noexcept;
    /// The string at `position`, which moves on to the next (null after the last).
    const CString& GetNext(POSITION& position) const;
    CString& GetNext(POSITION& position);
    /// The string at `position`, which moves back to the one before (null before the first).
    const CString& GetPrev(POSITION& position) const;
    CString& GetPrev(POSITION& position);

    /// The string at `position`, which must be one of this list.
    const CString& GetAt(POSITION position) const;
    CString& GetAt(POSITION position);
    /// Replaces the string at `position`.
    void SetAt(POSITION position, CString text);
    /// Removes the string at `position`, which is no position from then on.
    void RemoveAt(POSITION position);
    /// Puts a string beside `position`; null: at the head (before) or the tail (after). Returns the
    /// new position.
    POSITION InsertBefore(POSITION position, CString text);
    POSITION InsertAfter(POSITION position, CString text);

    /// Position of the first string equal to `text` after `startAfter` (null: from the head); null
    /// when no string is equal.
    POSITION Find(const char* text, POSITION startAfter = nullptr) const noexcept;
    /// Position of the string at an index, from 0; null when the list is shorter.
    POSITION FindIndex(int index) const noexcept;

private:
    struct Node;
    static Node* NodeAt(POSITION position);
    POSITION InsertBetween(Node* before, Node* after, CString text);
    void Check() const noexcept;

    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    int m_count = 0;
};
