// The arithmetic of the memory load, on texts as kernels write them.
#include "src/os/posix/MemoryLoad.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace vnbytstr {
namespace {

TEST(MemoryLoad, OfTheMachine) {
    EXPECT_EQ(MemoryLoadFromMeminfo("MemTotal:       1000 kB\nMemFree:         100 kB\n"
                                    "MemAvailable:    250 kB\n"),
              75u);
    EXPECT_EQ(MemoryLoadFromMeminfo("MemTotal: 1000 kB\nMemAvailable: 1000 kB\n"), 0u);
    EXPECT_EQ(MemoryLoadFromMeminfo("MemTotal: 1000 kB\nMemAvailable: 2000 kB\n"), 0u);
    EXPECT_EQ(MemoryLoadFromMeminfo(""), 0u);
}

TEST(MemoryLoad, OfAControlGroup) {
    const char* stat = "anon 400\nfile 300\ninactive_file 100\nactive_file 50\n";
    EXPECT_EQ(MemoryLoadFromGroup("1000\n", "700\n", stat), 55u); // file cache is given up first
    EXPECT_EQ(MemoryLoadFromGroup("1000\n", "5000\n", stat), 100u);
    EXPECT_EQ(MemoryLoadFromGroup("1000\n", "100\n", stat), 0u);
    EXPECT_EQ(MemoryLoadFromGroup("max\n", "700\n", stat), 0u);
    EXPECT_EQ(MemoryLoadFromGroup("9223372036854771712\n", "700\n", stat),
              0u); // version 1's "none"
    EXPECT_EQ(MemoryLoadFromGroup("1000", "700",
                                  "active_file 0\ninactive_file 0\ntotal_active_file 100\n"
                                  "total_inactive_file 100\n"),
              50u);
}

TEST(MemoryLoad, FindsTheGroupsOfAProcess) {
    const ControlGroupFolders two = ControlGroupFoldersOf("0::/user.slice/a.scope\n");
    EXPECT_TRUE(two.isVersion2);
    EXPECT_EQ(two.folders,
              (std::vector<std::string>{"/sys/fs/cgroup/user.slice/a.scope",
                                        "/sys/fs/cgroup/user.slice", "/sys/fs/cgroup"}));
    const ControlGroupFolders one =
        ControlGroupFoldersOf("5:cpu,cpuacct:/x\n4:memory:/docker/1\n0::/\n");
    EXPECT_FALSE(one.isVersion2);
    EXPECT_EQ(one.folders.front(), "/sys/fs/cgroup/memory/docker/1");
    for (const char* other : {"rubbish", "0:cpu:/x\n"})
        EXPECT_EQ(ControlGroupFoldersOf(other).folders, std::vector<std::string>{"/sys/fs/cgroup"});
}

/// The fuller one of the machine and of all groups counts, from files as they are now.
TEST(MemoryLoad, IsReadOncePerTick) {
    const test::TemporaryFolder root;
    EXPECT_EQ(MemoryLoadReader(root.File("nothing")).Load(1), 0u);
    for (const bool isVersion2 : {true, false}) {
        const std::string mount = isVersion2 ? "sys/fs/cgroup/" : "sys/fs/cgroup/memory/";
        const auto write = [&](const char* group, const char* limit, const char* current) {
            const std::string folder = mount + group;
            std::filesystem::create_directories(root.File(folder));
            root.Write(folder + (isVersion2 ? "memory.max" : "memory.limit_in_bytes"), limit);
            root.Write(folder + (isVersion2 ? "memory.current" : "memory.usage_in_bytes"), current);
        };
        std::filesystem::create_directories(root.File("proc/self"));
        root.Write("proc/meminfo", "MemTotal: 1000 kB\nMemAvailable: 900 kB\n");
        root.Write("proc/self/cgroup", isVersion2 ? "1:cpu:/b\nrubbish\n0::/a/none/b\n"
                                                  : "rubbish:\n4:memory:/a/none/b\n0::/\n");
        write("a/none/b/", "1000", "500"); // without a memory.stat
        write("a/", isVersion2 ? "max" : "9223372036854771712", "500");
        std::filesystem::create_directories(root.File(mount + "a/none"));
        write("", "1000", "600");
        root.Write(mount + "memory.stat", "inactive_file 450\n");
        MemoryLoadReader reader(root.File(""));
        EXPECT_EQ(reader.Load(1), 50u);
        write("a/none/b/", "1000", "700");
        EXPECT_EQ(reader.Load(1), 50u);
        EXPECT_EQ(reader.Load(2), 70u);
        write("a/none/b/", "", "700"); // the group has gone
        EXPECT_EQ(reader.Load(3), 15u);
    }
}

} // namespace
} // namespace vnbytstr
