#include "render/ExportSettings.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "core/base/JSON.h"
#include "timeline/Tolerance.h"

namespace morvelin {

namespace {

constexpr Seconds kShortestGIF = 0.001_s;
constexpr int kLongestSideForAI = 1536;
constexpr double kFrameRateForAI = 5;
constexpr double kBitsPerPixelForAI = 0.12;
constexpr std::int64_t kLeastBitRate = 300'000;
constexpr std::int64_t kLeastBitRateForAI = 700'000;
constexpr std::int64_t kGreatestBitRate = 80'000'000;

/// The encoder wants even sides.
int evenSide(double side) { return std::max(2, static_cast<int>(std::round(side / 2)) * 2); }

PixelSize evenSize(double width, double height) { return {evenSide(width), evenSide(height)}; }

bool isEmpty(PixelSize size) { return size.width <= 0 || size.height <= 0; }

std::int64_t bitRate(PixelSize size, double frameRate, double bitsPerPixel, std::int64_t least) {
    const double rate = static_cast<double>(size.width) * size.height * frameRate * bitsPerPixel;
    return static_cast<std::int64_t>(
        std::clamp(rate, static_cast<double>(least), static_cast<double>(kGreatestBitRate)));
}

} // namespace

std::optional<VideoQuality> videoQualityNamed(std::string_view word) {
    if (word == "verylow" || word == "lowest") return VideoQuality::VeryLow;
    return json::fromRawValue<VideoQuality>(word);
}

QualityLimits qualityLimits(VideoQuality quality) {
    switch (quality) {
    case VideoQuality::VeryLow: return {720, 24, 0.018, 480, 10};
    case VideoQuality::Low: return {720, 30, 0.025, 640, 12};
    case VideoQuality::Medium: return {720, 60, 0.035, 800, 15};
    case VideoQuality::High: return {1080, 60, 0.052, 960, 20};
    case VideoQuality::Ultra: return {1440, 60, 0.075, 1000, 24};
    }
    return {};
}

std::string qualityLabel(VideoQuality quality, ExportFormat format) {
    const QualityLimits limits = qualityLimits(quality);
    switch (format) {
    case ExportFormat::MP4: return fmt::format("{}p · {} fps", limits.height, limits.frameRate);
    case ExportFormat::GIF: return fmt::format("{}px · {} fps", limits.gifWidth, limits.gifFrameRate);
    }
    return {};
}

PixelSize mp4OutputSize(PixelSize canvas, VideoQuality quality) {
    if (isEmpty(canvas)) return {2, 2};
    const double height = std::min(canvas.height, qualityLimits(quality).height);
    return evenSize(canvas.width * height / canvas.height, height);
}

PixelSize gifOutputSize(PixelSize canvas, VideoQuality quality) {
    const PixelSize size = mp4OutputSize(canvas, quality);
    const double width = std::min(size.width, qualityLimits(quality).gifWidth);
    return evenSize(width, size.height * width / size.width);
}

double mp4FrameRate(double nominalFrameRate, VideoQuality quality) {
    const double limit = qualityLimits(quality).frameRate;
    return nominalFrameRate > 0 ? std::min(nominalFrameRate, limit) : limit;
}

std::int64_t mp4BitRate(PixelSize size, double frameRate, VideoQuality quality) {
    return bitRate(size, frameRate, qualityLimits(quality).bitsPerPixel, kLeastBitRate);
}

VideoSettings mp4Settings(PixelSize canvas, double nominalFrameRate, VideoQuality quality) {
    VideoSettings settings{mp4OutputSize(canvas, quality), mp4FrameRate(nominalFrameRate, quality), 0};
    settings.bitRate = mp4BitRate(settings.size, settings.frameRate, quality);
    return settings;
}

VideoSettings gifSettings(PixelSize canvas, VideoQuality quality) {
    return {gifOutputSize(canvas, quality), qualityLimits(quality).gifFrameRate, 0};
}

std::int64_t gifFrameCount(Seconds duration, double frameRate) {
    const double frames = std::max(duration, kShortestGIF).value * frameRate;
    return std::max<std::int64_t>(1, static_cast<std::int64_t>(frames + kTolerance));
}

VideoSettings forAISettings(PixelSize canvas, double nominalFrameRate) {
    VideoSettings settings{{2, 2}, kFrameRateForAI, 0};
    if (!isEmpty(canvas)) {
        const double scale = std::min(1.0,
                                      static_cast<double>(kLongestSideForAI) / std::max(canvas.width, canvas.height));
        settings.size = evenSize(canvas.width * scale, canvas.height * scale);
    }
    if (nominalFrameRate > 0) settings.frameRate = std::clamp(std::round(nominalFrameRate), 1.0, kFrameRateForAI);
    settings.bitRate = bitRate(settings.size, settings.frameRate, kBitsPerPixelForAI, kLeastBitRateForAI);
    return settings;
}

} // namespace morvelin
