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

} // namespace vnbytstr
