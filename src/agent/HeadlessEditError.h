// Why an edit was refused, in the words that an agent reads.
#pragma once

#include <string>
#include <variant>

namespace morvelin {

class HeadlessEditError {
public:
    struct UnknownVersion {
        std::string name;
    };
    /// The text of the store's own error, as it stands.
    struct VersionRename {
        std::string text;
    };
    struct VersionDelete {
        std::string text;
    };
    struct NoVersions {};
    using Reason = std::variant<UnknownVersion, VersionRename, VersionDelete, NoVersions>;

    HeadlessEditError(Reason reason) : m_reason(std::move(reason)) {}

    [[nodiscard]] std::string description() const;

private:
    Reason m_reason;
};

} // namespace morvelin
