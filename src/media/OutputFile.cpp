#include "media/OutputFile.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace morvelin {

Result<OutputFile, int> OutputFile::create(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) return failure(errno);
    return OutputFile(descriptor, path);
}

OutputFile::OutputFile(int descriptor, std::filesystem::path path)
    : m_descriptor(descriptor),
      m_path(std::move(path)) {}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)),
      m_path(std::move(other.m_path)),
      m_size(other.m_size) {}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_path, other.m_path);
    std::swap(m_size, other.m_size);
    return *this;
}

OutputFile::~OutputFile() {
    if (m_descriptor >= 0) ::close(m_descriptor);
}

Result<void, int> OutputFile::writeAt(std::int64_t offset, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::pwrite(m_descriptor, bytes.data(), bytes.size(), offset);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return failure(errno);
        offset += written;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        m_size = std::max(m_size, offset);
    }
    return {};
}

Result<void, int> OutputFile::readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = ::pread(m_descriptor, bytes.data(), bytes.size(), offset);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return failure(errno);
        if (count == 0) return failure(EIO); // somebody else has cut our file
        offset += count;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return {};
}

Result<void, int> OutputFile::truncate(std::int64_t size) {
    while (::ftruncate(m_descriptor, size) != 0)
        if (errno != EINTR) return failure(errno);
    m_size = size;
    return {};
}

void OutputFile::beginSync() const { (void)::sync_file_range(m_descriptor, 0, 0, SYNC_FILE_RANGE_WRITE); }

Result<void, int> OutputFile::sync() const {
    if (::fsync(m_descriptor) != 0) return failure(errno);
    // A new file is only safe against a power cut once its folder is; file systems that can't sync a folder need not.
    const std::filesystem::path folder = m_path.has_parent_path() ? m_path.parent_path() : std::filesystem::path(".");
    const int folderDescriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderDescriptor >= 0) {
        (void)::fsync(folderDescriptor);
        ::close(folderDescriptor);
    }
    return {};
}

} // namespace morvelin
