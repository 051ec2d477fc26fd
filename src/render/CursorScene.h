// The pointer of a film: its smooth path, its recorded shapes and its settings make the sprite of any moment. Shared by
// the compositors of a film; never changes.
#pragma once

#include <memory>
#include <optional>
#include <span>

#include "capture/CursorShapeLibrary.h"
#include "core/CursorEvent.h"
#include "core/Style.h"
#include "render/CursorArtwork.h"
#include "render/CursorPath.h"
#include "render/CursorSprite.h"

namespace morvelin {

class CursorScene {
public:
    /// `library` is not null: without recorded shapes the pointer is in the recording's picture. `artworkImage` shows in
    /// place of a recorded arrow where the settings' style has artwork; null when it could not be made.
    CursorScene(std::shared_ptr<const CursorShapeLibrary> library, CursorPath path, CursorSettings settings,
                std::shared_ptr<const Image> artworkImage);

    /// A scene from a take's events, with the artwork of its style.
    [[nodiscard]] static CursorScene make(std::span<const CursorEvent> events,
                                          std::shared_ptr<const CursorShapeLibrary> library,
                                          const CursorSettings& settings);

    /// The pointer at a moment of the recording; nothing while it is hidden or its shape isn't known.
    [[nodiscard]] std::optional<CursorSprite> sprite(SourceTime t) const;

private:
    std::shared_ptr<const CursorShapeLibrary> m_library;
    CursorPath m_path;
    CursorSettings m_settings;
    std::optional<CursorArtwork> m_artwork;
    std::shared_ptr<const Image> m_artworkImage;
};

} // namespace morvelin
