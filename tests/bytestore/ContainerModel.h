// A plain vector of bytes that does what a store or a stream does.
#pragma once

#include "tests/bytestore/StoreFixture.h"

namespace vnbytstr::test {

/// The model: the bytes, the start and the cursor, and what decides where the cursor goes.
struct Model {
    Bytes bytes;
    DWORD start = 0, cursor = 0;
    DWORD limit = 0, capacity = 0; ///< of a stream's own block; limit 0: it has moved into a store

    DWORD Length() const { return static_cast<DWORD>(bytes.size()); }
    void Put(DWORD index, const Bytes& from) {
        if (bytes.size() < index + from.size())
            bytes.resize(index + from.size());
        std::copy(from.begin(), from.end(), bytes.begin() + index);
    }
    void Shift(DWORD to, DWORD from) {
        from = std::min(from, Length());
        if (to >= from)
            return;
        bytes.erase(bytes.begin() + to, bytes.begin() + from);
        if (cursor >= from)
            cursor -= from - to;
        else if (cursor > to)
            cursor = to;
        start = std::min(start, Length());
    }
    void Empty() {
        bytes.clear();
        start = cursor = 0;
    }
    void Truncate(DWORD length) {
        bytes.resize(std::min(length, Length()));
        start = std::min(start, Length());
    }
    /// A block grows to `size` bytes.
    void Allocate(DWORD size) {
        if (limit == 0 || size <= capacity)
            return;
        const DWORD grown = size < capacity + 32 ? capacity * 2 + 32 : size;
        if (grown > limit)
            limit = 0; // into a store, with the cursor
        else
            capacity = grown;
    }
    /// A Set up to `size` bytes.
    void ExtendForSet(DWORD size) {
        if (limit != 0 && size > limit) {
            limit = 0;
            cursor = 0; // deliberately not carried over
        } else if (size > Length()) {
            Allocate(size);
        }
    }
    ULONGLONG Wide(DWORD index, int width) const {
        ULONGLONG value = 0;
        for (int i = 0; i < width; ++i)
            value = value << 8 |
                    (index + static_cast<DWORD>(i) < Length() ? bytes[index + static_cast<DWORD>(i)]
                                                              : 0u);
        return value;
    }
    DWORD Find(const Bytes& pattern, DWORD from) const {
        from = std::max(from, start);
        if (from > Length())
            return 0xFFFFFFFF;
        const auto found =
            std::search(bytes.begin() + from, bytes.end(), pattern.begin(), pattern.end());
        return found == bytes.end() && !pattern.empty() ? 0xFFFFFFFF
                                                        : static_cast<DWORD>(found - bytes.begin());
    }
};

} // namespace vnbytstr::test
