#include "storage/OpenFolder.h"

#include <fcntl.h>

namespace morvelin {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

} // namespace

OpenFolder::OpenFolder(const std::filesystem::path& path)
    : m_descriptor(::open(path.c_str(), kFolderFlags)),
      m_error(errno) {}

OpenFolder::OpenFolder(const OpenFolder& parent, const std::string& path)
    : m_descriptor(::openat(parent.m_descriptor.get(), path.c_str(), kFolderFlags)),
      m_error(errno) {}

std::optional<struct stat> OpenFolder::status(const char* path) const {
    struct stat found {};
    if (::fstatat(m_descriptor.get(), path, &found, 0) != 0) return std::nullopt;
    return found;
}

Result<OpenFolder::File, int> OpenFolder::read(const std::string& path) const {
    const OwnedDescriptor descriptor(::openat(m_descriptor.get(), path.c_str(), O_RDONLY | O_CLOEXEC));
    File file{};
    if (!descriptor.isOpen() || ::fstat(descriptor.get(), &file.status) != 0) return failure(errno);
    const auto size = static_cast<std::size_t>(file.status.st_size);
    file.text.resize(size + 1); // a read that asks for more than there is finds the end at once
    std::size_t used = 0;
    for (ssize_t count = -1; count != 0 && used != size;) {
        count = ::read(descriptor.get(), file.text.data() + used, file.text.size() - used);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return failure(errno);
        used += static_cast<std::size_t>(count);
        if (used == file.text.size()) file.text.resize(2 * used); // it has grown
    }
    file.text.resize(used);
    return file;
}

} // namespace morvelin
