// A movie's file while it is written: every failure keeps the system's own reason. Owned by the muxer.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <utility>

#include "core/base/Result.h"

namespace morvelin {

/// A new file, open for reading and writing. Operations give the system's error number when they fail.
class OutputFile {
public:
    /// Makes the file, or empties the one that is there.
    static Result<OutputFile, int> create(const std::filesystem::path& path);

    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&& other) noexcept;
    ~OutputFile();

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    /// Length of the file so far.
    [[nodiscard]] std::int64_t size() const { return m_size; }

    Result<void, int> writeAt(std::int64_t offset, std::span<const std::uint8_t> bytes);
    /// Fills all of `bytes`.
    Result<void, int> readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const;
    Result<void, int> truncate(std::int64_t size);
    /// Asks the system to begin with bringing the written part to disk, without waiting for it.
    void beginSync() const;
    /// Waits until the file and its name are on disk.
    Result<void, int> sync() const;

private:
    OutputFile(int descriptor, std::filesystem::path path);

    int m_descriptor = -1;
    std::filesystem::path m_path;
    std::int64_t m_size = 0;
};

} // namespace morvelin
