// CArchive, the framework's buffered binary stream over a CFile.
#pragma once

#include "vnbytstr/framework/File.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <bit>
#include <concepts>
#include <cstring>
#include <memory>

namespace vnbytstr::detail {

template <class T>
inline constexpr bool kIsInt = std::same_as<T, int> || std::same_as<T, unsigned>;
/// int or unsigned, where neither is what LONG and DWORD are.
template <class T>
concept PlainInteger = kIsInt<T> && !std::same_as<T, LONG> && !std::same_as<T, DWORD>;

} // namespace vnbytstr::detail

/// Writes values to a file, or reads them back, through a buffer. Numbers are stored little-endian,
/// on every machine.
///
/// Errors are thrown: CArchiveException with cause readOnly (writing to an archive opened for
/// loading), writeOnly (the other way round), endOfFile (fewer bytes than asked for; the variable
/// to be read is unchanged, the position undefined), badSchema and badIndex (a string
/// in a form this library does not write); what the file throws passes through. After a failed
/// write what reached the file is undefined: Abort the archive. One archive, one thread at a time.
class VNBYTSTR_API CArchive {
public:
    /// What the archive is for.
    enum Mode {
        store = 0,
        load = 1,
        bNoFlushOnDelete = 2 ///< with store: the destructor writes nothing
    };

    /// Works on `file`, which the caller owns and which must be open and outlive the archive's use.
    /// `bufferSize` is in bytes. The buffer is `buffer`, which the caller owns, or one made here
    /// when that is null or smaller than 128 bytes. A null file throws CInvalidArgException.
    CArchive(CFile* file, UINT mode, int bufferSize = 4096, void* buffer = nullptr);
    /// As Close unless bNoFlushOnDelete is set; but an error is lost, and nothing is written after
    /// an earlier error, so call Close.
    ~CArchive();
    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;

    /// Which of the two it is for.
    bool IsLoading() const noexcept { return (m_mode & load) != 0; }
    bool IsStoring() const noexcept { return !IsLoading(); }
    /// The file, null after Close or Abort. Its position is the archive's only after Flush.
    CFile* GetFile() const noexcept { return m_file; }

    /// Reads up to `count` bytes; returns how many there were, fewer only at the end of the file.
    UINT Read(void* buffer, UINT count);
    void Write(const void* buffer, UINT count);
    /// Storing: writes what is buffered to the file. Loading: forgets what is buffered and moves
    /// the file back to the archive's position.
    void Flush();
    /// Flushes and detaches the file (without closing it); does nothing the second time. After an
    /// error the file stays attached.
    void Close();
    /// Detaches the file without writing; throws nothing.
    void Abort() noexcept;

    /// A value's bytes, the least significant first.
    CArchive& operator<<(BYTE value) { return Put(value); }
    CArchive& operator<<(char value) { return Put(value); }
    CArchive& operator<<(WORD value) { return Put(value); }
    CArchive& operator<<(short value) { return Put(value); }
    CArchive& operator<<(DWORD value) { return Put(value); }
    CArchive& operator<<(LONG value) { return Put(value); }
    /// int and unsigned, where they are not what LONG and DWORD are (Windows): 4 bytes, too.
    template <vnbytstr::detail::PlainInteger Number>
    CArchive& operator<<(Number value) {
        return Put(static_cast<DWORD>(value));
    }
    CArchive& operator<<(ULONGLONG value) { return Put(value); }
    CArchive& operator<<(LONGLONG value) { return Put(value); }
    CArchive& operator<<(float value) { return Put(std::bit_cast<DWORD>(value)); }
    CArchive& operator<<(double value) { return Put(std::bit_cast<ULONGLONG>(value)); }
    /// The length, then the bytes. A length below 0xFF is one byte; below 0xFFFE it is 0xFF and two
    /// bytes; else 0xFF 0xFF 0xFF and four bytes.
    CArchive& operator<<(const CString& text);

    /// A value as it was written.
    CArchive& operator>>(BYTE& value) { return Get(value); }
    CArchive& operator>>(char& value) { return Get(value); }
    CArchive& operator>>(WORD& value) { return Get(value); }
    CArchive& operator>>(short& value) { return Get(value); }
    CArchive& operator>>(DWORD& value) { return Get(value); }
    CArchive& operator>>(LONG& value) { return Get(value); }
    template <vnbytstr::detail::PlainInteger Number>
    CArchive& operator>>(Number& value) {
        return Get(value);
    }
    CArchive& operator>>(ULONGLONG& value) { return Get(value); }
    CArchive& operator>>(LONGLONG& value) { return Get(value); }
    CArchive& operator>>(float& value) {
        DWORD bits;
        Get(bits);
        value = std::bit_cast<float>(bits);
        return *this;
    }
    /// A value as it was written.
    CArchive& operator>>(double& value) {
        ULONGLONG bits;
        Get(bits);
        value = std::bit_cast<double>(bits);
        return *this;
    }
    /// Memory grows with what really arrives, whatever the length says. The form for wide
    /// characters (0xFF 0xFE 0xFF) is refused with badSchema, a length past INT_MAX with badIndex.
    CArchive& operator>>(CString& text);

    /// Reads a line, without its end: a line feed, a carriage return, or both in this order. FALSE,
    /// with `line` empty, when there is nothing more.
    BOOL ReadString(CString& line);
    /// Writes the bytes of `text`, without an end of line or a NUL.
    void WriteString(const char* text);

private:
    template <class T>
    static T LittleEndian(T value) noexcept {
        if constexpr (std::endian::native == std::endian::big) {
            auto* bytes = reinterpret_cast<BYTE*>(&value);
            for (std::size_t i = 0; i < sizeof(T) / 2; ++i)
                std::swap(bytes[i], bytes[sizeof(T) - 1 - i]);
        }
        return value;
    }
    template <class T>
    CArchive& Put(T value) {
        value = LittleEndian(value);
        if (IsStoring() && m_size - m_current >= sizeof value) {
            std::memcpy(m_buffer + m_current, &value, sizeof value);
            m_current += static_cast<UINT>(sizeof value);
        } else {
            Write(&value, sizeof value);
        }
        return *this;
    }
    template <class T>
    CArchive& Get(T& value) {
        T found;
        if (IsLoading() && m_end - m_current >= sizeof found) {
            std::memcpy(&found, m_buffer + m_current, sizeof found);
            m_current += static_cast<UINT>(sizeof found);
        } else {
            ReadAll(&found, sizeof found);
        }
        value = LittleEndian(found);
        return *this;
    }
    void ReadAll(void* buffer, UINT count);
    DWORD ReadLength();
    bool Fill();
    void WriteOut(const void* data, UINT count);
    void CheckMode(bool loading) const;
    [[noreturn]] void Throw(int cause) const;
    void Check() const noexcept;

    CFile* m_file;
    UINT m_mode;
    std::unique_ptr<BYTE[]> m_own;
    BYTE* m_buffer = nullptr;
    UINT m_size = 0;    ///< of the buffer
    UINT m_current = 0; ///< next place in it to write or to read
    UINT m_end = 0;     ///< loading: end of what was read
    bool m_failed = false;
};
