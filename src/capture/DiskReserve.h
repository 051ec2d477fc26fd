// Space kept free beside a growing movie, so that a take that has filled the disk can still be made a project.
#pragma once

#include <filesystem>
#include <utility>

namespace morvelin {

/// Holds blocks of the disk in a file without a name: they are free again when the reserve goes or the process dies.
class DiskReserve {
public:
    DiskReserve() = default;
    /// Takes 16 MiB in `folder`, at most a sixteenth of what is free; nothing where the file system can't.
    explicit DiskReserve(const std::filesystem::path& folder);
    DiskReserve(DiskReserve&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    DiskReserve& operator=(DiskReserve&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~DiskReserve() { release(); }

    void release();

private:
    int m_descriptor = -1;
};

} // namespace morvelin
