#include "core/base/CopyFolder.h"

#include <cerrno>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/base/OwnedDescriptor.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBlock = 4 * 1024 * 1024;

/// From where both descriptors stand to the end; errno tells why when it fails.
bool copyByReading(int from, int to, const std::stop_token& stop) {
    const auto block = std::make_unique<char[]>(kBlock);
    while (!stop.stop_requested()) {
        const ssize_t got = ::read(from, block.get(), kBlock);
        if (got == 0) return true;
        if (got < 0 && errno == EINTR) continue;
        if (got < 0 || !writeAll(to, {block.get(), static_cast<std::size_t>(got)})) return false;
    }
    errno = ECANCELED;
    return false;
}

/// The kernel copies, or only shares the blocks. Where it can't between these two files, the bytes are read and written.
bool copyContent(int from, int to, const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        const ssize_t copied = ::copy_file_range(from, nullptr, to, nullptr, kBlock * 16, 0);
        if (copied > 0 || (copied < 0 && errno == EINTR)) continue;
        if (copied < 0 && (errno == ENOSPC || errno == EIO || errno == EFBIG || errno == EDQUOT)) return false;
        // Some file systems claim to be at the end at once; reading finds out.
        return copyByReading(from, to, stop);
    }
    errno = ECANCELED;
    return false;
}

Result<void, FileError> copyOneFile(const fs::path& from, const fs::path& to, const std::stop_token& stop) {
    const OwnedDescriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (!source.isOpen() || ::fstat(source.get(), &status) != 0)
        return failure(FileError{FileError::Operation::Read, from, errno});
    const OwnedDescriptor target(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, status.st_mode & 0777));
    if (!target.isOpen() || !copyContent(source.get(), target.get(), stop) || ::fsync(target.get()) != 0)
        return failure(FileError{FileError::Operation::Write, to, errno});
    return {};
}

Result<void, FileError> copyItem(const fs::directory_entry& item, const fs::path& to, const std::stop_token& stop) {
    std::error_code error;
    switch (item.symlink_status(error).type()) {
    case fs::file_type::directory: return copyFolder(item.path(), to, stop);
    case fs::file_type::regular: return copyOneFile(item.path(), to, stop);
    case fs::file_type::symlink: fs::copy_symlink(item.path(), to, error); break;
    default: break; // sockets and the like hold nothing
    }
    if (error) return failure(FileError{FileError::Operation::Write, to, error.value()});
    return {};
}

} // namespace

Result<void, FileError> copyFolder(const fs::path& from, const fs::path& to, std::stop_token stop) {
    std::error_code error;
    fs::directory_iterator item(from, error);
    if (error) return failure(FileError{FileError::Operation::Read, from, error.value()});
    if (!fs::create_directory(to, error))
        return failure(FileError{FileError::Operation::CreateFolder, to, error ? error.value() : EEXIST});
    for (const fs::directory_iterator end; !error && item != end; item.increment(error))
        if (auto copied = copyItem(*item, to / item->path().filename(), stop); !copied) return copied;
    if (error) return failure(FileError{FileError::Operation::Read, from, error.value()});
    const OwnedDescriptor folder(::open(to.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen()) (void)::fsync(folder.get());
    return {};
}

} // namespace morvelin
