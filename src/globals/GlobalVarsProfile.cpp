// Loading the values at the start, and saving them.
#include "src/charset/SystemText.h"
#include "src/globals/BuiltInVars.h"
#include "src/globals/GlobalVarsInternal.h"
#include "src/globals/ReportFont.h"

#include "src/os/System.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/Profile.h"

#include "messages/ResourceIds.h"

#include <optional>

using vnbytstr::detail::BuiltInVar;
using vnbytstr::detail::DefaultReportFont;
using vnbytstr::detail::FindBuiltIn;
using vnbytstr::detail::FindKnownName;
using vnbytstr::detail::kBuiltInCount;
using vnbytstr::detail::ReportFont;
using vnbytstr::detail::ViewOf;
using vnbytstr::detail::WithMemoryException;

namespace {

constexpr UINT kRoot = 3;
constexpr const char* kSection = "Global Variables";

bool AreUserVariablesKept() {
    return VNGetProfileDWORD(kRoot, "Options", "SaveGlobals", 0, 0) != 0;
}

bool Fits(const BuiltInVar& var, const CString& value) {
    return var.rule.FirstMisfit(ViewOf(value)) < 0;
}

CString NumberText(DWORD number) {
    CString text;
    text.Format("%d", static_cast<int>(number));
    return text;
}

CString FontValue(int id) {
    const ReportFont font = DefaultReportFont();
    const auto number = [id](DWORD value, DWORD otherwise) {
        const CString text = NumberText(value);
        return Fits(*FindBuiltIn(id), text) ? text : NumberText(otherwise);
    };
    switch (id) {
    case CGlobalVars::TLXQW_RPT_FONT_SZ:
        return number(font.size, 10);
    case CGlobalVars::TLXQW_RPT_FONT_BD:
        return NumberText(font.bold != 0 ? 1 : 0);
    case CGlobalVars::TLXQW_RPT_FONT_IT:
        return NumberText(font.italic != 0 ? 1 : 0);
    case CGlobalVars::TLXQW_RPT_FONT_CS:
        return number(font.charSet, 1);
    default:
        return font.name;
    }
}

} // namespace

int CGlobalVars::Initialize() {
    DeleteAll();
    try {
        WithMemoryException([&] {
            m_pIndex->LearnRules();
            m_pUnread->isSection = VNGetProfileStatus() == ProfileUnreadable;
            LoadStringA(m_strings.m_strLanguage, IDS_GLOBALS_LANGUAGE, nullptr);
            LoadStringA(m_strings.m_strHTMLReference, IDS_GLOBALS_HTML_REFERENCE, nullptr);
            AddBuiltIns();
            if (AreUserVariablesKept())
                AddSavedVariables();
        });
    } catch (CException*) {
        DeleteAll(); // a part of a table would be saved as the whole
        throw;
    }
    Check();
    return Success;
}

void CGlobalVars::AddBuiltIns() {
    Append(CString(), CString());
    for (int id = 1; id < kBuiltInCount; ++id) {
        const BuiltInVar& var = *FindBuiltIn(id);
        std::optional<CString> value, refused;
        if (var.isKept && VNIsProfileValue(kRoot, kSection, var.name)) {
            value = VNGetProfileString(kRoot, kSection, var.name, "", 0);
            if (!Fits(var, *value) || (id == TLXQW_HTML_REFTXT && value->IsEmpty()))
                refused.swap(value);
        }
        const CString given = value ? *value : InitialValue(id);
        Append(var.name, given);
        if (var.isKept && (refused || m_pUnread->isSection))
            m_pUnread->values.emplace(id, SUnread::SValue{given, refused});
    }
}

CString CGlobalVars::InitialValue(int id) const {
    const BuiltInVar& var = *FindBuiltIn(id);
    if (var.value)
        return var.value;
    switch (id) {
    case TLXAO_DBCS:
        return vnbytstr::IsDbcsEnabled() ? "1" : "0";
    case TLXAO_NLF_LANG:
        return m_strings.m_strLanguage;
    case TLXQW_HTML_REFTXT:
        return m_strings.m_strHTMLReference;
    default:
        return FontValue(id);
    }
}

void CGlobalVars::AddSavedVariables() {
    CProfileSectionKey key;
    VNGetProfileSectionKey(kRoot, kSection, key);
    for (int i = 0; i < key.GetCount(); ++i) {
        const CString name = key.GetName(i), value = key.GetString(i);
        if (FindKnownName(ViewOf(name)).id != 0)
            continue;
        int added = 0;
        AddGlobalVariable(&name, &value, added);
        SetGlobalVarValue(&name, &value); // also a literal that adding has parsed
    }
}

int CGlobalVars::SaveToRegistry() const {
    if (GetSize() == 0)
        return NotInitialized;
    CProfileBatch batch;
    // While it cannot be read it is unknown whether the user's variables are to be saved.
    if (VNGetProfileStatus() == ProfileUnreadable && !batch.Commit())
        return NotSaved;
    const bool isAnew = AreUserVariablesKept() && !m_pUnread->isSection;
    if (isAnew)
        batch.DeleteSection(kRoot, kSection);
    if (AreUserVariablesKept()) {
        for (int i = kBuiltInCount; i < GetSize(); ++i) {
            const CGlobalVar& var = *At(i);
            // One set aside must not take the place of the ordinary one of its name.
            if (var.GetFlag() == 0 || !Find(ViewOf(var.GetName())))
                batch.WriteString(kRoot, kSection, var.GetName(), var.GetValue());
        }
    }
    for (int id = 1; id < kBuiltInCount; ++id) {
        const BuiltInVar& var = *FindBuiltIn(id);
        if (!var.isKept)
            continue;
        const SUnread::SValue* const unread = m_pUnread->Find(id);
        if (!unread || ViewOf(unread->given) != ViewOf(At(id)->GetValue()))
            batch.WriteString(kRoot, kSection, var.name, At(id)->GetValue());
        else if (isAnew && unread->refused)
            batch.WriteString(kRoot, kSection, var.name, *unread->refused);
    }
    return batch.Commit() ? Success : NotSaved;
}
