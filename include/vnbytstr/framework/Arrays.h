// The framework's arrays: CObArray, CPtrArray, CStringArray, CByteArray, CWordArray, CDWordArray,
// CUIntArray.
#pragma once

#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace vnbytstr::detail {

/// What all arrays share. An array of pointers does not own what they point to.
///
/// Sizes and counts are in elements; indexes count from 0. An index that names no element, and a
/// negative size or count, throws CInvalidArgException; when memory runs out, CMemoryException is
/// thrown. Either leaves the array as it was. References and the pointer of GetData stay
/// valid until the size changes. One array, one thread at a time.
template <class T>
class VNBYTSTR_API ArrayBase : public CObject {
public:
    int GetSize() const noexcept { return static_cast<int>(m_elements.size()); }
    int GetCount() const noexcept { return GetSize(); }
    bool IsEmpty() const noexcept { return m_elements.empty(); }
    /// The last index; -1 when the array is empty.
    int GetUpperBound() const noexcept { return GetSize() - 1; }
    /// Cuts the array, or lengthens it with zero, null or empty elements. `growBy`, unless -1, is
    /// the least number of elements to add room for when the array grows later; without it the
    /// capacity doubles.
    void SetSize(int size, int growBy = -1);

    /// Frees memory that the elements do not need.
    void FreeExtra() {
        WithMemoryException([&] { m_elements.shrink_to_fit(); });
    }
    /// Removes all elements and gives their memory back.
    void RemoveAll() noexcept { std::vector<T>().swap(m_elements); }

    const T& GetAt(int index) const { return m_elements[Checked(index)]; }
    void SetAt(int index, T value) { m_elements[Checked(index)] = std::move(value); }
    const T& operator[](int index) const { return m_elements[Checked(index)]; }
    T& operator[](int index) { return m_elements[Checked(index)]; }
    /// The elements, contiguous; may be null when the array is empty.
    const T* GetData() const noexcept { return m_elements.data(); }
    T* GetData() noexcept { return m_elements.data(); }

    /// Sets an element; an index past the end lengthens the array up to it.
    void SetAtGrow(int index, T value);
    /// Puts an element at the end. Returns its index.
    int Add(T value);
    /// Puts all elements of `other` (this array too) at the end. Returns the index of the first.
    int Append(const ArrayBase& other) {
        const int first = GetSize();
        InsertAt(first, &other);
        return first;
    }
    /// Exchanges the elements of two arrays. Extension.
    void Swap(ArrayBase& other) noexcept {
        m_elements.swap(other.m_elements);
        std::swap(m_growBy, other.m_growBy);
    }
    /// Makes this array equal to `other`.
    void Copy(const ArrayBase& other) {
        WithMemoryException([&] { m_elements = other.m_elements; });
    }
    /// Puts `count` times `value` in before `index`; past the end the array is lengthened first.
    void InsertAt(int index, T value, int count = 1);
    /// Puts all elements of `other` in before `index`; past the end the array is lengthened first.
    void InsertAt(int index, const ArrayBase* other);
    /// Removes `count` elements from `index` on; all of them must be there.
    void RemoveAt(int index, int count = 1);

private:
    static constexpr std::size_t kMaxSize = 0x7FFFFFFF;

    std::size_t Checked(int index) const {
        const auto at = static_cast<std::size_t>(static_cast<unsigned>(index));
        if (at >= m_elements.size()) [[unlikely]]
            AfxThrowInvalidArgException();
        return at;
    }
    static std::size_t NotNegative(int number) {
        if (number < 0)
            AfxThrowInvalidArgException();
        return static_cast<std::size_t>(number);
    }
    void MakeRoom(std::size_t size);

    std::vector<T> m_elements;
    std::size_t m_growBy = 0;
};

template <class T>
void ArrayBase<T>::MakeRoom(std::size_t size) {
    if (size > kMaxSize)
        AfxThrowMemoryException();
    const std::size_t room = m_elements.capacity();
    if (size > room)
        WithMemoryException(
            [&] { m_elements.reserve((std::max)(size, room + (std::max)(room, m_growBy))); });
}

template <class T>
void ArrayBase<T>::SetSize(int size, int growBy) {
    const std::size_t wanted = NotNegative(size);
    if (growBy != -1)
        m_growBy = NotNegative(growBy);
    MakeRoom(wanted);
    m_elements.resize(wanted);
}

template <class T>
void ArrayBase<T>::SetAtGrow(int index, T value) {
    const std::size_t at = NotNegative(index);
    if (at >= m_elements.size()) {
        MakeRoom(at + 1);
        m_elements.resize(at + 1);
    }
    m_elements[at] = std::move(value);
}

template <class T>
int ArrayBase<T>::Add(T value) {
    MakeRoom(m_elements.size() + 1);
    m_elements.push_back(std::move(value));
    return GetUpperBound();
}

template <class T>
void ArrayBase<T>::InsertAt(int index, T value, int count) {
    const std::size_t at = NotNegative(index);
    const std::size_t added = NotNegative(count);
    if (added == 0)
        return;
    MakeRoom((std::max)(at, m_elements.size()) + added);
    if (at > m_elements.size())
        m_elements.resize(at);
    m_elements.insert(m_elements.begin() + index, added, value);
}

template <class T>
void ArrayBase<T>::InsertAt(int index, const ArrayBase* other) {
    const std::size_t at = NotNegative(index);
    if (other == nullptr)
        AfxThrowInvalidArgException();
    if (other->IsEmpty())
        return;
    if (other == this) {
        const std::vector<T> copy = WithMemoryException([&] { return m_elements; });
        MakeRoom((std::max)(at, m_elements.size()) + copy.size());
        if (at > m_elements.size())
            m_elements.resize(at);
        m_elements.insert(m_elements.begin() + index, copy.begin(), copy.end());
        return;
    }
    MakeRoom((std::max)(at, m_elements.size()) + other->m_elements.size());
    if (at > m_elements.size())
        m_elements.resize(at);
    m_elements.insert(m_elements.begin() + index, other->m_elements.begin(),
                      other->m_elements.end());
}

template <class T>
void ArrayBase<T>::RemoveAt(int index, int count) {
    const std::size_t at = NotNegative(index);
    const std::size_t removed = NotNegative(count);
    if (at > m_elements.size() || removed > m_elements.size() - at)
        AfxThrowInvalidArgException();
    m_elements.erase(m_elements.begin() + index, m_elements.begin() + index + count);
}

} // namespace vnbytstr::detail

/// Array of pointers to objects, which it does not own.
class VNBYTSTR_API CObArray : public vnbytstr::detail::ArrayBase<CObject*> {
    DECLARE_DYNAMIC(CObArray)
};

/// Array of pointers to anything, which it does not own.
class VNBYTSTR_API CPtrArray : public vnbytstr::detail::ArrayBase<void*> {
    DECLARE_DYNAMIC(CPtrArray)
};

class VNBYTSTR_API CStringArray : public vnbytstr::detail::ArrayBase<CString> {
    DECLARE_DYNAMIC(CStringArray)
};

class VNBYTSTR_API CByteArray : public vnbytstr::detail::ArrayBase<BYTE> {
    DECLARE_DYNAMIC(CByteArray)
};

class VNBYTSTR_API CWordArray : public vnbytstr::detail::ArrayBase<WORD> {
    DECLARE_DYNAMIC(CWordArray)
};

class VNBYTSTR_API CDWordArray : public vnbytstr::detail::ArrayBase<DWORD> {
    DECLARE_DYNAMIC(CDWordArray)
};

class VNBYTSTR_API CUIntArray : public vnbytstr::detail::ArrayBase<UINT> {
    DECLARE_DYNAMIC(CUIntArray)
};
