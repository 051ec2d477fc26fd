// A folder for one test, gone with it, and what the tests of files ask about it.
#pragma once

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <sys/resource.h>

#include "core/base/Files.h"

namespace morvelin {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "morvelin-test-XXXXXX").string();
        if (const char* made = ::mkdtemp(name.data())) m_path = made;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        if (!m_path.empty()) std::filesystem::remove_all(m_path, ignored);
    }

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

    /// What lies in it, sorted.
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

private:
    std::filesystem::path m_path;
};

/// Writes a file as it stands, with the folders it needs.
inline void put(const std::filesystem::path& path, const std::string& content) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

/// Every file below a folder with its bytes, and every folder as a name with a slash: equal means untouched.
inline std::map<std::string, std::string> bytesBelow(const std::filesystem::path& folder) {
    std::map<std::string, std::string> bytes;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string name = std::filesystem::relative(entry.path(), folder).string();
        if (entry.is_directory())
            bytes[name + "/"] = "";
        else
            bytes[name] = readFile(entry.path()).value_or("");
    }
    return bytes;
}

/// A disk on which no file can grow past a size, for as long as this lives; it holds for root as well.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytesPerFile) {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytesPerFile, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};

} // namespace morvelin
