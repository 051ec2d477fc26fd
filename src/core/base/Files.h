// Reading and writing whole files so that a reader never sees half of one.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "core/base/Result.h"

namespace morvelin {

/// A file operation that failed: what was tried, on which path, and the system's reason.
struct FileError {
    enum class Operation { Read, Write, CreateFolder, Move, Remove };

    Operation operation = Operation::Read;
    std::filesystem::path path;
    int code = 0; ///< errno

    [[nodiscard]] std::string description() const;
};

/// The whole content of a file.
Result<std::string, FileError> readFile(const std::filesystem::path& path);

/// Replaces a file's content, or makes the file: a temporary file in the same folder is written and synced, takes the
/// name, and the folder is synced. On failure the earlier file stands as it was and no temporary file stays.
Result<void, FileError> writeFileAtomically(const std::filesystem::path& path, std::string_view content);

/// Makes a folder with its intermediate folders; one that is there already is no error.
Result<void, FileError> createFolder(const std::filesystem::path& path);

/// Moves a file or folder to a new name and syncs both folders; across file systems a file is copied.
/// An existing file at the target is replaced.
Result<void, FileError> moveItem(const std::filesystem::path& from, const std::filesystem::path& to);

/// Removes a file; one that isn't there is no error.
Result<void, FileError> removeFile(const std::filesystem::path& path);

/// Writes all bytes to an open file, whatever interrupts; false, with the reason in errno, when it takes no more.
bool writeAll(int descriptor, std::string_view content);

} // namespace morvelin
