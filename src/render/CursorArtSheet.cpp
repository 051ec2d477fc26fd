#include "render/CursorArtSheet.h"

#include <cmath>
#include <memory>

#include <fmt/format.h>

#include "render/AccentColor.h"
#include "render/CursorArtwork.h"
#include "render/FocusOval.h"
#include "render/TapTapHand.h"

namespace morvelin {

namespace {

constexpr std::uint8_t kLight = 246;
constexpr std::uint8_t kDark = 28;
constexpr PixelSize kPointerPiece{480, 176};
constexpr PixelSize kHandPiece{640, 330};
constexpr PixelSize kTapPiece{150, 190};
constexpr PixelSize kOvalPiece{480, 270};

/// A piece's ground, its right half dark.
Image ground(PixelSize size, std::uint8_t left, std::uint8_t right) {
    Image image{size, {}};
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const std::uint8_t level = 2 * x < size.width ? left : right;
            image.pixels.insert(image.pixels.end(), {level, level, level, 255});
        }
    return image;
}

void lay(const Tile& tile, Image& image) {
    for (int y = tile.box.y; y < tile.box.bottom(); ++y) {
        std::uint8_t* to = image.pixels.data() + 4 * (static_cast<std::ptrdiff_t>(y) * image.size.width + tile.box.x);
        for (int x = 0; x < tile.box.width; ++x) {
            const Tile::Pixel& pixel = tile.row(y)[x];
            for (const float level : {pixel.blue, pixel.green, pixel.red}) {
                *to = static_cast<std::uint8_t>(std::lround(level * 255 + static_cast<float>(*to) * (1 - pixel.alpha)));
                ++to;
            }
            ++to;
        }
    }
}

void layPointer(const Image& pointer, double x, double y, double scale, Image& piece) {
    const double height = kCursorArtworkHeight * scale;
    lay(scaledTile(pointer, {x, y, height * pointer.size.width / pointer.size.height, height}, piece.size), piece);
}

/// A film of one picture as large as a piece, with one hand that taps for a second.
std::vector<TapTapHand> handsAt(TapTapStyle style, PixelSize size, NormalizedPoint tip, double height, EditTime t) {
    CompositionInstruction instruction;
    instruction.outputSize = size;
    instruction.tapTapStyle = style;
    instruction.tapTapKeyframes = {
        {UUID{}, EditTime(0), EditTime(1), tip.x / size.width, tip.y / size.height, height / size.height, {}}};
    StageGeometry stage;
    stage.frameRect = {0, 0, static_cast<double>(size.width), static_cast<double>(size.height)};
    return tapTapHandsAt(instruction, stage, t);
}

} // namespace

ArtSection pointerArtSheet() {
    ArtSection section{"Pointers", {}};
    for (const auto& [style, name] : rawValues(std::type_identity<CursorStyle>())) {
        const auto artwork = CursorArtwork::of(style);
        if (!artwork) continue;
        const Image pointer = artwork->image();
        Image piece = ground(kPointerPiece, kLight, kDark);
        for (const double left : {0.0, kPointerPiece.width / 2.0}) {
            layPointer(pointer, left + 12, 16, 6, piece);
            layPointer(pointer, left + 150, 16, 3, piece);
            layPointer(pointer, left + 160, 116, 1.5, piece);
            layPointer(pointer, left + 204, 116, 1, piece);
        }
        section.pieces.push_back({std::string(name), std::move(piece)});
    }
    return section;
}

ArtSection handArtSheet() {
    ArtSection section{"Hands", {}};
    for (const auto& [style, name] : rawValues(std::type_identity<TapTapStyle>()))
        for (const double bend : {0.0, 0.5, 1.0}) {
            Image piece = ground(kHandPiece, kLight, kDark);
            const double tip = style == TapTapStyle::Glove ? 130 : 40;
            for (const double left : {0.0, kHandPiece.width / 2.0})
                lay(drawn({style, {left + tip, 40}, 260, bend, 1}, kHandPiece), piece);
            section.pieces.push_back({fmt::format("{}, bent {:g}", name, bend), std::move(piece)});
        }
    return section;
}

ArtSection doubleTapArtSheet() {
    ArtSection section{"Double tap", {}};
    for (const auto& [style, name] : rawValues(std::type_identity<TapTapStyle>()))
        for (const double p : {0.03, 0.08, 0.11, 0.16, 0.22, 0.36, 0.41, 0.46, 0.52, 0.57, 0.63, 0.9}) {
            Image piece = ground(kTapPiece, kLight, kLight);
            const NormalizedPoint tip{style == TapTapStyle::Glove ? 70.0 : 25.0, 25};
            for (const TapTapHand& hand : handsAt(style, kTapPiece, tip, 130, EditTime(p)))
                lay(drawn(hand, kTapPiece), piece);
            section.pieces.push_back({fmt::format("{} {:g}", name, p), std::move(piece)});
        }
    return section;
}

ArtSection ovalArtSheet() {
    ArtSection section{"Focus ovals", {}};
    const Rectangle places[] = {{120, 60, 240, 150}, {60, 110, 360, 50}, {200, 40, 80, 190}};
    std::uint64_t seed = 1;
    for (const Rectangle& place : places) {
        Image piece = ground(kOvalPiece, kLight, kDark);
        lay(drawn({place, 4, kAccentColor, seed++}, kOvalPiece), piece);
        section.pieces.push_back({fmt::format("{:g} × {:g}", place.width, place.height), std::move(piece)});
    }
    return section;
}

} // namespace morvelin
