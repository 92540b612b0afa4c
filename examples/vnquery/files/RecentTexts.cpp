#include "vnquery/files/RecentTexts.h"

#include "vnbytstr/Profile.h"

#include <cstdint>
#include <cstdio>

namespace vnquery {

namespace {

constexpr UINT kRoot = 1;

/// FNV-1a with 64 bits, enough to tell a user's queries apart.
std::string NameOf(std::string_view key) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char ch : key)
        hash = (hash ^ static_cast<unsigned char>(ch)) * 0x100000001B3;
    char name[17];
    std::snprintf(name, sizeof name, "%016llX", static_cast<unsigned long long>(hash));
    return name;
}

} // namespace

std::vector<std::string> RecentTexts::GetAll() const {
    std::vector<std::string> texts;
    CProfileSectionKey kept;
    if (VNGetProfileSectionKey(kRoot, m_section, kept))
        for (int i = 0; i < kept.GetCount(); ++i)
            texts.emplace_back(static_cast<const char*>(kept.GetString(i)));
    return texts;
}

std::string RecentTexts::Get(std::string_view key) const {
    const CString text = VNGetProfileString(kRoot, m_section, NameOf(key).c_str(), "");
    return static_cast<const char*>(text);
}

bool RecentTexts::Add(std::string_view key, const std::string& text) const {
    const std::string name = NameOf(key);
    CProfileBatch batch;
    CProfileSectionKey kept;
    if (VNGetProfileSectionKey(kRoot, m_section, kept))
        for (int i = 0; i + m_count <= kept.GetCount(); ++i)
            batch.WriteString(kRoot, m_section, kept.GetName(i), nullptr);
    // Removed before it is set, so that the latest text is the last one.
    batch.WriteString(kRoot, m_section, name.c_str(), nullptr);
    batch.WriteString(kRoot, m_section, name.c_str(), text.c_str());
    return batch.Commit() != FALSE;
}

} // namespace vnquery
