#include "agent/ClientPermissions.h"

#include <algorithm>

#include "core/base/Text.h"
#include "platform/DefaultsKeys.h"

namespace morvelin {

namespace {

using Names = ClientPermissions::Names;

bool holds(const Names& names, std::string_view name) {
    const std::string folded = caseFolded(name);
    return std::ranges::any_of(names, [&](const std::string& each) { return caseFolded(each) == folded; });
}

Names without(Names names, std::string_view name) {
    const std::string folded = caseFolded(name);
    std::erase_if(names, [&](const std::string& each) { return caseFolded(each) == folded; });
    return names;
}

} // namespace

Names ClientPermissions::approvedNames() const { return m_defaults.get(defaults::kMCPApprovedClients); }

bool ClientPermissions::isApproved(std::string_view name) const { return holds(approvedNames(), name); }

Result<void, std::string> ClientPermissions::approve(const std::string& name) {
    return m_defaults.change(defaults::kMCPApprovedClients, [name](Names names) {
        if (!holds(names, name)) names.push_back(name);
        return names;
    });
}

Result<void, std::string> ClientPermissions::revoke(const std::string& name) {
    // The spending goes first: should the second write fail, no name is left that may spend without being approved.
    if (auto denied = setNarration(name, NarrationPermission::Denied); !denied) return denied;
    return m_defaults.change(defaults::kMCPApprovedClients,
                             [name](Names names) { return without(std::move(names), name); });
}

Names ClientPermissions::narratingNames() const { return m_defaults.get(defaults::kMCPNarrationClients); }

bool ClientPermissions::mayNarrate(std::string_view name) const { return holds(narratingNames(), name); }

Result<void, std::string> ClientPermissions::setNarration(const std::string& name, NarrationPermission permission) {
    return m_defaults.change(defaults::kMCPNarrationClients, [name, permission](Names names) {
        names = without(std::move(names), name);
        if (permission == NarrationPermission::Granted) names.push_back(name);
        return names;
    });
}

} // namespace morvelin
