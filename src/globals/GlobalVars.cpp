// The table and its names. Invariants (CGlobalVars::AssertValid):
//   1. The table is empty, or its first 60 entries are the placeholder and the built-in variables
//      in the order of their ids, none of them set aside.
//   2. The index leads from the key of every ordinary named variable to it, and nowhere else; so no
//      two ordinary variables have equal names.
//   3. Serial numbers grow from entry to entry.
#include "src/globals/BuiltInVars.h"
#include "src/globals/GlobalVarsInternal.h"

#include "vnbytstr/Language.h"

#include "messages/ResourceIds.h"

#include <cassert>
#include <cstring>
#include <string_view>

using vnbytstr::detail::BuiltInVar;
using vnbytstr::detail::FindBuiltIn;
using vnbytstr::detail::FindKnownName;
using vnbytstr::detail::KnownName;
using vnbytstr::detail::ViewOf;
using vnbytstr::detail::WithMemoryException;

IMPLEMENT_DYNAMIC(CGlobalVar, CObject)
IMPLEMENT_DYNAMIC(CGlobalVars, CObject)

CGlobalVars* CGlobalVars::m_Singleton = nullptr;
const CString CGlobalVars::m_strEmptyValue;

namespace {

constexpr const char* kFirstCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ$~{}?@#%\\";
constexpr const char* kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789$~_{}?@#%\\";

int NameStatus(const CString& upper) {
    if (upper.Left(3) == "TLX")
        return CGlobalVars::ReservedPrefix;
    if (upper.IsEmpty())
        return CGlobalVars::EmptyName;
    const std::string_view name = ViewOf(upper);
    if (name.find_first_of(kFirstCharacters) != 0 ||
        name.find_first_not_of(kCharacters) != std::string_view::npos)
        return CGlobalVars::InvalidCharacter;
    return CGlobalVars::Success;
}

int LoadDescription(UINT base, int id, CString& text) {
    text.Empty();
    if (!FindBuiltIn(id) || LoadStringA(text, base + static_cast<UINT>(id), nullptr) == 0)
        return CGlobalVars::UnknownName;
    return CGlobalVars::Success;
}

} // namespace

CGlobalVars::CGlobalVars()
    : m_pIndex(WithMemoryException([] { return std::make_unique<SIndex>(); })),
      m_pUnread(WithMemoryException([] { return std::make_unique<SUnread>(); })) {}
CGlobalVars::~CGlobalVars() { DeleteAll(); }

CGlobalVars& CGlobalVars::Get() {
    if (!m_Singleton)
        WithMemoryException([] { m_Singleton = new CGlobalVars; }); // for the life of the process
    return *m_Singleton;
}

CGlobalVars& GetGlobals() { return CGlobalVars::Get(); }

bool IsNullValue(const char* text) {
    const CGlobalVars* const table = CGlobalVars::m_Singleton;
    const CGlobalVar* const marker = table ? table->FindById(CGlobalVars::TLXCP_TENULL) : nullptr;
    return (marker ? marker->GetValue() : CString("-")) == text;
}

void CGlobalVars::DeleteAll() noexcept {
    for (int i = 0; i < GetSize(); ++i)
        m_pIndex->pool.Destroy(At(i)->m_dwNumber);
    m_arrVars.RemoveAll();
    m_pIndex->Clear();
    m_pUnread->Clear();
}

CGlobalVar* CGlobalVars::At(int index) const {
    return index >= 0 && index < GetSize() ? static_cast<CGlobalVar*>(m_arrVars[index]) : nullptr;
}

CGlobalVar* CGlobalVars::FindById(int id) const { return FindBuiltIn(id) ? At(id) : nullptr; }

CGlobalVar* CGlobalVars::Find(std::string_view name) const {
    return m_pIndex->Find(m_pIndex->KeyOf(name));
}

int CGlobalVars::WhyMissing(const char* name) const {
    if (GetSize() == 0)
        return NotInitialized;
    return name && IsReservedName(name) ? ReservedPrefix : UnknownName;
}

/// A binary search, since serial numbers grow.
int CGlobalVars::Position(const CGlobalVar& var) const {
    int low = 0, high = GetSize();
    while (high - low > 1) {
        const int middle = low + (high - low) / 2;
        (At(middle)->m_dwSerial <= var.m_dwSerial ? low : high) = middle;
    }
    assert(At(low) == &var);
    return low;
}

int CGlobalVars::Append(const CString& name, const CString& value) {
    const auto made = WithMemoryException([&] { return m_pIndex->pool.Make(name, value); });
    CGlobalVar* const var =
        made.first; // not a structured binding: clang 14's lambdas cannot capture one
    const DWORD number = made.second;
    var->m_dwNumber = number;
    var->m_dwSerial = m_dwNextSerial;
    int index = -1;
    try {
        index = m_arrVars.Add(var);
        if (!name.IsEmpty()) {
            WithMemoryException([&] {
                var->m_key.Set(m_pIndex->KeyOf(ViewOf(name)));
                m_pIndex->Insert(*var);
            });
        }
    } catch (...) {
        if (index >= 0)
            m_arrVars.RemoveAt(index);
        m_pIndex->pool.Destroy(number);
        throw;
    }
    ++m_dwNextSerial;
    return index;
}

const CString& CGlobalVars::Get(const char* name) {
    const CGlobalVar* const var =
        m_Singleton && name ? m_Singleton->Find({name, std::strlen(name)}) : nullptr;
    return var ? var->m_strValue : m_strEmptyValue;
}

const CString& CGlobalVars::Get(GlobalVarIDs id) {
    const CGlobalVar* const var = m_Singleton ? m_Singleton->FindById(id) : nullptr;
    return var ? var->m_strValue : m_strEmptyValue;
}

int CGlobalVars::SetValue(CGlobalVar& var, const CString* value, int* changed, int* position,
                          int checkOnly, int byUser) {
    const CString& wanted = value ? *value : m_strEmptyValue;
    const int index = Position(var);
    if (const BuiltInVar* const builtIn = FindBuiltIn(index)) {
        if (byUser != 0 && builtIn->isProgramOnly)
            return ProgramOnly;
        const int misfit = builtIn->rule.FirstMisfit(ViewOf(wanted));
        if (position)
            *position = misfit;
        if (misfit >= 0)
            return InvalidValue;
    }
    if (changed)
        *changed = ViewOf(var.m_strValue) != ViewOf(wanted) ? 1 : 0;
    if (checkOnly == 0)
        var.m_strValue = wanted;
    return Success;
}

int CGlobalVars::SetGlobalVarValue(GlobalVarIDs id, const CString* value, int* changed,
                                   int* position, int checkOnly, int byUser) {
    if (changed)
        *changed = 0;
    if (position)
        *position = -1;
    CGlobalVar* const var = FindById(id);
    return var ? SetValue(*var, value, changed, position, checkOnly, byUser) : WhyMissing(nullptr);
}

int CGlobalVars::SetGlobalVarValue(const CString* name, const CString* value, int* changed,
                                   int* position, int checkOnly, int byUser) {
    if (changed)
        *changed = 0;
    if (position)
        *position = -1;
    if (!name || name->IsEmpty())
        return EmptyName;
    CGlobalVar* const var = Find(ViewOf(*name));
    return var ? SetValue(*var, value, changed, position, checkOnly, byUser) : WhyMissing(*name);
}

int CGlobalVars::GetGlobalVarValue(GlobalVarIDs id, CString& value, int asLiteral) const {
    const CGlobalVar* const var = FindById(id);
    value = var ? var->m_strValue : m_strEmptyValue;
    if (var && asLiteral != 0)
        Convert(value);
    return var ? Success : WhyMissing(nullptr);
}

int CGlobalVars::GetGlobalVarValue(const CString& name, CString& value, int asLiteral) const {
    const CGlobalVar* const var = Find(ViewOf(name));
    const int status = var ? Success : WhyMissing(name);
    value = var ? var->m_strValue : m_strEmptyValue;
    if (var && asLiteral != 0)
        Convert(value);
    return status;
}

int CGlobalVars::AddGlobalVariable(const CString* name, const CString* value, int& added,
                                   int checkOnly) {
    added = 0;
    CString upper = name ? *name : m_strEmptyValue;
    upper.MakeUpper();
    if (const int status = NameStatus(upper); status != Success)
        return status;
    if (GetSize() == 0)
        return NotInitialized;
    if (Find(ViewOf(upper)))
        return Duplicate;
    if (checkOnly == 0) {
        CString stored = value ? *value : m_strEmptyValue;
        if (ViewOf(stored) == "'" || ViewOf(stored) == "(")
            ParseGlobal(stored);
        Append(upper, stored);
        Check();
    }
    added = 1;
    return Success;
}

int CGlobalVars::DeleteGlobalVariable(const CString* name, int checkOnly, int ignoreMissing) {
    if (!name || name->IsEmpty())
        return EmptyName;
    CGlobalVar* const var = Find(ViewOf(*name));
    if (!var)
        return ignoreMissing != 0 && GetSize() > 0 ? Success : WhyMissing(*name);
    const int index = Position(*var);
    if (FindBuiltIn(index))
        return BuiltIn;
    if (checkOnly == 0) {
        m_pIndex->Erase(*var);
        m_arrVars.RemoveAt(index);
        m_pIndex->pool.Destroy(var->m_dwNumber);
        Check();
    }
    return Success;
}

int CGlobalVars::GetGlobalVariable(int index, CString& name, CString& value, int asLiteral) const {
    const CGlobalVar* const var = At(index);
    name = var ? var->m_strName : m_strEmptyValue;
    value = var ? var->m_strValue : m_strEmptyValue;
    if (var && asLiteral != 0)
        Convert(value);
    return var ? Success : UnknownName;
}

int CGlobalVars::SetGlobalVariableFlag(int index, int flag) {
    CGlobalVar* const var = At(index);
    if (!var)
        return UnknownName;
    if (index < vnbytstr::detail::kBuiltInCount)
        return BuiltIn;
    if (var->m_nFlag != 0 && flag == 0 && !m_pIndex->Insert(*var))
        return Duplicate;
    if (var->m_nFlag == 0 && flag != 0)
        m_pIndex->Erase(*var);
    var->m_nFlag = flag;
    Check();
    return Success;
}

int CGlobalVars::Validate(const CString* name, const CString* value, int* position) const {
    if (position)
        *position = -1;
    if (!name || name->IsEmpty())
        return EmptyName;
    const KnownName known = FindKnownName(ViewOf(*name));
    if (const BuiltInVar* const builtIn = FindBuiltIn(known.id)) {
        const int misfit = builtIn->rule.FirstMisfit(ViewOf(value ? *value : m_strEmptyValue));
        if (position)
            *position = misfit;
        return misfit < 0 ? Success : InvalidValue;
    }
    return Find(ViewOf(*name)) ? Success : WhyMissing(*name);
}

const char* CGlobalVars::GetNameFromID(GlobalVarIDs id) noexcept {
    const BuiltInVar* const builtIn = FindBuiltIn(id);
    return builtIn ? builtIn->name : "";
}

CGlobalVars::GlobalVarIDs CGlobalVars::GetIDFromName(const char* name) {
    return static_cast<GlobalVarIDs>(name ? FindKnownName(name).id : 0);
}

bool CGlobalVars::IsReservedName(const char* name) {
    return name && FindKnownName(name).isReserved;
}

int CGlobalVars::GetDescriptionFromID(GlobalVarIDs id, CString& text) {
    return LoadDescription(IDS_GLOBALVAR_DESCRIPTION, id, text);
}

int CGlobalVars::GetFullDescriptionFromID(GlobalVarIDs id, CString& text) {
    return LoadDescription(IDS_GLOBALVAR_FULL_DESCRIPTION, id, text);
}

void CGlobalVars::ParseGlobal(CString& value) {
    const std::string_view text = ViewOf(value);
    if (!text.starts_with('\'') && !text.starts_with('('))
        return;
    const char closing = text.front() == '(' ? ')' : '\'';
    std::string content;
    WithMemoryException([&] { content.reserve(text.size()); });
    int depth = 0; // of parentheses within
    for (std::size_t i = 1; i < text.size(); ++i) {
        const bool isDoubled = closing == '\'' && text.substr(i, 2) == "''";
        if (text[i] == closing && !isDoubled && depth-- == 0)
            break;
        if (closing == ')' && text[i] == '(')
            ++depth;
        content += text[i];
        i += isDoubled ? 1 : 0;
    }
    value = CString(content.data(), static_cast<int>(content.size()));
}

void CGlobalVars::Convert(CString& value) {
    WithMemoryException([&] {
        std::string literal = "'";
        for (const char c : ViewOf(value))
            literal.append(c == '\'' ? 2u : 1u, c);
        literal += '\'';
        value = CString(literal.data(), static_cast<int>(literal.size()));
    });
}

/// The whole check costs as much as the table is long, so a long one is checked in proportion
/// less often.
void CGlobalVars::Check() {
#ifndef NDEBUG
    if (++m_nChanges % (1 + GetSize() / 64) == 0)
        AssertValid();
#endif
}

void CGlobalVars::AssertValid() const {
    std::size_t ordinary = 0;
    for (int i = 0; i < GetSize(); ++i) {
        const CGlobalVar& var = *At(i);
        if (i < vnbytstr::detail::kBuiltInCount)
            assert(var.m_strName == GetNameFromID(static_cast<GlobalVarIDs>(i)) &&
                   var.m_nFlag == 0);
        assert(i == 0 || At(i - 1)->m_dwSerial < var.m_dwSerial);
        if (var.m_nFlag == 0 && !var.m_strName.IsEmpty()) {
            ++ordinary;
            assert(m_pIndex->Find(var.m_key.View()) == &var);
        }
    }
    assert(ordinary == m_pIndex->GetCount());
    assert(GetSize() == 0 || GetSize() >= vnbytstr::detail::kBuiltInCount);
    static_cast<void>(ordinary);
}
