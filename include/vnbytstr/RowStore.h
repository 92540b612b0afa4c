// CRowStore: the rows of a result of any size, partly in memory, partly in temporary swap files.
#pragma once

#include "vnbytstr/CacheException.h"
#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

#include <bit>
#include <memory>
#include <span>
#include <string_view>

namespace vnbytstr::detail {
struct RowForm;
}

/// What a value of a row is.
enum ERowValueType : BYTE {
    rowNull,
    rowInteger, ///< 64 bits with sign
    rowReal,    ///< a double
    rowDecimal, ///< a number as text, kept character by character
    rowText,    ///< text, with its CCSID
    rowBytes
};

/// A value: what is put into a row store, and what comes out of it. Light, to be passed by value.
/// It does not own the bytes of a text, a decimal number or a byte sequence.
class CRowValue {
public:
    /// NULL.
    CRowValue() = default;
    static CRowValue Integer(LONGLONG value) {
        return {rowInteger, 0, 0, static_cast<ULONGLONG>(value)};
    }
    static CRowValue Real(double value) { return {rowReal, 0, 0, std::bit_cast<ULONGLONG>(value)}; }
    /// Of bytes that stay the caller's. At most 4 GiB - 1 of them (CCacheException(6)).
    static CRowValue Decimal(std::string_view text) { return Lying(rowDecimal, 0, text); }
    /// CCSID 0 is the native one (see GetNativeCCSID), whichever that is.
    static CRowValue Text(std::string_view text, WORD ccsid = 0) {
        return Lying(rowText, ccsid, text);
    }
    static CRowValue Bytes(std::span<const BYTE> bytes) {
        return Lying(rowBytes, 0, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }

    /// What it is.
    ERowValueType GetType() const { return m_type; }
    bool IsNull() const { return m_type == rowNull; }
    /// The text's CCSID, 0 for the native one and for what is not a text.
    WORD GetCCSID() const { return m_ccsid; }
    /// In bytes; 0 for NULL, integers and reals.
    DWORD GetLength() const { return m_length; }
    /// The value of an integer.
    LONGLONG GetInteger() const { return static_cast<LONGLONG>(m_value); }
    /// The value of a real.
    double GetReal() const { return std::bit_cast<double>(m_value); }

    /// Whether the value is so long that its bytes lie apart from their row. They are then read
    /// with CRowStore::GetPiece or CopyTo. (Those work for every value that has bytes.)
    bool IsLong() const { return m_isLong; }
    /// The bytes of a value that is not long; empty for others.
    std::span<const BYTE> GetBytes() const {
        return m_isLong || m_length == 0
                   ? std::span<const BYTE>()
                   : std::span(reinterpret_cast<const BYTE*>(m_value), m_length);
    }
    std::string_view GetText() const {
        const std::span<const BYTE> bytes = GetBytes();
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }

private:
    friend class CRowStore;
    friend struct vnbytstr::detail::RowForm;
    CRowValue(ERowValueType type, WORD ccsid, DWORD length, ULONGLONG value, bool isLong = false)
        : m_type(type), m_isLong(isLong), m_ccsid(ccsid), m_length(length), m_value(value) {}
    static CRowValue Lying(ERowValueType type, WORD ccsid, std::string_view bytes) {
        if (bytes.size() > 0xFFFFFFFFu)
            throw new CCacheException(CCacheException::kTooLong);
        return {type, ccsid, static_cast<DWORD>(bytes.size()),
                reinterpret_cast<ULONGLONG>(bytes.data())};
    }

    ERowValueType m_type = rowNull;
    bool m_isLong = false;
    WORD m_ccsid = 0;
    DWORD m_length = 0;
    ULONGLONG m_value = 0; ///< the number; the address of the bytes; a long value's position
};

/// Rows of values in a fixed number of columns, of which only some pages are in memory. Rows and
/// columns count from 0. There are at most 4,294,967,295 rows; together they may be longer than
/// 4 GiB. A value has at most 4 GiB - 1 bytes.
///
/// Where the bytes lie: a row in compact form (one byte for NULL, for a small integer and for the
/// length of a short text, integers in as few bytes as they need) in pages of 32768 bytes, long
/// values (more than 4096 bytes, or what a row of more than a page would not hold) apart from them,
/// and 8 bytes a row in an index. All three are CByteStore's, with what it promises about swap
/// files: checksums, removal, forked children. There are as few files as segments of 2 GiB,
/// however many values.
///
/// Memory: the pages of the cache, which all of that shares; 16 to 32 bytes for each page of 32768
/// that is not in memory (1/4 byte for a row of 256 bytes); one row's bytes; and, once a row has
/// been deleted, 1/5 byte a row.
///
/// Exceptions: those of CByteStore, which see, and CCacheException(0) for a row or column that does
/// not exist and for calls out of order. After one the store has the rows that it had before the
/// call, with their values; the row that was being appended or updated is given up. All rows can
/// be read, even while the disk is full, and appending goes on once it has room.
///
/// Threads: one at a time. Reading is not const, since it brings pages into memory.
class VNBYTSTR_API CRowStore {
public:
    /// The most columns that a store may have.
    static constexpr int kMaxColumns = 32767;
    static constexpr DWORD kDefaultPages = 64;            ///< 2 MiB
    static constexpr DWORD kDefaultSegment = 0x8000'0000; ///< 2 GiB

    /// `cachePages` pages of 32768 bytes, at least 8, may be in memory. A swap file grows to
    /// `segmentBytes`, rounded down to pages and to 2 GiB. CCacheException(0) for less than 0 or
    /// more than kMaxColumns columns.
    explicit CRowStore(int columns, DWORD cachePages = kDefaultPages,
                       DWORD segmentBytes = kDefaultSegment);
    ~CRowStore();
    CRowStore(const CRowStore&) = delete;
    CRowStore& operator=(const CRowStore&) = delete;

    /// What the constructor was given.
    int GetColumnCount() const;
    /// A row that was begun counts once it has ended.
    DWORD GetRowCount() const;
    /// Drops all rows and their files. A row that was begun is given up.
    void Empty() noexcept;

    // --- appending -------------------------------------------------------------------------------
    // BeginRow, the values from left to right, EndRow. The bytes given are copied, and may be those
    // of a value of this store, or a piece of one.

    /// Gives up a row that was begun and not ended.
    void BeginRow();
    /// Of the values that came out of a store not those that are long (CCacheException(0)): go
    /// through their pieces.
    void Append(const CRowValue& value);
    void AppendNull();
    void AppendInteger(LONGLONG value);
    void AppendReal(double value);
    void AppendDecimal(std::string_view text) { Append(CRowValue::Decimal(text)); }
    void AppendText(std::string_view text, WORD ccsid = 0) { Append(CRowValue::Text(text, ccsid)); }
    void AppendBytes(std::span<const BYTE> bytes) { Append(CRowValue::Bytes(bytes)); }
    /// A value in pieces, whose length need not be known: a decimal number, a text or bytes.
    void BeginValue(ERowValueType type, WORD ccsid = 0);
    void AppendPiece(std::span<const BYTE> bytes);
    void EndValue();
    /// The columns that have got no value are NULL.
    void EndRow();
    /// Gives the row up, if one was begun; for an update, the new value.
    void CancelRow() noexcept;

    // --- reading ---------------------------------------------------------------------------------

    /// A value. The bytes of one that is not long are valid until the next call that is not
    /// GetValue of the same row: those of a whole row may be used together. A long value stays
    /// readable until it is updated, its row deleted or the store emptied. Columns are best read
    /// from left to right.
    CRowValue GetValue(DWORD row, int column);
    /// The bytes of a value of this store from `offset` on that lie together; empty at its end.
    /// Valid until the next call.
    std::span<const BYTE> GetPiece(const CRowValue& value, DWORD offset);
    /// Copies up to `count` bytes from `offset` on; the number of bytes copied.
    DWORD CopyTo(const CRowValue& value, DWORD offset, BYTE* destination, DWORD count);

    // --- editing ---------------------------------------------------------------------------------
    // Not while a row is being appended. The room that old values took is not used again until the
    // store is emptied, unless the new form of a row fits there.

    void UpdateValue(DWORD row, int column, const CRowValue& value);
    /// The same for a value in pieces: BeginUpdate, BeginValue ... EndValue, EndUpdate.
    void BeginUpdate(DWORD row, int column);
    void EndUpdate();
    /// The rows after it move up by one. Takes some nanoseconds for each 512 rows after it.
    void DeleteRow(DWORD row);

    // --- memory ----------------------------------------------------------------------------------

    /// Writes what is in memory to the swap files and gives the memory of the pages back; they come
    /// back when they are needed. For a result that is kept but not in use.
    void ReleasePages();
    /// Pages in memory now.
    DWORD GetResidentPageCount() const;

private:
    struct State;

    std::unique_ptr<State> m_state;
};
