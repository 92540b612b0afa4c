// CRowSort: the order of the rows of a large result by the values of one column.
#pragma once

#include "vnbytstr/RowStore.h"

#include <functional>
#include <mutex>
#include <vector>

/// Where a sort gets its values from. Derive a class to sort by something else than a column, or by
/// a column of which some cells are to count as other values.
class VNBYTSTR_API CRowSortSource {
public:
    virtual ~CRowSortSource() = default;

    /// Around every up to 64 calls of the other functions, for a source that other threads use as
    /// well. Meanwhile the values are only copied; they are looked at between the calls.
    virtual void Lock() {}
    virtual void Unlock() noexcept {}
    virtual DWORD GetRowCount() = 0;
    /// The value of a row; its bytes are used before the next call.
    virtual CRowValue GetValue(DWORD row) = 0;
    /// Copies the first bytes of a long value, at most `count`; the number of bytes copied.
    virtual DWORD CopyTo(const CRowValue& value, BYTE* destination, DWORD count) = 0;
};

/// A column of a row store.
class VNBYTSTR_API CRowStoreColumn : public CRowSortSource {
public:
    /// The mutex, if there is one, is the one that every thread holds while it uses the store.
    CRowStoreColumn(CRowStore& store, int column, std::mutex* mutex = nullptr)
        : m_store(store), m_column(column), m_mutex(mutex) {}

    void Lock() override;
    void Unlock() noexcept override;
    DWORD GetRowCount() override { return m_store.GetRowCount(); }
    CRowValue GetValue(DWORD row) override { return m_store.GetValue(row, m_column); }
    DWORD CopyTo(const CRowValue& value, BYTE* destination, DWORD count) override {
        return m_store.CopyTo(value, 0, destination, count);
    }

private:
    CRowStore& m_store;
    const int m_column;
    std::mutex* const m_mutex;
};

/// Sorts rows by their values. In ascending order NULL comes first, then numbers, texts, bytes.
///
///  - Numbers of all three types compare by their exact values; 5, 5.0 and "5.00" are equal. What
///    is not a number (a NaN, a decimal text with other characters) comes after the numbers.
///  - Texts compare as the system's locale has it, ignoring case, kana type and width, down to
///    accents: as CListBoxEx sorts texts. A text whose CCSID is not the native one is translated.
///  - Bytes compare byte by byte.
///  - Of texts and bytes the first kMaxCompared bytes count; a longer decimal text is no number.
///
/// Equal rows keep their order. The descending order is the ascending one reversed, with equal rows
/// in the reverse of their order.
///
/// Every value is read once, in the order of the rows in the store, so that a store larger than its
/// cache is read from its beginning to its end. Its rows must stay as they are until then; rows
/// that are appended meanwhile are not sorted.
///
/// Memory: the new order (4 bytes a row); beside it while sorting at most 64 MiB, for less than
/// 5 million rows 12 bytes a row but 8 MiB at least; and where rows in some order are sorted,
/// 4 bytes for each row of the source. (Of texts that are thousands of bytes long, millions may
/// take a little more.) What does not fit there goes to a temporary file, by the rules of
/// CByteStore.
class VNBYTSTR_API CRowSort {
public:
    static constexpr DWORD kMaxCompared = 4096; ///< bytes of a value

    /// Called often during a sort, some tenths of a second apart at most, and without a lock of the
    /// source: how much is done, of how much. False ends the sort.
    using Progress = std::function<bool(ULONGLONG done, ULONGLONG total)>;

    /// Sorts the rows in `order`, which stand in their present order, each at most once; when it is
    /// empty, all rows of the source. False when `progress` has ended it. Then, and after an
    /// exception, `order` is as it was. CCacheException and CFileException as of CByteStore,
    /// CMemoryException; what the source throws; CCacheException(0) for a row that does not exist
    /// or occurs twice.
    static bool Sort(CRowSortSource& source, std::vector<DWORD>& order, bool descending = false,
                     const Progress& progress = {});
};
