#include "vnbytstr/LanguageCombo.h"

#include "vnbytstr/Language.h"

namespace {

/// A three-letter language code as an item's data.
std::uintptr_t Packed(const CString& code) {
    std::uintptr_t data = 0;
    for (int i = 0; i < 3; ++i)
        data = data << 8 | static_cast<unsigned char>(code[i]);
    return data;
}

} // namespace

void FillUILanguageCombo(CComboBox& combo, const char* prefix) {
    combo.ResetContent();
    const CString current = GetUILanguage();
    const std::uintptr_t wanted = Packed(current);
    int chosen = -1;
    for (const SInstalledLanguage& language : GetInstalledLanguages(prefix)) {
        const int item = combo.AddString(language.m_strName);
        if (item >= 0)
            combo.SetItemData(item, Packed(language.m_strCode));
    }
    // The combo box may sort its items, so their indexes are final only now.
    for (int item = 0; item < combo.GetCount(); ++item) {
        const std::uintptr_t code = combo.GetItemData(item);
        if (code == wanted || (chosen < 0 && code == Packed("ENU")))
            chosen = item;
        if (code == wanted)
            break;
    }
    combo.SetCurSel(chosen);
}

CString GetUILanguageOfCombo(const CComboBox& combo) {
    const int item = combo.GetCurSel();
    if (item < 0)
        return {};
    const std::uintptr_t data = combo.GetItemData(item);
    const char code[3] = {static_cast<char>(data >> 16), static_cast<char>(data >> 8),
                          static_cast<char>(data)};
    return {code, 3};
}
