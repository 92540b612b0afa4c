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
    /// A file's permission bits (at most 07777).
    static unsigned ModeOf(const std::string& file) {
        return static_cast<unsigned>(std::filesystem::status(file).permissions());
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
