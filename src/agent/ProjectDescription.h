// `describe_project`: everything an agent needs to edit a project without opening it. A wire format.
#pragma once

#include <optional>

#include "agent/ProjectSnapshot.h"
#include "core/base/JSON.h"

namespace morvelin {

/// A span of the edit timeline that a description is narrowed to; a missing end is the timeline's own.
struct DescriptionSpan {
    std::optional<EditTime> from;
    std::optional<EditTime> until;

    [[nodiscard]] bool isGiven() const { return from || until; }
};

enum class EditorState { Closed, Open };

/// Fails with one sentence when the span's start doesn't lie before its end.
Result<JSONValue, std::string> describeProject(const ProjectSnapshot& snapshot, DescriptionSpan span,
                                               EditorState editor);

/// `id`, `name`, `current` and `locked` of each version, in order.
[[nodiscard]] JSONValue describeVersions(const std::vector<ProjectVersion>& versions, const UUID& current);
[[nodiscard]] JSONValue describeVersion(const ProjectVersion& version, const UUID& current);

} // namespace morvelin
