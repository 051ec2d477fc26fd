// Draws the caption over a frame: its text in a dark box, with the words that have been spoken in full white. Owned by
// the overlay layer.
#pragma once

#include <optional>
#include <vector>

#include "render/CaptionOverlay.h"
#include "render/OverlaySprite.h"

namespace morvelin {

/// A part of the output in which a caption is drawn as one of its words is. At even coordinates, so that no sample of a
/// plane lies in two.
struct WordArea {
    PixelBox box;
    std::size_t word = 0;
};

/// A caption's text in its box, whatever words are lit.
struct CaptionArt {
    Tile lit;
    Tile unlit;
    std::vector<WordArea> areas; ///< the whole output
};

[[nodiscard]] CaptionArt captionArt(const CaptionPlacement& caption, PixelSize output);

/// Sets a text once, and then only chooses word by word between two sprites of it, lit and unlit.
class CaptionLayer {
public:
    CaptionLayer(PixelSize output, Subsampling subsampling) : m_output(output), m_subsampling(subsampling) {}

    /// Aims at a caption. Adds the boxes that will be drawn differently to `boxes`.
    void prepare(const std::optional<CaptionPlacement>& caption, std::vector<PixelBox>& boxes);
    /// Lays the part in `box` over what is there.
    void draw(const PixelBox& box, Picture& out) const;

private:
    PixelSize m_output;
    Subsampling m_subsampling;
    std::optional<CaptionPlacement> m_caption;
    std::optional<OverlaySprite> m_lit;
    std::optional<OverlaySprite> m_unlit;
    std::vector<WordArea> m_areas;
};

} // namespace morvelin
