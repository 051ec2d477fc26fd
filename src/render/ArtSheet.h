// A contact sheet of all that the program draws by itself, for whoever works on it: every piece, labelled, in one
// picture.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "core/Style.h"
#include "platform/Picture.h"

namespace morvelin {

struct ArtPiece {
    std::string label;
    Image image; ///< premultiplied; the pieces of a section have one size
};

struct ArtSection {
    std::string title;
    std::vector<ArtPiece> pieces;
};

/// A background by itself, as a film's first frame would show it.
[[nodiscard]] Image backgroundArt(const Background& background, PixelSize size);

[[nodiscard]] ArtSection gradientArtSheet();
[[nodiscard]] ArtSection wallpaperArtSheet();
[[nodiscard]] ArtSection solidArtSheet();

/// Every section that there is, in the order of the sheet.
[[nodiscard]] std::vector<ArtSection> artSections();
/// The sections below each other, their pieces in rows.
[[nodiscard]] Image artSheet(std::span<const ArtSection> sections);

} // namespace morvelin
