#include "render/ArtSheet.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <cairo.h>

#include "media/ColorConversion.h"
#include "render/BackgroundPresets.h"
#include "render/Canvas.h"
#include "render/CursorArtSheet.h"
#include "render/CursorArtSheet.h"
#include "render/StageLayer.h"

namespace morvelin {

namespace {

constexpr PixelSize kBackgroundTile{480, 270};
constexpr PixelSize kSolidTile{224, 126};

constexpr int kSheetWidth = 2080;
constexpr int kGap = 24;
constexpr int kTitleHeight = 64;
constexpr int kLabelHeight = 30;
constexpr std::uint8_t kPaper = 38; ///< the grey that the pieces lie on

/// Lays premultiplied pixels over the sheet's opaque ones.
void layOver(const Image& piece, int left, int top, Image& sheet) {
    for (int y = 0; y < piece.size.height; ++y) {
        const std::uint8_t* from = piece.pixels.data() + 4 * static_cast<std::ptrdiff_t>(y) * piece.size.width;
        std::uint8_t* to = sheet.pixels.data() + 4 * (static_cast<std::ptrdiff_t>(top + y) * sheet.size.width + left);
        for (int byte = 0; byte < 4 * piece.size.width; ++byte) {
            const int alpha = from[byte | 3];
            to[byte] = static_cast<std::uint8_t>(from[byte] + to[byte] * (255 - alpha) / 255);
        }
    }
}

void write(const std::string& text, double size, int left, int top, Image& sheet) {
    const PixelBox box{0, 0, kSheetWidth - left, static_cast<int>(2 * size)};
    const Canvas canvas(box);
    cairo_t* context = canvas.context();
    cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, size);
    cairo_set_source_rgb(context, 0.86, 0.86, 0.88);
    cairo_move_to(context, 0, 1.2 * size);
    cairo_show_text(context, text.c_str());
    layOver(canvas.image(), left, top, sheet);
}

PixelSize pieceSize(const ArtSection& section) {
    return section.pieces.empty() ? PixelSize{1, 1} : section.pieces.front().image.size;
}

int columnsOf(const ArtSection& section) {
    return std::max(1, (kSheetWidth - kGap) / (pieceSize(section).width + kGap));
}

int heightOf(const ArtSection& section) {
    const int columns = columnsOf(section);
    const int rows = (static_cast<int>(section.pieces.size()) + columns - 1) / columns;
    return kTitleHeight + rows * (pieceSize(section).height + kLabelHeight + kGap);
}

void drawSection(const ArtSection& section, int top, Image& sheet) {
    write(section.title, 28, kGap, top + kGap / 2, sheet);
    const PixelSize size = pieceSize(section);
    const int columns = columnsOf(section);
    for (int i = 0; i < static_cast<int>(section.pieces.size()); ++i) {
        const ArtPiece& piece = section.pieces[static_cast<std::size_t>(i)];
        const int left = kGap + i % columns * (size.width + kGap);
        const int y = top + kTitleHeight + i / columns * (size.height + kLabelHeight + kGap);
        layOver(piece.image, left, y, sheet);
        write(piece.label, 16, left, y + size.height + 2, sheet);
    }
}

Background named(std::string_view name) { return BackgroundPresets::named(name, {}).value_or(Background()); }

} // namespace

Image backgroundArt(const Background& background, PixelSize size) {
    CompositionInstruction instruction;
    instruction.outputSize = size;
    instruction.background = background;
    StageLayer layer(std::make_shared<const StageImage>(instruction, Subsampling::None));
    Picture picture(size, Subsampling::None);
    layer.draw({0, 0, size.width, size.height}, picture);
    return imageOf(picture);
}

ArtSection gradientArtSheet() {
    ArtSection section{"Gradients", {}};
    for (const auto& preset : BackgroundPresets::gradients())
        section.pieces.push_back({std::string(preset.id), backgroundArt(named(preset.id), kBackgroundTile)});
    return section;
}

ArtSection wallpaperArtSheet() {
    ArtSection section{"Wallpapers", {}};
    for (const std::string_view id : BackgroundPresets::wallpaperIDs())
        section.pieces.push_back({std::string(id), backgroundArt(named(id), kBackgroundTile)});
    return section;
}

ArtSection solidArtSheet() {
    ArtSection section{"Solid colours", {}};
    for (const auto& preset : BackgroundPresets::solids())
        section.pieces.push_back({std::string(preset.name), backgroundArt(named(preset.name), kSolidTile)});
    return section;
}

std::vector<ArtSection> artSections() {
    return {gradientArtSheet(), wallpaperArtSheet(), solidArtSheet(), pointerArtSheet(),
            handArtSheet(),     doubleTapArtSheet(), ovalArtSheet()};
}

Image artSheet(std::span<const ArtSection> sections) {
    int height = kGap;
    for (const ArtSection& section : sections) height += heightOf(section);
    Image sheet{{kSheetWidth, height}, {}};
    sheet.pixels.assign(4 * static_cast<std::size_t>(kSheetWidth) * static_cast<std::size_t>(height), kPaper);
    for (std::size_t alpha = 3; alpha < sheet.pixels.size(); alpha += 4) sheet.pixels[alpha] = 255;
    int top = 0;
    for (const ArtSection& section : sections) {
        drawSection(section, top, sheet);
        top += heightOf(section);
    }
    return sheet;
}

} // namespace morvelin
