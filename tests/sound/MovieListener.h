// When a movie's picture flashes and when its sound tracks sound, by decoding it.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "media/FFmpegMovieReader.h"

namespace morvelin {

/// The times at which the middle of the picture turns bright.
inline std::vector<double> flashesOf(const std::filesystem::path& movie) {
    std::vector<double> flashes;
    auto opened = FFmpegMovieReaderFactory().open(movie);
    if (!opened) return flashes;
    bool wasBright = false;
    for (SourceTime time; time < (*opened)->properties().end;) {
        const auto frame = (*opened)->frameAt(time);
        if (!frame) break;
        const auto luma = std::as_const(*frame->picture).plane(0);
        const bool isBright = luma.row(luma.height / 2)[luma.width / 2] > 128;
        if (isBright && !wasBright) flashes.push_back(frame->start.value);
        wasBright = isBright;
        time = frame->end;
    }
    return flashes;
}

/// One channel of a sound track from the movie's time 0 on, decoded by FFmpeg's program.
inline std::vector<float> decodedSound(const std::filesystem::path& movie, int track) {
    const std::string command = "ffmpeg -v error -copyts -i '" + movie.string() +
                                "' -map 0:a:" + std::to_string(track) +
                                " -af aresample=first_pts=0 -f f32le -ac 1 -ar 44100 - </dev/null 2>/dev/null";
    std::vector<float> samples;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return samples;
    std::vector<float> buffer(1 << 16);
    while (const std::size_t count = fread(buffer.data(), sizeof(float), buffer.size(), pipe))
        samples.insert(samples.end(), buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count));
    pclose(pipe);
    return samples;
}

/// The times at which tones begin.
inline std::vector<double> tonesOf(const std::vector<float>& samples) {
    std::vector<double> tones;
    double lastLoud = -1;
    for (std::size_t sample = 0; sample < samples.size(); ++sample) {
        if (samples[sample] < 0.2F) continue;
        const double time = static_cast<double>(sample) / 44100;
        if (time - lastLoud > 0.05) tones.push_back(time);
        lastLoud = time;
    }
    return tones;
}

} // namespace morvelin
