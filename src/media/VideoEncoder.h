// The small interface that libx264 and FFmpeg's hardware encoders share. Owned by one movie writer, or by one part of
// an export that is encoded on its own.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "core/base/Result.h"
#include "core/base/Time.h"
#include "platform/MovieWriter.h"
#include "platform/Picture.h"

namespace morvelin {

/// A fraction: a frame rate, or the length of a tick in seconds.
struct Rational {
    int numerator = 0;
    int denominator = 1;

    bool operator==(const Rational&) const = default;
    [[nodiscard]] double value() const { return static_cast<double>(numerator) / denominator; }
};

/// The exact fraction behind a frame rate: 29.97 is 30000/1001, 60 is 60/1.
[[nodiscard]] Rational exactFrameRate(double framesPerSecond);

/// What an encoder is asked for.
struct VideoEncoderSettings {
    PixelSize size; ///< even sides
    MovieSettings::Pace pace = MovieSettings::Pace::Offline;
    MovieSettings::Transfer transfer = MovieSettings::Transfer::BT709;
    double frameRate = 60;
    std::int64_t bitRate = 0; ///< bits a second: the average offline, in real time the most over any few seconds
    Seconds keyFrameInterval{2};
    int threads = 0; ///< in real time; 0: as many as suit the machine

    /// The encoder's settings for a movie.
    [[nodiscard]] static VideoEncoderSettings of(const MovieSettings& movie, int threads);
    /// The length of a tick of all times of this stream: one frame offline, 1/90000 s in real time.
    [[nodiscard]] Rational timeBase() const;
};

/// One coded frame. The bytes (H.264 with start codes) stay valid until the encoder is used again.
struct EncodedPacket {
    std::span<const std::uint8_t> bytes;
    std::int64_t presentationTime = 0; ///< in ticks
    std::int64_t decodingTime = 0;     ///< in ticks
    bool isKeyFrame = false;
};

/// Takes the coded frames as they come.
using PacketSink = std::function<Result<void, MovieWriterError>(const EncodedPacket&)>;

/// Turns pictures into H.264. One thread at a time; not tied to one.
class VideoEncoder {
public:
    virtual ~VideoEncoder() = default;

    /// The stream's parameter sets, with start codes; packets do not repeat them.
    [[nodiscard]] virtual std::span<const std::uint8_t> parameterSets() const = 0;
    /// Encodes a 4:2:0 picture of the agreed size. `time`, in ticks, grows from frame to frame; `changed` lists the
    /// boxes in which the picture differs from the one before. The picture may be reused once the call is back.
    virtual Result<void, MovieWriterError> encode(const Picture& picture, std::int64_t time,
                                                  std::span<const PixelBox> changed, const PacketSink& sink) = 0;
    /// Hands over what is still inside; nothing can be encoded afterwards.
    virtual Result<void, MovieWriterError> drain(const PacketSink& sink) = 0;
};

} // namespace morvelin
