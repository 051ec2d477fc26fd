#include "media/VideoEncoder.h"

#include <cmath>

namespace morvelin {

namespace {

constexpr int kRealTimeTicks = 90'000; // a second; 1/24, 1/25, 1/30, 1/60 and 1/144 s are whole numbers of them

} // namespace

Rational exactFrameRate(double framesPerSecond) {
    const double whole = std::round(framesPerSecond);
    if (std::abs(framesPerSecond - whole) < 1e-4) return {static_cast<int>(whole), 1};
    for (const int television : {24, 30, 48, 60, 120})
        if (std::abs(framesPerSecond - television / 1.001) < 5e-3) return {television * 1000, 1001};
    return {static_cast<int>(std::lround(framesPerSecond * 1000)), 1000};
}

VideoEncoderSettings VideoEncoderSettings::of(const MovieSettings& movie, int threads) {
    return {.size = movie.size,
            .pace = movie.pace,
            .transfer = movie.transfer,
            .frameRate = movie.frameRate,
            .bitRate = movie.bitRate,
            .keyFrameInterval = movie.keyFrameInterval,
            .threads = threads};
}

Rational VideoEncoderSettings::timeBase() const {
    switch (pace) {
    case MovieSettings::Pace::RealTime: return {1, kRealTimeTicks};
    case MovieSettings::Pace::Offline: {
        const Rational rate = exactFrameRate(frameRate);
        return {rate.denominator, rate.numerator};
    }
    }
    return {1, kRealTimeTicks};
}

} // namespace morvelin
