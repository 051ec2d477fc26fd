#include "core/base/Files.h"

#include <cerrno>
#include <cstring>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "core/base/OwnedDescriptor.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

std::unexpected<FileError> lastError(FileError::Operation operation, const fs::path& path) {
    return failure(FileError{operation, path, errno});
}

fs::path folderOf(const fs::path& path) { return path.has_parent_path() ? path.parent_path() : fs::path("."); }

/// A rename is only safe against a power cut once its folder is on disk. Some file systems refuse to sync a folder;
/// there is nothing better to do on those.
void syncFolder(const fs::path& folder) {
    const OwnedDescriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.isOpen()) (void)::fsync(fd.get());
}

struct TemporaryFile {
    int fd;
    fs::path path;
};

/// A new file in the same folder under a name that nobody has; the user's umask decides who may read it.
std::optional<TemporaryFile> createTemporaryBeside(const fs::path& path) {
    for (int attempt = 0; attempt < 1000; ++attempt) {
        const fs::path name = folderOf(path) / fmt::format(".{}.{}.{}", path.filename().string(), ::getpid(), attempt);
        const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0) return TemporaryFile{fd, name};
        if (errno != EEXIST) return std::nullopt;
    }
    return std::nullopt;
}

/// Writes and syncs a new file; errno tells why when it fails.
bool writeAndSync(int fd, std::string_view content) { return writeAll(fd, content) && ::fsync(fd) == 0; }

} // namespace

std::string FileError::description() const {
    const char* verb = "";
    switch (operation) {
    case Operation::Read: verb = "read"; break;
    case Operation::Write: verb = "write"; break;
    case Operation::CreateFolder: verb = "create the folder"; break;
    case Operation::Move: verb = "move"; break;
    case Operation::Remove: verb = "remove"; break;
    }
    return fmt::format("Could not {} {}: {}", verb, path.string(), std::strerror(code));
}

bool writeAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor, content.data(), content.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

Result<std::string, FileError> readFile(const fs::path& path) {
    const OwnedDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd.isOpen()) return lastError(FileError::Operation::Read, path);

    struct stat status {};
    std::string content;
    constexpr std::size_t kBlock = 64 * 1024;
    // The size is only a hint: files of the proc file system and growing files have another one. One byte more lets the
    // read that finds the end find it without moving all that has been read.
    std::size_t room = kBlock;
    if (::fstat(fd.get(), &status) == 0 && status.st_size > 0) room = static_cast<std::size_t>(status.st_size) + 1;
    for (;;) {
        const std::size_t used = content.size();
        content.resize(used < room ? room : used + kBlock);
        const ssize_t got = ::read(fd.get(), content.data() + used, content.size() - used);
        content.resize(used + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return lastError(FileError::Operation::Read, path);
        if (got == 0) return content;
    }
}

Result<void, FileError> writeFileAtomically(const fs::path& path, std::string_view content) {
    const auto temporary = createTemporaryBeside(path);
    if (!temporary) return failure(FileError{FileError::Operation::Write, path, errno});

    const OwnedDescriptor fd(temporary->fd);
    if (!writeAndSync(fd.get(), content) || ::rename(temporary->path.c_str(), path.c_str()) != 0) {
        const int code = errno;
        ::unlink(temporary->path.c_str());
        return failure(FileError{FileError::Operation::Write, path, code});
    }
    syncFolder(folderOf(path));
    return {};
}

Result<void, FileError> createFolder(const fs::path& path) {
    std::error_code error;
    const bool isNew = fs::create_directories(path, error);
    if (error) return failure(FileError{FileError::Operation::CreateFolder, path, error.value()});
    if (isNew) syncFolder(folderOf(path));
    return {};
}

Result<void, FileError> moveItem(const fs::path& from, const fs::path& to) {
    if (::rename(from.c_str(), to.c_str()) == 0) {
        syncFolder(folderOf(to));
        syncFolder(folderOf(from));
        return {};
    }
    if (errno != EXDEV) return lastError(FileError::Operation::Move, from);

    std::error_code error;
    const fs::path partial = to.string() + ".part";
    fs::copy_file(from, partial, fs::copy_options::overwrite_existing, error);
    if (!error) {
        const OwnedDescriptor fd(::open(partial.c_str(), O_RDONLY | O_CLOEXEC));
        if (!fd.isOpen() || ::fsync(fd.get()) != 0 || ::rename(partial.c_str(), to.c_str()) != 0)
            error = std::error_code(errno, std::generic_category());
    }
    if (error) {
        ::unlink(partial.c_str());
        return failure(FileError{FileError::Operation::Move, from, error.value()});
    }
    syncFolder(folderOf(to));
    return removeFile(from);
}

Result<void, FileError> removeFile(const fs::path& path) {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) return lastError(FileError::Operation::Remove, path);
    return {};
}

} // namespace morvelin
