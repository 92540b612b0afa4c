// Composes the kernels' tables from ICU's converters, and joins tables and loops to kernels.
#include "src/charset/CcsidKernels.h"

#include "src/os/CpuKernel.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>
#include <unicode/uset.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace vnbytstr::detail {

namespace {

bool IsSingleByte(const UConverter* converter) {
    const UConverterType type = ucnv_getType(converter);
    return (type == UCNV_SBCS || type == UCNV_LATIN_1 || type == UCNV_US_ASCII) &&
           ucnv_getMaxCharSize(converter) == 1;
}

/// Whether the set has characters that stand for several code points; a kernel handles only one at
/// a time.
bool HasSequences(const UConverter* converter) {
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<USet, decltype(&uset_close)> owner(uset_openEmpty(), &uset_close);
    USet* const set = owner.get();
    if (set == nullptr)
        throw std::bad_alloc();
    ucnv_getUnicodeSet(converter, set, UCNV_ROUNDTRIP_AND_FALLBACK_SET, &error);
    if (error == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    bool found = U_FAILURE(error);
    const int32_t count = uset_getItemCount(set);
    for (int32_t i = 0; i < count && !found; ++i) {
        UChar32 start = 0, end = 0;
        char16_t text[32];
        error = U_ZERO_ERROR;
        found = uset_getItem(set, i, &start, &end, text, 32, &error) >= 2;
    }
    return found;
}

/// Asks a converter about one character at a time; only exact mappings count.
class Probe {
public:
    explicit Probe(UConverter* converter) : m_converter(converter) {
        UErrorCode error = U_ZERO_ERROR;
        ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                              &error);
        ucnv_reset(converter);
    }
    ~Probe() { ucnv_reset(m_converter); }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    /// The one UTF-16 unit that these bytes stand for.
    std::optional<char16_t> Decode(std::initializer_list<unsigned> bytes) {
        std::array<char, 4> text{};
        std::transform(bytes.begin(), bytes.end(), text.begin(),
                       [](unsigned byte) { return static_cast<char>(byte); });
        std::array<char16_t, 8> wide;
        UErrorCode error = U_ZERO_ERROR;
        const int32_t units = ucnv_toUChars(m_converter, wide.data(), 8, text.data(),
                                            static_cast<int32_t>(bytes.size()), &error);
        if (U_FAILURE(error) || units != 1)
            return std::nullopt;
        return wide[0];
    }
    /// The one byte that stands for this unit.
    std::optional<BYTE> Encode(char16_t unit) {
        std::array<char, 8> text;
        UErrorCode error = U_ZERO_ERROR;
        const int32_t size = ucnv_fromUChars(m_converter, text.data(), 8, &unit, 1, &error);
        if (U_FAILURE(error) || size != 1)
            return std::nullopt;
        return static_cast<BYTE>(text[0]);
    }

private:
    UConverter* m_converter;
};

void SetGap(ByteTable& table, const std::array<bool, 256>& mapped) {
    std::array<bool, 256> used{};
    for (std::size_t i = 0; i < 256; ++i) {
        if (mapped[i])
            used[table.to[i]] = true;
    }
    table.hasGaps = std::find(mapped.begin(), mapped.end(), false) != mapped.end();
    // With at least one input unmapped, at most 255 values are taken.
    table.gap = static_cast<BYTE>(std::find(used.begin(), used.end(), false) - used.begin());
    for (std::size_t i = 0; i < 256; ++i) {
        if (!mapped[i])
            table.to[i] = table.gap;
    }
}

ByteTable MakeByteTable(Probe& from, Probe& to) {
    ByteTable table;
    std::array<bool, 256> mapped{};
    for (unsigned i = 0; i < 256; ++i) {
        const std::optional<char16_t> unit = from.Decode({i});
        const std::optional<BYTE> byte = unit ? to.Encode(*unit) : std::nullopt;
        mapped[i] = byte.has_value();
        table.to[i] = byte.value_or(0);
    }
    SetGap(table, mapped);
    return table;
}

ByteToUtf8Table MakeByteToUtf8Table(Probe& from) {
    ByteToUtf8Table table;
    table.asciiIsAscii = table.latin1IsLatin1 = true;
    for (unsigned i = 0; i < 256; ++i) {
        const std::optional<char16_t> unit = from.Decode({i});
        std::array<BYTE, 4>& entry = table.bytes[i];
        if (unit && !U16_IS_SURROGATE(*unit)) {
            uint32_t length = 0;
            U8_APPEND_UNSAFE(entry, length, *unit);
            entry[3] = static_cast<BYTE>(length);
        }
        if (i < 0x80 && unit != i)
            table.asciiIsAscii = false;
        if ((i < 0x80 || i >= 0xA0) && unit != i)
            table.latin1IsLatin1 = false;
        table.first[i] = entry[0];
        table.second[i] = entry[3] == 1 ? BYTE{0} : entry[3] == 2 ? entry[1] : BYTE{1};
    }
    return table;
}

Utf8ToByteTable MakeUtf8ToByteTable(Probe& to) {
    Utf8ToByteTable table;
    std::vector<std::array<WORD, 64>> blocks(1);
    blocks[0].fill(Utf8ToByteTable::kNone);
    std::array<WORD, 64> block;
    for (unsigned number = 0; number < 1024; ++number) {
        bool any = false;
        for (unsigned i = 0; i < 64; ++i) {
            const auto unit = static_cast<char16_t>(number * 64 + i);
            const std::optional<BYTE> byte =
                U16_IS_SURROGATE(unit) ? std::nullopt : to.Encode(unit);
            block[i] = byte ? WORD{*byte} : Utf8ToByteTable::kNone;
            any |= byte.has_value();
        }
        if (number < 32) {
            std::copy(block.begin(), block.end(), table.below800.begin() + number * 64);
        } else if (any && blocks.size() < 256) { // past 255 blocks ICU does the rest
            table.block[number] = static_cast<BYTE>(blocks.size());
            blocks.push_back(block);
        }
    }
    table.blocks = std::make_unique<std::array<WORD, 64>[]>(blocks.size());
    std::copy(blocks.begin(), blocks.end(), table.blocks.get());
    std::array<bool, 256> mapped{};
    table.asciiIsAscii = table.latin1IsLatin1 = true;
    for (std::size_t i = 0; i < 256; ++i) {
        const WORD value = table.below800[i];
        mapped[i] = value != Utf8ToByteTable::kNone;
        table.latin1.to[i] = static_cast<BYTE>(value);
        if (i < 0x80)
            table.asciiIsAscii &= value == i;
        else if (i >= 0xA0)
            table.latin1IsLatin1 &= value == i;
    }
    SetGap(table.latin1, mapped);
    return table;
}

std::shared_ptr<const DoubleByteTable> MakeDoubleByteTable(UConverter* from) {
    UBool starters[256] = {};
    UErrorCode error = U_ZERO_ERROR;
    ucnv_getStarters(from, starters, &error);
    if (U_FAILURE(error))
        return nullptr;
    Probe probe(from);
    auto table = std::make_shared<DoubleByteTable>();
    table->asciiIsAscii = true;
    const auto value = [](std::optional<char16_t> unit) {
        return unit && !U16_IS_SURROGATE(*unit) ? *unit : DoubleByteTable::kNone;
    };
    table->pair.fill(DoubleByteTable::kNone);
    table->single.fill(DoubleByteTable::kNone);
    for (unsigned i = 0; i < 256; ++i) {
        table->isLead[i] = starters[i] != 0;
        if (table->isLead[i]) {
            for (unsigned j = 0; j < 256; ++j)
                table->pair[i << 8 | j] = value(probe.Decode({i, j}));
        } else {
            table->single[i] = value(probe.Decode({i}));
        }
        if (i < 0x80 && table->single[i] != i)
            table->asciiIsAscii = false;
    }
    return table;
}

/// 128 KiB each, so one is shared by all kernels that start from the same set.
std::shared_ptr<const DoubleByteTable> SharedDoubleByteTable(UConverter* from) {
    static std::mutex mutex;
    static std::map<std::string, std::shared_ptr<const DoubleByteTable>> tables;
    UErrorCode error = U_ZERO_ERROR;
    const std::string name = ucnv_getName(from, &error);
    const std::lock_guard lock(mutex);
    std::shared_ptr<const DoubleByteTable>& table = tables[name];
    if (!table)
        table = MakeDoubleByteTable(from);
    return table;
}

/// The loop for the active kernel.
#if defined(__x86_64__)
template <class Loop>
Loop* Choose(Loop* plain, Loop* avx2, Loop* avx512) noexcept {
    const Kernel active = ActiveKernel();
    return active >= Kernel::Avx512 ? avx512 : active >= Kernel::Avx2 ? avx2 : plain;
}
#define VNBYTSTR_CHOOSE(plain, avx2, avx512) Choose(plain, avx2, avx512)
#else
#define VNBYTSTR_CHOOSE(plain, avx2, avx512) (plain)
#endif

class CopyKernel final : public CcsidKernel {
public:
    KernelStep Run(std::span<const BYTE> in, std::span<BYTE> out) const noexcept override {
        const std::size_t size = std::min(in.size(), out.size());
        std::copy_n(in.data(), size, out.data());
        return {size, size};
    }
};

class ByteKernel final : public CcsidKernel {
public:
    explicit ByteKernel(const ByteTable& table) : m_table(table) {}
    KernelStep Run(std::span<const BYTE> in, std::span<BYTE> out) const noexcept override {
        const std::size_t size = std::min(in.size(), out.size());
        const std::size_t done = VNBYTSTR_CHOOSE(MapBytesPlain, MapBytesAvx2, MapBytesAvx512)(
            m_table, in.data(), out.data(), size);
        return {done, done};
    }

private:
    ByteTable m_table;
};

class ByteToUtf8Kernel final : public CcsidKernel {
public:
    explicit ByteToUtf8Kernel(const ByteToUtf8Table& table) : m_table(table) {}
    KernelStep Run(std::span<const BYTE> in, std::span<BYTE> out) const noexcept override {
        return VNBYTSTR_CHOOSE(BytesToUtf8Plain, BytesToUtf8Avx2, BytesToUtf8Avx512)(m_table, in,
                                                                                     out);
    }

private:
    ByteToUtf8Table m_table;
};

class Utf8ToByteKernel final : public CcsidKernel {
public:
    explicit Utf8ToByteKernel(Utf8ToByteTable table) : m_table(std::move(table)) {}
    KernelStep Run(std::span<const BYTE> in, std::span<BYTE> out) const noexcept override {
        return VNBYTSTR_CHOOSE(Utf8ToBytesPlain, Utf8ToBytesAvx2, Utf8ToBytesAvx512)(m_table, in,
                                                                                     out);
    }

private:
    Utf8ToByteTable m_table;
};

class DoubleByteKernel final : public CcsidKernel {
public:
    DoubleByteKernel(std::shared_ptr<const DoubleByteTable> table, WideForm form)
        : m_table(std::move(table)), m_form(form) {}
    KernelStep Run(std::span<const BYTE> in, std::span<BYTE> out) const noexcept override {
        return VNBYTSTR_CHOOSE(DoubleBytesPlain, DoubleBytesAvx2, DoubleBytesAvx2)(*m_table, m_form,
                                                                                   in, out);
    }

private:
    std::shared_ptr<const DoubleByteTable> m_table;
    WideForm m_form;
};

std::unique_ptr<CcsidKernel> MakeDoubleByteKernel(UConverter* from, UConverterType to) {
    if (to != UCNV_UTF16_LittleEndian && to != UCNV_UTF16_BigEndian && to != UCNV_UTF8)
        return nullptr;
    auto table = SharedDoubleByteTable(from);
    if (!table)
        return nullptr;
    const WideForm form = to == UCNV_UTF8                 ? WideForm::Utf8
                          : to == UCNV_UTF16_LittleEndian ? WideForm::LittleEndian
                                                          : WideForm::BigEndian;
    return std::make_unique<DoubleByteKernel>(std::move(table), form);
}

} // namespace

std::unique_ptr<CcsidKernel> MakeCopyKernel() { return std::make_unique<CopyKernel>(); }

std::unique_ptr<CcsidKernel> MakeCcsidKernel(UConverter* from, UConverter* to) {
    const UConverterType fromType = ucnv_getType(from), toType = ucnv_getType(to);
    if (IsSingleByte(from) && IsSingleByte(to)) {
        if (HasSequences(from) || HasSequences(to))
            return nullptr;
        Probe source(from), target(to);
        return std::make_unique<ByteKernel>(MakeByteTable(source, target));
    }
    if (IsSingleByte(from) && toType == UCNV_UTF8) {
        if (HasSequences(from))
            return nullptr;
        Probe source(from);
        return std::make_unique<ByteToUtf8Kernel>(MakeByteToUtf8Table(source));
    }
    if (fromType == UCNV_UTF8 && IsSingleByte(to)) {
        if (HasSequences(to))
            return nullptr;
        Probe target(to);
        return std::make_unique<Utf8ToByteKernel>(MakeUtf8ToByteTable(target));
    }
    if (fromType == UCNV_MBCS && ucnv_getMinCharSize(from) == 1)
        return MakeDoubleByteKernel(from, toType);
    return nullptr;
}

} // namespace vnbytstr::detail
