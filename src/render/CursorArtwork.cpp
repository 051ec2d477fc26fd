#include "render/CursorArtwork.h"

#include <cmath>

#include "render/CursorDrawing.h"

namespace morvelin {

namespace {

std::optional<CursorDrawing> drawingOf(CursorStyle style) {
    switch (style) {
    case CursorStyle::System: return std::nullopt;
    case CursorStyle::Ink: return inkPointer();
    case CursorStyle::Paper: return paperPointer();
    case CursorStyle::Amber: return amberPointer();
    case CursorStyle::FrostedAmber: return frostedAmberPointer();
    case CursorStyle::FrostedMono: return frostedMonoPointer();
    case CursorStyle::Dusk: return duskPointer();
    case CursorStyle::DuskSprite: return duskSpritePointer();
    case CursorStyle::AmberSprite: return amberSpritePointer();
    case CursorStyle::MonoSprite: return monoSpritePointer();
    }
    return std::nullopt;
}

} // namespace

std::optional<CursorArtwork> CursorArtwork::of(CursorStyle style) {
    const auto drawing = drawingOf(style);
    if (!drawing) return std::nullopt;
    return CursorArtwork{style, {drawing->hotSpot.x / drawing->width, drawing->hotSpot.y / drawing->height}};
}

Image CursorArtwork::image() const {
    const auto drawing = drawingOf(style);
    if (!drawing) return {};
    const double unit = drawing->unit;
    Canvas canvas({0, 0, static_cast<int>(std::ceil(drawing->width * unit)),
                   static_cast<int>(std::ceil(drawing->height * unit))});
    canvas.placed({{}, unit, 0}, [&] { drawing->draw(canvas); });
    const Image image = canvas.image();
    const TileShadow& shadow = drawing->shadow;
    return withShadow(image, {shadow.offset * unit, shadow.sigma * unit, shadow.opacity});
}

} // namespace morvelin
