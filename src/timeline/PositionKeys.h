// The two passes that turn the stored position track into the one that the camera follows.
#pragma once

#include <optional>
#include <vector>

#include "core/Keyframes.h"
#include "core/ProjectVersion.h"

namespace morvelin {

/// The keys in time order, each centre computed anew from its target for the zoom that the key serves: its own ramp's,
/// or else the greatest until the next key (5 s after the last). Run it whenever zooms, positions or `padding` change.
[[nodiscard]] std::vector<PositionKeyframe> refitPositionKeys(std::vector<PositionKeyframe> positions,
                                                              const std::vector<ZoomKeyframe>& zooms, double padding);

/// Extra keys (`isEphemeral`) that hold the view still through each zoom that no stored key governs, so that a move
/// between two far-apart keys does not cross a whole plateau. They are never stored.
[[nodiscard]] std::vector<PositionKeyframe> ephemeralPositionKeys(const std::vector<PositionKeyframe>& positions,
                                                                  std::vector<ZoomKeyframe> zooms, double padding,
                                                                  std::optional<Seconds> duration, IdSource& ids);

/// Both passes in turn: the keys that the camera follows through an edit of this length.
[[nodiscard]] std::vector<PositionKeyframe> cameraPositionKeys(const EditPayload& edit, Seconds duration);
[[nodiscard]] std::vector<PositionKeyframe> cameraPositionKeys(const std::vector<PositionKeyframe>& stored,
                                                               const std::vector<ZoomKeyframe>& zooms, double padding,
                                                               Seconds duration);

} // namespace morvelin
