// An open folder, what lies below it asked about without spelling its whole path: a library has thousands of projects.
#pragma once

#include <array>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>

#include <dirent.h>
#include <sys/stat.h>

#include "core/base/OwnedDescriptor.h"
#include "core/base/Result.h"

namespace morvelin {

/// Paths are relative to the folder. A folder that couldn't be opened has nothing in it. From any thread, but for listing.
class OpenFolder {
public:
    struct File {
        struct stat status;
        std::string text;
    };

    explicit OpenFolder(const std::filesystem::path& path);
    OpenFolder(const OpenFolder& parent, const std::string& path);

    /// Calls `visit(name)` with each entry's name, a C string, in no order; once in the folder's life. Gives errno, 0 where
    /// all were visited.
    template <class Visit>
    int forEachEntry(Visit&& visit) const;

    /// Of what lies there; a link is followed.
    [[nodiscard]] std::optional<struct stat> status(const char* path) const;
    /// A whole file; fails with errno.
    [[nodiscard]] Result<File, int> read(const std::string& path) const;

private:
    OwnedDescriptor m_descriptor;
    int m_error; ///< why it couldn't be opened
};

template <class Visit>
int OpenFolder::forEachEntry(Visit&& visit) const {
    if (!m_descriptor.isOpen()) return m_error;
    // Without the C library's stream, which takes two more calls of the system and 32 KB of memory for each folder.
    alignas(dirent64) std::array<char, 8192> entries;
    for (;;) {
        const ssize_t length = ::getdents64(m_descriptor.get(), entries.data(), entries.size());
        if (length <= 0) return length < 0 ? errno : 0;
        for (ssize_t at = 0; at < length;) {
            const auto* entry = reinterpret_cast<const dirent64*>(entries.data() + at);
            visit(static_cast<const char*>(entry->d_name));
            at += entry->d_reclen;
        }
    }
}

} // namespace morvelin
