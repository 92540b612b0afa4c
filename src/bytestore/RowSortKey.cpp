#include "src/bytestore/RowSortKey.h"

#include "src/bytestore/NumberKey.h"

namespace vnbytstr::detail {

void RowSortKeys::Make(const CRowValue& value, std::string_view bytes, std::string& key) {
    key.clear();
    if (value.IsNull()) {
        key.push_back('\0');
    } else if (value.GetType() < rowText) {
        key.push_back('\1');
        if (value.GetType() == rowInteger)
            AppendIntegerKey(value.GetInteger(), key);
        else if (value.GetType() == rowReal)
            AppendRealKey(value.GetReal(), key);
        else // one that has been cut is no number
            AppendDecimalKey(bytes.size() == value.GetLength() ? bytes : "cut", key);
    } else if (value.GetType() == rowText) {
        key.push_back('\2');
        AppendText(bytes, value.GetCCSID(), key);
    } else {
        key.push_back('\3');
        key.append(bytes);
    }
}

/// A text that cannot be translated counts as native.
void RowSortKeys::AppendText(std::string_view text, WORD ccsid, std::string& key) {
    if (ccsid != 0 && ccsid != m_ccsid) {
        m_translator.reset();
        m_ccsid = ccsid;
        const WORD native = GetNativeCCSID();
        if (ccsid != native && CanTranslateCCSID(ccsid, native))
            m_translator.emplace(ccsid, native);
    }
    if (ccsid != 0 && m_translator) {
        m_text.clear();
        m_translator->Pass(reinterpret_cast<const BYTE*>(text.data()),
                           static_cast<DWORD>(text.size()), true,
                           [this](const BYTE* bytes, DWORD count) {
                               m_text.append(reinterpret_cast<const char*>(bytes), count);
                           });
        text = m_text;
    }
    m_collation.AppendKey(text, key);
}

} // namespace vnbytstr::detail
