// A take of an hour, as the benchmarks of projects open it.
#pragma once

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include "Bench.h"
#include "storage/ProjectBundle.h"

namespace morvelin::bench {

inline constexpr int kSamples = 108'000;
inline constexpr double kSamplesPerSecond = 30;
inline constexpr Seconds kHour{kSamples / kSamplesPerSecond};

/// A pointer that walks about a 1920 × 1080 desktop, pauses, and clicks every `clickInterval` samples.
inline std::vector<CursorEvent> pointerOfAnHour(int clickInterval) {
    std::mt19937 random(1);
    std::normal_distribution<double> step(0, 12);
    std::vector<CursorEvent> events(kSamples);
    double x = 960, y = 540;
    for (int i = 0; i < kSamples; ++i) {
        CursorEvent& sample = events[static_cast<std::size_t>(i)];
        if (i / 90 % 3 != 0) {
            x = std::clamp(x + step(random), 0.0, 1919.0);
            y = std::clamp(y + step(random), 0.0, 1079.0);
        }
        sample.timestamp = SourceTime(i / kSamplesPerSecond);
        sample.x = std::floor(x) / 1920;
        sample.y = std::floor(y) / 1080;
        if (i % clickInterval < 2) {
            sample.event = i % clickInterval == 0 ? CursorEventType::MouseDown : CursorEventType::MouseUp;
            sample.button = MouseButton::Left;
            sample.clickCount = 1;
        }
    }
    return events;
}

/// The project of such a take, still without its versions.
inline void writeAnHour(const std::filesystem::path& bundle, const std::vector<CursorEvent>& events) {
    std::filesystem::create_directories(bundle);
    std::ofstream(bundle / "recording.mov") << "movie";
    ProjectBundle::Capture capture;
    capture.name = "An hour";
    capture.originalDuration = kHour;
    must(ProjectBundle::writeCapture(capture, bundle));
    must(ProjectBundle::writeCursorEvents(events, bundle));
}

} // namespace morvelin::bench
