// How a project's versions are named, and when two names count as the same.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "core/ProjectVersion.h"

namespace morvelin {

/// Without regard to case, diacritics and white space at the ends.
[[nodiscard]] bool isSameVersionName(std::string_view a, std::string_view b);

/// Whether a version other than `except` has that name already.
[[nodiscard]] bool isVersionNameTaken(std::string_view name, std::span<const ProjectVersion> versions,
                                      const UUID& except = {});

/// "Version N" for a copy of the Original, "<name> copy" for one of any other version; always a free name.
[[nodiscard]] std::string nameOfCopy(const ProjectVersion& source, std::span<const ProjectVersion> versions);

} // namespace morvelin
