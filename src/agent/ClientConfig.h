// What agent clients' configuration files hold for this server, as text in and text out; no file is touched here.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/base/Result.h"

namespace morvelin {

/// The text is not of the kind that was expected; it must be left alone.
struct MalformedConfig {};

/// One kind of configuration text. A text is absent where there is no file yet.
class ClientConfig {
public:
    using Edited = Result<std::optional<std::string>, MalformedConfig>;

    virtual ~ClientConfig() = default;

    /// The command under this server's key; absent as well where the text is malformed.
    [[nodiscard]] virtual std::optional<std::string> command(std::string_view text) const = 0;
    /// The text with this server's entry made or replaced. Everything else in it is kept.
    [[nodiscard]] virtual Edited withServer(const std::optional<std::string>& text,
                                            const std::string& command) const = 0;
    /// The text without this server's entry, or absent where it had none and nothing is to be written.
    [[nodiscard]] virtual Edited withoutServer(const std::string& text) const = 0;
};

/// This server's key in every client's file.
inline constexpr const char* kMCPServerKey = "morvelin";

/// JSON with an object `mcpServers`. The order of members is kept.
class JSONClientConfig final : public ClientConfig {
public:
    [[nodiscard]] std::optional<std::string> command(std::string_view text) const override;
    [[nodiscard]] Edited withServer(const std::optional<std::string>& text, const std::string& command) const override;
    [[nodiscard]] Edited withoutServer(const std::string& text) const override;
};

/// TOML with a table `mcp_servers.morvelin`, edited line by line: all other lines stay exactly as they were.
class TOMLClientConfig final : public ClientConfig {
public:
    [[nodiscard]] std::optional<std::string> command(std::string_view text) const override;
    [[nodiscard]] Edited withServer(const std::optional<std::string>& text, const std::string& command) const override;
    [[nodiscard]] Edited withoutServer(const std::string& text) const override;
};

} // namespace morvelin
