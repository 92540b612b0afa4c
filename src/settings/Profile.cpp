#include "vnbytstr/Profile.h"

#include "src/settings/ProfileStore.h"
#include "vnbytstr/framework/Exception.h"

#include <charconv>
#include <optional>
#include <string_view>

using vnbytstr::detail::ProfileFile;
using vnbytstr::detail::ProfileNotices;
using vnbytstr::detail::ProfileStore;
using vnbytstr::detail::WithMemoryException;

namespace {

std::optional<DWORD> ReadNumber(std::string_view text) {
    while (text.starts_with(' ') || text.starts_with('\t'))
        text.remove_prefix(1);
    while (text.ends_with(' ') || text.ends_with('\t'))
        text.remove_suffix(1);
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    DWORD number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc() || rest != end)
        return std::nullopt;
    return number;
}

/// What `read` makes of the file as it is.
template <class Read>
auto Look(Read read) {
    return WithMemoryException([&] { return ProfileStore::Get().Look(read); });
}

} // namespace

DWORD VNGetProfileDWORD(UINT root, const char* section, const char* name, DWORD defaultValue,
                        UINT) {
    if (!section || !name)
        return defaultValue;
    return Look([&](const ProfileFile& file) {
        const std::string* value = file.Find(root, section, name);
        return value ? ReadNumber(*value).value_or(defaultValue) : defaultValue;
    });
}

CString VNGetProfileString(UINT root, const char* section, const char* name,
                           const char* defaultValue, UINT) {
    if (!section || !name)
        return CString(defaultValue);
    return Look([&](const ProfileFile& file) {
        const std::string* value = file.Find(root, section, name);
        return value ? CString(value->c_str()) : CString(defaultValue);
    });
}

BOOL VNWriteProfileDWORD(UINT root, const char* section, const char* name, DWORD value, UINT) {
    return VNWriteProfileString(root, section, name, std::to_string(value).c_str());
}

BOOL VNWriteProfileString(UINT root, const char* section, const char* name, const char* value,
                          UINT) {
    if (!section || !name)
        return FALSE;
    CProfileBatch batch;
    batch.WriteString(root, section, name, value);
    return batch.Commit();
}

BOOL VNIsProfileValue(UINT root, const char* section, const char* name) {
    if (!section || !name)
        return FALSE;
    return Look(
        [&](const ProfileFile& file) { return file.Find(root, section, name) ? TRUE : FALSE; });
}

BOOL VNDeleteProfileSection(UINT root, const char* section) {
    if (!section)
        return FALSE;
    CProfileBatch batch;
    batch.DeleteSection(root, section);
    return batch.Commit();
}

BOOL VNGetProfileSectionKey(UINT root, const char* section, CProfileSectionKey& key) {
    key.m_values.clear();
    if (!section)
        return FALSE;
    Look([&](const ProfileFile& file) {
        file.ForEach(root, section, [&](const std::string& name, const std::string& value) {
            key.m_values.emplace_back(name.c_str(), value.c_str());
        });
    });
    return key.m_values.empty() ? FALSE : TRUE;
}

EProfileStatus VNGetProfileStatus(CString* text) {
    return WithMemoryException([&] {
        std::string trouble;
        const EProfileStatus status = ProfileStore::Get().GetStatus(trouble);
        if (text)
            *text = ProfileNotices::ToAnsi(trouble).c_str();
        return status;
    });
}

void VNSetProfileHandler(VNProfileHandler handler, void* context) {
    ProfileNotices::SetHandler(handler, context);
}

void CProfileBatch::WriteDWORD(UINT root, const char* section, const char* name, DWORD value) {
    WriteString(root, section, name, std::to_string(value).c_str());
}

void CProfileBatch::WriteString(UINT root, const char* section, const char* name,
                                const char* value) {
    if (section && name)
        WithMemoryException([&] {
            m_changes.push_back(
                {value ? EKind::Set : EKind::Remove, root, section, name, value ? value : ""});
        });
}

void CProfileBatch::DeleteSection(UINT root, const char* section) {
    if (section)
        WithMemoryException([&] {
            m_changes.push_back({EKind::RemoveSection, root, section, {}, {}});
        });
}

BOOL CProfileBatch::Commit() {
    const auto apply = [this](ProfileFile& file) {
        bool changed = false;
        for (const SChange& change : m_changes) {
            switch (change.eKind) {
            case EKind::Set:
                changed |=
                    file.Set(change.uRoot, change.strSection, change.strName, change.strValue);
                break;
            case EKind::Remove:
                changed |= file.Remove(change.uRoot, change.strSection, change.strName);
                break;
            case EKind::RemoveSection:
                changed |= file.RemoveSection(change.uRoot, change.strSection);
                break;
            }
        }
        return changed;
    };
    const bool saved = WithMemoryException([&] { return ProfileStore::Get().Change(apply); });
    if (saved)
        m_changes.clear();
    return saved ? TRUE : FALSE;
}
