#include "agent/MCPClient.h"

#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace morvelin {

namespace {

constexpr const char* kGone = "The running Morvelin ended the connection before it had answered.";

} // namespace

std::optional<MCPClient> MCPClient::connect(const std::filesystem::path& socketURL) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string& path = socketURL.native();
    if (path.size() >= sizeof address.sun_path) return std::nullopt;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    OwnedDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket.isOpen()) return std::nullopt;
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return std::nullopt;
    return MCPClient(std::move(socket));
}

Result<JSONValue, std::string> MCPClient::request(const std::string& method, JSONValue params,
                                                  const Impatience& impatience) {
    const int id = ++m_lastID;
    const JSONValue message{{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", std::move(params)}};
    if (!writeAll(writeJSON(message, JSONStyle::Compact) + "\n")) return failure(std::string(kGone));
    const auto line = readLine(impatience);
    if (!line) return failure(std::string(kGone));
    const auto answer = parseJSON(*line);
    if (!answer || !answer->is_object() || answer->value("id", JSONValue()) != id)
        return failure(std::string("The running Morvelin gave an answer that can’t be understood."));
    if (const auto error = answer->find("error"); error != answer->end())
        return failure(error->is_object() ? error->value("message", "") : std::string());
    return answer->value("result", JSONValue::object());
}

bool MCPClient::writeAll(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

std::optional<std::string> MCPClient::readLine(const Impatience& impatience) {
    bool isPatient = impatience.action != nullptr;
    std::size_t searched = 0;
    for (;;) {
        if (const auto end = m_received.find('\n', searched); end != std::string::npos) {
            std::string line = m_received.substr(0, end);
            m_received.erase(0, end + 1);
            return line;
        }
        searched = m_received.size();
        if (isPatient) {
            pollfd socket{m_socket.get(), POLLIN, 0};
            if (::poll(&socket, 1, static_cast<int>(impatience.after.value * 1000)) == 0) {
                impatience.action();
                isPatient = false;
            }
        }
        char bytes[65536];
        const ssize_t count = ::recv(m_socket.get(), bytes, sizeof bytes, 0);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return std::nullopt;
        m_received.append(bytes, static_cast<std::size_t>(count));
    }
}

} // namespace morvelin
