#include "src/os/FileIdentity.h"

namespace vnbytstr {

bool LeadsTo(const char* name, const FileIdentity& identity) {
    FileStatus status;
    return identity.IsKnown() && System::Current().GetFileStatus(name, status) == 0 &&
           status.identity == identity;
}

FileIdentity IdentityOf(FileHandle handle) {
    FileStatus status;
    return System::Current().GetFileStatus(handle, status) == 0 ? status.identity : FileIdentity{};
}

std::string AbsoluteName(const char* name) {
    std::string folder;
    if (*name == '/' || *name == '\0' || System::Current().ResolveName(".", folder) != 0)
        return name;
    if (folder.back() != '/')
        folder += '/';
    return folder + name;
}

std::string FolderOf(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : name.substr(0, slash);
}

} // namespace vnbytstr
