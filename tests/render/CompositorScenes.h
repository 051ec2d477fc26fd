// Pictures, instructions and pointers for the compositor's tests: small, varied, the same in every run.
#pragma once

#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <sstream>

#include "platform/MovieReader.h"
#include "render/CompositionInstruction.h"
#include "render/Compositor.h"
#include "render/CursorScene.h"

namespace morvelin::test {

/// Something like a desktop: an even ground, windows with hard edges in strong colours, and lines of fine strokes.
inline std::shared_ptr<Picture> desktopPicture(PixelSize size, std::uint32_t seed) {
    std::mt19937 random(seed);
    const auto upTo = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(std::max(limit, 1))); };
    auto picture = std::make_shared<Picture>(size, Subsampling::Quarter);
    for (int p = 0; p < 3; ++p) {
        const auto plane = picture->plane(p);
        for (int y = 0; y < plane.height; ++y)
            for (int x = 0; x < plane.width; ++x)
                plane.row(y)[x] = static_cast<std::uint8_t>(p == 0 ? 60 + x * 80 / plane.width
                                                                   : 118 + y * 20 / plane.height);
    }
    const auto fill = [&](int x0, int y0, int width, int height, const std::array<int, 3>& color) {
        for (int p = 0; p < 3; ++p) {
            const auto plane = picture->plane(p);
            const int d = p == 0 ? 1 : 2;
            for (int y = y0 / d; y < std::min((y0 + height) / d, plane.height); ++y)
                for (int x = x0 / d; x < std::min((x0 + width) / d, plane.width); ++x)
                    plane.row(y)[x] = static_cast<std::uint8_t>(color[static_cast<std::size_t>(p)]);
        }
    };
    for (int window = 0; window < 5; ++window) {
        const int x0 = upTo(size.width), y0 = upTo(size.height);
        fill(x0, y0, size.width / 3, size.height / 3, {30 + upTo(200), 40 + upTo(170), 40 + upTo(170)});
        for (int line = 0; line < 4; ++line)
            for (int stroke = 0; stroke < size.width / 8; ++stroke)
                if (upTo(3) != 0)
                    fill(x0 + 4 + stroke * 2, y0 + 4 + line * 6, 1 + upTo(2), 4, {20 + upTo(210), 128, 128});
    }
    return picture;
}

inline MovieFrame movieFrame(std::shared_ptr<const Picture> picture, std::int64_t number) {
    return {std::move(picture), number, SourceTime(0), SourceTime(1)};
}

/// A frame of the recording without a camera.
inline ShownFrames shown(std::shared_ptr<const Picture> picture, std::int64_t number) {
    return {movieFrame(std::move(picture), number), std::nullopt};
}

/// A pointer that follows a track without smoothing: a coloured wedge with soft edges.
inline std::shared_ptr<const CursorScene> pointerAlong(const std::vector<CursorEvent>& events, double size = 1.5) {
    auto image = std::make_shared<Image>(Image{{20, 24}, std::vector<std::uint8_t>(20 * 24 * 4)});
    for (int row = 0; row < 24; ++row) {
        for (int column = 0; column < 20; ++column) {
            const double inside = std::clamp(row * 0.8 - column + 0.5, 0.0, 1.0);
            std::uint8_t* pixel = image->pixels.data() + 4 * (row * 20 + column);
            pixel[0] = static_cast<std::uint8_t>(inside * 40);
            pixel[1] = static_cast<std::uint8_t>(inside * (row * 10));
            pixel[2] = static_cast<std::uint8_t>(inside * 230);
            pixel[3] = static_cast<std::uint8_t>(inside * 255);
        }
    }
    CursorShapeTrack track;
    track.captureWidth = 400;
    track.captureHeight = 224;
    track.shapes = {{0, CursorShapeTrack::Kind::Arrow, 20, 24, 2, 1}};
    track.changes = {{SourceTime(0), 0}};
    CursorSettings settings;
    settings.size = size;
    settings.smoothing = 0;
    return std::make_shared<const CursorScene>(
        CursorScene::make(events,
                          std::make_shared<const CursorShapeLibrary>(
                              std::move(track), std::map<std::int64_t, std::shared_ptr<const Image>>{{0, image}}),
                          settings));
}

/// A pointer that stays at one place.
inline std::shared_ptr<const CursorScene> restingPointer(double x, double y, double size = 1.5) {
    CursorEvent event;
    event.x = x;
    event.y = y;
    return pointerAlong({event}, size);
}

inline std::shared_ptr<CompositionInstruction> plainInstruction(PixelSize video, PixelSize output) {
    auto instruction = std::make_shared<CompositionInstruction>();
    instruction->videoNaturalSize = video;
    instruction->outputSize = output;
    instruction->padding = 0;
    instruction->cornerRadius = 0;
    instruction->shadowIntensity = 0;
    instruction->fragments = FragmentMap({VideoFragment{UUID{}, SourceTime(0), SourceTime(100), 1, 0, std::nullopt}});
    return instruction;
}

/// A camera that holds one view.
inline std::vector<DenseZoomFrame> view(double zoom, double x, double y) { return {{EditTime(0), zoom, x, y}}; }

inline Background gradientBackground(std::string id) {
    Background background;
    background.gradientPresetID = std::move(id);
    return background;
}

inline MaskKeyframe mask(NormalizedRect rect, double blurRadius, double start = 0, double end = 100) {
    return {UUID{}, EditTime(start), EditTime(end), rect, blurRadius};
}

/// Annotations that show for two seconds; `number` makes the id, and with it an oval's wobble.
inline FocusKeyframe focus(NormalizedRect rect, std::uint8_t number) {
    FocusKeyframe key;
    key.id.bytes[7] = number;
    key.endTime = EditTime(2);
    key.rect = rect;
    key.fadeOutDuration = Seconds(0.2);
    return key;
}
inline TapTapKeyframe tapTap(double x, double y, double size) {
    return {UUID{}, EditTime(0), EditTime(2), x, y, size, {}};
}

/// A cue of two seconds whose words start at those times.
inline TimelineCue caption(const std::string& text, const std::vector<double>& starts) {
    TimelineCue cue{UUID{}, EditTime(0), EditTime(2), text, {}};
    std::istringstream words(text);
    for (const double start : starts) {
        TimelineWord word{EditTime(start), EditTime(start + 0.2), "", 1};
        words >> word.text;
        cue.words.push_back(word);
    }
    return cue;
}

} // namespace morvelin::test
