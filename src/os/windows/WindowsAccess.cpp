// Who may use a file.
#include "src/os/windows/WindowsCalls.h"

#include <aclapi.h>

#include <cerrno>

namespace vnbytstr::windows {

namespace {

/// A user or a group as access lists name it.
struct Account {
    alignas(void*) std::array<BYTE, SECURITY_MAX_SID_SIZE> bytes{};
    bool isKnown = false;

    PSID Get() const { return const_cast<BYTE*>(bytes.data()); }
    void Take(PSID account) {
        isKnown = ::CopySid(static_cast<DWORD>(bytes.size()), bytes.data(), account);
    }
};

/// The user this process runs as, and to whom its new files belong: the same, but for
/// administrators.
struct Accounts {
    Account user, owner;

    Accounts() noexcept {
        HANDLE token = nullptr;
        if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
            return;
        const OwnHandle own(token);
        alignas(void*) std::array<BYTE, 256> answer;
        DWORD size = 0;
        if (::GetTokenInformation(token, TokenUser, answer.data(), 256, &size))
            user.Take(reinterpret_cast<TOKEN_USER*>(answer.data())->User.Sid);
        if (::GetTokenInformation(token, TokenOwner, answer.data(), 256, &size))
            owner.Take(reinterpret_cast<TOKEN_OWNER*>(answer.data())->Owner);
    }
    static const Accounts& Get() noexcept {
        static const Accounts accounts;
        return accounts;
    }
};

/// An access list of one entry: everything for this user.
struct PrivateList {
    alignas(ACL)
        std::array<BYTE, sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE> bytes{};
    SECURITY_DESCRIPTOR descriptor{};
    bool isThere = false;

    explicit PrivateList(DWORD inheritance) noexcept {
        const Account& user = Accounts::Get().user;
        isThere = user.isKnown &&
                  ::InitializeAcl(List(), static_cast<DWORD>(bytes.size()), ACL_REVISION) &&
                  ::AddAccessAllowedAceEx(List(), ACL_REVISION, inheritance, FILE_ALL_ACCESS,
                                          user.Get()) &&
                  ::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) &&
                  ::SetSecurityDescriptorDacl(&descriptor, TRUE, List(), FALSE) &&
                  ::SetSecurityDescriptorControl(&descriptor, SE_DACL_PROTECTED, SE_DACL_PROTECTED);
    }
    ACL* List() noexcept { return reinterpret_cast<ACL*>(bytes.data()); }
};

PrivateList& FileList() noexcept {
    static PrivateList list(0);
    return list;
}

/// Some file systems have no access lists; a file needs none there.
int AccessErrno(DWORD error) noexcept {
    return error == ERROR_NOT_SUPPORTED || error == ERROR_INVALID_FUNCTION ? 0 : ErrnoOf(error);
}

} // namespace

SECURITY_DESCRIPTOR* PrivateAccess(bool isFolder) noexcept {
    static PrivateList folderList(OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE);
    PrivateList& list = isFolder ? folderList : FileList();
    return list.isThere ? &list.descriptor : nullptr;
}

bool IsOwn(HANDLE file) noexcept {
    alignas(void*) std::array<BYTE, 256> buffer;
    DWORD size = 0;
    PSID owner = nullptr;
    BOOL isDefault = FALSE;
    if (!::GetKernelObjectSecurity(file, OWNER_SECURITY_INFORMATION, buffer.data(), 256, &size) ||
        !::GetSecurityDescriptorOwner(buffer.data(), &owner, &isDefault) || !owner)
        return false;
    const Accounts& own = Accounts::Get();
    return (own.user.isKnown && ::EqualSid(owner, own.user.Get())) ||
           (own.owner.isKnown && ::EqualSid(owner, own.owner.Get()));
}

int SetAccess(HANDLE file, bool isPrivate) noexcept {
    // This user's entry stands beside what the folder hands down.
    if (!FileList().isThere)
        return 0;
    const SECURITY_INFORMATION what =
        DACL_SECURITY_INFORMATION |
        (isPrivate ? PROTECTED_DACL_SECURITY_INFORMATION : UNPROTECTED_DACL_SECURITY_INFORMATION);
    return AccessErrno(::SetSecurityInfo(file, SE_FILE_OBJECT, what, nullptr, nullptr,
                                         FileList().List(), nullptr));
}

int CopyAccess(const wchar_t* from, HANDLE file) noexcept {
    ACL* list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD got = ::GetNamedSecurityInfoW(const_cast<wchar_t*>(from), SE_FILE_OBJECT,
                                              DACL_SECURITY_INFORMATION, nullptr, nullptr, &list,
                                              nullptr, &descriptor);
    if (got != ERROR_SUCCESS)
        return AccessErrno(got);
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    ::GetSecurityDescriptorControl(descriptor, &control, &revision);
    const SECURITY_INFORMATION what =
        DACL_SECURITY_INFORMATION |
        ((control & SE_DACL_PROTECTED) ? PROTECTED_DACL_SECURITY_INFORMATION
                                       : UNPROTECTED_DACL_SECURITY_INFORMATION);
    const DWORD set =
        ::SetSecurityInfo(file, SE_FILE_OBJECT, what, nullptr, nullptr, list, nullptr);
    ::LocalFree(descriptor);
    return AccessErrno(set);
}

} // namespace vnbytstr::windows
