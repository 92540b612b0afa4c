// Lets the kernel refuse a system call, as it does on other file systems and on failing disks.
#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

#include <cstddef>

namespace vnbytstr::test {

/// From now on every such system call (SYS_close, for example) of this process fails with `error`;
/// with a `first` argument only those that have it. For the rest of its life: for forked children.
/// False where the kernel has no such filters.
inline bool Refuse(long call, int error, int first = -1) {
    const auto load = [](std::size_t offset) {
        return sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<__u32>(offset));
    };
    const auto pastError = static_cast<__u8>(first < 0 ? 0 : 1);
    sock_filter filter[] = {
        load(offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<__u32>(call), 0, 3),
        load(offsetof(seccomp_data, args)), // its low half
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<__u32>(first), 0, pastError),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<__u32>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    sock_fprog program{static_cast<unsigned short>(std::size(filter)), filter};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

} // namespace vnbytstr::test
