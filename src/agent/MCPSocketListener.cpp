#include "agent/MCPSocketListener.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "core/base/AdvisoryLock.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

/// Every system's path field takes this many bytes and a NUL; Linux alone would take four more.
constexpr std::size_t kMostPathBytes = 103;
constexpr int kBacklog = 8;
constexpr mode_t kFolderMode = 0700;
constexpr mode_t kSocketMode = 0600;

std::optional<sockaddr_un> addressOf(const fs::path& path) {
    if (path.native().size() > kMostPathBytes) return std::nullopt;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.native().size());
    return address;
}

const sockaddr* generic(const sockaddr_un& address) { return reinterpret_cast<const sockaddr*>(&address); }

/// Each folder on the way that isn't there yet, closed to other users.
Result<void, MCPSocketError> makeFolders(const fs::path& folder) {
    fs::path made;
    for (const fs::path& part : folder) {
        made /= part;
        if (::mkdir(made.c_str(), kFolderMode) == 0 || errno == EEXIST) continue;
        const int code = errno;
        std::error_code ignored;
        if (fs::is_directory(made, ignored)) continue;
        return failure(MCPSocketError(FileError{FileError::Operation::CreateFolder, made, code}));
    }
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored))
        return failure(MCPSocketError(FileError{FileError::Operation::CreateFolder, folder, ENOTDIR}));
    return {};
}

/// A copy that is too busy to take the connection just now is there all the same.
bool isSomebodyThere(const fs::path& url) {
    const auto address = addressOf(url);
    if (!address) return false;
    const OwnedDescriptor probe(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!probe.isOpen()) return false;
    return ::connect(probe.get(), generic(*address), sizeof *address) == 0 || errno == EAGAIN;
}

std::unexpected<MCPSocketError> callFailed(const char* call) {
    return failure(MCPSocketError(MCPSocketError::SocketFailed{call, errno}));
}

} // namespace

fs::path mcpSocketURL(const fs::path& home) {
    return home / "Library" / "Application Support" / "Morvelin" / "mcp.sock";
}

MCPSocketListener::MCPSocketListener(fs::path url, DescriptorLoop& loop, MCPConnectionLimits limits)
    : m_url(std::move(url)),
      m_loop(loop),
      m_limits(limits) {}

Result<void, MCPSocketError> MCPSocketListener::start() {
    if (auto folders = makeFolders(m_url.parent_path()); !folders) return folders;
    // Between looking for another copy and listening, a copy that starts at the same moment could take the socket away
    // again, so it is one at a time; but one that hangs here is not waited for. It is held up to the end.
    const auto turn = AdvisoryLock::take(m_url.parent_path(), AdvisoryLock::Target::Folder, 1_s);
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(m_url, ignored))) {
        if (isSomebodyThere(m_url)) return failure(MCPSocketError(MCPSocketError::AlreadyServing{m_url.string()}));
        (void)::unlink(m_url.c_str());
    }

    auto socket = makeSocket();
    if (!socket) return passOn(std::move(socket));
    auto wakeUp = std::make_unique<WakeUp>();
    if (!wakeUp->descriptor().isOpen()) return callFailed("socket");
    m_socket = std::move(*socket);
    m_wakeUp = std::move(wakeUp);
    m_ownFile = identityOf(m_url);
    try {
        m_thread = std::jthread([this] { run(); });
    } catch (const std::system_error& error) {
        letGo();
        return failure(MCPSocketError(MCPSocketError::SocketFailed{"listen", error.code().value()}));
    }
    return {};
}

Result<OwnedDescriptor, MCPSocketError> MCPSocketListener::makeSocket() const {
    OwnedDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.isOpen()) return callFailed("socket");
    const auto address = addressOf(m_url);
    if (!address) return failure(MCPSocketError(MCPSocketError::PathTooLong{m_url.string()}));
    // The file gets the socket's own mode, so that nobody else slips in between `bind` and `chmod`.
    (void)::fchmod(socket.get(), kSocketMode);
    if (::bind(socket.get(), generic(*address), sizeof *address) != 0) return callFailed("bind");
    if (::listen(socket.get(), kBacklog) != 0) return callFailed("listen");
    (void)::chmod(m_url.c_str(), kSocketMode);
    return socket;
}

void MCPSocketListener::stop() {
    if (!isListening()) return;
    m_wakeUp->ring();
    m_thread.join();
    letGo();
}

void MCPSocketListener::letGo() {
    m_socket.close();
    if (m_ownFile && identityOf(m_url) == m_ownFile) (void)::unlink(m_url.c_str());
    m_ownFile.reset();
}

std::optional<MCPSocketListener::FileIdentity> MCPSocketListener::identityOf(const fs::path& path) {
    struct stat facts {};
    if (::lstat(path.c_str(), &facts) != 0) return std::nullopt;
    return FileIdentity{facts.st_dev, facts.st_ino};
}

void MCPSocketListener::run() {
    constexpr int kPauseWhenShort = 100; // milliseconds
    (void)::pthread_setname_np(::pthread_self(), "mcp.listener");
    for (bool isShort = false;;) {
        std::array<pollfd, 2> waiting{pollfd{m_wakeUp->descriptor().get(), POLLIN, 0},
                                      pollfd{isShort ? -1 : m_socket.get(), POLLIN, 0}};
        (void)::poll(waiting.data(), waiting.size(), isShort ? kPauseWhenShort : -1);
        if (waiting[0].revents != 0) return;
        isShort = (isShort || waiting[1].revents != 0) && !acceptOne();
    }
}

bool MCPSocketListener::acceptOne() {
    OwnedDescriptor accepted(::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!accepted.isOpen()) return errno == EAGAIN || errno == EINTR || errno == ECONNABORTED;
    const auto connection = std::make_shared<MCPConnection>(std::move(accepted), m_loop, m_limits);
    m_loop.post([weak = std::weak_ptr(m_onConnection), connection] {
        if (const auto action = weak.lock(); action && *action) (*action)(connection);
    });
    return true;
}

} // namespace morvelin
