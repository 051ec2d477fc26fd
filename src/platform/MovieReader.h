// The named operation "read a movie": decoded pictures at exact times. Owned by an export, a preview or a frame reader.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "core/base/Result.h"
#include "core/base/Time.h"
#include "platform/Picture.h"

namespace morvelin {

/// Why a movie could not be read; `detail` is a whole sentence of the cause.
struct MovieReaderError {
    enum class Kind { CannotOpen, NoVideoTrack, DecodingFailed };

    Kind kind = Kind::CannotOpen;
    std::string detail;

    [[nodiscard]] std::string description() const { return detail; }
};

/// What a movie says of its video track.
struct MovieProperties {
    PixelSize size;              ///< as shown, after rotation
    SourceTime start;            ///< first frame's time
    SourceTime end;              ///< end of the last frame
    double nominalFrameRate = 0; ///< frames a second of the track's fastest stretches; 0 when unknown
    bool hasAudio = false;
};

/// One decoded frame and the span in which it shows.
struct MovieFrame {
    std::shared_ptr<const Picture> picture; ///< 4:2:0, BT.709, limited range
    std::int64_t number = -1;               ///< equal numbers are the same frame of the movie
    SourceTime start;
    SourceTime end; ///< when the next frame starts
};

/// Decodes one movie's video, exact to the frame. Cheap when the times asked for grow. One thread at a time.
class MovieReader {
public:
    virtual ~MovieReader() = default;

    [[nodiscard]] virtual const MovieProperties& properties() const = 0;
    /// The frame that shows at `time`: before the first frame the first, after the last the last.
    virtual Result<MovieFrame, MovieReaderError> frameAt(SourceTime time) = 0;
};

/// Opens movies; the program's composition chooses the back-end.
class MovieReaderFactory {
public:
    virtual ~MovieReaderFactory() = default;
    virtual Result<std::unique_ptr<MovieReader>, MovieReaderError> open(const std::filesystem::path& path) = 0;
};

} // namespace morvelin
