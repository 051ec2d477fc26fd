#include "storage/FileState.h"

#include <sys/stat.h>

namespace morvelin {

FileState FileState::of(const std::filesystem::path& file) {
    struct stat found {};
    if (::stat(file.c_str(), &found) != 0) return {file};
    return {file,         true,          found.st_dev,
            found.st_ino, found.st_size, found.st_mtim.tv_sec * 1'000'000'000LL + found.st_mtim.tv_nsec};
}

} // namespace morvelin
