#include "render/CaptionLayer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "render/CaptionText.h"
#include "render/PicturePlacement.h"
#include "render/RoundedCoverage.h"

namespace morvelin {

namespace {

constexpr double kPaddingX = 0.55;     ///< of the font's size
constexpr double kPaddingY = 0.32;     ///< of the font's size
constexpr double kCornerRadius = 0.42; ///< of the font's size
constexpr double kTextWidth = 0.82;    ///< of the picture's, with the padding
constexpr double kBottomMargin = 0.05; ///< of the picture's height
constexpr float kBoxOpacity = 0.55F;
/// Of words that are yet to be spoken.
constexpr float kUnlitOpacity = 0.55F;

bool haveSameText(const CaptionPlacement& a, const CaptionPlacement& b) {
    return a.fontSize == b.fontSize && a.videoRect == b.videoRect &&
           std::ranges::equal(a.words, b.words, {}, &CaptionWord::text, &CaptionWord::text);
}

std::string textOf(const CaptionPlacement& caption) {
    std::string text;
    for (const CaptionWord& word : caption.words) {
        if (!text.empty()) text += ' ';
        text += word.text;
    }
    return text;
}

/// The text at an opacity, with the black box behind it.
Tile boxedText(const Tile& text, float opacity, const RoundedRectangle& box, PixelSize output) {
    Tile tile = text;
    Coverage coverage(box, output.width, 1);
    for (int y = tile.box.y; y < tile.box.bottom(); ++y) {
        const CoverageRow& row = coverage.row(y);
        for (int x = tile.box.x; x < tile.box.right(); ++x) {
            Tile::Pixel& pixel = tile.row(y)[x - tile.box.x];
            for (float* value : {&pixel.red, &pixel.green, &pixel.blue, &pixel.alpha}) *value *= opacity;
            const float share = static_cast<float>(row.weightAt(x)) / static_cast<float>(kCovered);
            pixel.alpha += (1 - pixel.alpha) * kBoxOpacity * share;
        }
    }
    return tile;
}

/// The nearest place between two samples of every plane, but no further than the output goes.
int evenPlace(double place, int end) {
    if (!(place > 0)) return 0;
    return place < end ? std::min(2 * static_cast<int>(std::lround(place / 2)), end) : end;
}

} // namespace

CaptionArt captionArt(const CaptionPlacement& caption, PixelSize output) {
    const double size = caption.fontSize;
    const Rectangle& video = caption.videoRect;
    const double paddingX = kPaddingX * size;
    const double paddingY = kPaddingY * size;
    const CaptionText text(
        textOf(caption), size,
        {kTextWidth * video.width - 2 * paddingX, (1 - 2 * kBottomMargin) * video.height - 2 * paddingY});

    const double width = text.width() + 2 * paddingX;
    const double height = text.height() + 2 * paddingY;
    const RoundedRectangle box{
        {video.x + (video.width - width) / 2, video.bottom() - kBottomMargin * video.height - height, width, height},
        std::min(size * kCornerRadius, height / 2)};
    const double left = box.rect.x + paddingX;
    const double top = box.rect.y + paddingY;
    const PixelBox pixels = touchedPixels(box.rect, output);
    const Tile drawn = tileOf(text.drawn(pixels, left, top), pixels);
    CaptionArt art{boxedText(drawn, 1, box, output), boxedText(drawn, kUnlitOpacity, box, output), {}};
    for (const WordCell& cell : text.wordCells()) {
        const int x = evenPlace(left + cell.left, output.width);
        const int y = evenPlace(top + cell.top, output.height);
        const int right = evenPlace(left + cell.right, output.width);
        const int bottom = evenPlace(top + cell.bottom, output.height);
        art.areas.push_back({{x, y, right - x, bottom - y}, cell.word});
    }
    return art;
}

void CaptionLayer::prepare(const std::optional<CaptionPlacement>& caption, std::vector<PixelBox>& boxes) {
    if (caption == m_caption) return;
    const std::optional<CaptionPlacement> before = std::exchange(m_caption, caption);
    if (before && caption && haveSameText(*before, *caption)) {
        for (const WordArea& area : m_areas)
            if (before->words[area.word].isLit != caption->words[area.word].isLit)
                boxes.push_back(area.box.intersected(m_lit->box()));
        return;
    }
    if (before) boxes.push_back(m_lit->box());
    if (!caption) return;
    CaptionArt art = captionArt(*caption, m_output);
    m_lit.emplace(art.lit, m_output, m_subsampling);
    m_unlit.emplace(art.unlit, m_output, m_subsampling);
    m_areas = std::move(art.areas);
    boxes.push_back(m_lit->box());
}

void CaptionLayer::draw(const PixelBox& box, Picture& out) const {
    if (!m_caption) return;
    for (const WordArea& area : m_areas) {
        const bool isLit = m_caption->words[area.word].isLit;
        (isLit ? m_lit : m_unlit)->blend(area.box.intersected(box), out);
    }
}

} // namespace morvelin
