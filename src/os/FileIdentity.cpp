#include "src/os/FileIdentity.h"

#include "src/os/Paths.h"

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
    if (IsAbsolutePath(name) || *name == '\0' || System::Current().ResolveName(".", folder) != 0)
        return name;
    return AsFolderPrefix(folder) + name;
}

} // namespace vnbytstr
