// Runs a piece of a test in a forked child, as another user where that is asked for.
#pragma once

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef VNBYTSTR_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace vnbytstr::test {

inline constexpr unsigned kNobody = 65534;

/// What `action` returns (0 to 255) in a forked child, or 256 + the signal that ended it. The child
/// ends without the destructors of what it shares with this process.
template <class Action>
int InChild(Action action) {
    const pid_t child = ::fork();
    if (child == 0) {
        const int result = action();
#ifdef VNBYTSTR_COVERAGE
        if (::geteuid() == kNobody && ::seteuid(0) != 0)
            ::_exit(255);
        ::__gcov_dump(); // which _exit would not do
#endif
        ::_exit(result);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 256 + WTERMSIG(status);
}

/// The same as a user who owns nothing. Only for root: ask CanBecomeNobody first.
template <class Action>
int AsNobody(Action action) {
#ifdef VNBYTSTR_COVERAGE
    constexpr uid_t kBefore = 0; // the counters' files are root's
#else
    constexpr uid_t kBefore = kNobody;
#endif
    return InChild([&] {
        if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 ||
            ::setresuid(kNobody, kNobody, kBefore) != 0)
            return 255;
        return static_cast<int>(action());
    });
}

inline bool CanBecomeNobody() { return ::geteuid() == 0; }

} // namespace vnbytstr::test
