#include "vnquery/sources/SavedConnections.h"

#include "vnquery/sources/ConnectionText.h"

#include "vnbytstr/Profile.h"

namespace vnquery {

namespace {

constexpr UINT kRoot = 1;
constexpr char kSection[] = "Connections";
constexpr std::string_view kFile = "file:";
constexpr std::string_view kOdbc = "odbc:";
constexpr std::string_view kOdbcWithPassword = "odbc with password:";

} // namespace

std::vector<std::string> ListSavedConnections() {
    std::vector<std::string> names;
    CProfileSectionKey kept;
    if (VNGetProfileSectionKey(kRoot, kSection, kept))
        for (int i = 0; i < kept.GetCount(); ++i)
            names.emplace_back(static_cast<const char*>(kept.GetName(i)));
    return names;
}

std::optional<SavedConnection> FindSavedConnection(const std::string& name) {
    const CString kept = VNGetProfileString(kRoot, kSection, name.c_str(), "");
    const std::string text = static_cast<const char*>(kept);
    if (text.starts_with(kFile))
        return SavedConnection{{text.substr(kFile.size()), {}, name}, false};
    for (const std::string_view kind : {kOdbc, kOdbcWithPassword})
        if (text.starts_with(kind))
            return SavedConnection{{{}, text.substr(kind.size()), name}, kind == kOdbcWithPassword};
    return {};
}

bool SaveConnection(const std::string& name, const Connection& connection) {
    const std::string open = RemovePasswords(connection.dataSource);
    const std::string_view kind = !connection.file.empty()        ? kFile
                                  : open == connection.dataSource ? kOdbc
                                                                  : kOdbcWithPassword;
    const std::string text = std::string(kind) + (kind == kFile ? connection.file : open);
    return VNWriteProfileString(kRoot, kSection, name.c_str(), text.c_str()) != FALSE;
}

bool RemoveConnection(const std::string& name) {
    return VNWriteProfileString(kRoot, kSection, name.c_str(), nullptr) != FALSE;
}

} // namespace vnquery
