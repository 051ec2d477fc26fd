// Memory that we and the X server both see: the server draws pictures into it. Owned by a screen stream.
#pragma once

#include <cstdint>

#include <xcb/shm.h>

#include "platform/x11/X11Connection.h"

namespace morvelin {

class SharedMemory {
public:
    /// Shares `size` bytes with the connection's server: by a descriptor where the server takes one, else by a
    /// System V segment. Fails with `MissingExtension` where the server is on another machine.
    static Result<SharedMemory, ScreenError> create(const X11Connection& connection, std::size_t size);

    SharedMemory(SharedMemory&& other) noexcept;
    SharedMemory& operator=(SharedMemory&& other) noexcept;
    ~SharedMemory();

    [[nodiscard]] const std::uint8_t* data() const { return m_data; }
    [[nodiscard]] std::size_t size() const { return m_size; }
    /// The server's name for it; the server forgets it when the connection ends.
    [[nodiscard]] xcb_shm_seg_t segment() const { return m_segment; }

private:
    enum class Origin { Descriptor, SystemV };

    SharedMemory() = default;
    static std::optional<SharedMemory> byDescriptor(const X11Connection& connection, std::size_t size);
    static std::optional<SharedMemory> bySystemV(const X11Connection& connection, std::size_t size);

    std::uint8_t* m_data = nullptr;
    std::size_t m_size = 0;
    xcb_shm_seg_t m_segment = 0;
    Origin m_origin = Origin::Descriptor;
};

} // namespace morvelin
