#include "src/charset/CcsidKernels.h"

#include "src/os/CpuKernel.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vnbytstr::detail {

namespace {

constexpr std::uint64_t kHighBits = 0x8080808080808080u;

/// Copies 8 bytes when all are ASCII and there is room; the test is the same on every machine.
bool CopyEightAscii(const BYTE* in, const BYTE* inEnd, BYTE* out, const BYTE* outEnd) noexcept {
    if (inEnd - in < 8 || outEnd - out < 8)
        return false;
    std::uint64_t eight;
    std::memcpy(&eight, in, 8);
    if (eight & kHighBits)
        return false;
    std::memcpy(out, &eight, 8);
    return true;
}

bool IsTrail(BYTE byte) noexcept { return (byte & 0xC0) == 0x80; }

KernelStep Progress(std::span<const BYTE> in, const BYTE* p, std::span<BYTE> out, const BYTE* q) {
    return {static_cast<std::size_t>(p - in.data()), static_cast<std::size_t>(q - out.data())};
}

/// One UTF-16 unit in the form wanted; null when there is no room.
template <WideForm kForm>
BYTE* PutUnit(char16_t unit, BYTE* q, const BYTE* end) noexcept {
    const auto low = static_cast<BYTE>(unit), high = static_cast<BYTE>(unit >> 8);
    if constexpr (kForm != WideForm::Utf8) {
        if (end - q < 2)
            return nullptr;
        q[0] = kForm == WideForm::LittleEndian ? low : high;
        q[1] = kForm == WideForm::LittleEndian ? high : low;
        return q + 2;
    } else {
        const std::ptrdiff_t length = unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
        if (end - q < length)
            return nullptr;
        if (length == 1) {
            q[0] = low;
        } else if (length == 2) {
            q[0] = static_cast<BYTE>(0xC0 | (unit >> 6));
            q[1] = static_cast<BYTE>(0x80 | (unit & 0x3F));
        } else {
            q[0] = static_cast<BYTE>(0xE0 | (unit >> 12));
            q[1] = static_cast<BYTE>(0x80 | ((unit >> 6) & 0x3F));
            q[2] = static_cast<BYTE>(0x80 | (unit & 0x3F));
        }
        return q + length;
    }
}

template <WideForm kForm>
KernelStep DoubleBytes(const DoubleByteTable& table, std::span<const BYTE> in,
                       std::span<BYTE> out) noexcept {
    const BYTE* p = in.data();
    const BYTE* const end = p + in.size();
    BYTE* q = out.data();
    const BYTE* const limit = q + out.size();
    while (p < end) {
        char16_t unit = table.single[*p];
        std::ptrdiff_t length = 1;
        if (table.isLead[*p]) {
            if (end - p < 2)
                break;
            unit = table.pair[static_cast<std::size_t>(p[0]) << 8 | p[1]];
            length = 2;
        }
        BYTE* const next =
            unit == DoubleByteTable::kNone ? nullptr : PutUnit<kForm>(unit, q, limit);
        if (!next)
            break;
        q = next;
        p += length;
    }
    return Progress(in, p, out, q);
}

} // namespace

std::size_t MapBytesPlain(const ByteTable& table, const BYTE* in, BYTE* out,
                          std::size_t size) noexcept {
    std::size_t i = 0;
    for (; i + 16 <= size; i += 16) {
        bool gap = false;
        for (std::size_t k = i; k < i + 16; ++k) {
            out[k] = table.to[in[k]];
            gap |= out[k] == table.gap;
        }
        if (gap && table.hasGaps)
            break;
    }
    for (; i < size; ++i) {
        const BYTE byte = table.to[in[i]];
        if (byte == table.gap && table.hasGaps)
            break;
        out[i] = byte;
    }
    return i;
}

KernelStep BytesToUtf8Plain(const ByteToUtf8Table& table, std::span<const BYTE> in,
                            std::span<BYTE> out) noexcept {
    const BYTE* p = in.data();
    const BYTE* const end = p + in.size();
    BYTE* q = out.data();
    const BYTE* const limit = q + out.size();
    while (p < end) {
        if (table.asciiIsAscii && CopyEightAscii(p, end, q, limit)) {
            p += 8;
            q += 8;
            continue;
        }
        const std::array<BYTE, 4>& sequence = table.bytes[*p];
        const std::ptrdiff_t length = sequence[3];
        if (length == 0 || limit - q < length)
            break;
        if (limit - q >= 4)
            std::memcpy(q, sequence.data(), 4); // one store, whatever the length
        else
            std::copy_n(sequence.data(), length, q);
        q += length;
        ++p;
    }
    return Progress(in, p, out, q);
}

KernelStep Utf8ToBytesPlain(const Utf8ToByteTable& table, std::span<const BYTE> in,
                            std::span<BYTE> out) noexcept {
    const BYTE* p = in.data();
    const BYTE* const end = p + in.size();
    BYTE* q = out.data();
    const BYTE* const limit = q + out.size();
    while (p < end && q < limit) {
        if (table.asciiIsAscii && CopyEightAscii(p, end, q, limit)) {
            p += 8;
            q += 8;
            continue;
        }
        WORD value = Utf8ToByteTable::kNone;
        std::ptrdiff_t length = 1;
        if (*p < 0x80) {
            value = table.below800[*p];
        } else if (*p >= 0xC2 && *p < 0xE0) {
            length = 2;
            if (end - p >= 2 && IsTrail(p[1]))
                value = table.below800[static_cast<std::size_t>((*p & 0x1F) << 6 | (p[1] & 0x3F))];
        } else if (*p >= 0xE0 && *p < 0xF0) {
            length = 3; // no block holds what is overlong or a surrogate
            if (end - p >= 3 && IsTrail(p[1]) && IsTrail(p[2]))
                value = table.blocks[table.block[static_cast<std::size_t>(
                    (*p & 0x0F) << 6 | (p[1] & 0x3F))]][p[2] & 0x3F];
        }
        if (value == Utf8ToByteTable::kNone)
            break;
        *q++ = static_cast<BYTE>(value);
        p += length;
    }
    return Progress(in, p, out, q);
}

KernelStep DoubleBytesPlain(const DoubleByteTable& table, WideForm form, std::span<const BYTE> in,
                            std::span<BYTE> out) noexcept {
    switch (form) {
    case WideForm::LittleEndian:
        return DoubleBytes<WideForm::LittleEndian>(table, in, out);
    case WideForm::BigEndian:
        return DoubleBytes<WideForm::BigEndian>(table, in, out);
    case WideForm::Utf8:
        return DoubleBytes<WideForm::Utf8>(table, in, out);
    }
    return {};
}

} // namespace vnbytstr::detail
