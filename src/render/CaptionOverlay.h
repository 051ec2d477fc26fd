// The caption that is burned into a frame: which text shows, and which of its words are lit. Pure; used by the frame
// plan.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/base/Time.h"
#include "render/CompositionInstruction.h"
#include "render/StageGeometry.h"

namespace morvelin {

struct CaptionWord {
    std::string text; ///< UTF-8, without white space
    bool isLit = true;

    bool operator==(const CaptionWord&) const = default;
};

/// One caption at one moment.
struct CaptionPlacement {
    std::vector<CaptionWord> words; ///< of the cue's text
    double fontSize = 0;            ///< output pixels
    Rectangle videoRect;            ///< that it sits in, near the lower edge

    bool operator==(const CaptionPlacement&) const = default;
};

/// The caption at `t`, if one shows.
[[nodiscard]] std::optional<CaptionPlacement> captionAt(const CompositionInstruction& instruction,
                                                        const Rectangle& videoRect, EditTime t);

} // namespace morvelin
