// What the user has allowed each agent client, by its name: to drive the program, and to spend voice credits.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/base/Result.h"
#include "platform/Defaults.h"

namespace morvelin {

enum class NarrationPermission { Denied, Granted };

/// Two lists of names in the settings. Names are compared without regard to case, and kept as the client wrote them.
/// Nothing is cached: what another process allows or revokes counts at once. Main thread only.
class ClientPermissions {
public:
    using Names = std::vector<std::string>;

    explicit ClientPermissions(Defaults& defaults) : m_defaults(defaults) {}

    [[nodiscard]] Names approvedNames() const;
    [[nodiscard]] bool isApproved(std::string_view name) const;
    /// A name that is there already, in whatever case, stays as it is.
    Result<void, std::string> approve(const std::string& name);
    /// Takes away every spelling of the name, and its permission to narrate.
    Result<void, std::string> revoke(const std::string& name);

    [[nodiscard]] Names narratingNames() const;
    [[nodiscard]] bool mayNarrate(std::string_view name) const;
    Result<void, std::string> setNarration(const std::string& name, NarrationPermission permission);

private:
    Defaults& m_defaults;
};

} // namespace morvelin
