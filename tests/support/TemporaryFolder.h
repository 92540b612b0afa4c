// A fresh folder for one test, removed with all it holds.
#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace vnbytstr::test {

class TemporaryFolder {
public:
    TemporaryFolder() {
        static std::atomic<unsigned> counter{std::random_device()()};
        const auto place = std::filesystem::temp_directory_path();
        do
            m_path = place / ("vnbytstr-test-" + std::to_string(counter.fetch_add(1)));
        while (!std::filesystem::create_directory(m_path));
        std::filesystem::permissions(m_path, std::filesystem::perms::owner_all);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// The folder's name with its separator at the end.
    std::string Path() const { return (m_path / "").string(); }
    std::string File(const std::string& name) const { return (m_path / name).string(); }

    void Write(const std::string& name, const std::string& content) const {
        std::ofstream(File(name), std::ios::binary) << content;
    }
    std::string Read(const std::string& name) const {
        std::ifstream file(File(name), std::ios::binary);
        std::ostringstream content;
        content << file.rdbuf();
        return std::move(content).str();
    }
    /// Makes a symbolic link; false where the system, or this user, cannot.
    bool Link(const std::string& to, const std::string& name) const {
        std::error_code error;
        std::filesystem::create_symlink(to, m_path / name, error);
        return !error;
    }
    /// Whether a file's permission bits are these; true where the system makes them up.
    bool HasMode(const std::string& file, unsigned mode) const {
        Write("mode", "");
        std::filesystem::permissions(m_path / "mode", std::filesystem::perms{0640});
        const bool isMadeUp = ModeOf(File("mode")) != 0640;
        std::filesystem::remove(m_path / "mode");
        return isMadeUp || (ModeOf(file) & 0777) == mode;
    }
    /// A file's permission bits (at most 07777).
    static unsigned ModeOf(const std::string& file) {
        return static_cast<unsigned>(std::filesystem::status(file).permissions());
    }
    /// A device of the same kind as `standard` ("/dev/null"), of the test's own where this user can
    /// make one: a user who can might also replace the machine's, when what is tested is broken.
    std::string Device(const std::string& standard) const {
#ifndef _WIN32
        struct stat info;
        const std::string own = File("device");
        if (::stat(standard.c_str(), &info) == 0 &&
            ::mknod(own.c_str(), info.st_mode, info.st_rdev) == 0 &&
            std::ofstream(own, std::ios::in | std::ios::out).is_open())
            return own;
#endif
        return standard;
    }
    /// Names of what the folder holds.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            names.push_back(entry.path().filename().string());
        return names;
    }

private:
    std::filesystem::path m_path;
};

} // namespace vnbytstr::test
