// The compact form of a row's values: a code, perhaps what belongs to it, and the bytes.
//
//   00        NULL
//   01 - 08   integer of 1 to 8 bytes, two's complement, the lowest first
//   09        real, 8 bytes as in memory
//   0A        decimal number: length, bytes
//   0B        bytes: length, bytes
//   0C        text in the native CCSID: length, bytes
//   0D        text: CCSID (2 bytes), length, bytes
//   0E        long value: type (1), CCSID (2), position (8), length (4)
//   10 - 3F   integer from -1 to 46
//   40 - 5F   decimal number of 0 to 31 bytes
//   60 - 7F   bytes, 0 to 31 of them
//   80 - FF   text of 0 to 127 bytes in the native CCSID
//
// A length is written in 7 bits a byte, the lowest first; the highest bit says that another byte
// follows. The form lives in the memory and the swap files of one process.
#pragma once

#include "vnbytstr/RowStore.h"

#include <bit>
#include <cstring>
#include <utility>

namespace vnbytstr::detail {

/// Reads and writes the form.
struct RowForm {
    static constexpr std::size_t kMaxHead = 16; ///< bytes before those of the value, at most

    /// The codes.
    enum : BYTE {
        kNull = 0x00,
        kReal = 0x09,
        kDecimal = 0x0A,
        kBytes = 0x0B,
        kText = 0x0C,
        kTextOfCcsid = 0x0D,
        kLong = 0x0E,
        kSmall = 0x11, ///< the integer 0
        kLeastSmall = 0x10,
        kShortDecimal = 0x40,
        kShortBytes = 0x60,
        kShortText = 0x80
    };

    // Each returns where it has stopped writing.
    static BYTE* PutInteger(BYTE* at, LONGLONG value) {
        if (value >= -1 && value < kShortDecimal - kSmall) {
            *at = static_cast<BYTE>(kSmall + value);
            return at + 1;
        }
        const auto bytes =
            static_cast<int>(std::bit_width(static_cast<ULONGLONG>(value ^ (value >> 63))) / 8 + 1);
        *at++ = static_cast<BYTE>(bytes);
        if constexpr (std::endian::native == std::endian::little) {
            std::memcpy(at, &value, 8); // there is room; the next value goes over what is too much
        } else {
            for (int i = 0; i < bytes; ++i)
                at[i] = static_cast<BYTE>(value >> (i * 8));
        }
        return at + bytes;
    }
    static BYTE* PutReal(BYTE* at, double value) {
        *at = kReal;
        std::memcpy(at + 1, &value, 8);
        return at + 9;
    }
    /// What comes before the bytes of a decimal number, a text or bytes.
    static BYTE* PutHead(BYTE* at, ERowValueType type, WORD ccsid, DWORD length) {
        const BYTE shortCode = type == rowText      ? kShortText
                               : type == rowDecimal ? kShortDecimal
                                                    : kShortBytes;
        const DWORD shorts = type == rowText ? 128 : 32;
        if (length < shorts && ccsid == 0) {
            *at = static_cast<BYTE>(shortCode + length);
            return at + 1;
        }
        *at++ = type == rowDecimal ? kDecimal
                : type == rowBytes ? kBytes
                : ccsid == 0       ? kText
                                   : kTextOfCcsid;
        if (ccsid != 0) {
            std::memcpy(at, &ccsid, 2);
            at += 2;
        }
        for (; length >= 0x80; length >>= 7)
            *at++ = static_cast<BYTE>(length | 0x80);
        *at++ = static_cast<BYTE>(length);
        return at;
    }
    static BYTE* PutLong(BYTE* at, ERowValueType type, WORD ccsid, ULONGLONG position,
                         DWORD length) {
        *at++ = kLong;
        *at++ = type;
        std::memcpy(at, &ccsid, 2);
        std::memcpy(at + 2, &position, 8);
        std::memcpy(at + 10, &length, 4);
        return at + 14;
    }

    /// The value at `at`, and where the next one begins.
    static std::pair<CRowValue, const BYTE*> Read(const BYTE* at) {
        const BYTE code = *at++;
        if (code >= kShortText)
            return Lying(rowText, 0, code - DWORD{kShortText}, at);
        if (code >= kShortDecimal)
            return code >= kShortBytes ? Lying(rowBytes, 0, code - DWORD{kShortBytes}, at)
                                       : Lying(rowDecimal, 0, code - DWORD{kShortDecimal}, at);
        if (code >= kLeastSmall)
            return {CRowValue::Integer(code - kSmall), at};
        return ReadOther(code, at);
    }

private:
    static std::pair<CRowValue, const BYTE*> Lying(ERowValueType type, WORD ccsid, DWORD length,
                                                   const BYTE* at) {
        return {CRowValue(type, ccsid, length, reinterpret_cast<ULONGLONG>(at)), at + length};
    }
    static std::pair<CRowValue, const BYTE*> ReadOther(BYTE code, const BYTE* at) {
        switch (code) {
        case kNull:
            return {CRowValue(), at};
        case kReal:
            return {CRowValue(rowReal, 0, 0, Get<ULONGLONG>(at)), at + 8};
        case kDecimal:
        case kBytes:
        case kText: {
            const DWORD length = ReadLength(at);
            const ERowValueType type = code == kText    ? rowText
                                       : code == kBytes ? rowBytes
                                                        : rowDecimal;
            return Lying(type, 0, length, at);
        }
        case kTextOfCcsid: {
            const WORD ccsid = Get<WORD>(at);
            at += 2;
            const DWORD length = ReadLength(at);
            return Lying(rowText, ccsid, length, at);
        }
        case kLong:
            return {CRowValue(static_cast<ERowValueType>(*at), Get<WORD>(at + 1),
                              Get<DWORD>(at + 11), Get<ULONGLONG>(at + 3), true),
                    at + 15};
        default:
            break;
        }
        auto value =
            static_cast<ULONGLONG>(static_cast<LONGLONG>(static_cast<signed char>(at[code - 1])));
        for (int i = code - 2; i >= 0; --i)
            value = value << 8 | at[i];
        return {CRowValue::Integer(static_cast<LONGLONG>(value)), at + code};
    }
    static DWORD ReadLength(const BYTE*& at) {
        DWORD length = 0;
        for (int shift = 0;; shift += 7) {
            const BYTE byte = *at++;
            length |= static_cast<DWORD>(byte & 0x7F) << shift;
            if (byte < 0x80)
                return length;
        }
    }
    template <class Number>
    static Number Get(const BYTE* at) {
        Number number;
        std::memcpy(&number, at, sizeof number);
        return number;
    }
};

} // namespace vnbytstr::detail
