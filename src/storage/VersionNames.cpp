#include "storage/VersionNames.h"

#include <algorithm>

#include <fmt/format.h>

#include "core/base/Text.h"

namespace morvelin {

namespace {

std::string comparable(std::string_view name) { return withoutCaseAndDiacritics(trimmed(name)); }

} // namespace

bool isSameVersionName(std::string_view a, std::string_view b) { return comparable(a) == comparable(b); }

bool isVersionNameTaken(std::string_view name, std::span<const ProjectVersion> versions, const UUID& except) {
    return std::ranges::any_of(versions, [&](const ProjectVersion& version) {
        return version.id != except && isSameVersionName(version.name, name);
    });
}

std::string nameOfCopy(const ProjectVersion& source, std::span<const ProjectVersion> versions) {
    if (source.isInitial) {
        auto number = std::ranges::count(versions, false, &ProjectVersion::isInitial) + 1;
        while (isVersionNameTaken(fmt::format("Version {}", number), versions)) ++number;
        return fmt::format("Version {}", number);
    }
    const std::string first = source.name + " copy";
    std::string name = first;
    for (int number = 2; isVersionNameTaken(name, versions); ++number) name = fmt::format("{} {}", first, number);
    return name;
}

} // namespace morvelin
