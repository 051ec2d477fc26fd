#include "render/CameraBubble.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/CameraPlacement.h"
#include "render/OverlaySprite.h"
#include "render/PicturePlacement.h"
#include "render/PlaneScaling.h"
#include "render/StageShadow.h"

namespace morvelin {

namespace {

/// A bubble with a side of this many pixels or fewer is not seen.
constexpr double kSmallestBubble = 1;
constexpr double kShadowOpacity = 0.35;
constexpr double kShadowDrop = 0.02;      ///< of the side, straight down
constexpr double kShadowSigma = 0.12 / 2; ///< of the side: a blur counts as two standard deviations
/// Beyond this many deviations a shadow is worth less than a tenth of a level.
constexpr double kShadowReach = 3.5;

constexpr std::size_t kindOf(int plane) { return plane == 0 ? 0 : 1; }

Rectangle grown(const Rectangle& rect, double by) {
    return {rect.x - by, rect.y - by, rect.width + 2 * by, rect.height + 2 * by};
}

OverlaySprite shadowSprite(const RoundedRectangle& square, PixelSize output, Subsampling subsampling) {
    const double side = square.rect.width;
    ShadowShape shadow{square, side * kShadowSigma, kShadowOpacity};
    shadow.caster.rect.y += side * kShadowDrop;
    return {shadowTile(shadow, touchedPixels(grown(shadow.caster.rect, kShadowReach * shadow.sigma), output)), output,
            subsampling};
}

/// The whole of a picture, enlarged or reduced around the square's middle until it just covers the square.
Rectangle coverRectangle(const Rectangle& square, PixelSize picture) {
    const double scale = std::max(square.width / picture.width, square.height / picture.height);
    const double width = picture.width * scale;
    const double height = picture.height * scale;
    return {square.x + (square.width - width) / 2, square.y + (square.height - height) / 2, width, height};
}

/// The mapping of samples `first` up to `first + count` when they are made from the last to the first, each at its
/// mirror image about `middle`: so they still run along the source's rows.
AxisMapping mirrored(const AxisMapping& mapping, const SampleGrid& grid, double middle, int first, int count) {
    const double sumOfIndexes = 2 * (middle - grid.origin) / grid.step;
    return {mapping.start + mapping.step * (sumOfIndexes - (2 * first + count - 1)), mapping.step};
}

} // namespace

std::optional<CameraBubble> cameraBubble(const CameraSettings& settings, const Rectangle& videoRect,
                                         std::int64_t frame) {
    const NormalizedRect place = keptInside(settings.rect);
    const double side = std::min({place.width * videoRect.width, videoRect.width, videoRect.height});
    if (!(side > kSmallestBubble)) return std::nullopt;

    const Rectangle square{std::clamp(videoRect.x + place.x * videoRect.width, videoRect.x,
                                      std::max(videoRect.x, videoRect.right() - side)),
                           std::clamp(videoRect.y + place.y * videoRect.height, videoRect.y,
                                      std::max(videoRect.y, videoRect.bottom() - side)),
                           side, side};
    return CameraBubble{{square, side * std::clamp(settings.cornerRadius, 0.0, 0.5)}, settings.isMirrored, frame};
}

struct CameraLayer::State {
    State(PixelSize size, Subsampling sampling) : output(size), subsampling(sampling) {}

    void addBoxes(std::vector<PixelBox>& boxes) const { boxes.push_back(squareBox().united(shadow->box())); }
    [[nodiscard]] PixelBox squareBox() const;
    void placeSquare(const RoundedRectangle& square);
    void placePicture(const Picture& picture);
    void prepareTaps(int plane);
    void scale(const Picture& picture);

    PixelSize output;
    Subsampling subsampling;
    std::optional<CameraBubble> bubble; ///< as it is drawn
    PicturePlacement placement;
    bool isMirrored = false; ///< whether the taps are
    std::optional<OverlaySprite> shadow;
    std::array<Coverage, 2> coverage; ///< luma, chroma
    std::array<PixelBox, 2> samples;  ///< of the output that the square has a share in
    std::array<PlaneTaps, 2> taps;
    /// The bubble's picture at its size: what moves underneath must not cost a scaling.
    std::array<std::vector<std::uint8_t>, 3> scaled;
    ScalingScratch scratch;
};

CameraLayer::CameraLayer(PixelSize output, Subsampling subsampling)
    : m_state(std::make_unique<State>(output, subsampling)) {}
CameraLayer::CameraLayer(CameraLayer&&) noexcept = default;
CameraLayer& CameraLayer::operator=(CameraLayer&&) noexcept = default;
CameraLayer::~CameraLayer() = default;

void CameraLayer::prepare(const std::optional<CameraBubble>& bubble, const std::shared_ptr<const Picture>& picture,
                          std::vector<PixelBox>& boxes) {
    State& state = *m_state;
    const std::optional<CameraBubble> wanted = picture != nullptr ? bubble : std::nullopt;
    if (wanted == state.bubble) return;

    const std::optional<CameraBubble> before = std::exchange(state.bubble, wanted);
    const bool staysPut = before && wanted && before->square == wanted->square;
    if (before && !staysPut) state.addBoxes(boxes);
    if (!wanted) return;
    if (!staysPut) {
        state.placeSquare(wanted->square);
        state.addBoxes(boxes);
    } else {
        boxes.push_back(state.squareBox());
    }
    state.placePicture(*picture);
    state.scale(*picture);
}

void CameraLayer::draw(const PixelBox& box, Picture& out) {
    State& state = *m_state;
    if (!state.bubble) return;
    state.shadow->blend(box, out);
    for (int plane = 0; plane < 3; ++plane) {
        const PixelBox& samples = state.samples[kindOf(plane)];
        const PixelBox part = planeBox(box, planeGrid(plane, state.subsampling)).intersected(samples);
        const std::uint8_t* scaled = state.scaled[static_cast<std::size_t>(plane)].data();
        for (int y = part.y; y < part.bottom(); ++y) {
            const std::uint8_t* row = scaled + static_cast<std::ptrdiff_t>(y - samples.y) * samples.width;
            blendCovered(state.coverage[kindOf(plane)].row(y), part.x, part.right(), row + (part.x - samples.x),
                         out.plane(plane).row(y) + part.x);
        }
    }
}

PixelBox CameraLayer::State::squareBox() const {
    PixelBox box = touchedPixels(bubble->square.rect, output);
    // Chroma right of an edge stands for the edge's last column too.
    box.width += 2;
    return box.intersected({0, 0, output.width, output.height});
}

void CameraLayer::State::placeSquare(const RoundedRectangle& square) {
    shadow.emplace(shadowSprite(square, output, subsampling));
    constexpr double kSpare = 2; // a chroma sample at an edge also stands for pixels beside it
    for (int plane = 0; plane < 2; ++plane) {
        const PlaneGrid grid = planeGrid(plane, subsampling);
        coverage[kindOf(plane)] = Coverage(square, output.width, grid.divisor);
        samples[kindOf(plane)] = planeBox(touchedPixels(grown(square.rect, kSpare), output), grid);
    }
}

void CameraLayer::State::placePicture(const Picture& picture) {
    const PicturePlacement wanted{coverRectangle(bubble->square.rect, picture.size()), picture.size(),
                                  picture.subsampling(), output, subsampling};
    if (wanted == placement && bubble->isMirrored == isMirrored) return;
    placement = wanted;
    isMirrored = bubble->isMirrored;
    prepareTaps(0);
    prepareTaps(1);
}

void CameraLayer::State::prepareTaps(int plane) {
    const PixelBox& box = samples[kindOf(plane)];
    const PixelSize picture = placement.pictureSamples(plane);
    AxisMapping x = placement.mappingX(plane);
    const AxisMapping y = placement.mappingY(plane);
    if (isMirrored) {
        const Rectangle& square = bubble->square.rect;
        x = mirrored(x, placement.outputGrid(plane).x, square.x + square.width / 2, box.x, box.width);
    }
    const PhaseTable phases = lanczosPhases(x.step);
    taps[kindOf(plane)] = {rowTaps(axisTaps(phases, x, box.x, box.width, picture.width), SampleWidth::Byte),
                           axisTaps(phases, y, box.y, box.height, picture.height)};
}

void CameraLayer::State::scale(const Picture& picture) {
    for (int plane = 0; plane < 3; ++plane) {
        const PixelBox& box = samples[kindOf(plane)];
        std::vector<std::uint8_t>& out = scaled[static_cast<std::size_t>(plane)];
        out.resize(static_cast<std::size_t>(box.width) * static_cast<std::size_t>(box.height));
        if (box.isEmpty()) continue;
        const PlaneView<const std::uint8_t> source = picture.plane(plane);
        RowScaler scaler(taps[kindOf(plane)], source, box, scratch);
        for (int y = box.y; y < box.bottom(); ++y) {
            std::uint8_t* row = out.data() + static_cast<std::ptrdiff_t>(y - box.y) * box.width;
            scalingKernels().columns(scaler.row(y), box.width, sampleRange(plane), row);
            if (isMirrored) std::reverse(row, row + box.width);
        }
    }
}

} // namespace morvelin
