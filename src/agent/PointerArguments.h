// The arguments that the pointer tools share, read and checked with one wording.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "agent/ArgumentReader.h"
#include "agent/Gestures.h"
#include "agent/MCPHost.h"
#include "core/Geometry.h"

namespace morvelin {

/// A position from two arguments, each within 0–1.
Result<NormalizedPoint, std::string> positionArgument(const ArgumentReader& arguments, const std::string& xName,
                                                      const std::string& yName);

/// Seconds within 0 and what a gesture may take.
[[nodiscard]] Seconds durationArgument(const ArgumentReader& arguments, double otherwise);

/// `left`, `right` or `middle`.
Result<PointerButton, std::string> buttonArgument(const ArgumentReader& arguments);
[[nodiscard]] std::string nameOf(PointerButton button);

/// The distance to scroll, in whole pixels.
Result<Gestures::Distance, std::string> distanceArgument(const ArgumentReader& arguments);

/// The extra modifiers of a key.
[[nodiscard]] std::vector<std::string> modifiersArgument(const ArgumentReader& arguments);

/// No display is meant by an argument: the one of this number is gone, or there is none at all.
struct NoDisplay {
    std::optional<std::int64_t> id;
};
/// Where 0–1 positions lie on the desktop: in what is being recorded, else on the display that is named.
Result<PointerSpace, std::variant<std::string, NoDisplay>> spaceArgument(const ArgumentReader& arguments,
                                                                         MCPHost& host);

} // namespace morvelin
