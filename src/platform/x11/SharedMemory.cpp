#include "platform/x11/SharedMemory.h"

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <unistd.h>

namespace morvelin {

namespace {

/// Whether the server carried out a checked request.
bool succeeded(const X11Connection& connection, xcb_void_cookie_t cookie) {
    return owned(xcb_request_check(connection.get(), cookie)) == nullptr && connection.isAlive();
}

} // namespace

Result<SharedMemory, ScreenError> SharedMemory::create(const X11Connection& connection, std::size_t size) {
    if (connection.hasExtension(xcb_shm_id)) {
        if (auto shared = byDescriptor(connection, size)) return std::move(*shared);
        if (auto shared = bySystemV(connection, size)) return std::move(*shared);
    }
    return failure(connection.isAlive() ? connection.lacks("MIT-SHM") : connection.lost());
}

std::optional<SharedMemory> SharedMemory::byDescriptor(const X11Connection& connection, std::size_t size) {
    const auto version = owned(
        xcb_shm_query_version_reply(connection.get(), xcb_shm_query_version(connection.get()), nullptr));
    if (!version || (version->major_version == 1 && version->minor_version < 2)) return std::nullopt;

    const int descriptor = memfd_create("morvelin-screen", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (descriptor < 0) return std::nullopt;
    SharedMemory shared;
    void* memory = MAP_FAILED;
    if (ftruncate(descriptor, static_cast<off_t>(size)) == 0)
        memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) {
        close(descriptor);
        return std::nullopt;
    }
    // A sealed size can't fault the server in the middle of a copy.
    fcntl(descriptor, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL);
    shared.m_data = static_cast<std::uint8_t*>(memory);
    shared.m_size = size;
    shared.m_segment = xcb_generate_id(connection.get());
    // The request closes the descriptor once it is sent.
    if (!succeeded(connection, xcb_shm_attach_fd_checked(connection.get(), shared.m_segment, descriptor, 0)))
        return std::nullopt;
    return shared;
}

std::optional<SharedMemory> SharedMemory::bySystemV(const X11Connection& connection, std::size_t size) {
    const int id = shmget(IPC_PRIVATE, size, IPC_CREAT | 0600);
    if (id < 0) return std::nullopt;
    void* memory = shmat(id, nullptr, 0);
    SharedMemory shared;
    shared.m_origin = Origin::SystemV;
    shared.m_segment = xcb_generate_id(connection.get());
    bool isAttached = false;
    if (memory != reinterpret_cast<void*>(-1)) {
        shared.m_data = static_cast<std::uint8_t*>(memory);
        shared.m_size = size;
        isAttached = succeeded(
            connection, xcb_shm_attach_checked(connection.get(), shared.m_segment, static_cast<std::uint32_t>(id), 0));
    }
    // Marked for removal as soon as both sides hold it, so that not even a kill leaves it behind.
    shmctl(id, IPC_RMID, nullptr);
    if (!isAttached) return std::nullopt;
    return shared;
}

SharedMemory::SharedMemory(SharedMemory&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)),
      m_size(std::exchange(other.m_size, 0U)),
      m_segment(other.m_segment),
      m_origin(other.m_origin) {}

SharedMemory& SharedMemory::operator=(SharedMemory&& other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    std::swap(m_segment, other.m_segment);
    std::swap(m_origin, other.m_origin);
    return *this;
}

SharedMemory::~SharedMemory() {
    if (m_data == nullptr) return;
    if (m_origin == Origin::SystemV)
        shmdt(m_data);
    else
        munmap(m_data, m_size);
}

} // namespace morvelin
