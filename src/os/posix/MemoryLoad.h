// How full the memory is, in percent: of the machine (MemAvailable) or of the control group that
// the process is confined to, whichever is fuller.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vnbytstr {

// --- the arithmetic, apart from files -----------------------------------------------------------

/// Load from the text of /proc/meminfo; 0 when it does not say.
DWORD MemoryLoadFromMeminfo(std::string_view text) noexcept;
/// Load of a control group from its limit, its use and the text of its memory.stat. File cache does
/// not count as used, as the kernel gives it up first. A limit of "max" (or an absurdly large one)
/// gives 0.
DWORD MemoryLoadFromGroup(std::string_view limit, std::string_view current,
                          std::string_view stat) noexcept;
/// The folders below the control groups' mount point whose limits hold for a process with this
/// /proc/self/cgroup text, innermost first: version 2 ("0::/a/b") or version 1's memory controller.
struct ControlGroupFolders {
    bool isVersion2 = true;
    std::vector<std::string> folders;
};
ControlGroupFolders ControlGroupFoldersOf(std::string_view procSelfCgroup);

/// Reads the load from the system, at most once per tick. Safe from every thread.
class MemoryLoadReader {
public:
    /// `root` stands before the names of the system's files: for tests.
    explicit MemoryLoadReader(std::string root = {}) : m_root(std::move(root)) {}
    ~MemoryLoadReader();
    MemoryLoadReader(const MemoryLoadReader&) = delete;
    MemoryLoadReader& operator=(const MemoryLoadReader&) = delete;

    DWORD Load(DWORD tick);

private:
    struct Group {
        int limit = -1, current = -1, stat = -1; ///< descriptors kept open
    };
    void Open();
    DWORD Read();

    const std::string m_root;
    std::mutex m_mutex;
    std::optional<DWORD> m_tick;
    DWORD m_load = 0;
    bool m_isOpen = false;
    int m_meminfo = -1;
    std::vector<Group> m_groups;
};

} // namespace vnbytstr
