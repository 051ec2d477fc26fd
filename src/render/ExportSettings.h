// How an export is written: the quality table, and the sizes and rates that follow from it. Pure.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "core/base/Time.h"
#include "platform/Picture.h"

namespace morvelin {

enum class ExportFormat { MP4, GIF };

constexpr auto rawValues(std::type_identity<ExportFormat>) {
    using enum ExportFormat;
    return std::to_array<std::pair<ExportFormat, std::string_view>>({{MP4, "mp4"}, {GIF, "gif"}});
}

enum class VideoQuality { VeryLow, Low, Medium, High, Ultra };

/// As agents and the command line write them.
constexpr auto rawValues(std::type_identity<VideoQuality>) {
    using enum VideoQuality;
    return std::to_array<std::pair<VideoQuality, std::string_view>>(
        {{VeryLow, "very_low"}, {Low, "low"}, {Medium, "medium"}, {High, "high"}, {Ultra, "ultra"}});
}

/// The quality of a word that an agent or a person writes; some words have two spellings.
[[nodiscard]] std::optional<VideoQuality> videoQualityNamed(std::string_view word);

/// What a quality stands for.
struct QualityLimits {
    int height = 0; ///< of an MP4, at most
    double frameRate = 0;
    double bitsPerPixel = 0; ///< per frame
    int gifWidth = 0;        ///< at most
    double gifFrameRate = 0;
};

[[nodiscard]] QualityLimits qualityLimits(VideoQuality quality);
/// "720p · 24 fps" or "480px · 10 fps", for a picker.
[[nodiscard]] std::string qualityLabel(VideoQuality quality, ExportFormat format);

/// The size of an MP4 made from a canvas: limited in height, both sides even, at least 2 × 2.
[[nodiscard]] PixelSize mp4OutputSize(PixelSize canvas, VideoQuality quality);
/// The size of a GIF: the MP4's, limited in width, both sides even.
[[nodiscard]] PixelSize gifOutputSize(PixelSize canvas, VideoQuality quality);
/// Frames a second; an unknown rate of the source (0) takes the quality's own.
[[nodiscard]] double mp4FrameRate(double nominalFrameRate, VideoQuality quality);
/// Bits a second.
[[nodiscard]] std::int64_t mp4BitRate(PixelSize size, double frameRate, VideoQuality quality);

/// How the video stream of an export is written.
struct VideoSettings {
    PixelSize size;
    double frameRate = 60;
    std::int64_t bitRate = 0;

    bool operator==(const VideoSettings&) const = default;
};

[[nodiscard]] VideoSettings mp4Settings(PixelSize canvas, double nominalFrameRate, VideoQuality quality);
[[nodiscard]] VideoSettings gifSettings(PixelSize canvas, VideoQuality quality);
/// Whole frames of a film of that length, and at least one.
[[nodiscard]] std::int64_t gifFrameCount(Seconds duration, double frameRate);
/// For a model to read: small text survives, smooth motion does not matter.
[[nodiscard]] VideoSettings forAISettings(PixelSize canvas, double nominalFrameRate);

} // namespace morvelin
