// What FFmpeg itself says of a file, and movies in forms that our own writer never makes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/Picture.h"

namespace morvelin {

struct ProbedPacket {
    double time = 0;
    double duration = 0;     ///< not for movies in fragments: FFmpeg overlooks what those say
    std::int64_t offset = 0; ///< of its bytes in the file
    bool isKeyFrame = false;
};

struct ProbedMovie {
    std::string primaries, transfer, matrix, range; ///< as the container says, without a look into the stream
    int profile = 0;
    std::vector<ProbedPacket> packets;
};

/// Fails the running test when the file is no movie.
ProbedMovie probe(const std::filesystem::path& path);

/// How long each frame of a movie in fragments lasts, in ticks, as its boxes say (ISO/IEC 14496-12, 8.8).
std::vector<std::uint32_t> fragmentDurations(const std::filesystem::path& path);

/// The left channel of a movie's sound as FFmpeg decodes it, from the movie's time 0; silence where it has a hole.
std::vector<float> decodedSound(const std::filesystem::path& path, int track = 0);

/// A movie made by FFmpeg's own libx264 wrapper.
struct ForeignMovie {
    const char* pixelFormat = "yuv420p";
    const char* matrix = "bt709";
    bool isFullRange = false;
    int quarterTurns = 0; ///< clockwise, said by the container
    int bFrames = 0;
    const char* container = "mp4";
};

/// Writes these pictures (planes of 8 bits, in the movie's own subsampling and matrix) at 25 a second; samples of more
/// bits are shifted up.
void writeForeignMovie(const std::filesystem::path& path, const ForeignMovie& movie,
                       const std::vector<Picture>& pictures);

} // namespace morvelin
