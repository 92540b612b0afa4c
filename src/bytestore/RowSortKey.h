// Keys of values: bytes whose order is the order of the values.
//
//   NULL      00
//   numbers   01, the nearest double as 8 bytes whose order is that of the numbers, and how the
//             exact value lies to it: 00 below, 01 equal, 02 above. Unless it is equal, the
//             value's decimal exponent and digits follow (see AppendDigits).
//   texts     02, the collation key
//   bytes     03, the bytes
#pragma once

#include "src/bytestore/SliceTranslator.h"
#include "src/charset/Collation.h"
#include "vnbytstr/RowStore.h"

#include <optional>
#include <string>
#include <string_view>

namespace vnbytstr::detail {

class RowSortKeys {
public:
    /// Texts by the rules of the system's locale as it is now.
    RowSortKeys() : m_collation(Collation::Current()) {}

    /// Makes `key` that of a value whose bytes, if it has any, are `bytes`.
    void Make(const CRowValue& value, std::string_view bytes, std::string& key);

private:
    void AppendText(std::string_view text, WORD ccsid, std::string& key);

    const Collation& m_collation;
    WORD m_ccsid = 0; ///< that of m_translator
    std::optional<SliceTranslator> m_translator;
    std::string m_text;
};

} // namespace vnbytstr::detail
