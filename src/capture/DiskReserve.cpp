#include "capture/DiskReserve.h"

#include <algorithm>
#include <cstdint>

#include <fcntl.h>
#include <unistd.h>

namespace morvelin {

namespace {

constexpr std::uintmax_t kReserve = 16U << 20;
constexpr std::uintmax_t kShareOfFreeSpace = 16;

} // namespace

DiskReserve::DiskReserve(const std::filesystem::path& folder) {
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(folder, error);
    if (error) return;
    m_descriptor = open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (m_descriptor < 0) return;
    const auto size = static_cast<off_t>(std::min(kReserve, space.available / kShareOfFreeSpace));
    if (fallocate(m_descriptor, 0, 0, std::max<off_t>(size, 1)) != 0) release();
}

void DiskReserve::release() {
    if (m_descriptor >= 0) close(std::exchange(m_descriptor, -1));
}

} // namespace morvelin
