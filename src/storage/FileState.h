// What tells one state of a file from another without reading it. A value.
#pragma once

#include <filesystem>

namespace morvelin {

struct FileState {
    std::filesystem::path file;
    bool exists = false;
    unsigned long long device = 0;
    unsigned long long inode = 0;
    long long size = 0;
    long long changedNanoseconds = 0;

    bool operator==(const FileState&) const = default;

    [[nodiscard]] static FileState of(const std::filesystem::path& file);
    /// Whether nobody has changed, replaced or removed the file since.
    [[nodiscard]] bool isCurrent() const { return of(file) == *this; }
};

} // namespace morvelin
