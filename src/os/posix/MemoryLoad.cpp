#include "src/os/posix/MemoryLoad.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace vnbytstr {

namespace {

std::uint64_t ParseNumber(std::string_view text) noexcept {
    const std::size_t start = text.find_first_of("0123456789");
    std::uint64_t value = 0;
    if (start != std::string_view::npos)
        std::from_chars(text.data() + start, text.data() + text.size(), value);
    return value;
}

/// The number after `key` where that begins a line of `text`; 0 when there is none.
std::uint64_t NumberAfter(std::string_view text, std::string_view key) noexcept {
    for (std::size_t at = text.find(key); at != std::string_view::npos;
         at = text.find(key, at + 1)) {
        if (at == 0 || text[at - 1] == '\n') {
            const std::string_view rest = text.substr(at + key.size());
            return ParseNumber(rest.substr(0, rest.find('\n')));
        }
    }
    return 0;
}

DWORD Percent(std::uint64_t used, std::uint64_t total) noexcept {
    if (total == 0)
        return 0;
    return static_cast<DWORD>(
        std::min<double>(100.0, static_cast<double>(used) * 100.0 / static_cast<double>(total)));
}

/// The file's text as it is now, in `buffer`; empty when it cannot be read.
std::string_view ReadNow(int descriptor, std::span<char> buffer) noexcept {
    if (descriptor < 0)
        return {};
    const ssize_t got = ::pread(descriptor, buffer.data(), buffer.size(), 0);
    return got > 0 ? std::string_view(buffer.data(), static_cast<std::size_t>(got))
                   : std::string_view();
}

int OpenForReading(const std::string& name) noexcept {
    return ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
}

} // namespace

DWORD MemoryLoadFromMeminfo(std::string_view text) noexcept {
    const std::uint64_t total = NumberAfter(text, "MemTotal:");
    const std::uint64_t available = NumberAfter(text, "MemAvailable:");
    return Percent(total - std::min(total, available), total);
}

DWORD MemoryLoadFromGroup(std::string_view limit, std::string_view current,
                          std::string_view stat) noexcept {
    const std::uint64_t bytes = ParseNumber(limit);
    constexpr std::uint64_t kNoLimit = std::uint64_t{1} << 60; // version 1 says "none" this way
    if (bytes == 0 || bytes >= kNoLimit)
        return 0;
    std::uint64_t cache = NumberAfter(stat, "active_file ") + NumberAfter(stat, "inactive_file ");
    if (const std::uint64_t total =
            NumberAfter(stat, "total_active_file ") + NumberAfter(stat, "total_inactive_file "))
        cache = total;
    const std::uint64_t used = ParseNumber(current);
    return Percent(used - std::min(used, cache), bytes);
}

ControlGroupFolders ControlGroupFoldersOf(std::string_view text) {
    ControlGroupFolders result;
    std::string root = "/sys/fs/cgroup";
    std::string_view path;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const std::size_t first = line.find(':');
        const std::size_t second = line.find(':', first + 1);
        if (first == std::string_view::npos || second == std::string_view::npos)
            continue;
        const std::string controllers =
            "," + std::string(line.substr(first + 1, second - first - 1)) + ",";
        if (controllers.find(",memory,") != std::string::npos) {
            result.isVersion2 = false;
            root = "/sys/fs/cgroup/memory";
            path = line.substr(second + 1);
            break;
        }
        if (line.substr(0, first) == "0" && controllers == ",,")
            path = line.substr(second + 1);
    }
    std::string folder(path);
    while (folder.size() > 1) {
        result.folders.push_back(root + folder);
        folder.erase(folder.rfind('/'));
    }
    result.folders.push_back(root);
    return result;
}

MemoryLoadReader::~MemoryLoadReader() {
    for (const Group& group : m_groups) {
        for (int descriptor : {group.limit, group.current, group.stat}) {
            if (descriptor >= 0)
                ::close(descriptor);
        }
    }
    if (m_meminfo >= 0)
        ::close(m_meminfo);
}

DWORD MemoryLoadReader::Load(DWORD tick) {
    const std::lock_guard lock(m_mutex);
    if (m_tick != tick) {
        m_load = Read();
        m_tick = tick;
    }
    return m_load;
}

void MemoryLoadReader::Open() {
    m_isOpen = true;
    m_meminfo = OpenForReading(m_root + "/proc/meminfo");
    std::array<char, 4096> buffer;
    const int self = OpenForReading(m_root + "/proc/self/cgroup");
    const ControlGroupFolders found = ControlGroupFoldersOf(ReadNow(self, buffer));
    if (self >= 0)
        ::close(self);
    for (const std::string& folder : found.folders) {
        const std::string prefix = m_root + folder + "/memory.";
        Group group;
        group.limit = OpenForReading(prefix + (found.isVersion2 ? "max" : "limit_in_bytes"));
        if (group.limit < 0)
            continue;
        group.current = OpenForReading(prefix + (found.isVersion2 ? "current" : "usage_in_bytes"));
        group.stat = OpenForReading(prefix + "stat");
        m_groups.push_back(group);
    }
}

DWORD MemoryLoadReader::Read() {
    if (!m_isOpen)
        Open();
    std::array<char, 512> head; // the two lines wanted stand first
    DWORD load = MemoryLoadFromMeminfo(ReadNow(m_meminfo, head));
    for (const Group& group : m_groups) {
        std::array<char, 64> limit, current;
        const std::string_view limitText = ReadNow(group.limit, limit);
        if (limitText.empty() || limitText.starts_with("max"))
            continue;
        std::array<char, 8192> stat;
        load = std::max(load, MemoryLoadFromGroup(limitText, ReadNow(group.current, current),
                                                  ReadNow(group.stat, stat)));
    }
    return load;
}

} // namespace vnbytstr
